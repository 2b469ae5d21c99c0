// The example that polls a node: against a real SNMP daemon, whose own tools are the judge, and against nodes that
// answer what they should not.
#include "snmp/daemon.h"
#include "snmp/responder.h"
#include "support/program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

constexpr int NotStarted = 1;
constexpr int WrongUsage = 2;
constexpr int NoAnswer = 3;
constexpr int AnswerRefused = 4;
constexpr int ErrorReported = 5;
constexpr int SamplesLost = 6;

// No name server is asked for the name of this machine.
const std::string Quietly = "RPCB0_HOSTNAME=127.0.0.1 LC_ALL=C ";
const std::string WithCatalogue = Quietly + "DOVP_RB_PATH=" CATALOGUE " ";
const std::string Poll = SNMP_POLL " ";

const std::string SystemGroup = "1.3.6.1.2.1.1.";
const std::string Columns = "1.3.6.1.2.1.2.2.1.";

const std::string BadPacket = "DOVPS402E - 127.0.0.1 sent a packet that cannot be used: ";

std::string silence(const std::string &tries)
{
    return "DOVPS400E - NODE does not answer (" + tries +
           " each). Either no SNMP agent listens there or it does not know the community.\n";
}

std::string otherPackets(const std::string &tries, const std::string &packet)
{
    return "DOVPS405E - NODE does not answer (" + tries + " each). A packet was set aside: " + packet + ".\n";
}

std::string withoutPort(const std::string &text)
{
    return std::regex_replace(text, std::regex("127.0.0.1 port [0-9]+"), "NODE");
}

ProgramResult pollOf(const std::string &target, const std::string &options = "")
{
    return runProgram(WithCatalogue + Poll + target + " --community demo " + options);
}

// What the handler keeps may be looked at afterwards: its thread has ended then.
ProgramResult pollOfResponder(const Responder::Handler &handler, const std::string &options)
{
    const Responder responder(handler);
    return pollOf(responder.target(), options);
}

// Polls a node whose answers are spoiled by the test. In what is said of the node its port is left out.
using Spoiler = std::function<Bytes(const Request &, Response)>;

ProgramResult pollOfNode(const Spoiler &spoil, const std::string &options = "--timeout 10000")
{
    const Mib mib = sampleMib();
    const Responder::Handler handler = [&](const Request &request) -> std::vector<Datagram> {
        return {{spoil(request, mib.answer(request))}};
    };
    ProgramResult result = pollOfResponder(handler, "--tries 1 " + options);
    result.errors = withoutPort(result.errors);
    return result;
}

Bytes unspoiled(const Request &, const Response &response)
{
    return response.bytes();
}

// --- Comparison with the daemon's own tools ----------------------------------------------------------------------

struct Value {
    std::string text;   // a number, a dotted identifier, or the bytes of an octet string in hexadecimal
    bool moves = false; // counters and clocks
};

using Values = std::map<std::string, Value>;

std::string hexadecimal(const std::string &bytes)
{
    std::string text = "0x";
    for (const char byte : bytes) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02X", static_cast<unsigned int>(static_cast<unsigned char>(byte)));
        text += pair;
    }
    return text;
}

// What the tools print: ".1.3.6.1.2.1.1.7.0 = INTEGER: 72". Octet strings are in hexadecimal, over several lines.
Values valuesOfTool(const std::string &output)
{
    Values values;
    const std::string unwrapped = std::regex_replace(output, std::regex("\n(?=[0-9A-F]{2} )"), "");
    static const std::regex Line("\\.([0-9.]+) = (?:([A-Za-z0-9-]+): )?(.*?) *");
    std::istringstream lines(unwrapped);
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (!std::regex_match(line, match, Line)) {
            ADD_FAILURE() << "not understood: " << line;
            continue;
        }
        const std::string type = match[2];
        Value value;
        value.text = match[3];
        value.moves = type == "Counter32" || type == "Timeticks";
        if (type == "Timeticks") {
            value.text = value.text.substr(1, value.text.find(')') - 1);
        } else if (type == "OID") {
            value.text.erase(0, 1);
        } else if (type == "Hex-STRING") {
            value.text = "0x" + std::regex_replace(value.text, std::regex(" "), "");
        } else if (type.empty() && value.text == "\"\"") {
            value.text = "0x";
        } else if (type != "INTEGER" && type != "Gauge32" && type != "Counter32") {
            ADD_FAILURE() << "not understood: " << line;
        }
        values[match[1]] = value;
    }
    return values;
}

Values valuesOfTools(const SnmpDaemon &daemon)
{
    Values values = valuesOfTool(daemon
                                     .tool("snmpget", SystemGroup + "1.0 " + SystemGroup + "2.0 " +
                                                          SystemGroup + "3.0 " + SystemGroup + "7.0")
                                     .output);
    for (const char *column : {"1", "2", "3", "5", "6", "8", "10", "16"}) {
        values.merge(valuesOfTool(daemon.tool("snmpwalk", Columns + column).output));
    }
    return values;
}

// What snmp_poll prints: "1261121064613030 sysServices   1.3.6.1.2.1.1.7.0 = 72".
Values valuesOfPoll(const std::string &output)
{
    Values values;
    static const std::regex Line("[0-9]{16} [A-Za-z]+ +([0-9.]+) = (.*)");
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (std::regex_match(line, match, Line)) {
            const std::string text = match[2];
            values[match[1]].text = text[0] == '"' ? hexadecimal(text.substr(1, text.size() - 2)) : text;
        }
    }
    return values;
}

std::vector<std::string> namesOf(const Values &values)
{
    std::vector<std::string> names;
    for (const auto &[name, value] : values) {
        names.push_back(name);
    }
    return names;
}

// The names that have another value than the daemon's tools printed just before or just after.
std::vector<std::string> differences(const Values &before, const Values &polled, const Values &after)
{
    std::vector<std::string> names;
    for (const auto &[name, value] : polled) {
        const Value &first = before.at(name);
        const Value &last = after.at(name);
        const bool agrees = first.moves ? std::stoul(first.text) <= std::stoul(value.text) &&
                                              std::stoul(value.text) <= std::stoul(last.text)
                                        : value.text == first.text || value.text == last.text;
        if (!agrees) {
            names.push_back(name + ": " + value.text + " is not between " + first.text + " and " + last.text);
        }
    }
    return names;
}

} // namespace

TEST(SnmpPoll, ReadsWhatTheToolsOfARealDaemonRead)
{
    const SnmpDaemon daemon(EXAMPLES "/snmp/snmpd.conf");
    ASSERT_TRUE(daemon.answers);
    const Values before = valuesOfTools(daemon);
    const ProgramResult result = pollOf(daemon.target);
    const Values after = valuesOfTools(daemon);

    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    const Values polled = valuesOfPoll(result.output);
    ASSERT_EQ(namesOf(polled), namesOf(before));
    ASSERT_EQ(namesOf(polled), namesOf(after));
    EXPECT_GT(polled.size(), 4U) << "no interface at all";
    EXPECT_THAT(differences(before, polled, after), testing::IsEmpty());
    EXPECT_EQ(polled.at(SystemGroup + "1.0").text, hexadecimal("Sample node of libdov0610"));
    EXPECT_THAT(result.output, HasSubstr("\nservices: Applications,Hosts\n"));
    EXPECT_THAT(result.output,
                HasSubstr("\nrecord: " + std::to_string(polled.size()) + " samples, ")); // every one of them

    // The comparison can fail.
    Values spoiled = polled;
    spoiled.at(SystemGroup + "7.0").text = "73";
    spoiled.at(SystemGroup + "3.0").text = std::to_string(std::stoul(after.at(SystemGroup + "3.0").text) + 1);
    EXPECT_EQ(differences(before, spoiled, after).size(), 2U);
}

TEST(SnmpPoll, ReadsNumbersOfEveryWidthAndSign)
{
    const ProgramResult result = pollOfNode(unspoiled);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(std::regex_replace(result.output, std::regex("(^|\n)[0-9]{16} "), "$1"),
                StartsWith("sysDescr      1.3.6.1.2.1.1.1.0 = \"Node of a test\"\n"
                           "sysObjectID   1.3.6.1.2.1.1.2.0 = 1.3.6.1.4.1.4294967295\n"
                           "sysUpTime     1.3.6.1.2.1.1.3.0 = 4294967295\n"
                           "sysServices   1.3.6.1.2.1.1.7.0 = 72\n"
                           "ifIndex       1.3.6.1.2.1.2.2.1.1.1 = 1\n"
                           "ifDescr       1.3.6.1.2.1.2.2.1.2.1 = \"eth1\"\n"
                           "ifType        1.3.6.1.2.1.2.2.1.3.1 = 6\n"
                           "ifSpeed       1.3.6.1.2.1.2.2.1.5.1 = 4294967295\n"
                           "ifPhysAddress 1.3.6.1.2.1.2.2.1.6.1 = 0x0200000000FF\n"
                           "ifOperStatus  1.3.6.1.2.1.2.2.1.8.1 = 1\n"
                           "ifInOctets    1.3.6.1.2.1.2.2.1.10.1 = 2147483648\n"
                           "ifOutOctets   1.3.6.1.2.1.2.2.1.16.1 = 1000\n"
                           "ifIndex       1.3.6.1.2.1.2.2.1.1.2 = 2\n"
                           "ifDescr       1.3.6.1.2.1.2.2.1.2.2 = \"eth2\"\n"
                           "ifType        1.3.6.1.2.1.2.2.1.3.2 = 6\n"
                           "ifSpeed       1.3.6.1.2.1.2.2.1.5.2 = 4294967295\n"
                           "ifPhysAddress 1.3.6.1.2.1.2.2.1.6.2 = 0x0200000000FF\n"
                           "ifOperStatus  1.3.6.1.2.1.2.2.1.8.2 = -2\n"
                           "ifInOctets    1.3.6.1.2.1.2.2.1.10.2 = 2147483648\n"
                           "ifOutOctets   1.3.6.1.2.1.2.2.1.16.2 = 2000\n"
                           "services: Applications,Hosts\n"
                           "record: 20 samples, "));
}

TEST(SnmpPoll, DoesWithoutWhatTheNodeLacks)
{
    Mib mib = sampleMib();
    mib.variables.erase({1, 3, 6, 1, 2, 1, 1, 7, 0});                // sysServices
    mib.variables.erase({1, 3, 6, 1, 2, 1, 2, 2, 1, 2, 1});          // one ifDescr
    mib.variables.erase({1, 3, 6, 1, 2, 1, 4, 1, 0});                // what follows the table
    mib.variables[{1, 3, 6, 1, 2, 1, 1, 1, 0}] = text("a\x1B[2J\n"); // not for a terminal
    const auto handler = [&](const Request &request) -> std::vector<Datagram> {
        return {{mib.answer(request).bytes()}};
    };
    const ProgramResult result = pollOfResponder(handler, "");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("1.3.6.1.2.1.1.1.0 = 0x611B5B324A0A\n"));
    EXPECT_THAT(result.output, Not(HasSubstr("sysServices")));
    EXPECT_THAT(result.output, Not(HasSubstr("services: ")));
    EXPECT_THAT(result.output, Not(HasSubstr("1.3.6.1.2.1.2.2.1.2.1 =")));
    EXPECT_THAT(result.output, HasSubstr("1.3.6.1.2.1.2.2.1.2.2 = \"eth2\"\n"));
    EXPECT_THAT(result.output, HasSubstr("\nrecord: 18 samples, "));
}

// The record, by its layout: a total length, then fields of a length, a type and data, all numbers big-endian.
class RecordBytes {
public:
    explicit RecordBytes(std::string contents) : bytes(std::move(contents)) {}

    uint32_t numberAt(size_t place, size_t size) const
    {
        uint32_t value = 0;
        for (size_t i = 0; i < size; ++i) {
            value = value << 8 | static_cast<unsigned char>(bytes.at(place + i));
        }
        return value;
    }

    // The data of the next field, and its type.
    std::pair<uint32_t, std::string> take()
    {
        const size_t length = numberAt(next, 4);
        const uint32_t type = numberAt(next + 4, 2);
        const std::string data = bytes.substr(next + 6, length - 6);
        next += length;
        return {type, data};
    }

    // A number or text as snmp_poll prints it.
    std::string takeValue()
    {
        const size_t data = next + 6;
        const auto [type, contents] = take();
        switch (type) {
        case 17:
            return std::to_string(static_cast<int32_t>(numberAt(data, 4)));
        case 81:
        case 368:
            return std::to_string(numberAt(data, 4));
        case 82:
            return hexadecimal(contents);
        default:
            return contents;
        }
    }

    uint32_t checkSum() const
    {
        uint32_t sum = 0;
        for (size_t i = 0; i < bytes.size(); i += 4) {
            sum += numberAt(i, 2) + numberAt(i + 2, 2) + 256 * numberAt(i, 1) + numberAt(i + 2, 1);
        }
        sum = (sum >> 16) + (sum & 0xFFFF);
        return ~(sum + (sum >> 16)) & 0xFFFF;
    }

    const std::string bytes;
    size_t next = 4;
};

TEST(SnmpPoll, WritesTheSamplesIntoARecord)
{
    const TemporaryFolder folder;
    const ProgramResult result = pollOfNode(unspoiled, "--record " + folder.file("record"));
    ASSERT_EQ(result.status, 0) << result.errors;

    RecordBytes record(contentsOf(folder.file("record")));
    const size_t total = record.numberAt(0, 4);
    std::string lines;
    while (record.next < total) {
        const auto [nameType, name] = record.take();
        const auto [timeType, time] = record.take();
        EXPECT_EQ(nameType, 80U);
        EXPECT_EQ(timeType, 32U);
        lines += time + " " + name + " = " + record.takeValue() + "\n";
    }
    EXPECT_EQ(record.next, total);
    EXPECT_EQ(record.bytes.substr(total), std::string((4 - total % 4) % 4, '\0'));

    std::string printed = result.output.substr(0, result.output.find("services: "));
    printed = std::regex_replace(printed, std::regex("([0-9]{16}) [A-Za-z]+ +"), "$1 ");
    EXPECT_EQ(lines, std::regex_replace(printed, std::regex("\""), ""));
    char summary[128];
    std::snprintf(summary, sizeof summary, "\nrecord: 20 samples, %zu bytes, checksum %04X, read back\n",
                  record.bytes.size(), record.checkSum());
    EXPECT_THAT(result.output, EndsWith(summary));
}

TEST(SnmpPoll, SaysThatTheRecordCannotBeWritten)
{
    const TemporaryFolder folder;
    const ProgramResult result = pollOfNode(unspoiled, "--record " + folder.path);
    EXPECT_EQ(result.status, SamplesLost);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "DOVPS406E - The samples of 127.0.0.1 cannot be recorded: " + folder.path +
                                 " cannot be written.\n");
}

TEST(SnmpPoll, PollsManyTimesWithOneLineEach)
{
    const ProgramResult result = pollOfNode(unspoiled, "--repeat 25");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 25);
    EXPECT_THAT(result.output,
                MatchesRegex("(record: 20 samples, [0-9]+ bytes, checksum [0-9A-F]{4}, read back\n)+"));
}

TEST(SnmpPoll, IsShownBesideTheDaemonsToolByAScriptThatLeavesNothing)
{
    const TemporaryFolder folder;
    const ProgramResult result =
        runProgram("LC_ALL=C DOVP_RB_PATH=" CATALOGUE " TMPDIR=" + folder.path +
                   " " EXAMPLES "/snmp/round_trip.sh '" SNMP_POLL "' --instance inst1");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("\nservices: Applications,Hosts\n"));
    EXPECT_THAT(result.output,
                HasSubstr("\n1.3.6.1.2.1.1.7.0        72                           INTEGER: 72\n"));
    EXPECT_THAT(result.output, EndsWith("--community wrong --timeout 300\n(exit status 3)\n"));
    EXPECT_EQ(withoutPort(result.errors), silence("3 requests, 0.3 seconds"));
    EXPECT_EQ(run("ls -A " + folder.path).output, "");
    const std::string target = result.output.substr(12, result.output.find(" --community") - 12);
    EXPECT_EQ(pollOf(target, "--timeout 200 --tries 1").status, NoAnswer) << target;
}

// --- Silence -----------------------------------------------------------------------------------------------------

TEST(SnmpPoll, SaysThatAWrongCommunityIsOneReasonForSilence)
{
    const SnmpDaemon daemon(EXAMPLES "/snmp/snmpd.conf");
    ASSERT_TRUE(daemon.answers);
    const ProgramResult result =
        runProgram(WithCatalogue + Poll + daemon.target + " --community wrong --timeout 300 --tries 2");
    EXPECT_EQ(result.status, NoAnswer);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(withoutPort(result.errors), silence("2 requests, 0.3 seconds"));
}

TEST(SnmpPoll, SaysThatThereIsNoAnswer)
{
    std::string target;
    {
        const LoopbackSocket unused;
        target = "127.0.0.1:" + std::to_string(unused.port);
    }
    const ProgramResult result = pollOf(target, "--timeout 50 --tries 3");
    EXPECT_EQ(result.status, NoAnswer);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(withoutPort(result.errors), silence("3 requests, 0.05 seconds"));
}

TEST(SnmpPoll, TriesAgainWithTheSameRequest)
{
    const Mib mib = sampleMib();
    std::vector<int32_t> ids;
    const auto handler = [&](const Request &request) {
        ids.push_back(request.id);
        return ids.size() == 1 ? std::vector<Datagram>()
                               : std::vector<Datagram>{{mib.answer(request).bytes()}};
    };
    EXPECT_EQ(pollOfResponder(handler, "--timeout 1000 --tries 2").status, 0);
    ASSERT_GE(ids.size(), 3U);
    EXPECT_EQ(ids[0], ids[1]); // a late answer is as good
    EXPECT_NE(ids[1], ids[2]);
}

TEST(SnmpPoll, SetsAsideWhatIsNotTheAnswer)
{
    const Mib mib = sampleMib();
    const auto handler = [&](const Request &request) -> std::vector<Datagram> {
        Response other = mib.answer(request);
        other.id ^= 1;
        const Bytes right = mib.answer(request).bytes();
        return {{other.bytes()}, {right, true}, {bytesOf("rubbish"), true}, {right}, {right}};
    };
    const ProgramResult result = pollOfResponder(handler, "--timeout 10000 --tries 1");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
}

TEST(SnmpPoll, SaysWhatCameInsteadOfTheAnswer)
{
    const ProgramResult result = pollOfNode(
        [](const Request &, Response response) {
            response.id ^= 1;
            return response.bytes();
        },
        "--timeout 200");
    EXPECT_EQ(result.status, NoAnswer);
    EXPECT_EQ(result.errors, otherPackets("1 requests, 0.2 seconds", "it answers another request"));

    const Mib mib = sampleMib();
    const Responder elsewhere([&](const Request &request) -> std::vector<Datagram> {
        return {{mib.answer(request).bytes(), true}};
    });
    const ProgramResult other = pollOf(elsewhere.target(), "--timeout 200 --tries 1");
    EXPECT_EQ(other.status, NoAnswer);
    EXPECT_EQ(withoutPort(other.errors), otherPackets("1 requests, 0.2 seconds", "it came from NODE"));
    EXPECT_THAT(other.errors,
                Not(HasSubstr("came from 127.0.0.1 port " + elsewhere.target().substr(10) + ".")));
}

// --- Answers that are refused ------------------------------------------------------------------------------------

struct Spoiled {
    std::string flaw;
    Spoiler spoil;
};

// The answer to the first request, with the value of one variable exchanged.
Spoiler withValue(size_t variable, Bytes value)
{
    return [variable, value](const Request &request, Response response) {
        if (request.type == 0xA0) {
            response.bindings.at(variable).value = value;
        }
        return response.bytes();
    };
}

// The same for the variable that answers the first request of the walk.
Spoiler withColumn(Elements name, Bytes value)
{
    return [name, value](const Request &request, Response response) {
        if (request.type == 0xA1) {
            response.bindings.at(1) = {name, value};
        }
        return response.bytes();
    };
}

TEST(SnmpPoll, RefusesAnswersThatAreNotWhatTheyShouldBe)
{
    const Elements ifDescr1 = {1, 3, 6, 1, 2, 1, 2, 2, 1, 2, 1};
    const std::vector<Spoiled> cases = {
        {"the message at byte 0 is missing", [](const Request &, const Response &) { return Bytes(); }},
        {"the message has the tag 0x72 instead of 0x30",
         [](const Request &, const Response &) { return bytesOf("r\x06ubbish"); }},
        {"the message at byte 0 is longer than what is left",
         [](const Request &, const Response &response) {
             Bytes bytes = response.bytes();
             bytes.pop_back();
             return bytes;
         }},
        {"the message is followed by 1 more bytes",
         [](const Request &, const Response &response) { return response.bytes() + Bytes{0}; }},
        {"the message at byte 0 has a length of a form that is not supported",
         [](const Request &, const Response &) { return Bytes{0x30, 0x80, 0x02, 0x01, 0x01, 0x00, 0x00}; }},
        {"the message at byte 0 has a length of a form that is not supported",
         [](const Request &, const Response &) { return Bytes{0x30, 0x85, 0, 0, 0, 0, 0}; }},
        {"the message at byte 0 is longer than what is left",
         [](const Request &, const Response &) {
             return Bytes{0x30, 0x84, 0xFF, 0xFF, 0xFF, 0xFF, 0x02, 0x01};
         }},
        {"the message at byte 0 ends inside its length",
         [](const Request &, const Response &) {
             return Bytes{0x30, 0x84, 0};
         }},
        {"the message at byte 0 ends before its length",
         [](const Request &, const Response &) { return Bytes{0x30}; }},
        {"the message at byte 0 has a tag of several bytes",
         [](const Request &, const Response &) {
             return Bytes{0x3F, 0x01};
         }},
        {"the version at byte 2 is missing",
         [](const Request &, const Response &) {
             return Bytes{0x30, 0x00};
         }},
        {"it is of another version than 2c",
         [](const Request &, Response response) {
             response.version = 0;
             return response.bytes();
         }},
        {"the version is an integer of 5 bytes",
         [](const Request &, Response response) {
             response.version = 0x1234567890;
             return response.bytes();
         }},
        {"the response has the tag 0xA0 instead of 0xA2",
         [](const Request &, Response response) {
             response.type = 0xA0;
             return response.bytes();
         }},
        {"the request id is an integer of 0 bytes",
         [](const Request &, const Response &response) {
             return response.withBody({0x02, 0x00});
         }},
        {"it has 5 variables instead of 4",
         [](const Request &, Response response) {
             response.bindings.push_back(response.bindings[0]);
             return response.bytes();
         }},
        {"it has 0 variables instead of 4",
         [](const Request &, Response response) {
             response.bindings.clear();
             return response.bytes();
         }},
        {"it names another variable than sysObjectID",
         [](const Request &request, Response response) {
             if (request.type == 0xA0) {
                 response.bindings[1].name.back() = 1;
             }
             return response.bytes();
         }},
        {"sysDescr has the tag 0x02 instead of 0x04", withValue(0, number(0x02, 5))},
        {"sysDescr has 1025 bytes", withValue(0, text(std::string(1025, 'a')))},
        {"sysObjectID has the tag 0x05 instead of 0x06", withValue(1, {0x05, 0x00})},
        {"a name cannot be decoded", withValue(1, {0x06, 0x00})},
        {"a name cannot be decoded", withValue(1, {0x06, 0x02, 0x2B, 0x86})},
        {"a name has 97 bytes", withValue(1, tlv(0x06, Bytes(97, 0x01)))},
        {"sysUpTime has the tag 0x41 instead of 0x43", withValue(2, number(0x41, 5))},
        {"a value is a number of 5 bytes", withValue(2, {0x43, 0x05, 0x01, 0x00, 0x00, 0x00, 0x00})},
        {"a value is a number of 6 bytes", withValue(2, {0x43, 0x06, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00})},
        {"a value is a number of 0 bytes", withValue(3, {0x02, 0x00})},
        {"a value is a number of 5 bytes", withValue(3, {0x02, 0x05, 0x00, 0x00, 0x00, 0x00, 0x01})},
        {"a value is followed by 2 more bytes", withValue(3, number(0x02, 72) + Bytes{0x05, 0x00})},
        {"the names in the column ifDescr do not increase",
         withColumn({1, 3, 6, 1, 2, 1, 2, 2, 1, 2}, text("a"))},
        {"the names in the column ifDescr do not increase",
         withColumn({1, 3, 6, 1, 2, 1, 1, 9, 0}, text("a"))},
        {"the names in the column ifDescr do not increase",
         withColumn(ifDescr1, text("a"))}, // in the second row
        {"ifDescr has the tag 0x05 instead of 0x04", withColumn(ifDescr1, {0x05, 0x00})},
    };
    for (const Spoiled &spoiled : cases) {
        const ProgramResult result = pollOfNode(spoiled.spoil);
        EXPECT_EQ(result.status, AnswerRefused) << spoiled.flaw;
        EXPECT_EQ(result.output, "") << spoiled.flaw;
        EXPECT_EQ(result.errors, BadPacket + spoiled.flaw + ".\n");
    }
}

TEST(SnmpPoll, RefusesAnAnswerThatIsCutOffAnywhere)
{
    const Mib mib = sampleMib();
    size_t size = 0;
    size_t polls = 0;
    const auto handler = [&](const Request &request) -> std::vector<Datagram> {
        Bytes bytes = mib.answer(request).bytes();
        size = bytes.size();
        bytes.resize(polls++ % size);
        return {{bytes}};
    };
    const ProgramResult result = pollOfResponder(handler, "--timeout 10000 --tries 1 --repeat 200");
    EXPECT_EQ(result.status, AnswerRefused);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(polls, 200U);
    EXPECT_GT(polls, size);
    EXPECT_THAT(withoutPort(result.errors),
                MatchesRegex("(" + BadPacket +
                             "the message at byte 0 (is missing|ends before its length|ends inside "
                             "its length|is longer than what is left).\n)+"));
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 200);
}

TEST(SnmpPoll, RefusesAnAnswerOfAnotherCommunity)
{
    const ProgramResult result = pollOfNode([](const Request &, Response response) {
        response.community = "a\x1B[2Jb\"c$(id)d`id`e\\";
        return response.bytes();
    });
    EXPECT_EQ(result.status, AnswerRefused);
    // Nothing for a terminal or a shell to act on.
    EXPECT_EQ(result.errors,
              "DOVPS401E - 127.0.0.1 answers with the community a?[2Jb?c?(id)d?id?e?, not with the one that "
              "was asked with.\n");
}

TEST(SnmpPoll, PassesOnTheErrorThatTheNodeReports)
{
    const ProgramResult result = pollOfNode([](const Request &, Response response) {
        response.errorStatus = 5;
        response.errorIndex = 2;
        return response.bytes();
    });
    EXPECT_EQ(result.status, ErrorReported);
    EXPECT_EQ(result.errors, "DOVPS403E - 127.0.0.1 reports error genErr at variable 2.\n");
}

TEST(SnmpPoll, EndsAWalkThatHasNoEnd)
{
    // A row for each number that is asked for, and one more.
    const Spoiler endless = [](const Request &request, Response response) {
        for (size_t i = 0; request.type == 0xA1 && i < request.names.size(); ++i) {
            Elements name = request.names[i];
            name.size() == 10 ? name.push_back(1) : static_cast<void>(++name.back());
            const unsigned char tags[] = {0x02, 0x04, 0x02, 0x42, 0x04, 0x02, 0x41, 0x41};
            response.bindings[i] = {name, number(tags[i], 1)};
        }
        return response.bytes();
    };
    const ProgramResult result = pollOfNode(endless, "--max-interfaces 100");
    EXPECT_EQ(result.status, AnswerRefused);
    EXPECT_EQ(result.errors, BadPacket + "the table has more than 100 rows.\n");
}

// --- Start -------------------------------------------------------------------------------------------------------

TEST(SnmpPoll, SaysThatThereIsNoSuchHost)
{
    for (const std::string &host : {std::string("256.1.1.1"), std::string(10000, 'a')}) {
        const ProgramResult result = pollOf(host);
        EXPECT_EQ(result.status, NotStarted);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "DOVPV500E - Host " + host.substr(0, 200) + " has no address.\n");
    }
    EXPECT_EQ(pollOf("'a$(id)`id`\"'").errors, "DOVPV500E - Host a?(id)?id?? has no address.\n");
}

TEST(SnmpPoll, RefusesWrongCommandLines)
{
    for (const char *line : {"", "a:0", "a:65536", "a:x", "a:", "a:-1", "a --port 0", "a --tries 0",
                             "a --timeout 0", "a --repeat 0", "a --max-interfaces x", "a --unknown"}) {
        const ProgramResult result = runProgram(Quietly + Poll + line);
        EXPECT_EQ(result.status, WrongUsage) << line;
        EXPECT_NE(result.errors, "") << line;
    }
    EXPECT_EQ(runProgram(Poll + "--help").status, 0);
}

TEST(SnmpPoll, StartsOnAProductSpecificationAndATrace)
{
    const TemporaryFolder folder;
    ASSERT_EQ(
        runProgram(DOVPSF " compile " EXAMPLES "/product_spec_agent.txt -o " + folder.file("agent")).status,
        0);
    const std::string options = " --instance north --trace DOV0_InitializeProductSpec=config --trace-file " +
                                folder.file("trace") + " --product-spec ";
    EXPECT_EQ(pollOfNode(unspoiled, options + folder.file("agent")).status, 0);
    EXPECT_THAT(contentsOf(folder.file("trace")), HasSubstr("PRODUCT_NAME=Omnia Agent, site north"));

    const ProgramResult missing = pollOfNode(unspoiled, options + folder.file("none"));
    EXPECT_EQ(missing.status, NotStarted);
    EXPECT_EQ(missing.errors,
              "DOVPG202E - The product specification " + folder.file("none") + " cannot be used.\n");
    EXPECT_EQ(pollOfNode(unspoiled, "--trace nonsense").status, NotStarted);
}

TEST(SnmpPoll, ShowsItsMessagesOnTheConsole)
{
    const ProgramResult result = pollOf("256.1.1.1", "--trace DOV0_ZTconsoleMessage=flow");
    EXPECT_THAT(result.errors,
                HasSubstr("DOV0_ZTconsoleMessage Calling AGF_CreateMessage <(null)> <SNMP> <"));
}

TEST(SnmpPoll, SpeaksTheLanguageOfTheAgent)
{
    EXPECT_EQ(runProgram("LC_ALL=de_DE.UTF-8 RPCB0_HOSTNAME=127.0.0.1 DOVP_RB_PATH=" CATALOGUE " " + Poll +
                         "256.1.1.1")
                  .errors,
              "DOVPV500E - Der Rechner 256.1.1.1 hat keine Adresse.\n");
}

TEST(SnmpPoll, SaysWhatIsWrongWithoutACatalogue)
{
    const TemporaryFolder folder;
    const std::string withoutCatalogue = Quietly + "DOVP_RB_PATH=" + folder.path + " ";
    for (const char *line : {"256.1.1.1", "127.0.0.1 --port 9 --tries 1 --timeout 20"}) {
        const ProgramResult result = runProgram(withoutCatalogue + Poll + line);
        const ProgramResult same = runProgram(WithCatalogue + Poll + line);
        EXPECT_EQ(result.status, same.status);
        EXPECT_EQ(result.errors, same.errors);
        EXPECT_THAT(result.output,
                    HasSubstr("Could not find any dovpmsg resource bundles")); // the library's own
    }
}

TEST(SnmpPoll, HasTheTextsOfTheCatalogue)
{
    std::string source = contentsOf(EXAMPLES "/snmp/trouble.h");
    source = std::regex_replace(source, std::regex("\"\\s*\""), ""); // texts over several lines
    const std::string catalogue = contentsOf(EXAMPLES "/../messages/root.txt");
    static const std::regex Text("\"(DOVP[A-Z][0-9]+)([IWE] - [^\"]*)\"");
    int texts = 0;
    for (std::sregex_iterator match(source.begin(), source.end(), Text); match != std::sregex_iterator();
         ++match) {
        const std::string key = (*match)[1];
        EXPECT_THAT(catalogue, HasSubstr(key + " { \"" + key + std::string((*match)[2]) + "\" }\n"));
        ++texts;
    }
    EXPECT_EQ(texts, 10);
}
