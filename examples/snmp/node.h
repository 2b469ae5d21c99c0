// A node of the network that answers SNMP requests, reached through a socket of the library.
#ifndef DOV0610_EXAMPLES_SNMP_NODE_H
#define DOV0610_EXAMPLES_SNMP_NODE_H

#include "packet.h"
#include "trouble.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <poll.h>
#include <random>

namespace snmp {

struct NodeSettings {
    std::string host;
    int32_t port = 161;
    std::string community = "public";
    int32_t timeout = 1000; // of one try, in milliseconds
    int32_t tries = 3;
};

inline std::string shown(const sockaddr_in &address)
{
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
    return std::string(text) + " port " + std::to_string(ntohs(address.sin_port));
}

inline std::string errorName(int32_t status)
{
    static constexpr const char *Names[] = {"noError",  "tooBig",   "noSuchName",
                                            "badValue", "readOnly", "genErr"};
    return status > 0 && status < 6 ? Names[status] : std::to_string(status);
}

class Node {
public:
    explicit Node(const NodeSettings &nodeSettings)
        : settings(nodeSettings), datagram(65536) // more than fits into one
    {
        // A text in the shape of an address that is none (256.1.1.1) comes back as the broadcast address.
        if (DOV0_ConvertNameToAddr(settings.host.c_str(), settings.port, &address) == 0 ||
            address.sin_addr.s_addr == INADDR_NONE) {
            throw Failure(NoSuchHost, {settings.host});
        }
        sockaddr_in own = {};
        int32_t error = 0;
        socket = DOV0_OpenLocalSocket(DOV0_SOCKET_DATAGRAM, 0, &own, DOV0_SOCKET_NO_REUSE, &error,
                                      DOV0_BIND_ANY_ADDRESS);
        if (socket < 0) {
            throw Failure(NoSocket, {std::strerror(error)});
        }
        DOV0_SetCloExecFlag(socket);
    }
    ~Node() { DOV0_CloseTheSocket(socket); }
    Node(const Node &) = delete;
    Node &operator=(const Node &) = delete;

    // The variables that answer a request, one for each name. Only silence is met with another try.
    std::vector<Variable> ask(unsigned char type, const std::vector<Bytes> &names)
    {
        const auto id = static_cast<int32_t>(random() & INT32_MAX); // nobody can guess it
        const Bytes packet = request(type, settings.community, id, names);
        std::string setAside;
        for (int32_t i = 0; i < settings.tries; ++i) {
            if (sendto(socket, packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr *>(&address),
                       sizeof address) < 0) {
                throw Failure(NotSent, {settings.host, std::strerror(errno)});
            }
            Answer answer;
            if (awaitAnswer(id, answer, setAside)) {
                return variablesOf(answer, names.size());
            }
        }
        char seconds[16];
        std::snprintf(seconds, sizeof seconds, "%g", settings.timeout / 1000.0);
        throw Failure(setAside.empty() ? Silence : OtherPackets,
                      {settings.host, std::to_string(settings.port), std::to_string(settings.tries), seconds,
                       setAside});
    }

private:
    // Waits until the answer to a request is there, or the time is up. What came instead is left in setAside.
    bool awaitAnswer(int32_t id, Answer &answer, std::string &setAside)
    {
        using namespace std::chrono;
        const auto end = steady_clock::now() + milliseconds(settings.timeout);
        for (;;) {
            const auto left = duration_cast<milliseconds>(end - steady_clock::now()).count();
            pollfd wanted = {socket, POLLIN, 0};
            if (left < 0 || ::poll(&wanted, 1, static_cast<int>(left)) == 0) {
                return false;
            }
            sockaddr_in sender = {};
            socklen_t senderSize = sizeof sender;
            const ssize_t size = recvfrom(socket, datagram.data(), datagram.size(), 0,
                                          reinterpret_cast<sockaddr *>(&sender), &senderSize);
            if (size < 0) {
                continue; // interrupted, or thrown away by the system
            }
            if (sender.sin_addr.s_addr != address.sin_addr.s_addr || sender.sin_port != address.sin_port) {
                setAside = "it came from " + shown(sender);
                continue;
            }
            Bytes packet(datagram.begin(), datagram.begin() + size);
            answer = answerIn(packet);
            if (answer.requestId == id) {
                return true;
            }
            setAside = "it answers another request";
        }
    }

    std::vector<Variable> variablesOf(const Answer &answer, size_t wanted) const
    {
        if (answer.community != settings.community) {
            throw Failure(OtherCommunity, {settings.host, answer.community});
        }
        if (answer.errorStatus != 0) {
            throw Failure(NodeError,
                          {settings.host, errorName(answer.errorStatus), std::to_string(answer.errorIndex)});
        }
        if (answer.variables.size() != wanted) {
            throw Refusal("it has " + std::to_string(answer.variables.size()) + " variables instead of " +
                          std::to_string(wanted));
        }
        return answer.variables;
    }

    const NodeSettings settings;
    sockaddr_in address = {};
    int32_t socket = -1;
    Bytes datagram;
    std::random_device random;
};

} // namespace snmp

#endif
