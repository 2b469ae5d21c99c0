// The example of an agent's start, with the sample files that come with it. DOVPSF and AGENT_START are the programs,
// SAMPLES is the folder of the samples.
#include "support/program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

const std::string Tool = DOVPSF;
const std::string Example = AGENT_START;
const std::string Samples = SAMPLES;

std::string compiledSample(const TemporaryFolder &folder, const std::string &sample)
{
    const ProgramResult result = runProgram(Tool + " compile " + Samples + "/product_spec_" + sample +
                                            ".txt -o " + folder.file(sample));
    EXPECT_EQ(result.status, 0) << result.errors;
    return folder.file(sample);
}

} // namespace

TEST(AgentStart, ShowsARefusalAStartAQueryAndAnUpdate)
{
    const TemporaryFolder folder;
    const std::string agent = compiledSample(folder, "agent");
    const ProgramResult result =
        runProgram("LC_ALL=C " + Example + " " + agent + " " + compiledSample(folder, "refused") + " north");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "A packaged solution that lacks required keywords:\n"
                             "    *****Unrecognized product specification keyword COLOR. Ignored\n"
                             "    *****Required product specifications not defined for non-OA product.\n"
                             "    *****Product specification initialization failed\n"
                             "The agent, instance north:\n"
                             "    Initializing Product Specification File with instance name <north>\n"
                             "    -----Product Specification File being used is " +
                                 agent +
                                 "-----\n"
                                 "    Rec 01 PRODUCT_CODE=OV\n"
                                 "    Rec 02 PRODUCT_NAME=Omnia Agent, site north\n"
                                 "    Rec 03 DP_TO_START=SNMP,FILE,HTTP\n"
                                 "    Rec 04 DCH_PORT_NUMBER=1920\n"
                                 "    Rec 05 ENABLE_SNMP_DISCOVERY=no\n"
                                 "    Rec 06 AGENT_VERSION=061000\n"
                                 "    The following Product Specification Parameters are in effect:\n"
                                 "    PRODUCT_CODE=OV\n"
                                 "    NODE_TYPE=OA\n"
                                 "    PRODUCT_NAME=Omnia Agent, site north\n"
                                 "    AGENT_AFF_NAME=OMNIA_AGENT\n"
                                 "    AGENT_AFF_STRING=DOV0610.AGT.0001.80000000000000000000000000\n"
                                 "    SUBNODE_AFF_NAME=OMNIA_AGENT_DATA\n"
                                 "    SUBNODE_AFF_STRING=DOV0610.SUB.0001.40000000000000000000000000\n"
                                 "    SUBNODE_AFF_FEAT=00100000000\n"
                                 "    REGISTER_OAGENT=Y\n"
                                 "    ENABLE_SNMP_TRAP=Y\n"
                                 "    ENABLE_SNMP_DISCOVERY=N\n"
                                 "    ENABLE_SNMP_MIBSTATUS=Y\n"
                                 "    ENABLE_DISCOVERY_DATA_UPDATE=Y\n"
                                 "    ENABLE_DPLOG=Y\n"
                                 "    ENABLE_METAFILE_COMMANDS=Y\n"
                                 "    MANAGED_NETWORK_MS=Y\n"
                                 "    DP_TO_START=7,2,3\n"
                                 "    METAFILES_TO_LOAD=Not Specified, default to No\n"
                                 "    SNMP_HOTLIST_TO_LOAD=Not Specified, default to No\n"
                                 "    SNMP_HOTLIST_TABLENAME=Not Specified, default to No\n"
                                 "    DCH_PORT_NUMBER=1920\n"
                                 "    DP_PORT_OFFSET=0\n"
                                 "    INITCNFG_FILE_NAME=DOVPCNFG_north\n"
                                 "    TRAPCNFG_FILE_NAME=TRAPCNFG_north\n"
                                 "    SNMPCOMM_FILE_NAME=DOVSCOMM_north\n"
                                 "    SNMPLIST_FILE_NAME=DOVSLIST_north\n"
                                 "    SNMPNAME_FILE_NAME=DOVSNAME_north\n"
                                 "    SNMPNETS_FILE_NAME=DOVSNETS_north\n"
                                 "    SNMPROUT_FILE_NAME=DOVSROUT_north\n"
                                 "    SNMPMIBI_FILE_NAME=DOVSMIBI_north\n"
                                 "    DOVATBLS_FILE_NAME=DOVATBLS_north\n"
                                 "    DOVPURLS_FILE_NAME=DOVPURLS_north\n"
                                 "    INSTANCE_NAME=north\n"
                                 "    ENABLE_CONSOLE_COMMANDS=Y\n"
                                 "    SUBNODE_APPEND_APIS=Not Specified, default to No\n"
                                 "    SUBNODE_APPEND_ASFS=Not Specified, default to No\n"
                                 "    SUBNODE_APPEND_FILE=Not Specified, default to No\n"
                                 "    SUBNODE_APPEND_HTTP=Not Specified, default to No\n"
                                 "    SUBNODE_APPEND_ODBC=Not Specified, default to No\n"
                                 "    SUBNODE_APPEND_POST=Not Specified, default to No\n"
                                 "    SUBNODE_APPEND_SCRP=Not Specified, default to No\n"
                                 "    SUBNODE_APPEND_SNMP=Not Specified, default to No\n"
                                 "    SUBNODE_APPEND_SOCK=Not Specified, default to No\n"
                                 "    ADD_SNMP_OBJECTINSTANCE=Not Specified, default to No\n"
                                 "    ENABLE_GLOBALIZATION=Y\n"
                                 "    AGENT_VERSION=061000\n"
                                 "    AGENT_LOCALE=en_US_POSIX\n"
                                 "    ENABLE_AUTOMATION_SERVER=Y\n"
                                 "    Product specification initialization successful\n"
                                 "Query:\n"
                                 "    DOV0_PSF_PRODUCT_NAME = Omnia Agent, site north\n"
                                 "    DOV0_PSF_DCH_PORT_NUMBER = 1920\n"
                                 "    DOV0_PSF_INITCNFG_FILE_NAME = DOVPCNFG_north\n"
                                 "    DOV0_PSF_PACKAGED_SOLUTION = (unset)\n"
                                 "Update:\n"
                                 "    DOV0_PSF_DCH_PORT_NUMBER = 2020\n"
                                 "    DOV0_PSF_ENABLE_DPLOG = (unset)\n");
}

TEST(AgentStart, StartsAPackagedSolutionToo)
{
    const TemporaryFolder folder;
    const ProgramResult result =
        runProgram("cd " + folder.path + " && " + Example + " " +
                   compiledSample(folder, "solution").substr(folder.path.size() + 1) + " " +
                   compiledSample(folder, "refused"));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, testing::HasSubstr("    DOV0_PSF_PACKAGED_SOLUTION = Y\n"));
}

TEST(AgentStart, FailsWhenAFileIsNotWhatItIsSaidToBe)
{
    const TemporaryFolder folder;
    const std::string agent = compiledSample(folder, "agent");
    const std::string refused = compiledSample(folder, "refused");
    ProgramResult result = runProgram(Example + " " + agent + " " + agent);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "agent_start: " + agent + " is not refused\n");
    result = runProgram(Example + " " + refused + " " + refused);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(runProgram(Example).status, 2);
}

TEST(SampleFiles, AreJudgedAsTheirCommentsSay)
{
    const TemporaryFolder folder;
    EXPECT_EQ(runProgram(Tool + " check " + compiledSample(folder, "agent")).status, 0);
    EXPECT_EQ(runProgram(Tool + " check " + compiledSample(folder, "solution")).status, 0);
    EXPECT_EQ(runProgram(Tool + " check " + compiledSample(folder, "refused")).status, 1);
}
