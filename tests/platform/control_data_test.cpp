// The trace control data that a facility is given with each call: what a host's facility relies on.
#include "dov0610.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <map>
#include <string>

namespace {

// The block of the function that synchronised last, as it was when the facility first saw it.
TRC1_EntryBlock seen = {};
const TRC1_EntryBlock *seenAt = nullptr;
int32_t firstGeneration = 0;

} // namespace

extern "C" uint32_t TRC1_Sync(TRC1_EntryBlock *block)
{
    seen = *block;
    seenAt = block;
    firstGeneration = *block->generationWord;
    block->level = 0;
    block->generation = *block->generationWord;
    return 0;
}

namespace {

const std::map<std::string, std::function<void()>> Calls = {
    {"DOV0_IsValidPointer", [] { DOV0_IsValidPointer(nullptr); }},
    {"DOV0_PutEnv", [] { DOV0_PutEnv(nullptr); }},
    {"DOV0_QueryProductSpec", [] { DOV0_QueryProductSpec(-1); }},
    {"DOV0_SetDPstartMode", [] { DOV0_SetDPstartMode(0); }},
    {"DOV0_GetTimeOfDay", [] { DOV0_GetTimeOfDay(); }},
    {"DOV0_StringToCorvelTime", [] { DOV0_StringToCorvelTime(nullptr); }},
    {"DOV0_ConvertStringToUpper", [] { DOV0_ConvertStringToUpper(nullptr, 0); }},
    {"DOV0_EncodeRaw", [] { DOV0_EncodeRaw(nullptr, nullptr); }},
    {"DOV0_GetASN1typeString", [] { DOV0_GetASN1typeString(2); }},
    {"DOV0_ExtractXMLfield", [] { DOV0_ExtractXMLfield(0); }},
    {"DOV0_FindChar", [] { DOV0_FindChar(nullptr, 0, nullptr, 0, 1); }},
    {"DOV0_CheckSystemCommandCodepage", [] { DOV0_CheckSystemCommandCodepage(1252, 0); }},
    {"DOV0_IsThisAddressString", [] { DOV0_IsThisAddressString("x"); }},
    {"DOV0_WinSockInitialization", [] { DOV0_WinSockInitialization(); }},
};

std::string lineOfSource(const std::string &file, int32_t number)
{
    for (const auto &entry : std::filesystem::recursive_directory_iterator(SOURCES)) {
        if (entry.path().filename() == file + ".cpp") {
            std::ifstream source(entry.path());
            std::string line;
            for (int32_t i = 0; i < number && std::getline(source, line); ++i) {
            }
            return line;
        }
    }
    return "no such file";
}

const char *text(size_t entry)
{
    return static_cast<const char *>(seen.unit->entries[entry].value);
}

} // namespace

TEST(ControlData, OfTheEntryBlockIsAsTheFacilityExpectsIt)
{
    for (const auto &[name, call] : Calls) {
        call();
        ASSERT_NE(seen.unit, nullptr);
        EXPECT_EQ(seen.name, name);
        EXPECT_EQ(seen.reserved, 0);
        EXPECT_EQ(seen.nameLength, static_cast<int32_t>(name.size()));
        EXPECT_EQ(seen.facilityFlags, 512);
        EXPECT_EQ(seen.level, 0U);
        EXPECT_EQ(seen.generation, 0);
        EXPECT_EQ(seen.facility[0], 0);
        EXPECT_EQ(seen.facility[1], 0);
        EXPECT_EQ(firstGeneration, 1);
        const std::string line = lineOfSource(text(0), seen.line);
        EXPECT_THAT(line, testing::StartsWith("extern \"C\" ")) << name;
        EXPECT_THAT(line, testing::HasSubstr(name + "(")) << name;
    }
}

TEST(ControlData, OfTheUnitBlockIsAsTheFacilityExpectsIt)
{
    for (const auto &[name, call] : Calls) {
        call();
        ASSERT_NE(seen.unit, nullptr);
        EXPECT_EQ(seen.unit->format, 400);
        EXPECT_EQ(seen.unit->flags, 0x83000000U);
        const uint32_t tags[] = {10, 11, 8, 6, 1, 0};
        for (size_t i = 0; i < 6; ++i) {
            EXPECT_EQ(seen.unit->entries[i].tag, tags[i]) << name;
            EXPECT_NE(seen.unit->entries[i].value, nullptr) << name;
        }
        EXPECT_THAT(text(0), testing::MatchesRegex("dov0[a-z0-9]+")) << name;
        EXPECT_EQ(std::strlen(text(0)), 8U);
        EXPECT_THAT(text(1), testing::MatchesRegex("[A-Z][a-z][a-z] [ 0-9][0-9] [0-9][0-9][0-9][0-9]"));
        EXPECT_THAT(text(2), testing::MatchesRegex("[0-9][0-9]:[0-9][0-9]:[0-9][0-9]"));
        EXPECT_STREQ(text(3), "DOV610");
        EXPECT_STREQ(text(4), "*");
        const char *version = nullptr; // what the last entry's value begins with
        std::memcpy(&version, seen.unit->entries[5].value, sizeof version);
        EXPECT_THAT(version, testing::MatchesRegex("libdov0610 [0-9]+\\.[0-9]+\\.[0-9]+"));
    }
}

TEST(ControlData, IsEachFunctionsOwn)
{
    std::map<const void *, std::string> blocks;
    std::map<const void *, std::string> units;
    for (const auto &[name, call] : Calls) {
        call();
        EXPECT_TRUE(blocks.emplace(seenAt, name).second) << name;
        EXPECT_TRUE(units.emplace(seen.unit, name).second) << name;
    }
}
