// Ten thousand polls of a node that is hostile. Whatever it sends, snmp_poll must neither crash nor hang, and must say in
// one line what became of each poll.
#include "snmp/responder.h"
#include "support/command.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <random>
#include <sstream>

namespace {

constexpr size_t SilentPolls = 1; // the last one; it costs the time limit

// --- What becomes of a poll --------------------------------------------------------------------------------------

struct PollOutcome {
    const char *name;
    const char *beginning; // of the line
};

// In the order of the bits of Allowed.
constexpr PollOutcome Outcomes[] = {{"polled", "record: "},
                                    {"no answer", "DOVPS400E - 127.0.0.1 port "},
                                    {"other community", "DOVPS401E - 127.0.0.1 answers with the community "},
                                    {"refused", "DOVPS402E - 127.0.0.1 sent a packet that cannot be used: "},
                                    {"error reported", "DOVPS403E - 127.0.0.1 reports error "},
                                    {"set aside", "DOVPS405E - 127.0.0.1 port "},
                                    {"unclear", ""}};

enum Allowed : unsigned int {
    Polled = 1,
    NoAnswer = 2,
    OtherCommunity = 4,
    Refused = 8,
    ErrorReported = 16,
    SetAside = 32
};

size_t outcomeOf(const std::string &line)
{
    size_t i = 0;
    while (line.rfind(Outcomes[i].beginning, 0) != 0) {
        ++i;
    }
    return i;
}

// --- Hostile packets ---------------------------------------------------------------------------------------------

class Dice {
public:
    size_t below(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(engine); }
    unsigned char byte() { return static_cast<unsigned char>(below(256)); }

    Bytes bytes(size_t count)
    {
        Bytes result(count);
        std::generate(result.begin(), result.end(), [this] { return byte(); });
        return result;
    }

    template <typename Container> auto &oneOf(Container &container)
    {
        return container[below(container.size())];
    }

private:
    std::mt19937 engine{20261121}; // the same packets each time, but for request ids and timing
};

// Where the lengths of all fields of a well-formed packet are, at every depth.
void findLengths(const Bytes &packet, size_t next, size_t end, std::vector<size_t> &places)
{
    while (next < end) {
        const bool isConstructed = (packet[next] & 0x20) != 0;
        places.push_back(++next);
        size_t length = packet[next++];
        if (length > 0x7F) {
            const size_t count = length & 0x7F;
            length = 0;
            for (size_t i = 0; i < count; ++i) {
                length = length << 8 | packet[next++];
            }
        }
        if (isConstructed) {
            findLengths(packet, next, next + length, places);
        }
        next += length;
    }
}

std::vector<size_t> lengthsIn(const Bytes &packet)
{
    std::vector<size_t> places;
    findLengths(packet, 0, packet.size(), places);
    return places;
}

Bytes contradicting(Dice &dice, Bytes packet)
{
    const std::vector<size_t> places = lengthsIn(packet);
    const size_t place = dice.oneOf(places);
    const size_t lowest = packet[place] > 0x7F ? place + (packet[place] & 0x7FU) : place;
    const unsigned char old = packet[lowest];
    while (packet[lowest] == old) {
        packet[lowest] = static_cast<unsigned char>(lowest == place ? dice.below(0x80) : dice.below(0x100));
    }
    return packet;
}

Bytes oversized(Dice &dice, Bytes packet)
{
    const std::vector<size_t> places = lengthsIn(packet);
    const auto place = packet.begin() + static_cast<ptrdiff_t>(dice.oneOf(places));
    const Bytes length = Bytes{0x84, static_cast<unsigned char>(1 + dice.below(255))} + dice.bytes(3);
    packet.insert(packet.erase(place), length.begin(), length.end());
    return packet;
}

Bytes withLength(Dice &dice, Bytes packet, unsigned char length)
{
    const std::vector<size_t> places = lengthsIn(packet);
    packet[dice.oneOf(places)] = length;
    return packet;
}

Bytes flipped(Dice &dice, Bytes packet)
{
    for (size_t flips = 1 + dice.below(3); flips > 0; --flips) {
        dice.oneOf(packet) ^= static_cast<unsigned char>(1U << dice.below(8));
    }
    return packet;
}

Bytes nested(size_t depth)
{
    Bytes content;
    while (depth-- > 0 && content.size() < 60000) {
        content = tlv(0x30, content);
    }
    return content;
}

// --- Attacks -----------------------------------------------------------------------------------------------------

struct Situation {
    Dice &dice;
    const Request &request;
    const Response &right; // what a well-behaved node answers
    size_t count;          // of earlier polls with the same attack
};

struct Attack {
    const char *name;
    unsigned int allowed; // outcomes
    size_t requests;      // of a poll, one of which is attacked; 0: each one of the walk
    std::function<std::vector<Datagram>(const Situation &)> packets;
};

constexpr size_t InPoll = 4; // requests of a poll of the node: the group, two rows, and the end of the table
constexpr size_t WithValues = 3; // those whose answers have values that count

std::vector<Datagram> one(const Bytes &bytes)
{
    return {{bytes}};
}

// Spoils the answer before it is encoded.
template <typename Spoiler> auto spoiled(Spoiler spoil)
{
    return [spoil](const Situation &at) {
        Response response = at.right;
        spoil(at, response);
        return one(response.bytes());
    };
}

std::vector<Attack> attacks()
{
    const unsigned int anyOf = Polled | OtherCommunity | Refused | ErrorReported;
    const unsigned int notPolled = NoAnswer | OtherCommunity | Refused | ErrorReported | SetAside;
    return {
        {"no attack", Polled, InPoll, [](const Situation &at) { return one(at.right.bytes()); }},
        {"random bytes", Refused, InPoll,
         [](const Situation &at) { return one(at.dice.bytes(at.dice.below(2000))); }},
        {"cut off, at every length", Refused, InPoll,
         [](const Situation &at) {
             Bytes bytes = at.right.bytes();
             bytes.resize(at.count % bytes.size());
             return one(bytes);
         }},
        {"oversized lengths", Refused, InPoll,
         [](const Situation &at) { return one(oversized(at.dice, at.right.bytes())); }},
        {"contradicting lengths", notPolled, InPoll,
         [](const Situation &at) { return one(contradicting(at.dice, at.right.bytes())); }},
        {"indefinite lengths", Refused, InPoll,
         [](const Situation &at) { return one(withLength(at.dice, at.right.bytes(), 0x80)); }},
        {"lengths of too many bytes", Refused, InPoll,
         [](const Situation &at) {
             return one(withLength(at.dice, at.right.bytes(),
                                   static_cast<unsigned char>(0x85 + at.dice.below(0x7B))));
         }},
        {"flipped bits, then the answer", anyOf, InPoll,
         [](const Situation &at) -> std::vector<Datagram> {
             return {{flipped(at.dice, at.right.bytes())}, {at.right.bytes()}};
         }},
        {"bytes behind the message", Refused, InPoll,
         [](const Situation &at) { return one(at.right.bytes() + at.dice.bytes(1 + at.dice.below(100))); }},
        {"huge names", Refused, WithValues, spoiled([](const Situation &at, Response &response) {
             Elements &name = at.dice.oneOf(response.bindings).name;
             name.resize(name.size() + 96 + at.dice.below(50000), 1);
         })},
        {"elements without an end", Refused, WithValues,
         [](const Situation &at) {
             Response response = at.right;
             // An object identifier in place of the value: only a name in the first request, a wrong type later.
             at.dice.oneOf(response.bindings).value =
                 tlv(0x06, Bytes{0x2B} + Bytes(1 + at.dice.below(90), 0xFF));
             return one(response.bytes());
         }},
        {"wrong types", Refused, WithValues, spoiled([](const Situation &at, Response &response) {
             static const std::vector<unsigned char> Tags = {0x01, 0x05, 0x30, 0x40, 0x44, 0x46, 0xA2, 0xFE};
             at.dice.oneOf(response.bindings).value[0] = at.dice.oneOf(Tags);
         })},
        {"numbers of wrong sizes", Refused, WithValues, spoiled([](const Situation &at, Response &response) {
             Bytes &value = response.bindings[at.request.type == 0xA0 ? 2 + at.dice.below(2) : 0].value;
             static const std::vector<size_t> Sizes = {0, 6, 7, 8, 9, 127, 300};
             value = tlv(value[0], Bytes(at.dice.oneOf(Sizes), 0x01));
         })},
        {"empty datagram", Refused, InPoll, [](const Situation &) { return one({}); }},
        {"64 KB of anything", Refused, InPoll,
         [](const Situation &at) {
             return one(at.count % 2 == 0 ? at.dice.bytes(65507) : Bytes(65507, at.dice.byte()));
         }},
        {"64 KB of text", Refused, WithValues, spoiled([](const Situation &at, Response &response) {
             response.bindings[at.request.type == 0xA0 ? 0 : 1].value = text(std::string(65000, 'x'));
         })},
        {"64 KB of variables", Refused, InPoll, spoiled([](const Situation &, Response &response) {
             const size_t each = response.variables().size() / response.bindings.size();
             response.bindings.resize(60000 / (each + 4), response.bindings[0]);
         })},
        {"sequences within sequences", Refused, InPoll,
         [](const Situation &at) { return one(nested(1 + at.dice.below(5000))); }},
        {"from another port, then the answer", Polled, InPoll,
         [](const Situation &at) -> std::vector<Datagram> {
             return {{at.right.bytes(), true}, {at.right.bytes()}};
         }},
        {"a flood from another port, then the answer", Polled, InPoll,
         [](const Situation &at) {
             std::vector<Datagram> flood(20, {at.dice.bytes(at.dice.below(500)), true});
             flood.push_back({at.right.bytes()});
             return flood;
         }},
        {"of another request, then the answer", Polled, InPoll,
         [](const Situation &at) -> std::vector<Datagram> {
             Response other = at.right;
             other.id = static_cast<int64_t>(at.dice.below(0x7FFFFFFF));
             other.id += other.id == at.right.id ? 1 : 0;
             return {{other.bytes()}, {at.right.bytes()}};
         }},
        {"the answer twice", Polled, InPoll,
         [](const Situation &at) -> std::vector<Datagram> {
             return {{at.right.bytes()}, {at.right.bytes()}};
         }},
        {"of another community", OtherCommunity, InPoll, spoiled([](const Situation &at, Response &response) {
             const Bytes name = at.dice.bytes(at.dice.below(300));
             response.community.assign(name.begin(), name.end());
         })},
        {"of another version", Refused, InPoll, spoiled([](const Situation &at, Response &response) {
             response.version = at.dice.below(2) == 0 ? 0 : 3 + static_cast<int64_t>(at.dice.below(1000));
         })},
        {"not a response", Refused, InPoll, spoiled([](const Situation &at, Response &response) {
             response.type = static_cast<unsigned char>(0xA3 + at.dice.below(10));
         })},
        {"an error of the node", ErrorReported, InPoll, spoiled([](const Situation &at, Response &response) {
             response.errorStatus = 1 + static_cast<int64_t>(at.dice.below(1000000));
             response.errorIndex = static_cast<int64_t>(at.dice.below(1000000));
         })},
        {"another number of variables", Refused, InPoll, spoiled([](const Situation &at, Response &response) {
             response.bindings.resize(at.dice.below(response.bindings.size()));
         })},
        {"other variables", Refused, 1, spoiled([](const Situation &at, Response &response) {
             at.dice.oneOf(response.bindings).name.push_back(1);
         })},
        {"the same row for ever", Refused, 0, spoiled([](const Situation &at, Response &response) {
             for (size_t i = 0; i < response.bindings.size(); ++i) {
                 response.bindings[i].name = at.request.names[i];
                 response.bindings[i].name.resize(11, 1);
             }
         })},
        {"rows in a circle", Refused, 0, spoiled([](const Situation &at, Response &response) {
             for (size_t i = 0; i < response.bindings.size(); ++i) {
                 response.bindings[i].name = at.request.names[i];
                 response.bindings[i].name.resize(11, 0);
                 response.bindings[i].name[10] = (response.bindings[i].name[10] + 1) % 5;
             }
         })},
        {"rows without an end", Refused, 0, spoiled([](const Situation &at, Response &response) {
             for (size_t i = 0; i < response.bindings.size(); ++i) {
                 response.bindings[i].name = at.request.names[i];
                 response.bindings[i].name.resize(11, 0);
                 ++response.bindings[i].name[10];
             }
         })},
    };
}

// The hostile node: deals an attack to each poll.
class HostileNode {
public:
    explicit HostileNode(size_t pollsToCome) : polls(pollsToCome) {}

    std::vector<Datagram> answer(const Request &request)
    {
        if (request.type == 0xA0) {
            beginPoll();
        } else {
            ++step;
        }
        const Response right = mib.answer(request);
        const Attack &attack = all[dealt.back()];
        if (isSilent(dealt.size() - 1)) {
            return {};
        }
        if (attack.requests == 0 ? request.type == 0xA0 : step != attackedStep) {
            return {{right.bytes()}};
        }
        const std::vector<Datagram> packets =
            attack.packets({dice, request, right, counts[dealt.back()] - 1});
        hostilePackets +=
            static_cast<size_t>(std::count_if(packets.begin(), packets.end(), [&](const Datagram &packet) {
                return packet.fromElsewhere || packet.bytes != right.bytes();
            }));
        return packets;
    }

    bool isSilent(size_t poll) const { return poll + SilentPolls >= polls; }

    size_t hostilePackets = 0; // sent
    const std::vector<Attack> all = attacks();
    std::vector<size_t> dealt; // the attack of each poll

private:
    void beginPoll()
    {
        const size_t attack = dealt.size() % all.size();
        dealt.push_back(attack);
        ++counts[attack];
        step = 0;
        attackedStep = all[attack].requests > 0 ? dice.below(all[attack].requests) : 0;
    }

    const size_t polls;
    const Mib mib = sampleMib();
    Dice dice;
    std::vector<size_t> counts = std::vector<size_t>(all.size());
    size_t step = 0;
    size_t attackedStep = 0;
};

// Polls the hostile node, prints what became of it, and checks that every poll came to an end that it may come to.
void pollHostileNode(size_t polls, const std::string &options)
{
    HostileNode node(polls);
    Outcome result;
    {
        const Responder responder([&](const Request &request) { return node.answer(request); });
        result = run(
            "RPCB0_HOSTNAME=127.0.0.1 LC_ALL=C DOVP_RB_PATH=" CATALOGUE " timeout 300 " SNMP_POLL " " +
            responder.target() + " --community demo --timeout 5000 --tries 1 --max-interfaces 10 --repeat " +
            std::to_string(polls) + " " + options);
    }

    std::map<std::string, size_t> summary;
    std::vector<std::map<std::string, size_t>> byAttack(node.all.size());
    std::istringstream lines(result.output);
    size_t count = 0;
    for (std::string line; count < node.dealt.size() && std::getline(lines, line); ++count) {
        const size_t outcome = outcomeOf(line);
        const Attack &attack = node.all[node.dealt[count]];
        const bool isSilent = node.isSilent(count);
        EXPECT_NE((isSilent ? NoAnswer : attack.allowed) & (1U << outcome), 0U)
            << "poll " << count << ", " << (isSilent ? "silence" : attack.name) << ": " << line;
        ++summary[Outcomes[outcome].name];
        if (!isSilent) {
            ++byAttack[node.dealt[count]][Outcomes[outcome].name];
        }
    }
    std::string rest;
    std::getline(lines, rest, '\0');
    EXPECT_EQ(rest, "");
    if (count < polls) {
        summary[result.status == 124 ? "hung" : "crashed"] = polls - count;
    }

    size_t total = 0;
    for (const auto &[outcome, number] : summary) {
        std::printf("%-44s %6zu\n", outcome.c_str(), number);
        total += number;
    }
    std::printf("%-44s %6zu\n", "all", total);
    std::printf("%-44s %6zu\n\n", "hostile packets", node.hostilePackets);
    for (size_t i = 0; i < node.all.size(); ++i) {
        std::printf("%-44s", node.all[i].name);
        for (const auto &[outcome, number] : byAttack[i]) {
            std::printf(" %s %zu", outcome.c_str(), number);
        }
        std::printf("\n");
    }
    EXPECT_EQ(total, polls);
    EXPECT_EQ(node.dealt.size(), polls);
    EXPECT_GE(node.hostilePackets, polls);
    EXPECT_EQ(summary.count("crashed") + summary.count("hung") + summary.count("unclear"), 0U)
        << "status " << result.status << "\n"
        << rest;
    EXPECT_EQ(summary["no answer"], SilentPolls);
    EXPECT_EQ(result.status, 3); // of the last poll, which was not answered
}

} // namespace

TEST(HostileResponder, MeetsAClearLineForEachPoll)
{
    pollHostileNode(HOSTILE_POLLS, "");
}

// The trace looks at values, too.
TEST(HostileResponder, DoesNoHarmThroughTheTrace)
{
    pollHostileNode(300, "--trace all --trace-file /dev/null");
}
