#include "prodspec/product_spec_model.h"
#include "support/heap_faults.h"
#include "support/product_spec_file.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <sys/prctl.h>
#include <sys/stat.h>

namespace {

constexpr char Function[] = "DOV0_InitializeProductSpec";

const std::vector<std::string> Agent = {"PRODUCT_CODE=OV"};

// A packaged solution with everything that it must say.
const std::vector<std::string> Solution = {
    "PRODUCT_CODE=MR",
    "NODE_TYPE=RELAY",
    "PRODUCT_NAME=Mail Relay",
    "AGENT_AFF_NAME=MAIL_RELAY",
    "SUBNODE_AFF_NAME=MAIL_RELAY_DATA",
    "DP_TO_START=SNMP,FILE",
    "DCH_PORT_NUMBER=2020",
    "DP_PORT_OFFSET=5",
    "INITCNFG_FILE_NAME=MRCNFG",
    "DOVATBLS_FILE_NAME=MRATBLS",
};

std::vector<std::string> operator+(std::vector<std::string> records, const std::vector<std::string> &more)
{
    records.insert(records.end(), more.begin(), more.end());
    return records;
}

std::string own(const std::string &text)
{
    return std::string(Function) + ": " + text;
}

int32_t initialize(const char *instanceName = nullptr, int32_t commonDataProvider = 0)
{
    return DOV0_InitializeProductSpec(instanceName, commonDataProvider);
}

TraceLog traceOfInitialize(uint32_t level, const char *instanceName = nullptr, int32_t commonDataProvider = 0)
{
    return traceOf(Function, level, [=] { initialize(instanceName, commonDataProvider); });
}

std::string queried(int32_t index)
{
    const char *value = DOV0_QueryProductSpec(index);
    return value != nullptr ? value : "(unset)";
}

std::string uLocaleMessage()
{
    return message(Function, "Assigned uLocale @%p\n", static_cast<const void *>(uloc_getDefault()));
}

// What a failed initialisation traces from its entry to its end, with these messages of its own in between.
TraceLog failure(const TraceLog &messages)
{
    TraceLog log = {entry(Function), uLocaleMessage()};
    log.insert(log.end(), messages.begin(), messages.end());
    log.push_back(leave(Function, intptr_t{0}));
    return log;
}

std::string fileMessage(const ProductSpecFile &file)
{
    return own("-----Product Specification File being used is " + file.path() + "-----\n");
}

int openDescriptors()
{
    int count = 0;
    DIR *folder = opendir("/proc/self/fd");
    while (readdir(folder) != nullptr) {
        ++count;
    }
    closedir(folder);
    return count;
}

const TraceLog AgentComparison = {
    own("Comparing affinity #0 <OMNIA_AGENT> against <OMNIA_AGENT>\n"),
    own("Comparing subnode affinity #0 <OMNIA_AGENT> against <OMNIA_AGENT_DATA>\n"),
    own("Comparing subnode affinity #1 <OMNIA_AGENT_DATA> against <OMNIA_AGENT_DATA>\n"),
};

// The report on an agent that sets nothing but its code.
TraceLog agentReport(const std::string &ending = "")
{
    std::vector<std::string> lines = {
        "The following Product Specification Parameters are in effect:",
        "PRODUCT_CODE=OV",
        "NODE_TYPE=OA",
        "PRODUCT_NAME=Omnia Agent",
        "AGENT_AFF_NAME=OMNIA_AGENT",
        "AGENT_AFF_STRING=DOV0610.AGT.0001.80000000000000000000000000",
        "SUBNODE_AFF_NAME=OMNIA_AGENT_DATA",
        "SUBNODE_AFF_STRING=DOV0610.SUB.0001.40000000000000000000000000",
        "SUBNODE_AFF_FEAT=00100000000",
        "REGISTER_OAGENT=Y",
        "ENABLE_SNMP_TRAP=Y",
        "ENABLE_SNMP_DISCOVERY=Y",
        "ENABLE_SNMP_MIBSTATUS=Y",
        "ENABLE_DISCOVERY_DATA_UPDATE=Y",
        "ENABLE_DPLOG=Y",
        "ENABLE_METAFILE_COMMANDS=Y",
        "MANAGED_NETWORK_MS=Y",
        "DP_TO_START=Not Specified, default to No",
        "METAFILES_TO_LOAD=Not Specified, default to No",
        "SNMP_HOTLIST_TO_LOAD=Not Specified, default to No",
        "SNMP_HOTLIST_TABLENAME=Not Specified, default to No",
        "DCH_PORT_NUMBER=1919",
        "DP_PORT_OFFSET=0",
        "INITCNFG_FILE_NAME=DOVPCNFG" + ending,
        "TRAPCNFG_FILE_NAME=TRAPCNFG" + ending,
        "SNMPCOMM_FILE_NAME=DOVSCOMM" + ending,
        "SNMPLIST_FILE_NAME=DOVSLIST" + ending,
        "SNMPNAME_FILE_NAME=DOVSNAME" + ending,
        "SNMPNETS_FILE_NAME=DOVSNETS" + ending,
        "SNMPROUT_FILE_NAME=DOVSROUT" + ending,
        "SNMPMIBI_FILE_NAME=DOVSMIBI" + ending,
        "DOVATBLS_FILE_NAME=DOVATBLS" + ending,
        "DOVPURLS_FILE_NAME=DOVPURLS" + ending,
        "INSTANCE_NAME=" + (ending.empty() ? "Not Specified, default to No" : ending.substr(1)),
        "ENABLE_CONSOLE_COMMANDS=Y",
        "SUBNODE_APPEND_APIS=Not Specified, default to No",
        "SUBNODE_APPEND_ASFS=Not Specified, default to No",
        "SUBNODE_APPEND_FILE=Not Specified, default to No",
        "SUBNODE_APPEND_HTTP=Not Specified, default to No",
        "SUBNODE_APPEND_ODBC=Not Specified, default to No",
        "SUBNODE_APPEND_POST=Not Specified, default to No",
        "SUBNODE_APPEND_SCRP=Not Specified, default to No",
        "SUBNODE_APPEND_SNMP=Not Specified, default to No",
        "SUBNODE_APPEND_SOCK=Not Specified, default to No",
        "ADD_SNMP_OBJECTINSTANCE=Not Specified, default to No",
        "ENABLE_GLOBALIZATION=Y",
        "AGENT_VERSION=Not Specified, default to No",
        std::string("AGENT_LOCALE=") + uloc_getDefault(),
        "ENABLE_AUTOMATION_SERVER=Y",
    };
    TraceLog log;
    for (const std::string &line : lines) {
        log.push_back(own(line + "\n"));
    }
    return log;
}

const TraceLog AgentSettings = {
    own("Setting DOV2_SUBNODE_AFF_FEAT to <00100000000>\n"),
    own("Setting DOV2_ENABLE_CONSOLE_COMMANDS to <Y>\n"),
    own("Setting DOV2_ENABLE_AUTOMATION_SERVER to <Y>\n"),
};

const std::string LocaleSetting =
    own(std::string("Setting DOV2_AGENT_LOCALE to <") + uloc_getDefault() + ">\n");

bool acceptsVersion(const std::string &version)
{
    const ProductSpecFile file({"PRODUCT_CODE=OV", "DP_TO_START=SNMP", "AGENT_VERSION=" + version});
    return DOV0_InitializeProductSpec(nullptr, 0) == 1 && queried(DOV0_PSF_AGENT_VERSION) == version;
}

} // namespace

TEST(InitializeProductSpec, TakesEachDigitInAVersion)
{
    for (const char *version : {"012345", "678900", "999999"}) { // the table is made once in a process
        EXPECT_EXIT(std::_Exit(acceptsVersion(version) ? 0 : 1), testing::ExitedWithCode(0), "") << version;
    }
}

TEST(InitializeProductSpec, TracesTheAgentsOwnFileFromEntryToExit)
{
    const ProductSpecFile file(Agent);
    const TraceLog expected =
        TraceLog{entry(Function), uLocaleMessage(), fileMessage(file), own("Rec 01 PRODUCT_CODE=OV\n")} +
        AgentSettings + TraceLog{LocaleSetting} + AgentComparison + agentReport() +
        TraceLog{own("Product specification initialization successful\n"), leave(Function, intptr_t{1})};
    EXPECT_EQ(traceOfInitialize(Trace::All), expected);
}

TEST(InitializeProductSpec, TracesTheCommonDataProviderFromEntryToExit)
{
    const TraceLog expected =
        TraceLog{entry(Function), uLocaleMessage(),
                 own("Initializing Product Specification File with instance name <inst1>\n"),
                 own("Initialized PRODUCT_CODE=OV for Common Data Provider\n")} +
        AgentSettings + TraceLog{own("Setting DOV2_INSTANCE_NAME to <inst1>\n"), LocaleSetting} +
        AgentComparison + agentReport("_inst1") +
        TraceLog{own("Product specification initialization successful\n"), leave(Function, intptr_t{1})};
    EXPECT_EQ(traceOfInitialize(Trace::All, "inst1", 1), expected);
}

TEST(InitializeProductSpec, TracesAPackagedSolutionFromEntryToExit)
{
    const ProductSpecFile file(Solution + std::vector<std::string>{"ENABLE_DPLOG=no thanks"});
    ProductSpecModel model;
    model.instanceName = "inst1";
    model.fileName = file.path();
    std::vector<std::string> pieces;
    for (const std::string &record : Solution) {
        pieces.push_back(record + "\n");
    }
    pieces.emplace_back("ENABLE_DPLOG=no thanks\n");
    model.run(pieces);
    const TraceLog log = withoutAddresses(traceOfInitialize(Trace::All, "inst1"));
    EXPECT_EQ(log, model.log);

    // What matters in it, in words.
    const auto contains = [&](const std::string &text) { return testing::Contains(own(text)); };
    EXPECT_THAT(log, contains("Copied 7 to pDPindex @PTR <7,>\n"));
    EXPECT_THAT(log, contains("Copied 2 to pDPindex @PTR <7,2,>\n"));
    EXPECT_THAT(log, contains("Clearing one byte from pDPindex @PTR <7,2,> + 3\n"));
    EXPECT_THAT(log, contains("ProductSpecValueArray <7,2>\n"));
    EXPECT_THAT(log, contains("Comparing affinity #2 <MAIL_RELAY> against <MAIL_RELAY>\n"));
    EXPECT_THAT(log, contains("INSTANCE_NAME=Not Specified, default to No\n"));
    EXPECT_THAT(log, contains("SNMPLIST_FILE_NAME=Not Specified, default to No\n"));
    EXPECT_THAT(log, contains("SUBNODE_AFF_FEAT=00000000000\n"));
    EXPECT_THAT(log, contains("ENABLE_DPLOG=N\n"));
    EXPECT_THAT(log, contains("ENABLE_SNMP_TRAP=Not Specified, default to No\n"));
    EXPECT_THAT(log, contains("ENABLE_CONSOLE_COMMANDS=Not Specified, default to Yes\n"));
    EXPECT_THAT(log, contains("ENABLE_GLOBALIZATION=Not Specified, default to Yes\n"));
    EXPECT_THAT(log, contains("ENABLE_AUTOMATION_SERVER=Not Specified, default to Yes\n"));

    EXPECT_EQ(queried(DOV0_PSF_PACKAGED_SOLUTION), "Y");
    EXPECT_EQ(queried(DOV0_PSF_ENABLE_DPLOG), "(unset)");
    EXPECT_EQ(queried(DOV0_PSF_ENABLE_GLOBALIZATION), "Y");
}

TEST(InitializeProductSpec, NestsTheServicesThatItUses)
{
    const ProductSpecFile file({"product_code=ov", "DP_TO_START=snmp", "AGENT_VERSION=061000"});
    TraceLog entries;
    for (const std::string &line : traceAt(Trace::Flow, [] { initialize(); })) {
        if (line.size() > 6 && line.compare(line.size() - 6, 6, " entry") == 0) {
            entries.push_back(line.substr(0, line.size() - 6));
        }
    }
    TraceLog expected = {"DOV0_InitializeProductSpec", "DOV0_GetEnv", "DOV0_GetEnv",
                         // the name of the file, with the work directory settled on the way
                         "DOV0_ConstructFullyQualifiedName", "DOV0_GetEnv", "DOV0_GetStorage",
                         "DOV0_FreeStorage",
                         // three records
                         "DOV0_RemoveCRandLF", "DOV0_ConvertStringToUpper", "DOV0_GetStorage", //
                         "DOV0_RemoveCRandLF", "DOV0_ConvertStringToUpper", "DOV0_GetStorage", //
                         "DOV0_RemoveCRandLF", "DOV0_ConvertStringToUpper", "isNumeric", "DOV0_GetStorage",
                         "DOV0_ConvertStringToUpper"}; // PRODUCT_CODE
    for (int copies = 0; copies < 5 + 2 + 10 + 1; ++copies) {
        expected.emplace_back("DOV0_GetStorage"); // the agent's defaults
    }
    expected = expected +
               TraceLog{"DOV0_ConvertStringToUpper", "DOV0_GetStorage", "DOV0_strtok",     "DOV0_strtok",
                        "DOV0_FreeStorage",          "DOV0_GetStorage", "DOV0_GetStorage", "DOV0_CloseFile"};
    EXPECT_EQ(entries, expected);
}

TEST(InitializeProductSpec, AsksWhetherAVersionIsAllFigures)
{
    const ProductSpecFile file({"PRODUCT_CODE=OV", "DP_TO_START=SNMP", "AGENT_VERSION=06100x",
                                "AGENT_VERSION=6", "AGENT_VERSION=061000"});
    EXPECT_EQ(
        from("isNumeric", traceAt(Trace::Flow, [] { initialize(); })),
        (TraceLog{entry("isNumeric"), leave("isNumeric", intptr_t{0}), // the second is too short to be asked
                  entry("isNumeric"), leave("isNumeric", 1)}));
}

TEST(InitializeProductSpec, ConvertsTheProductCodeWhateverItHolds)
{
    for (const char *const record : {"PRODUCT_CODE=NO", "PRODUCT_CODE=xy"}) {
        const ProductSpecFile file({record});
        const TraceLog log =
            traceAt(Trace::Flow, [] { initialize(); }); // fails, as other keywords are required
        EXPECT_EQ(std::count(log.begin(), log.end(), entry("DOV0_ConvertStringToUpper")), 2) << record;
    }
}

TEST(InitializeProductSpec, DoesNothingASecondTime)
{
    ASSERT_EQ(initialize(nullptr, 1), 1);
    EXPECT_EQ(traceAt(Trace::All, [] { EXPECT_EQ(initialize("other", 0), 1); }),
              (TraceLog{entry(Function), own("Product specification already initialized\n"),
                        leave(Function, intptr_t{1})}));
    EXPECT_EQ(bitsThatShow(own("Product specification already initialized\n"), [] { initialize(); }),
              Trace::Detail);
    EXPECT_EQ(queried(DOV0_PSF_INSTANCE_NAME), "(unset)");
}

// Under which bits: whole runs at a single level each.

TEST(InitializeProductSpec, ShowsTheReportUnderTheConfigurationBit)
{
    const ProductSpecFile file(Agent);
    EXPECT_EQ(traceOfInitialize(Trace::Configuration),
              (TraceLog{fileMessage(file), own("Rec 01 PRODUCT_CODE=OV\n")} + agentReport() +
               TraceLog{own("Product specification initialization successful\n")}));
}

TEST(InitializeProductSpec, ShowsSettingsAndComparisonsWithoutTheConfigurationBit)
{
    const ProductSpecFile file(Agent);
    EXPECT_EQ(traceOfInitialize(Trace::All & ~Trace::Configuration),
              (TraceLog{entry(Function), uLocaleMessage()} + AgentSettings + TraceLog{LocaleSetting} +
               AgentComparison + TraceLog{leave(Function, intptr_t{1})}));
}

TEST(InitializeProductSpec, ShowsNothingElseUnderTheOtherBits)
{
    const ProductSpecFile file(Agent);
    EXPECT_EQ(traceOfInitialize(Trace::All & ~(Trace::Configuration | Trace::Detail | Trace::Flow)),
              TraceLog{});
}

TEST(InitializeProductSpec, NeedsBothBitsForTheReportOnTheCommonDataProvider)
{
    inProcessOfItsOwn([] {
        EXPECT_EQ(traceOfInitialize(Trace::Configuration, nullptr, 1),
                  (TraceLog{own("Product specification initialization successful\n")}));
    });
    inProcessOfItsOwn([] {
        EXPECT_EQ(traceOfInitialize(Trace::Detail, nullptr, 1),
                  (TraceLog{uLocaleMessage(), own("Initialized PRODUCT_CODE=OV for Common Data Provider\n")} +
                   AgentSettings + TraceLog{LocaleSetting} + AgentComparison));
    });
    inProcessOfItsOwn([] {
        EXPECT_EQ(traceOfInitialize(Trace::Detail | Trace::Configuration, nullptr, 1),
                  (TraceLog{uLocaleMessage(), own("Initialized PRODUCT_CODE=OV for Common Data Provider\n")} +
                   AgentSettings + TraceLog{LocaleSetting} + AgentComparison + agentReport() +
                   TraceLog{own("Product specification initialization successful\n")}));
    });
}

TEST(InitializeProductSpec, ShowsEveryMessageOfAFailureUnderItsBitOnly)
{
    const ProductSpecFile file({"PRODUCT_CODE=OV", "no record", "NO_KEYWORD=1", "AGENT_VERSION=1",
                                "DP_TO_START=NODP,xyz", "AGENT_AFF_NAME=A", "SUBNODE_AFF_NAME=B",
                                "SUBNODE_AFF_FEAT=1"});
    const auto bits = [](const std::string &text) {
        return bitsThatShow(own(text), [] { initialize("inst1"); });
    };
    for (const std::string &text :
         {std::string("Initializing Product Specification File with instance name <inst1>\n"),
          "-----Product Specification File being used is " + file.path() + "-----\n",
          std::string("Rec 01 PRODUCT_CODE=OV\n"),
          std::string("*****Product Specification syntax error. Ignored\n"),
          std::string("*****Unrecognized product specification keyword NO_KEYWORD. Ignored\n"),
          "*****ERROR: PSF file " + file.path() +
              " specifies invalid AGENT_VERSION=1; value must be 6 digits - padded w/ leading/trailing "
              "zeroes , as "
              "needed\n",
          std::string(
              "*****Error: Affinity feature specification length 1 error. Must be AFF_FEATURE_BYTES\n"),
          std::string("*****Error: Agent affinity name invalid <A>\n"),
          std::string("*****Error: Subnode affinity name invalid <B>\n"),
          std::string("*****Product specification initialization failed\n")}) {
        EXPECT_EQ(bits(text), Trace::Configuration) << text;
    }
    for (const char *text :
         {"Setting DOV2_ENABLE_CONSOLE_COMMANDS to <Y>\n", "Setting DOV2_ENABLE_AUTOMATION_SERVER to <Y>\n",
          "Setting DOV2_INSTANCE_NAME to <inst1>\n", "ProductSpecValueArray <9>\n",
          "Comparing affinity #0 <OMNIA_AGENT> against <A>\n",
          "Comparing subnode affinity #0 <OMNIA_AGENT> against <B>\n"}) {
        EXPECT_EQ(bits(text), Trace::Detail) << text;
    }
    EXPECT_EQ(bitsThatShow(uLocaleMessage(), [] { initialize(); }), Trace::Detail);
    EXPECT_EQ(bitsThatShow(LocaleSetting, [] { initialize(); }), Trace::Detail);
    for (const char *text :
         {"NODP was specified in DP_TO_START\n", "*****Error: Invalid DP [XYZ], ignored\n"}) {
        EXPECT_EQ(bits(text), Trace::Error) << text;
    }
}

// Failures, each with its whole trace.

TEST(InitializeProductSpec, ReportsAFileThatCannotBeOpened)
{
    setenv("DOV_PRODSPEC_PATH", "/nonexistent/", 1);
    setenv("DOV_PRODSPEC_NAME", "SPEC", 1);
    const std::string text =
        std::string("*****ERROR: Product Specification File /nonexistent/SPEC open failed, "
                    "ErrorText <") +
        std::strerror(ENOENT) + ">\n";
    EXPECT_EQ(traceOfInitialize(Trace::All), failure({own(text)}));
    EXPECT_EQ(bitsThatShow(own(text), [] { EXPECT_EQ(initialize(), 0); }), Trace::Configuration);
}

TEST(InitializeProductSpec, ReportsAFileThatMayNotBeRead)
{
    const ProductSpecFile file(Agent);
    ASSERT_EQ(chmod(file.path().c_str(), 0), 0);
    ASSERT_EQ(chmod(file.path().substr(0, file.path().rfind('/')).c_str(), 0755), 0);
    const uid_t user = geteuid();
    ASSERT_TRUE(user != 0 || seteuid(65534) == 0); // root may read everything
    const TraceLog log = traceOfInitialize(Trace::All);
    ASSERT_EQ(seteuid(user), 0);
    prctl(PR_SET_DUMPABLE, 1); // a leak checker wants to look at the process again
    EXPECT_EQ(log, failure({own("*****ERROR: Product Specification File " + file.path() +
                                " open failed, ErrorText <" + std::strerror(EACCES) + ">\n")}));
}

TEST(InitializeProductSpec, ReportsThatNoFileNameCouldBeBuilt)
{
    const ProductSpecFile file(Agent);
    uloc_getDefault(); // its first use needs the heap
    const std::string text =
        own(std::string("*****ERROR: Product Specification File open failed, ErrorText <") +
            std::strerror(ENOMEM) + ">\n");
    const auto call = [] { withoutHeap([] { initialize(); }); };
    EXPECT_EQ(traceOf(Function, Trace::All, call), failure({text}));
    EXPECT_EQ(traceOf(Function, Trace::Configuration, call), TraceLog{text});
    EXPECT_EQ(traceOf(Function, Trace::All & ~(Trace::Configuration | Trace::Flow | Trace::Detail), call),
              TraceLog{});
}

TEST(InitializeProductSpec, TakesTheDefaultNamesWhenTheEnvironmentHasNone)
{
    unsetenv("DOV_PRODSPEC_PATH");
    setenv("DOV_PRODSPEC_NAME", "", 1); // an empty one counts as unset
    setenv("DOV_WORK_PATH", "/nonexistent", 1);
    EXPECT_EQ(
        traceOfInitialize(Trace::All),
        failure({own(std::string("*****ERROR: Product Specification File /nonexistent/DOVPSF open failed, "
                                 "ErrorText <") +
                     std::strerror(ENOENT) + ">\n")}));
}

TEST(InitializeProductSpec, RefusesAFirstLineThatIsNoFileID)
{
    const std::string records = enciphered("PRODUCT_CODE=OV\n", 1);
    for (const std::string &line : {std::string(), std::string("\n"), std::string("//PS\n"),
                                    std::string(" //PSF\n"), std::string("//psf\n"), std::string("//PS")}) {
        const ProductSpecFile file = ProductSpecFile::withContents(line.empty() ? line : line + records);
        const std::string shown = line == "//PS" ? line + records : line;
        EXPECT_EQ(traceOfInitialize(Trace::All),
                  failure({own("*****ERROR: Invalid product specification file ID <" + shown + ">\n")}));
        EXPECT_EQ(bitsThatShow(own("*****ERROR: Invalid product specification file ID <" + shown + ">\n"),
                               [] { initialize(); }),
                  Trace::Configuration);
    }
}

TEST(InitializeProductSpec, RefusesAFirstLineByItsFirst511Bytes)
{
    const ProductSpecFile file = ProductSpecFile::withContents(std::string(100000, 'x'));
    EXPECT_EQ(traceOfInitialize(Trace::All),
              failure({own("*****ERROR: Invalid product specification file ID <" + std::string(511, 'x') +
                           ">\n")}));
}

TEST(InitializeProductSpec, RefusesAFolderAsAFileWithoutAFirstLine)
{
    setenv("DOV_PRODSPEC_PATH", "/", 1);
    setenv("DOV_PRODSPEC_NAME", "tmp", 1);
    const int before = openDescriptors();
    EXPECT_EQ(traceOfInitialize(Trace::All),
              failure({own("*****ERROR: Invalid product specification file ID <>\n")}));
    EXPECT_EQ(openDescriptors(), before);
}

TEST(InitializeProductSpec, RefusesAFileWithoutAProductCode)
{
    const ProductSpecFile file({"NODE_TYPE=X", "PRODUCT_CODE=", "PRODUCT_CODE =OV"});
    EXPECT_EQ(traceOfInitialize(Trace::All),
              failure({fileMessage(file), own("Rec 01 NODE_TYPE=X\n"), own("Rec 02 PRODUCT_CODE=\n"),
                       own("Rec 03 PRODUCT_CODE =OV\n"),
                       own("*****Unrecognized product specification keyword PRODUCT_CODE . Ignored\n"),
                       own("*****Error: Product Code not specified\n"),
                       own("*****Product specification initialization failed\n")}));
}

TEST(InitializeProductSpec, RefusesAPackagedSolutionThatLacksAnyRequiredKeyword)
{
    for (size_t missing = 1; missing < Solution.size(); ++missing) {
        std::vector<std::string> records = Solution;
        records.erase(records.begin() + static_cast<ptrdiff_t>(missing));
        const ProductSpecFile file(records);
        TraceLog messages = {fileMessage(file)};
        for (size_t i = 0; i < records.size(); ++i) {
            messages.push_back(own("Rec 0" + std::to_string(i + 1) + " " + records[i] + "\n"));
        }
        messages.push_back(own("*****Required product specifications not defined for non-OA product.\n"));
        messages.push_back(own("*****Product specification initialization failed\n"));
        EXPECT_EQ(traceOfInitialize(Trace::All), failure(messages)) << Solution[missing];
    }
}

TEST(InitializeProductSpec, RefusesAPackagedSolutionUnderTheAgentsFileName)
{
    const ProductSpecFile file(Solution);
    const std::string folder = file.path().substr(0, file.path().rfind('/'));
    ASSERT_EQ(symlink("SPEC", (folder + "/DOVPSF").c_str()), 0);
    setenv("DOV_PRODSPEC_NAME", "DOVPSF", 1);
    const std::string text =
        own("*****Error: Override OA product specification file with packaged solution not allowed\n");
    EXPECT_THAT(traceOfInitialize(Trace::All), testing::Contains(text));
    EXPECT_EQ(bitsThatShow(text, [] { EXPECT_EQ(initialize(), 0); }), Trace::Configuration);

    // The same name by default is none of the environment's.
    unsetenv("DOV_PRODSPEC_NAME");
    EXPECT_EQ(initialize(), 1);
    unlink((folder + "/DOVPSF").c_str());
}

TEST(InitializeProductSpec, KeepsNothingOfAFailedAttempt)
{
    {
        const ProductSpecFile file(Solution + std::vector<std::string>{"SUBNODE_AFF_FEAT=1"});
        EXPECT_EQ(initialize(), 0); // after it was taken for a packaged solution
    }
    const ProductSpecFile file(Agent);
    EXPECT_EQ(initialize(), 1);
    EXPECT_EQ(queried(DOV0_PSF_PACKAGED_SOLUTION), "(unset)");
    EXPECT_EQ(queried(DOV0_PSF_PRODUCT_NAME), "Omnia Agent");
    EXPECT_EQ(queried(DOV0_PSF_DP_TO_START), "(unset)");
    EXPECT_EQ(queried(DOV0_PSF_SUBNODE_AFF_FEAT), "00100000000");
}

TEST(InitializeProductSpec, LetsTheAgentNameItsOwnFile)
{
    const ProductSpecFile file(Agent);
    const std::string folder = file.path().substr(0, file.path().rfind('/'));
    ASSERT_EQ(symlink("SPEC", (folder + "/DOVPSF").c_str()), 0);
    setenv("DOV_PRODSPEC_NAME", "DOVPSF", 1);
    EXPECT_EQ(initialize(), 1);
    unlink((folder + "/DOVPSF").c_str());
}

TEST(InitializeProductSpec, LooksForEverythingThatIsWrongWithTheTable)
{
    const ProductSpecFile file({"PRODUCT_CODE=OV", "SUBNODE_AFF_FEAT=0123456789",
                                "AGENT_AFF_NAME=omnia_agent", "SUBNODE_AFF_NAME=NO"});
    EXPECT_EQ(
        traceOfInitialize(Trace::Configuration),
        (TraceLog{
            fileMessage(file), own("Rec 01 PRODUCT_CODE=OV\n"), own("Rec 02 SUBNODE_AFF_FEAT=0123456789\n"),
            own("Rec 03 AGENT_AFF_NAME=omnia_agent\n"), own("Rec 04 SUBNODE_AFF_NAME=NO\n"),
            own("*****Error: Affinity feature specification length 10 error. Must be AFF_FEATURE_BYTES\n"),
            own("*****Error: Agent affinity name invalid <omnia_agent>\n"),
            own("*****Error: Subnode affinity name invalid <N>\n"),
            own("*****Product specification initialization failed\n")}));
    EXPECT_EQ(DOV0_QueryProductSpec(DOV0_PSF_NODE_TYPE), nullptr);
}

TEST(InitializeProductSpec, ComparesEveryRowWithAnUnknownName)
{
    const ProductSpecFile file({"PRODUCT_CODE=OV", "AGENT_AFF_NAME=unknown"});
    TraceLog expected;
    for (size_t row = 0; row < AffinityNames.size(); ++row) {
        expected.push_back(own("Comparing affinity #" + std::to_string(row) + " <" + AffinityNames[row] +
                               "> against <unknown>\n"));
    }
    TraceLog found;
    for (const std::string &line : traceOfInitialize(Trace::Detail)) {
        if (line.find("Comparing affinity") != std::string::npos) {
            found.push_back(line);
        }
    }
    EXPECT_EQ(found, expected);
}

TEST(InitializeProductSpec, KnowsEachProductOfTheAffinityTable)
{
    for (const auto &[name, string] : AffinityStrings) {
        EXPECT_EQ(string.size(), 43U) << name;
        const ProductSpecFile file({"PRODUCT_CODE=OV", "AGENT_AFF_NAME=" + name, "SUBNODE_AFF_NAME=" + name});
        inProcessOfItsOwn([&, string = string] {
            EXPECT_EQ(initialize(), 1);
            EXPECT_EQ(queried(DOV0_PSF_AGENT_AFF_STRING), string);
            EXPECT_EQ(queried(DOV0_PSF_SUBNODE_AFF_STRING), string);
        });
    }
}

TEST(InitializeProductSpec, MayBeRepeatedAfterAFailure)
{
    const ProductSpecFile file({"PRODUCT_CODE=MR", "NODE_TYPE=X", "ENABLE_DPLOG=Yes"});
    const int before = openDescriptors();
    for (int attempt = 0; attempt < 3; ++attempt) {
        EXPECT_EQ(initialize(), 0);
        EXPECT_EQ(queried(DOV0_PSF_NODE_TYPE), "(unset)");
    }
    file.write("//PSF\n" + enciphered("PRODUCT_CODE=OV\n", 1));
    EXPECT_EQ(initialize(), 1);
    EXPECT_EQ(queried(DOV0_PSF_NODE_TYPE), "OA"); // nothing is left of the failed calls
    EXPECT_EQ(queried(DOV0_PSF_ENABLE_DPLOG), "Y");
    EXPECT_EQ(openDescriptors(), before);
}

TEST(InitializeProductSpec, ClosesTheFileLast)
{
    const ProductSpecFile file(Agent);
    const TraceLog log = traceAt(Trace::All, [] { initialize(); });
    ASSERT_GE(log.size(), 5U);
    EXPECT_EQ(log[log.size() - 1], leave(Function, intptr_t{1}));
    EXPECT_EQ(log[log.size() - 2], leave("DOV0_CloseFile"));
    EXPECT_EQ(log[log.size() - 4], entry("DOV0_CloseFile"));
    EXPECT_EQ(log[log.size() - 5], own("Product specification initialization successful\n"));
}

// Values.

TEST(InitializeProductSpec, FillsTheAgentsDefaults)
{
    ASSERT_EQ(initialize(nullptr, -1), 1); // without a file
    ProductSpecModel model;
    model.commonDataProvider = true;
    model.level = 0;
    model.run({});
    for (int index = 0; index <= 49; ++index) {
        EXPECT_EQ(queried(index), model.value(index).value_or("(unset)")) << index;
    }
    EXPECT_EQ(DOV0_QueryProductSpec(DOV0_PSF_ENABLE_DPLOG), DOV0_QueryProductSpec(DOV0_PSF_REGISTER_OAGENT))
        << "one shared constant";
}

TEST(InitializeProductSpec, PutsTheInstanceNameBehindTheFileNamesAndOverTheFile)
{
    const ProductSpecFile file({"PRODUCT_CODE=OV", "INSTANCE_NAME=other", "SNMPLIST_FILE_NAME=MYLIST"});
    ASSERT_EQ(initialize("inst1"), 1);
    EXPECT_EQ(queried(DOV0_PSF_INSTANCE_NAME), "inst1");
    EXPECT_EQ(queried(DOV0_PSF_INITCNFG_FILE_NAME), "DOVPCNFG_inst1");
    EXPECT_EQ(queried(DOV0_PSF_TRAPCNFG_FILE_NAME), "TRAPCNFG_inst1");
    EXPECT_EQ(queried(DOV0_PSF_SNMPLIST_FILE_NAME), "MYLIST");
}

TEST(InitializeProductSpec, TakesTheInstanceNameOfTheFileWithoutAnArgument)
{
    const ProductSpecFile file({"PRODUCT_CODE=OV", "INSTANCE_NAME=other"});
    ASSERT_EQ(initialize(""), 1);
    EXPECT_EQ(queried(DOV0_PSF_DOVPURLS_FILE_NAME), "DOVPURLS_other");
}

TEST(InitializeProductSpec, NeverFreesOrChangesTheSharedNo)
{
    const ProductSpecFile file({"PRODUCT_CODE=OV", "INSTANCE_NAME=NO", "DP_TO_START=NO", "NODE_TYPE=No way",
                                "PRODUCT_NAME=n", "PRODUCT_NAME=nO", "MANAGED_NETWORK_MS=NO"});
    const TraceLog log = traceOfInitialize(Trace::All, "inst1");
    EXPECT_THAT(log, testing::Contains(own("*****Error: Invalid DP [N], ignored\n")));
    EXPECT_EQ(queried(DOV0_PSF_DP_TO_START), "(unset)");
    EXPECT_EQ(queried(DOV0_PSF_INSTANCE_NAME), "inst1");
    EXPECT_EQ(queried(DOV0_PSF_NODE_TYPE), "N");
    EXPECT_EQ(queried(DOV0_PSF_PRODUCT_NAME), "N");
    EXPECT_EQ(DOV0_QueryProductSpec(DOV0_PSF_PRODUCT_NAME),
              DOV0_QueryProductSpec(DOV0_PSF_MANAGED_NETWORK_MS))
        << "one shared constant";
}

TEST(InitializeProductSpec, TakesNoAsAProductCodeOfItsOwn)
{
    std::vector<std::string> records = Solution;
    records[0] = "PRODUCT_CODE=no";
    const ProductSpecFile file(records);
    ASSERT_EQ(initialize(), 1);
    EXPECT_EQ(queried(DOV0_PSF_PRODUCT_CODE), "N");
    EXPECT_EQ(queried(DOV0_PSF_PACKAGED_SOLUTION), "Y");
}

TEST(InitializeProductSpec, NamesFilesForAnInstanceThatIsNo)
{
    const ProductSpecFile file({"PRODUCT_CODE=OV", "INSTANCE_NAME=no"});
    ASSERT_EQ(initialize(), 1);
    EXPECT_EQ(queried(DOV0_PSF_INITCNFG_FILE_NAME), "DOVPCNFG_N");
}

TEST(InitializeProductSpec, ReadsSwitchesAsItsReportLeavesThem)
{
    const ProductSpecFile file(Solution +
                               std::vector<std::string>{"ENABLE_DPLOG=N", "ENABLE_SNMP_DISCOVERY=N"});
    inProcessOfItsOwn([] {
        setTraceLevel(Trace::All & ~Trace::Configuration);
        ASSERT_EQ(initialize(), 1);
        EXPECT_EQ(queried(DOV0_PSF_ENABLE_DPLOG), "N");
        EXPECT_EQ(queried(DOV0_PSF_ENABLE_GLOBALIZATION), "(unset)");
        EXPECT_EQ(queried(DOV0_PSF_ENABLE_CONSOLE_COMMANDS), "(unset)");
        EXPECT_EQ(queried(DOV0_PSF_ENABLE_AUTOMATION_SERVER), "(unset)");
    });
    inProcessOfItsOwn([] {
        setTraceLevel(Trace::Configuration);
        ASSERT_EQ(initialize(), 1);
        EXPECT_EQ(queried(DOV0_PSF_ENABLE_DPLOG), "(unset)");
        EXPECT_EQ(queried(DOV0_PSF_ENABLE_SNMP_DISCOVERY), "N"); // not one that is unset when off
        EXPECT_EQ(queried(DOV0_PSF_ENABLE_GLOBALIZATION), "Y");
        EXPECT_EQ(queried(DOV0_PSF_ENABLE_CONSOLE_COMMANDS), "Y");
        EXPECT_EQ(queried(DOV0_PSF_ENABLE_AUTOMATION_SERVER), "Y");
    });
}

TEST(InitializeProductSpec, KeepsTheFilesGlobalizationAndLocale)
{
    const ProductSpecFile file({"PRODUCT_CODE=OV", "ENABLE_GLOBALIZATION=Maybe", "AGENT_LOCALE=xx_YY"});
    EXPECT_THAT(traceOfInitialize(Trace::Detail), testing::Not(testing::Contains(LocaleSetting)));
    EXPECT_EQ(queried(DOV0_PSF_ENABLE_GLOBALIZATION), "Maybe");
    EXPECT_EQ(queried(DOV0_PSF_AGENT_LOCALE), "xx_YY");
}

TEST(InitializeProductSpec, AcceptsSixDigitsAsAgentVersionOnly)
{
    const std::vector<std::string> bad = {"61000",  "0610000", "06100A", "06100 ", "-61000", "NO",
                                          "+61000", "0x1000",  "06.100", " 6100",  "06100\t"};
    for (const std::string &version : bad) {
        const ProductSpecFile file({"PRODUCT_CODE=OV", "AGENT_VERSION=061000", "AGENT_VERSION=" + version,
                                    "AGENT_VERSION=", "AGENT_VERSION=  "});
        inProcessOfItsOwn([&] {
            std::string shown = version;
            shown.erase(0, shown.find_first_not_of(' '));
            const std::string text =
                "*****ERROR: PSF file " + file.path() + " specifies invalid AGENT_VERSION=" + shown +
                "; value must be 6 digits - padded w/ leading/trailing zeroes , as needed\n";
            EXPECT_THAT(traceOfInitialize(Trace::Configuration), testing::Contains(own(text)).Times(1));
            EXPECT_EQ(queried(DOV0_PSF_AGENT_VERSION), "061000"); // the good one stands
        });
    }
}

TEST(InitializeProductSpec, TranslatesDataProvidersToNumbers)
{
    const std::map<std::string, std::string> cases = {
        {"snmp,xyz,file", "7,2"},
        {"xyz", "(unset)"},
        {",", "(unset)"},
        {"APIS,ASFS,FILE,HTTP,ODBC,POST,SCRP,SNMP,SOCK,NODP", "0,1,2,3,4,5,6,7,8,9"},
        {",,SNMP,,SNMP,", "7,7"},
        {"SNMP, FILE", "7"}, // a blank is part of the item
        {"NODP", "9"},
        {"SNMPX,SNM", "(unset)"},
    };
    for (const auto &[value, expected] : cases) {
        const ProductSpecFile file({"PRODUCT_CODE=OV", "DP_TO_START=" + value});
        inProcessOfItsOwn([&, expected = expected] {
            ASSERT_EQ(initialize(), 1);
            EXPECT_EQ(queried(DOV0_PSF_DP_TO_START), expected);
        });
    }
}

TEST(InitializeProductSpec, TakesAsManyDataProvidersAsItsBufferHolds)
{
    std::string value;
    std::string expected;
    for (int i = 0; i < 41; ++i) {
        value += i == 40 ? "NODP," : "SOCK,";
        expected += i < 39 ? "8," : "";
    }
    expected.pop_back();
    const ProductSpecFile file({"PRODUCT_CODE=OV", "DP_TO_START=" + value});
    EXPECT_EQ(traceOfInitialize(Trace::Error), (TraceLog{own("*****Error: Invalid DP [SOCK], ignored\n"),
                                                         own("*****Error: Invalid DP [NODP], ignored\n")}));
    EXPECT_EQ(queried(DOV0_PSF_DP_TO_START), expected);
    EXPECT_EQ(expected.size(), 77U);
}

// Hostile files.

TEST(InitializeProductSpec, ReadsLongLinesAsSeveralRecords)
{
    // 511 bytes with the line end are one record, 512 are two.
    const std::string one = "NODE_TYPE=" + std::string(511 - 10 - 1, 'a') + "\n";
    const std::string two = "PRODUCT_NAME=" + std::string(511 - 13, 'b');
    ASSERT_EQ(one.size(), 511U);
    ASSERT_EQ(two.size(), 511U);
    const ProductSpecFile file =
        ProductSpecFile::withContents("//PSF\n" + enciphered(one, 1) + enciphered(two, 2) +
                                      enciphered("\n", 3) + enciphered("PRODUCT_CODE=OV", 4));
    const TraceLog log = traceOfInitialize(Trace::Configuration);
    EXPECT_THAT(log, testing::Contains(own("Rec 01 " + one)));
    EXPECT_THAT(log, testing::Contains(own("Rec 02 " + two)));
    EXPECT_THAT(log, testing::Contains(own("Rec 03 \n")));
    EXPECT_THAT(log, testing::Contains(own("Rec 04 PRODUCT_CODE=OV"))); // without a line end of its own
    EXPECT_EQ(queried(DOV0_PSF_NODE_TYPE), std::string(500, 'a'));
    EXPECT_EQ(queried(DOV0_PSF_PRODUCT_NAME), std::string(498, 'b'));
}

TEST(InitializeProductSpec, CountsTheRestOfALongFirstLineAsRecords)
{
    const ProductSpecFile file =
        ProductSpecFile::withContents("//PSF" + std::string(506, ' ') + enciphered("PRODUCT_CODE=OV\n", 1));
    EXPECT_EQ(initialize(), 1);
}

TEST(InitializeProductSpec, SurvivesALineOf100000Bytes)
{
    const std::string line = std::string(100000, 'x') + "\n";
    std::string contents = "//PSF\n";
    uint32_t number = 0;
    for (size_t start = 0; start < line.size(); start += 511) {
        contents += enciphered(line.substr(start, 511), ++number);
    }
    contents += enciphered("PRODUCT_CODE=OV\n", ++number);
    const ProductSpecFile file = ProductSpecFile::withContents(contents);
    EXPECT_EQ(initialize(), 1);
}

TEST(InitializeProductSpec, TakesTenThousandRecords)
{
    std::vector<std::string> records(9999, "NODE_TYPE=X");
    records.emplace_back("NODE_TYPE=last");
    const ProductSpecFile file(std::vector<std::string>{"PRODUCT_CODE=OV"} + records);
    EXPECT_THAT(traceOfInitialize(Trace::Configuration),
                testing::Contains(own("Rec 10001 NODE_TYPE=last\n")));
    EXPECT_EQ(queried(DOV0_PSF_NODE_TYPE), "last");
}

TEST(InitializeProductSpec, CountsTheBytesBehindAZeroByte)
{
    // The text ends at the zero byte; the key is made of all bytes that were read.
    std::string record = "PRODUCT_CODE=OV";
    const size_t length = record.size() + 6;
    DOV0_EncipherRecord(record.data(), static_cast<int32_t>(length));
    const ProductSpecFile file = ProductSpecFile::withContents(
        "//PSF\n" + record + std::string("\0rest\n", 6) + std::string("\0\n", 2));
    const TraceLog log = traceOfInitialize(Trace::Configuration);
    EXPECT_THAT(log, testing::Contains(own("Rec 01 PRODUCT_CODE=OV")));
    EXPECT_THAT(log, testing::Contains(own("Rec 02 ")));
    EXPECT_EQ(queried(DOV0_PSF_PRODUCT_CODE), "OV");
}

TEST(InitializeProductSpec, IgnoresRecordsUnderAnotherNumber)
{
    const ProductSpecFile file =
        ProductSpecFile::withContents("//PSF\n" + enciphered("PRODUCT_CODE=OV\n", 2));
    EXPECT_EQ(initialize(), 0);
}

TEST(InitializeProductSpec, ReportsAnEmptyKeyword)
{
    const ProductSpecFile file({"=x", "  =", "PRODUCT_CODE=OV"});
    EXPECT_THAT(
        traceOfInitialize(Trace::Configuration),
        testing::Contains(own("*****Unrecognized product specification keyword . Ignored\n")).Times(2));
}

TEST(InitializeProductSpec, TakesAnInstanceNameOfAnyLength)
{
    const std::string name(100000, 'i');
    ASSERT_EQ(initialize(name.c_str(), 1), 1);
    EXPECT_EQ(queried(DOV0_PSF_SNMPMIBI_FILE_NAME), "DOVSMIBI_" + name);
}

// Every allocation fails once: the result is 0, or everything is in place all the same (a stream can do without its
// buffer). Nothing is lost, nothing stays open.
TEST(InitializeProductSpec, LosesNothingWhenStorageRunsOut)
{
    const ProductSpecFile file({"PRODUCT_CODE=OV", "NODE_TYPE=first", "NODE_TYPE=second",
                                "DP_TO_START=SNMP,FILE", "AGENT_VERSION=061000", "INSTANCE_NAME=other"});
    uloc_getDefault(); // its first use needs the heap
    bool reached = true;
    int refusals = 0;
    for (int n = 1; reached; ++n) {
        int32_t result = -1;
        const int before = openDescriptors();
        reached = withHeapFailure(n, [&] { result = initialize("inst1"); });
        EXPECT_EQ(openDescriptors(), before);
        if (result == 1) {
            break;
        }
        ++refusals;
        EXPECT_EQ(result, 0);
        EXPECT_EQ(queried(DOV0_PSF_NODE_TYPE), "(unset)");
        ASSERT_LT(n, 1000);
    }
    EXPECT_GE(refusals, 1);
    ASSERT_EQ(initialize("inst1"), 1);
    EXPECT_EQ(queried(DOV0_PSF_NODE_TYPE), "second");
    EXPECT_EQ(queried(DOV0_PSF_DP_TO_START), "7,2");
}

TEST(InitializeProductSpec, IsCompleteWheneverItSucceedsInSpiteOfAFailedAllocation)
{
    const ProductSpecFile file({"PRODUCT_CODE=OV", "NODE_TYPE=first", "NODE_TYPE=second",
                                "DP_TO_START=SNMP,FILE", "AGENT_VERSION=061000", "INSTANCE_NAME=other"});
    uloc_getDefault();
    constexpr int MoreThanEnough = 60;
    for (int n = 1; n <= MoreThanEnough; ++n) {
        inProcessOfItsOwn([&] {
            int32_t result = -1;
            const bool reached = withHeapFailure(n, [&] { result = initialize("inst1"); });
            EXPECT_TRUE(n < MoreThanEnough || !reached);
            if (result == 0) {
                EXPECT_TRUE(reached);
                return;
            }
            ProductSpecModel model;
            model.instanceName = "inst1";
            model.level = 0;
            model.run({"PRODUCT_CODE=OV\n", "NODE_TYPE=second\n", "DP_TO_START=SNMP,FILE\n",
                       "AGENT_VERSION=061000\n"});
            for (int index = 0; index <= 49; ++index) {
                EXPECT_EQ(queried(index), model.value(index).value_or("(unset)")) << index;
            }
        });
    }
}

TEST(InitializeProductSpec, ReportsAValueWithoutStorage)
{
    uloc_getDefault();
    setTraceLevel(0);
    EXPECT_EQ(
        traceAt(Trace::Error | Trace::Configuration, [] { withoutHeap([] { initialize(nullptr, 1); }); }),
        (TraceLog{message("DOV0_GetStorage", "*****Unable to obtain storage, size %d\n", 3),
                  own("*****Product specification initialization failed\n")}));
}
