#include "prodspec/product_spec_model.h"
#include "support/product_spec_file.h"

#include <thread>

namespace {

constexpr char Function[] = "DOV0_QueryProductSpec";

std::string own(const std::string &text)
{
    return std::string(Function) + ": " + text;
}

TraceLog traceOfQuery(int32_t index)
{
    return traceAt(Trace::All, [=] { DOV0_QueryProductSpec(index); });
}

} // namespace

TEST(QueryProductSpec, RefusesIndexesOutsideTheTable)
{
    for (const bool initialized : {false, true}) {
        ASSERT_TRUE(!initialized || DOV0_InitializeProductSpec(nullptr, 1) == 1);
        for (const int32_t index : {-1, 50, 255, 256, INT32_MIN, INT32_MAX}) {
            const std::string text =
                own("*****Input Product Specification " + std::to_string(index) + " is invalid\n");
            EXPECT_EQ(DOV0_QueryProductSpec(index), nullptr);
            EXPECT_EQ(traceOfQuery(index), (TraceLog{entry(Function), text, leave(Function)}));
            EXPECT_EQ(bitsThatShow(text, [=] { DOV0_QueryProductSpec(index); }), Trace::Error);
        }
    }
}

TEST(QueryProductSpec, RefusesEveryIndexBeforeInitialization)
{
    for (int32_t index = 0; index <= 49; ++index) {
        const bool instanceName = index == DOV0_PSF_INSTANCE_NAME;
        const std::string text = instanceName ? own("Instance Name specification not yet initialized\n")
                                              : own("*****Logic error. Product Specification " +
                                                    std::to_string(index) + " not yet initialized\n");
        EXPECT_EQ(DOV0_QueryProductSpec(index), nullptr);
        EXPECT_EQ(traceOfQuery(index), (TraceLog{entry(Function), text, leave(Function)}));
        EXPECT_EQ(bitsThatShow(text, [=] { DOV0_QueryProductSpec(index); }),
                  instanceName ? Trace::Detail : Trace::Error);
    }
}

TEST(QueryProductSpec, RefusesAfterAFailedInitialization)
{
    const ProductSpecFile file({"PRODUCT_CODE=OV", "AGENT_AFF_NAME=unknown"});
    ASSERT_EQ(DOV0_InitializeProductSpec(nullptr, 0), 0);
    EXPECT_EQ(DOV0_QueryProductSpec(DOV0_PSF_PRODUCT_CODE), nullptr);
    EXPECT_EQ(traceAt(Trace::Error, [] { DOV0_QueryProductSpec(DOV0_PSF_PRODUCT_CODE); }),
              (TraceLog{own("*****Logic error. Product Specification 1 not yet initialized\n")}));
}

TEST(QueryProductSpec, GivesEveryValueWithItsTrace)
{
    ProductSpecModel model;
    model.commonDataProvider = true;
    model.instanceName = "inst1";
    model.level = 0;
    model.run({});
    ASSERT_EQ(DOV0_InitializeProductSpec("inst1", 1), 1);
    for (int32_t index = 0; index <= 49; ++index) {
        const char *value = DOV0_QueryProductSpec(index);
        const std::optional<std::string> expected = model.value(index);
        ASSERT_EQ(value != nullptr ? std::optional<std::string>(value) : std::nullopt, expected) << index;
        std::string text = own("Returning NULL for Product Specification " + std::to_string(index) + "\n");
        if (expected) {
            text = own("Returning <" + *expected + "> for Product Specification " + std::to_string(index) +
                       "\n");
        } else if (index == DOV0_PSF_PACKAGED_SOLUTION) {
            text = own("Returning NULL for DOV2_PACKAGED_SOLUTION query\n");
        }
        EXPECT_EQ(traceOfQuery(index), (TraceLog{entry(Function), text, leave(Function, value)}));
        EXPECT_EQ(bitsThatShow(text, [=] { DOV0_QueryProductSpec(index); }), Trace::Detail);
    }
}

TEST(QueryProductSpec, TellsAPackagedSolution)
{
    const ProductSpecFile file({"PRODUCT_CODE=MR", "NODE_TYPE=RELAY", "PRODUCT_NAME=Mail Relay",
                                "AGENT_AFF_NAME=MAIL_RELAY", "SUBNODE_AFF_NAME=MAIL_RELAY_DATA",
                                "DP_TO_START=SNMP", "DCH_PORT_NUMBER=2020", "DP_PORT_OFFSET=5",
                                "INITCNFG_FILE_NAME=MRCNFG", "DOVATBLS_FILE_NAME=MRATBLS"});
    ASSERT_EQ(DOV0_InitializeProductSpec(nullptr, 0), 1);
    EXPECT_STREQ(DOV0_QueryProductSpec(DOV0_PSF_PACKAGED_SOLUTION), "Y");
    EXPECT_EQ(traceAt(Trace::Detail, [] { DOV0_QueryProductSpec(DOV0_PSF_PACKAGED_SOLUTION); }),
              (TraceLog{own("Returning <Y> for Product Specification 0\n")}));
}

TEST(QueryProductSpec, AnswersSeveralThreadsAtOnce)
{
    ASSERT_EQ(DOV0_InitializeProductSpec(nullptr, 1), 1);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int round = 0; round < 200; ++round) {
                EXPECT_STREQ(DOV0_QueryProductSpec(DOV0_PSF_DCH_PORT_NUMBER), "1919");
                DOV0_SetDPstartMode(round);
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}
