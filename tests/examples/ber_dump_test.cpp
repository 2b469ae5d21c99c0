#include "support/command.h"

#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <unistd.h>

namespace {

const std::string BerDump = EXAMPLES_DIRECTORY "/ber_dump";
const std::string Data = EXAMPLES_DATA "/";

Outcome dumpOf(const std::string &argument)
{
    return run(BerDump + " " + argument);
}

} // namespace

TEST(BerDump, PrintsAGetRequestOfVersion1)
{
    const Outcome outcome = dumpOf(Data + "snmp_v1_get.hex");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "ASN_SEQUENCE\n"
                              "  ASN_INTEGER 0\n"
                              "  ASN_OCTETSTRING \"public\"\n"
                              "  UNKNOWN 0xA0\n"
                              "    ASN_INTEGER 1441244044\n"
                              "    ASN_INTEGER 0\n"
                              "    ASN_INTEGER 0\n"
                              "    ASN_SEQUENCE\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.1.1.0\n"
                              "        ASN_NULL\n");
}

TEST(BerDump, PrintsAResponseOfVersion1)
{
    const Outcome outcome = dumpOf(Data + "snmp_v1_response.hex");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "ASN_SEQUENCE\n"
                              "  ASN_INTEGER 0\n"
                              "  ASN_OCTETSTRING \"public\"\n"
                              "  UNKNOWN 0xA2\n"
                              "    ASN_INTEGER 1441244044\n"
                              "    ASN_INTEGER 0\n"
                              "    ASN_INTEGER 0\n"
                              "    ASN_SEQUENCE\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.1.1.0\n"
                              "        ASN_OCTETSTRING \"Linux gateway 6.1.0-18-amd64\"\n");
}

TEST(BerDump, PrintsATrapOfVersion1)
{
    const Outcome outcome = dumpOf(Data + "snmp_v1_trap.hex");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "ASN_SEQUENCE\n"
                              "  ASN_INTEGER 0\n"
                              "  ASN_OCTETSTRING \"traps\"\n"
                              "  UNKNOWN 0xA4\n"
                              "    ASN_OBJECTIDENTIFIER 1.3.6.1.4.1.8072.3.2.10\n"
                              "    UNKNOWN 0x40 0xC0000211\n"
                              "    ASN_INTEGER 2\n"
                              "    ASN_INTEGER 0\n"
                              "    UNKNOWN 0x43 0x00845FED\n"
                              "    ASN_SEQUENCE\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.2.2.1.1.2\n"
                              "        ASN_INTEGER 2\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.2.2.1.2.2\n"
                              "        ASN_OCTETSTRING \"eth0\"\n");
}

TEST(BerDump, PrintsAGetRequestOfVersion2c)
{
    const Outcome outcome = dumpOf(Data + "snmp_v2c_get.hex");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "ASN_SEQUENCE\n"
                              "  ASN_INTEGER 1\n"
                              "  ASN_OCTETSTRING \"public\"\n"
                              "  UNKNOWN 0xA0\n"
                              "    ASN_INTEGER 490508471\n"
                              "    ASN_INTEGER 0\n"
                              "    ASN_INTEGER 0\n"
                              "    ASN_SEQUENCE\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.1.1.0\n"
                              "        ASN_NULL\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.1.3.0\n"
                              "        ASN_NULL\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.1.7.0\n"
                              "        ASN_NULL\n");
}

TEST(BerDump, PrintsAResponseOfVersion2cWithItsBindings)
{
    const Outcome outcome = dumpOf(Data + "snmp_v2c_response.hex");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "ASN_SEQUENCE\n"
                              "  ASN_INTEGER 1\n"
                              "  ASN_OCTETSTRING \"public\"\n"
                              "  UNKNOWN 0xA2\n"
                              "    ASN_INTEGER 490508471\n"
                              "    ASN_INTEGER 0\n"
                              "    ASN_INTEGER 0\n"
                              "    ASN_SEQUENCE\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.1.1.0\n"
                              "        ASN_OCTETSTRING \"Linux gateway 6.1.0-18-amd64\"\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.1.2.0\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.4.1.8072.3.2.10\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.1.3.0\n"
                              "        UNKNOWN 0x43 0x075BCD15\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.1.7.0\n"
                              "        ASN_INTEGER 72\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.2.2.1.6.2\n"
                              "        ASN_OCTETSTRING 0x001B21A0FF07\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.2.2.1.10.2\n"
                              "        UNKNOWN 0x41 0x00EE6B2800\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.4.20.1.1.192.0.2.17\n"
                              "        UNKNOWN 0x40 0xC0000211\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.31.1.1.1.6.2\n"
                              "        UNKNOWN 0x46 0x00E5F4C8F374\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.1.99.0\n"
                              "        UNKNOWN 0x81 0x\n");
}

TEST(BerDump, PrintsATrapOfVersion2c)
{
    const Outcome outcome = dumpOf(Data + "snmp_v2c_trap.hex");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "ASN_SEQUENCE\n"
                              "  ASN_INTEGER 1\n"
                              "  ASN_OCTETSTRING \"traps\"\n"
                              "  UNKNOWN 0xA7\n"
                              "    ASN_INTEGER 299\n"
                              "    ASN_INTEGER 0\n"
                              "    ASN_INTEGER 0\n"
                              "    ASN_SEQUENCE\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.1.3.0\n"
                              "        UNKNOWN 0x43 0x00845FEE\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.6.3.1.1.4.1.0\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.6.3.1.1.5.4\n"
                              "      ASN_SEQUENCE\n"
                              "        ASN_OBJECTIDENTIFIER 1.3.6.1.2.1.2.2.1.1.2\n"
                              "        ASN_INTEGER 2\n");
}

TEST(BerDump, TakesTextAndBinaryFilesAlike)
{
    const Outcome text = dumpOf(Data + "snmp_v2c_response.hex");
    EXPECT_EQ(dumpOf("$(cat " + Data + "snmp_v2c_response.hex)").output, text.output);
    const std::string binary = testing::TempDir() + "/ber_dump_" + std::to_string(getpid());
    std::ofstream(binary, std::ios::binary) << "\x30\x06\x02\x01\x2A\x04\x01" << '0';
    EXPECT_EQ(dumpOf(binary).output, dumpOf("300602012A040130").output);
    EXPECT_EQ(dumpOf(binary).output, "ASN_SEQUENCE\n  ASN_INTEGER 42\n  ASN_OCTETSTRING \"0\"\n");
    std::remove(binary.c_str());
}

TEST(BerDump, PrintsValuesThatTheLibraryDoesNotReadAsTheyAre)
{
    EXPECT_EQ(dumpOf("02 05 01 02 03 04 05").output, "ASN_INTEGER 0x0102030405\n");
    EXPECT_EQ(dumpOf("0602 2B81").output, "ASN_OBJECTIDENTIFIER 0x2B81\n");
    EXPECT_EQ(dumpOf("0600").output, "ASN_OBJECTIDENTIFIER 0x\n");
    EXPECT_EQ(dumpOf("0200").output, "ASN_INTEGER 0\n");
    EXPECT_EQ(dumpOf("0400").output, "ASN_OCTETSTRING \"\"\n");
    EXPECT_EQ(dumpOf("0501AA").output, "ASN_NULL 0x05 0xAA\n");
    EXPECT_EQ(dumpOf("3000").output, "ASN_SEQUENCE\n");
}

TEST(BerDump, RefusesWhatIsNotWellFormed)
{
    struct {
        const char *message;
        const char *output;
    } const cases[] = {
        {"30", "ber_dump: the field at byte 0 ends before its length\n"},
        {"3082", "ber_dump: the field at byte 0 ends inside its length\n"},
        {"308201", "ber_dump: the field at byte 0 ends inside its length\n"},
        {"30800000", "ber_dump: the field at byte 0 has a length of a form that is not supported\n"},
        {"30850000000000", "ber_dump: the field at byte 0 has a length of a form that is not supported\n"},
        {"0402AA", "ber_dump: the field at byte 0 is longer than what is left\n"},
        {"0484FFFFFFFFAA", "ber_dump: the field at byte 0 is longer than what is left\n"},
        {"1F810100", "ber_dump: the field at byte 0 has a tag of several bytes\n"},
        {"3004 0402 4142 05",
         "ASN_SEQUENCE\n  ASN_OCTETSTRING \"AB\"\nber_dump: the field at byte 6 ends before its length\n"},
        {"3004 0403 4142 05", "ASN_SEQUENCE\nber_dump: the field at byte 2 is longer than what is left\n"},
    };
    for (const auto &each : cases) {
        const Outcome outcome = dumpOf(each.message);
        EXPECT_EQ(outcome.status, 1) << each.message;
        EXPECT_EQ(outcome.output, each.output) << each.message;
    }
}

TEST(BerDump, RefusesNestingThatIsTooDeep)
{
    // Sequences in sequences: each says the length of the rest.
    const auto nested = [](int depth) {
        std::string message = "0500";
        for (int level = 0; level < depth; ++level) {
            char header[32];
            std::snprintf(header, sizeof header, "3083%06zX", message.size() / 2);
            message.insert(0, header);
        }
        return message;
    };
    EXPECT_EQ(dumpOf(nested(64)).status, 0);
    const Outcome outcome = dumpOf(nested(65));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.output.find("is nested too deep\n"), std::string::npos);
}

TEST(BerDump, ExplainsItself)
{
    for (const char *argument : {"", "''", "xyz", "123", "/nowhere/at/all"}) {
        const Outcome outcome = dumpOf(argument);
        EXPECT_EQ(outcome.status, 2) << argument;
        EXPECT_EQ(outcome.output, "usage: ber_dump HEXADECIMAL... | FILE\n");
    }
}

TEST(BerDump, SurvivesDamagedMessages)
{
    std::mt19937 random(13);
    const std::string original = run("tr -d '\\n' < " + Data + "snmp_v2c_response.hex").output;
    ASSERT_EQ(original.size(), 470U);
    for (int i = 0; i < 100; ++i) {
        std::string damaged = original.substr(0, (i % 2 == 0 ? 235 : 1 + random() % 235) * 2);
        for (auto count = random() % 4; count > 0; --count) {
            damaged[random() % damaged.size()] = "0123456789abcdef"[random() % 16];
        }
        // All trace levels are on, so that the library shows the values that it is given.
        const Outcome outcome = run("DOV_TRACE=all DOV_TRACE_FILE=/dev/null " + BerDump + " " + damaged);
        EXPECT_TRUE(outcome.status == 0 || outcome.status == 1) << damaged << "\n" << outcome.output;
    }
}
