#include "prodspec/product_spec_model.h"
#include "support/heap_faults.h"
#include "support/product_spec_file.h"

#include <fcntl.h>

namespace {

constexpr char Function[] = "DOV0_UpdateProductSpec";

std::string own(const std::string &text)
{
    return std::string(Function) + ": " + text;
}

std::string entering(int32_t index, const std::string &value)
{
    return own("Entering UpdateProductSpec with ProdSpec " + std::to_string(index) +
               " NewProductSpecValue <" + value + ">\n");
}

std::string queried(int32_t index)
{
    const char *value = DOV0_QueryProductSpec(index);
    return value != nullptr ? value : "(unset)";
}

const std::vector<int32_t> UnsetWhenOff = {
    DOV0_PSF_ENABLE_SNMP_TRAP,         DOV0_PSF_ENABLE_SNMP_MIBSTATUS,   DOV0_PSF_ENABLE_DPLOG,
    DOV0_PSF_ENABLE_METAFILE_COMMANDS, DOV0_PSF_ADD_SNMP_OBJECTINSTANCE, DOV0_PSF_ENABLE_GLOBALIZATION,
    DOV0_PSF_ENABLE_AUTOMATION_SERVER};

} // namespace

TEST(UpdateProductSpec, RefusesIndexesOutsideTheTable)
{
    for (const bool initialized : {false, true}) {
        ASSERT_TRUE(!initialized || DOV0_InitializeProductSpec(nullptr, 1) == 1);
        for (const int32_t index : {-1, 50, 256, INT32_MIN, INT32_MAX}) {
            const std::string text =
                own("*****Input Product Specification " + std::to_string(index) + " is invalid\n");
            const auto update = [=] { EXPECT_EQ(DOV0_UpdateProductSpec(index, "X"), 0); };
            EXPECT_EQ(traceAt(Trace::All, update),
                      (TraceLog{entry(Function), entering(index, "X"), text, leave(Function, intptr_t{0})}));
            EXPECT_EQ(bitsThatShow(text, update), Trace::Error);
            EXPECT_EQ(bitsThatShow(entering(index, "X"), update), Trace::Detail);
        }
    }
}

TEST(UpdateProductSpec, RefusesEveryIndexBeforeInitialization)
{
    for (int32_t index = 0; index <= 49; ++index) {
        const std::string text = own("*****Logic error. Product Specification " + std::to_string(index) +
                                     " not yet initialized\n");
        const auto update = [=] { EXPECT_EQ(DOV0_UpdateProductSpec(index, "X"), 0); };
        EXPECT_EQ(traceAt(Trace::All, update),
                  (TraceLog{entry(Function), entering(index, "X"), text, leave(Function, intptr_t{0})}));
        EXPECT_EQ(bitsThatShow(text, update), Trace::Error);
    }
}

TEST(UpdateProductSpec, AcceptsTheReservedIndexAndStoresNothing)
{
    ASSERT_EQ(DOV0_InitializeProductSpec(nullptr, 1), 1);
    EXPECT_EQ(traceAt(Trace::All, [] { EXPECT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_RESERVED, "X"), 0); }),
              (TraceLog{entry(Function), entering(49, "X"), leave(Function, intptr_t{0})}));
    EXPECT_EQ(queried(DOV0_PSF_RESERVED), "(unset)");
}

TEST(UpdateProductSpec, ChangesNothingForNull)
{
    ASSERT_EQ(DOV0_InitializeProductSpec(nullptr, 1), 1);
    for (const int32_t index : {DOV0_PSF_NODE_TYPE, DOV0_PSF_ENABLE_DPLOG, DOV0_PSF_DP_TO_START}) {
        const std::string before = queried(index);
        EXPECT_EQ(traceAt(Trace::All, [=] { EXPECT_EQ(DOV0_UpdateProductSpec(index, nullptr), 0); }),
                  (TraceLog{entry(Function), entering(index, "(null)"), leave(Function, intptr_t{0})}));
        EXPECT_EQ(queried(index), before);
    }
}

TEST(UpdateProductSpec, UnsetsASwitchThatIsTurnedOff)
{
    ASSERT_EQ(DOV0_InitializeProductSpec(nullptr, 1), 1);
    for (const int32_t index : UnsetWhenOff) {
        for (const char *off : {"N", "NO", "Never"}) {
            const std::string result = own(keywordOf(index) + "=(null)\n");
            const auto update = [=] { EXPECT_EQ(DOV0_UpdateProductSpec(index, off), 1); };
            EXPECT_EQ(traceAt(Trace::All, update), (TraceLog{entry(Function), entering(index, off), result,
                                                             leave(Function, intptr_t{1})}));
            EXPECT_EQ(queried(index), "(unset)");
            EXPECT_EQ(bitsThatShow(result, update), Trace::Detail);
        }
        // An own text is freed on the way; leak checks would tell.
        EXPECT_EQ(DOV0_UpdateProductSpec(index, "Yes"), 1);
        EXPECT_EQ(queried(index), "Yes");
        EXPECT_EQ(DOV0_UpdateProductSpec(index, "N"), 1);
        EXPECT_EQ(queried(index), "(unset)");
        // Upper case only.
        EXPECT_EQ(DOV0_UpdateProductSpec(index, "n"), 1);
        EXPECT_EQ(queried(index), "n");
    }
}

TEST(UpdateProductSpec, KeepsOtherSwitchesSetToNo)
{
    ASSERT_EQ(DOV0_InitializeProductSpec(nullptr, 1), 1);
    EXPECT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_REGISTER_OAGENT, "NO"), 1);
    EXPECT_EQ(queried(DOV0_PSF_REGISTER_OAGENT), "N"); // the first character, over the shared yes
    EXPECT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_REGISTER_OAGENT, "NO"), 1);
    EXPECT_EQ(queried(DOV0_PSF_REGISTER_OAGENT), "NO"); // the private text is replaced like any other
}

TEST(UpdateProductSpec, GivesAKeywordWithASharedConstantAPrivateCharacter)
{
    ASSERT_EQ(DOV0_InitializeProductSpec(nullptr, 1), 1);
    const TraceLog log = traceAt(Trace::All & ~Trace::State, [] {
        EXPECT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_ENABLE_SNMP_DISCOVERY, "maybe"), 1);
    });
    const void *value = DOV0_QueryProductSpec(DOV0_PSF_ENABLE_SNMP_DISCOVERY);
    EXPECT_EQ(log,
              (TraceLog{entry(Function), entering(11, "maybe"), entry("DOV0_GetStorage"),
                        message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n", value, 2),
                        leave("DOV0_GetStorage", value), own("ENABLE_SNMP_DISCOVERY=m\n"),
                        leave(Function, intptr_t{1})}));
    EXPECT_EQ(queried(DOV0_PSF_ENABLE_SNMP_DISCOVERY), "m");
    EXPECT_EQ(queried(DOV0_PSF_REGISTER_OAGENT), "Y"); // the other keywords keep the constant
    EXPECT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_MANAGED_NETWORK_MS, ""), 1);
    EXPECT_EQ(queried(DOV0_PSF_MANAGED_NETWORK_MS), "");
}

TEST(UpdateProductSpec, ReplacesOwnTextsByCopies)
{
    ASSERT_EQ(DOV0_InitializeProductSpec("inst1", 1), 1);
    std::string value = "X";
    for (const int32_t index : {DOV0_PSF_PRODUCT_CODE, DOV0_PSF_NODE_TYPE, DOV0_PSF_AGENT_AFF_STRING,
                                DOV0_PSF_DP_TO_START, DOV0_PSF_INSTANCE_NAME, DOV0_PSF_SUBNODE_APPEND_SOCK}) {
        EXPECT_EQ(traceOf(Function, Trace::All,
                          [&] { EXPECT_EQ(DOV0_UpdateProductSpec(index, value.c_str()), 1); }),
                  (TraceLog{entry(Function), entering(index, value),
                            own((index == 5 ? " " : keywordOf(index)) + "=" + value + "\n"),
                            leave(Function, intptr_t{1})}));
        EXPECT_EQ(queried(index), value);
        EXPECT_NE(DOV0_QueryProductSpec(index), value.c_str());
        value += "Y";
    }
    EXPECT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_NODE_TYPE, std::string(100000, 'x').c_str()), 1);
    EXPECT_EQ(queried(DOV0_PSF_NODE_TYPE), std::string(100000, 'x'));
    EXPECT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_NODE_TYPE, ""), 1);
    EXPECT_EQ(queried(DOV0_PSF_NODE_TYPE), "");
}

TEST(UpdateProductSpec, TakesTheValueThatItReplaces)
{
    ASSERT_EQ(DOV0_InitializeProductSpec(nullptr, 1), 1);
    EXPECT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_PRODUCT_NAME, DOV0_QueryProductSpec(DOV0_PSF_PRODUCT_NAME) + 6),
              1);
    EXPECT_EQ(queried(DOV0_PSF_PRODUCT_NAME), "Agent");
    const std::string name(100, 'n');
    EXPECT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_PRODUCT_NAME, name.c_str()), 1);
    for (const size_t from : {0U, 99U, 100U}) { // all of it, the last character, its end
        const char *old = DOV0_QueryProductSpec(DOV0_PSF_PRODUCT_NAME);
        EXPECT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_PRODUCT_NAME, old + from), 1);
        EXPECT_EQ(queried(DOV0_PSF_PRODUCT_NAME), name.substr(from));
        EXPECT_EQ(DOV0_UpdateProductSpec(DOV0_PSF_PRODUCT_NAME, name.c_str()), 1);
    }
}

TEST(UpdateProductSpec, ChangesTheMarkOfAPackagedSolution)
{
    ASSERT_EQ(DOV0_InitializeProductSpec(nullptr, 1), 1);
    EXPECT_EQ(traceOf(Function, Trace::Detail, [] { EXPECT_EQ(DOV0_UpdateProductSpec(0, "yes"), 1); }),
              (TraceLog{entering(0, "yes"), own(" =yes\n")}));
    EXPECT_EQ(queried(DOV0_PSF_PACKAGED_SOLUTION), "yes");
}

TEST(UpdateProductSpec, FreesTheOldTextBeforeItCopiesTheNew)
{
    ASSERT_EQ(DOV0_InitializeProductSpec(nullptr, 1), 1);
    const std::string freeing = message("DOV0_FreeStorage", "Freeing storage at address @%p\n",
                                        DOV0_QueryProductSpec(DOV0_PSF_NODE_TYPE));
    const TraceLog log = traceAt(Trace::Detail, [] { DOV0_UpdateProductSpec(DOV0_PSF_NODE_TYPE, "X"); });
    const char *copy = DOV0_QueryProductSpec(DOV0_PSF_NODE_TYPE);
    EXPECT_EQ(log,
              (TraceLog{entering(DOV0_PSF_NODE_TYPE, "X"), freeing,
                        message("DOV0_GetStorage", "Allocated storage at address @%p size %d\n", copy, 2),
                        own("NODE_TYPE=X\n")}));
}

TEST(UpdateProductSpec, KeepsAConstantAndLosesATextWhenThereIsNoStorage)
{
    ASSERT_EQ(DOV0_InitializeProductSpec(nullptr, 1), 1);
    const struct {
        int32_t index;
        const char *left;
    } cases[] = {
        {DOV0_PSF_NODE_TYPE, "(unset)"}, {DOV0_PSF_ENABLE_DPLOG, "Y"}, {DOV0_PSF_DP_TO_START, "(unset)"}};
    for (const auto &[index, left] : cases) {
        TraceLog log = {entering(index, "X")};
        if (index == DOV0_PSF_NODE_TYPE) {
            log.push_back(message("DOV0_FreeStorage", "Freeing storage at address @%p\n",
                                  DOV0_QueryProductSpec(index)));
        }
        log.push_back(message("DOV0_GetStorage", "*****Unable to obtain storage, size %d\n", 2));
        const auto update = [index = index] {
            withoutHeap([=] { EXPECT_EQ(DOV0_UpdateProductSpec(index, "X"), 0); });
        };
        EXPECT_EQ(traceAt(Trace::Error | Trace::Detail, update), log);
        EXPECT_EQ(queried(index), left);
    }
}

TEST(UpdateProductSpec, FlushesStandardOutputUnderTheDetailBit)
{
    ASSERT_EQ(DOV0_InitializeProductSpec(nullptr, 1), 1);
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    fflush(stdout);
    const int standardOutput = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    static char buffer[BUFSIZ];
    setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
    fputs("text", stdout);
    char received[8] = {};
    traceAt(Trace::All & ~Trace::Detail, [] { DOV0_UpdateProductSpec(DOV0_PSF_NODE_TYPE, "X"); });
    const ssize_t before = read(ends[0], received, sizeof received);
    traceAt(Trace::Detail, [] { DOV0_UpdateProductSpec(DOV0_PSF_NODE_TYPE, "X"); });
    const ssize_t after = read(ends[0], received, sizeof received);
    dup2(standardOutput, STDOUT_FILENO);
    setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    EXPECT_EQ(before, -1);
    EXPECT_EQ(after, 4);
    close(ends[0]);
    close(ends[1]);
    close(standardOutput);
}
