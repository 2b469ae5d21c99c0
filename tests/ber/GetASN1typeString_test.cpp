#include "ber/trace_levels.h"

#include <map>

namespace {

constexpr char Function[] = "DOV0_GetASN1typeString";

std::string nameOf(int low)
{
    const std::map<int, std::string> names = {{2, "ASN_INTEGER"},
                                              {4, "ASN_OCTETSTRING"},
                                              {5, "ASN_NULL"},
                                              {6, "ASN_OBJECTIDENTIFIER"},
                                              {48, "ASN_SEQUENCE"}};
    const auto found = names.find(low);
    return found != names.end() ? found->second : "UNKNOWN";
}

} // namespace

TEST(GetASN1typeString, NamesTheLowByte)
{
    for (int low = 0; low < 256; ++low) {
        for (const uint32_t upper : {0U, 0x100U, 0xFFFFFF00U, 0x80000000U, 0x3000U}) {
            EXPECT_EQ(DOV0_GetASN1typeString(static_cast<int32_t>(upper | static_cast<uint32_t>(low))),
                      nameOf(low));
        }
    }
}

TEST(GetASN1typeString, ReturnsTheSameConstantEachTime)
{
    EXPECT_EQ(static_cast<const void *>(DOV0_GetASN1typeString(DOV0_ASN_SEQUENCE)),
              static_cast<const void *>(DOV0_GetASN1typeString(DOV0_ASN_SEQUENCE)));
}

TEST(GetASN1typeString, TracesThePointerThatItReturns)
{
    for (const int32_t tag : {2, 4, 5, 6, 48, 0x41}) {
        const char *name = nullptr;
        expectTrace(
            [&] { name = DOV0_GetASN1typeString(tag); },
            [&](uint32_t) {
                return LeveledTrace{{Trace::Flow, entry(Function)}, {Trace::Flow, leave(Function, name)}};
            });
    }
}
