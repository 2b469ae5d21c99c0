// What can go wrong with a poll: the exit status, the operator message, and how the message is made.
#ifndef DOV0610_EXAMPLES_SNMP_TROUBLE_H
#define DOV0610_EXAMPLES_SNMP_TROUBLE_H

#include "dov0610.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace snmp {

// Exit statuses.
enum Status {
    Polled = 0,
    NotStarted = 1,    // no product specification, no such host, no socket
    WrongUsage = 2,    // of the command line
    NoAnswer = 3,      // in all tries
    AnswerRefused = 4, // malformed, of another community, or without an end
    ErrorReported = 5, // by the node
    SamplesLost = 6    // they could not be recorded
};

// A message of the catalogue, and its English text for a machine without one.
struct Trouble {
    Status status;
    int32_t messageClass;
    int32_t number;
    const char *english;
};

constexpr Trouble NoProductSpec = {NotStarted, DOV0_MESSAGE_CLASS_G, 202,
                                   "DOVPG202E - The product specification {0} cannot be used."};
constexpr Trouble NoSuchHost = {NotStarted, DOV0_MESSAGE_CLASS_V, 500,
                                "DOVPV500E - Host {0} has no address."};
constexpr Trouble NoSocket = {NotStarted, DOV0_MESSAGE_CLASS_V, 501,
                              "DOVPV501E - No socket can be opened: {0}."};
constexpr Trouble NotSent = {NotStarted, DOV0_MESSAGE_CLASS_V, 503,
                             "DOVPV503E - Nothing can be sent to {0}: {1}."};
constexpr Trouble Silence = {NoAnswer, DOV0_MESSAGE_CLASS_S, 400,
                             "DOVPS400E - {0} port {1} does not answer ({2} requests, {3} seconds each). "
                             "Either no SNMP agent listens there or it "
                             "does not know the community."};
constexpr Trouble OtherPackets = {NoAnswer, DOV0_MESSAGE_CLASS_S, 405,
                                  "DOVPS405E - {0} port {1} does not answer ({2} requests, {3} seconds "
                                  "each). A packet was set aside: {4}."};
constexpr Trouble OtherCommunity = {
    AnswerRefused, DOV0_MESSAGE_CLASS_S, 401,
    "DOVPS401E - {0} answers with the community {1}, not with the one that was asked with."};
constexpr Trouble BadPacket = {AnswerRefused, DOV0_MESSAGE_CLASS_S, 402,
                               "DOVPS402E - {0} sent a packet that cannot be used: {1}."};
constexpr Trouble NodeError = {ErrorReported, DOV0_MESSAGE_CLASS_S, 403,
                               "DOVPS403E - {0} reports error {1} at variable {2}."};
constexpr Trouble RecordLost = {SamplesLost, DOV0_MESSAGE_CLASS_S, 406,
                                "DOVPS406E - The samples of {0} cannot be recorded: {1}."};

class Failure : public std::runtime_error {
public:
    Failure(const Trouble &what, std::vector<std::string> with)
        : std::runtime_error(what.english), trouble(what), parameters(std::move(with))
    {
    }
    const Trouble trouble;
    const std::vector<std::string> parameters; // of the message
};

// What came from the network or the command line, fit for a terminal and for the shell through which messages go to the
// console where data providers run on their own (see DOV0_ZTconsoleMessage()).
inline std::string harmless(std::string text)
{
    constexpr size_t Longest = 200;
    text.resize(std::min(text.size(), Longest));
    for (char &character : text) {
        if (character < ' ' || character > '~' ||
            std::string("\"$`\\").find(character) != std::string::npos) {
            character = '?';
        }
    }
    return text;
}

// The message in the language of the agent or, where there is no catalogue, in English.
inline std::string messageOf(const Failure &failure)
{
    std::vector<std::string> texts;
    for (const std::string &parameter : failure.parameters) {
        texts.push_back(harmless(parameter));
    }
    texts.resize(5);
    char message[2048] = "";
    DOV0_LNG2_Message(failure.trouble.messageClass, message, sizeof message, failure.trouble.number,
                      texts[0].c_str(), texts[1].c_str(), texts[2].c_str(), texts[3].c_str(),
                      texts[4].c_str());
    if (message[0] != '\0') {
        return message;
    }
    std::string english = failure.trouble.english;
    for (size_t i = 0; i < texts.size(); ++i) {
        const std::string place = '{' + std::to_string(i) + '}';
        const size_t found = english.find(place);
        if (found != std::string::npos) {
            english.replace(found, place.size(), texts[i]);
        }
    }
    return english;
}

} // namespace snmp

#endif
