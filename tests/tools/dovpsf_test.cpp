// The product specification tool, run as a user runs it. DOVPSF is the program.
#include "support/product_spec_file.h"
#include "support/program.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <random>
#include <sys/stat.h>

namespace {

const std::string Tool = DOVPSF;

std::string compiledFile(const TemporaryFolder &folder, const std::string &plain,
                         const std::string &name = "SPEC")
{
    const ProgramResult result =
        runProgram(Tool + " compile " + folder.write("plain", plain) + " -o " + folder.file(name));
    EXPECT_EQ(result.status, 0) << result.errors;
    return folder.file(name);
}

const std::string Solution =
    "PRODUCT_CODE=MR\nNODE_TYPE=RELAY\nPRODUCT_NAME=Mail Relay\nAGENT_AFF_NAME=MAIL_RELAY\n"
    "SUBNODE_AFF_NAME=MAIL_RELAY_DATA\nDP_TO_START=SNMP\nDCH_PORT_NUMBER=1\nDP_PORT_OFFSET=2\n"
    "INITCNFG_FILE_NAME=I\nDOVATBLS_FILE_NAME=A\n";

} // namespace

TEST(DovpsfCompile, EnciphersEachRecordUnderItsNumber)
{
    const TemporaryFolder folder;
    const std::string plain = folder.write("plain", "//PSF by hand\nPRODUCT_CODE=OV\nNODE_TYPE=X");
    const ProgramResult result = runProgram(Tool + " compile " + plain + " -o " + folder.file("SPEC"));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, folder.file("SPEC") + ": 2 records\n");
    EXPECT_EQ(contentsOf(folder.file("SPEC")),
              "//PSF by hand\n" + enciphered("PRODUCT_CODE=OV\n", 1) + enciphered("NODE_TYPE=X\n", 2));
}

TEST(DovpsfCompile, LeavesBlankLinesAndCommentsOutBeforeNumbering)
{
    const TemporaryFolder folder;
    const std::string plain = folder.write(
        "plain", "\xEF\xBB\xBF# a comment\r\n\r\n  \t\nPRODUCT_CODE=OV\r\n  # another\nNODE_TYPE=#1\n");
    const ProgramResult result = runProgram(Tool + " compile " + plain + " -o " + folder.file("SPEC"));
    EXPECT_EQ(result.output,
              folder.file("SPEC") +
                  ": 2 records; 4 blank and comment lines left out before numbering; //PSF added\n");
    EXPECT_EQ(contentsOf(folder.file("SPEC")),
              "//PSF\n" + enciphered("PRODUCT_CODE=OV\n", 1) + enciphered("NODE_TYPE=#1\n", 2));
}

TEST(DovpsfCompile, MakesAnIdentificationOfAnEmptyFile)
{
    const TemporaryFolder folder;
    EXPECT_EQ(contentsOf(compiledFile(folder, "")), "//PSF\n");
}

TEST(DovpsfCompile, RefusesWhatCouldNotBeReadBackAndNamesTheLine)
{
    const TemporaryFolder folder;
    const std::string fits = "NODE_TYPE=" + std::string(500, 'x');
    ASSERT_EQ(fits.size(), 510U);
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"PRODUCT_CODE=OV\n" + fits + "x\n",
         ":2: has 511 bytes; a record has room for 510, the rest would be read back as another record"},
        {fits + "x",
         ":1: has 511 bytes; a record has room for 510, the rest would be read back as another record"},
        {"//PSF" + std::string(100000, ' ') + "\n",
         ":1: has 100005 bytes; a record has room for 510, the rest would be read back as another record"},
        {std::string("A=1\n#\nNODE\0TYPE=1\n", 18),
         ":3: holds a zero byte, behind which nothing could be read back"},
        {"A=1\nB=2\rC=3\n", ":2: holds a carriage return, which would be read back as a blank or an end"},
    };
    for (const auto &[plain, reason] : cases) {
        const std::string target = folder.write("SPEC", "what was there before");
        const ProgramResult result =
            runProgram(Tool + " compile " + folder.write("plain", plain) + " -o " + target);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "dovpsf: " + folder.file("plain") + reason + "\n");
        EXPECT_EQ(contentsOf(target), "what was there before");
    }
    EXPECT_EQ(runProgram(Tool + " print " + compiledFile(folder, fits)).output, "//PSF\n" + fits + "\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path), {}), 2)
        << "nothing half-written is left";
}

TEST(DovpsfCompile, LeavesNothingBehindWhenItCannotWrite)
{
    const TemporaryFolder folder;
    const std::string plain = folder.write("plain", "PRODUCT_CODE=OV\n");
    std::filesystem::create_directory(folder.file("FOLDER"));
    ProgramResult result = runProgram(Tool + " compile " + plain + " -o " + folder.file("FOLDER"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "dovpsf: " + folder.file("FOLDER") + ": is no regular file\n");

    result = runProgram(Tool + " compile " + plain + " -o " + folder.file("none/SPEC"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "dovpsf: " + folder.file("none/SPEC") + ": No such file or directory\n");

    result =
        runProgram("ulimit -f 0; trap '' XFSZ; " + Tool + " compile " + plain + " -o " + folder.file("SPEC"));
    EXPECT_EQ(result.status, 1);
    EXPECT_FALSE(std::filesystem::exists(folder.file("SPEC")));

    result = runProgram(Tool + " compile " + plain + " -o " + plain);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "dovpsf: " + plain + ": is the plain file itself\n");
    EXPECT_EQ(contentsOf(plain), "PRODUCT_CODE=OV\n");

    result = runProgram(Tool + " compile " + folder.file("missing") + " -o " + folder.file("SPEC"));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "dovpsf: " + folder.file("missing") + ": No such file or directory\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path), {}), 2);
}

TEST(DovpsfCompile, KeepsModeAndLinkOfTheFileThatItReplaces)
{
    const TemporaryFolder folder;
    const std::string target = folder.write("TARGET", "old");
    ASSERT_EQ(chmod(target.c_str(), 0640), 0);
    std::filesystem::create_symlink(target, folder.file("SPEC"));
    compiledFile(folder, "PRODUCT_CODE=OV\n");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("SPEC")));
    EXPECT_EQ(contentsOf(target), "//PSF\n" + enciphered("PRODUCT_CODE=OV\n", 1));
    struct stat found = {};
    ASSERT_EQ(stat(target.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 07777, 0640U);
}

TEST(DovpsfPrint, GivesBackWhatWasCompiled)
{
    const TemporaryFolder folder;
    std::mt19937 random(1);
    std::string plain = "//PSF\n";
    for (int i = 0; i < 300; ++i) {
        std::string record = "K=";
        for (size_t length = random() % 509; length > 0; --length) {
            char character = '\0';
            while (character == '\0' || character == '\r' || character == '\n') {
                character = static_cast<char>(random() % 256);
            }
            record += character;
        }
        plain += record + "\n";
    }
    const std::string file = compiledFile(folder, plain);
    EXPECT_NE(contentsOf(file), plain);
    const ProgramResult result = runProgram(Tool + " print " + file);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, plain);
}

TEST(DovpsfPrint, SaysWhatItCannotShowAsALine)
{
    const TemporaryFolder folder;
    const std::string longLine = std::string(600, 'x') + "\n";
    const std::string file = folder.write("SPEC", "//PSF\n" + enciphered(longLine.substr(0, 511), 1) +
                                                      enciphered(longLine.substr(511), 2) +
                                                      std::string("\0\n", 2) + enciphered("A=1", 4));
    const ProgramResult result = runProgram(Tool + " print " + file);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "//PSF\n" + std::string(511, 'x') + "\n" + std::string(89, 'x') + "\n\nA=1\n");
    EXPECT_EQ(result.errors, "dovpsf: " + file + ":2: is longer than a record and read as several\ndovpsf: " +
                                 file + ":3: what follows a zero byte is not read\n");
}

TEST(DovpsfPrint, RefusesAFileWithoutIdentification)
{
    const TemporaryFolder folder;
    for (const char *contents : {"", "//PS\n", "x\n//PSF\n"}) {
        const std::string file = folder.write("SPEC", contents);
        const ProgramResult result = runProgram(Tool + " print " + file);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "dovpsf: " + file + ": does not begin with //PSF\n");
    }
    EXPECT_EQ(runProgram(Tool + " print " + folder.path).errors,
              "dovpsf: " + folder.path + ": Is a directory\n");
}

TEST(DovpsfPrint, FailsWhenItsOutputCannotBeWritten)
{
    const TemporaryFolder folder;
    const std::string file = compiledFile(folder, "PRODUCT_CODE=OV\n");
    EXPECT_EQ(runProgram("{ " + Tool + " print " + file + " >/dev/full; }").status, 1);
}

TEST(DovpsfCheck, TellsWhatBecomesOfEachRecord)
{
    const TemporaryFolder folder;
    const std::string file =
        compiledFile(folder, "product_code=ov\nNODE_TYPE=\nno record\nCOLOR=blue\n"
                             "PRODUCT_NAME=first\nPRODUCT_NAME=second\nDP_TO_START=snmp,x\n"
                             "ENABLE_DPLOG=no thanks\nAGENT_VERSION=1\n=x\nNODE_TYPE =\x1B[2J\n");
    const ProgramResult result = runProgram(Tool + " check --instance inst1 " + file);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    const std::string records = "line 2, record 1: accepted product_code=ov\n"
                                "    in effect: OV\n"
                                "line 3, record 2: unset    NODE_TYPE=\n"
                                "    an empty value sets nothing\n"
                                "line 4, record 3: ignored  no record\n"
                                "    *****Product Specification syntax error. Ignored\n"
                                "line 5, record 4: ignored  COLOR=blue\n"
                                "    *****Unrecognized product specification keyword COLOR. Ignored\n"
                                "line 6, record 5: accepted PRODUCT_NAME=first\n"
                                "    replaced by record 6\n"
                                "line 7, record 6: accepted PRODUCT_NAME=second\n"
                                "line 8, record 7: accepted DP_TO_START=snmp,x\n"
                                "    in effect: 7\n"
                                "line 9, record 8: accepted ENABLE_DPLOG=no thanks\n"
                                "    in effect: N\n"
                                "line 10, record 9: ignored  AGENT_VERSION=1\n"
                                "    *****ERROR: PSF file " +
                                file +
                                " specifies invalid AGENT_VERSION=1; value must be 6 digits - padded w/ "
                                "leading/trailing zeroes , as needed\n"
                                "line 11, record 10: ignored  =x\n"
                                "    *****Unrecognized product specification keyword . Ignored\n"
                                "line 12, record 11: ignored  NODE_TYPE =\\x1B[2J\n"
                                "    *****Unrecognized product specification keyword NODE_TYPE . Ignored\n"
                                "filled in by default or from other values:\n"
                                "    NODE_TYPE=OA\n"
                                "    AGENT_AFF_NAME=OMNIA_AGENT\n";
    EXPECT_EQ(result.output.substr(0, records.size()), records);
    EXPECT_THAT(result.output, testing::HasSubstr("    INITCNFG_FILE_NAME=DOVPCNFG_inst1\n"));
    EXPECT_THAT(result.output, testing::HasSubstr("    REGISTER_OAGENT=Y\n"));
    EXPECT_THAT(result.output, testing::HasSubstr("left unset: METAFILES_TO_LOAD SNMP_HOTLIST_TO_LOAD"));
    const std::string end = "trace: *****Error: Invalid DP [X], ignored\nInitialization would succeed.\n";
    EXPECT_EQ(result.output.substr(result.output.size() - end.size()), end);
}

TEST(DovpsfCheck, AcceptsAPackagedSolutionAlsoUnderTheDefaultName)
{
    for (const char *name : {"SPEC", "DOVPSF"}) {
        const TemporaryFolder folder;
        const ProgramResult result = runProgram(Tool + " check " + compiledFile(folder, Solution, name));
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.output, testing::HasSubstr("    SUBNODE_AFF_FEAT=00000000000\n"));
        EXPECT_THAT(
            result.output,
            testing::HasSubstr(
                "    ENABLE_GLOBALIZATION=Y, but only while the configuration bit of the trace is on\n"));
    }
}

TEST(DovpsfCheck, GivesTheReasonOfAFailure)
{
    const TemporaryFolder folder;
    const std::string failed =
        "trace: *****Product specification initialization failed\nInitialization would fail.\n";
    const auto check = [](const std::string &file) {
        const ProgramResult result = runProgram(Tool + " check " + file);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors, "");
        return result.output;
    };
    EXPECT_EQ(check(compiledFile(folder, "")), "trace: *****Error: Product Code not specified\n" + failed);
    EXPECT_EQ(check(compiledFile(folder, "PRODUCT_CODE=MR\n")),
              "line 2, record 1: accepted PRODUCT_CODE=MR\n"
              "trace: *****Required product specifications not defined for non-OA product.\n" +
                  failed);
    EXPECT_EQ(check(compiledFile(folder, "PRODUCT_CODE=OV\nAGENT_AFF_NAME=x\n")),
              "line 2, record 1: accepted PRODUCT_CODE=OV\n"
              "line 3, record 2: accepted AGENT_AFF_NAME=x\n"
              "trace: *****Error: Agent affinity name invalid <x>\n" +
                  failed);
    EXPECT_EQ(check(folder.file("missing")), "trace: *****ERROR: Product Specification File " +
                                                 folder.file("missing") +
                                                 " open failed, ErrorText <No such file or directory>\n"
                                                 "Initialization would fail.\n");
    EXPECT_EQ(check(folder.path), "trace: *****ERROR: Invalid product specification file ID <>\n"
                                  "Initialization would fail.\n");
    EXPECT_EQ(check(folder.write("plain", "PRODUCT_CODE=OV\n")),
              "trace: *****ERROR: Invalid product specification file ID <PRODUCT_CODE=OV\\x0A>\n"
              "Initialization would fail.\n");
    // Enciphered under other numbers, it reads as nonsense.
    EXPECT_THAT(check(folder.write("SPEC", "//PSF\n" + enciphered("PRODUCT_CODE=OV\n", 2))),
                testing::StartsWith("line 2, record 1: ignored  "));
}

TEST(DovpsfCheck, TellsTheLineOfEachPartOfALongOne)
{
    const TemporaryFolder folder;
    const std::string longLine = "NODE_TYPE=" + std::string(600, 'x') + "\n";
    const std::string file =
        folder.write("SPEC", "//PSF\n" + enciphered(longLine.substr(0, 511), 1) +
                                 enciphered(longLine.substr(511), 2) + enciphered("PRODUCT_CODE=OV\n", 3));
    const ProgramResult result = runProgram(Tool + " check " + file);
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output,
                testing::StartsWith("line 2, record 1: accepted " + longLine.substr(0, 511) +
                                    "\nline 2, record 2 (the line is longer than a record): ignored  " +
                                    longLine.substr(511) +
                                    "    *****Product Specification syntax error. Ignored\n"
                                    "line 3, record 3: accepted PRODUCT_CODE=OV\n"));
}

TEST(DovpsfCheck, SurvivesABinaryFile)
{
    const TemporaryFolder folder;
    std::mt19937 random(7);
    for (int round = 0; round < 20; ++round) {
        std::string contents = "//PSF\n";
        for (int i = 0; i < 5000; ++i) {
            contents += static_cast<char>(random() % 256);
        }
        EXPECT_EQ(runProgram(Tool + " check " + folder.write("SPEC", contents)).status, 1);
        EXPECT_EQ(runProgram(Tool + " print " + folder.file("SPEC")).status, 0);
    }
}

TEST(DovpsfCheck, RefusesANameThatTheLibraryCannotOpen)
{
    ProgramResult result = runProgram(Tool + " check /tmp/" + std::string(507, 'x'));
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, testing::HasSubstr("the name is longer than the library can open"));
    result = runProgram(Tool + " check /tmp/" + std::string(506, 'x'));
    EXPECT_THAT(result.output, testing::HasSubstr("open failed, ErrorText <File name too long>"));
    result = runProgram(Tool + " check /tmp/");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "dovpsf: /tmp/: names no file\n");
}

TEST(Dovpsf, SaysHowItIsUsed)
{
    const ProgramResult help = runProgram(Tool + " --help");
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, testing::HasSubstr("Blank lines and lines that begin with # are left out"));
    EXPECT_EQ(runProgram(Tool + " --version").output.substr(0, 7), "dovpsf ");
    for (const char *arguments : {"", "unknown", "compile", "compile plain", "print", "check"}) {
        const ProgramResult result = runProgram(Tool + " " + arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_NE(result.errors, "") << arguments;
    }
}
