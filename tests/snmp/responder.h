// A node for tests, which answers SNMP requests as a test wants. It has a BER encoder and a parser of its own, so that the
// library's are not judged by themselves.
#ifndef DOV0610_TESTS_SNMP_RESPONDER_H
#define DOV0610_TESTS_SNMP_RESPONDER_H

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

using Bytes = std::vector<unsigned char>;
using Elements = std::vector<uint32_t>; // of an object identifier

// In C++20 the vectors' own operator compares too few bytes on big-endian hosts (GCC 12).
struct InOrder {
    bool operator()(const Elements &first, const Elements &second) const
    {
        return std::lexicographical_compare(first.begin(), first.end(), second.begin(), second.end());
    }
};

inline Bytes &operator+=(Bytes &left, const Bytes &right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline Bytes operator+(Bytes left, const Bytes &right)
{
    left += right;
    return left;
}

inline Bytes bytesOf(const std::string &text)
{
    return {text.begin(), text.end()};
}

// A field with the shortest length, 0x81 included.
inline Bytes tlv(unsigned char tag, const Bytes &content)
{
    Bytes length;
    for (size_t rest = content.size(); rest > 0 || length.empty(); rest >>= 8) {
        length.insert(length.begin(), static_cast<unsigned char>(rest & 0xFF));
    }
    if (content.size() > 127) {
        length.insert(length.begin(), static_cast<unsigned char>(0x80 | length.size()));
    }
    return Bytes{tag} + length + content;
}

// Two's complement in the fewest bytes; unsigned numbers above 2^31 - 1 take five.
inline Bytes number(unsigned char tag, int64_t value)
{
    Bytes content;
    for (int64_t rest = value;; rest >>= 8) {
        content.insert(content.begin(), static_cast<unsigned char>(rest & 0xFF));
        const int64_t sign = (content[0] & 0x80) != 0 ? -1 : 0;
        if (rest >> 8 == sign) {
            return tlv(tag, content);
        }
    }
}

inline Bytes text(const std::string &value)
{
    return tlv(0x04, bytesOf(value));
}

inline Bytes identifier(const Elements &elements)
{
    Bytes content = {static_cast<unsigned char>(40 * elements[0] + elements[1])};
    for (size_t i = 2; i < elements.size(); ++i) {
        Bytes groups = {static_cast<unsigned char>(elements[i] & 0x7F)};
        for (uint32_t rest = elements[i] >> 7; rest > 0; rest >>= 7) {
            groups.insert(groups.begin(), static_cast<unsigned char>(0x80 | (rest & 0x7F)));
        }
        content += groups;
    }
    return tlv(0x06, content);
}

struct Binding {
    Elements name;
    Bytes value; // a whole field
};

struct Request {
    unsigned char type = 0;
    int32_t id = 0;
    std::string community;
    std::vector<Elements> names;
};

// The parts of an answer, each of which a test can spoil.
struct Response {
    int64_t version = 1;
    std::string community;
    unsigned char type = 0xA2;
    int64_t id = 0;
    int64_t errorStatus = 0;
    int64_t errorIndex = 0;
    std::vector<Binding> bindings;

    Bytes variables() const
    {
        Bytes list;
        for (const Binding &binding : bindings) {
            list += tlv(0x30, identifier(binding.name) + binding.value);
        }
        return tlv(0x30, list);
    }
    Bytes withBody(const Bytes &body) const
    {
        return tlv(0x30, number(0x02, version) + text(community) + tlv(type, body));
    }
    Bytes bytes() const
    {
        return withBody(number(0x02, id) + number(0x02, errorStatus) + number(0x02, errorIndex) +
                        variables());
    }
};

// Parses what snmp_poll sends; anything else ends the test.
class RequestParser {
public:
    explicit RequestParser(const Bytes &packet) : bytes(packet) {}

    Request parse()
    {
        Request request;
        enter(0x30);
        require(integer() == 1);
        const size_t communityEnd = enter(0x04);
        request.community.assign(bytes.begin() + static_cast<ptrdiff_t>(next),
                                 bytes.begin() + static_cast<ptrdiff_t>(communityEnd));
        next = communityEnd;
        request.type = bytes.at(next);
        const size_t end = enter(request.type);
        request.id = static_cast<int32_t>(integer());
        require(integer() == 0 && integer() == 0);
        require(enter(0x30) == end);
        while (next < end) {
            enter(0x30);
            const size_t nameEnd = enter(0x06);
            const uint32_t first = bytes.at(next++);
            Elements name = {first / 40, first % 40};
            for (uint32_t element = 0; next < nameEnd; element = 0) {
                do {
                    element = element << 7 | (bytes.at(next) & 0x7FU);
                } while ((bytes.at(next++) & 0x80) != 0);
                name.push_back(element);
            }
            request.names.push_back(name);
            require(bytes.at(next++) == 0x05 && bytes.at(next++) == 0x00);
        }
        require(next == bytes.size());
        return request;
    }

private:
    static void require(bool holds)
    {
        if (!holds) {
            std::abort();
        }
    }
    size_t enter(unsigned char tag)
    {
        require(bytes.at(next++) == tag);
        size_t length = bytes.at(next++);
        if (length > 127) {
            const size_t count = length & 0x7F;
            length = 0;
            for (size_t i = 0; i < count; ++i) {
                length = length << 8 | bytes.at(next++);
            }
        }
        require(next + length <= bytes.size());
        return next + length;
    }
    int64_t integer()
    {
        const size_t end = enter(0x02);
        int64_t value = (bytes.at(next) & 0x80) != 0 ? -1 : 0;
        while (next < end) {
            value = static_cast<int64_t>(static_cast<uint64_t>(value) << 8 | bytes.at(next++));
        }
        return value;
    }

    const Bytes &bytes;
    size_t next = 0;
};

// What a well-behaved node has and answers.
class Mib {
public:
    explicit Mib(std::string itsCommunity) : community(std::move(itsCommunity)) {}

    std::map<Elements, Bytes, InOrder> variables;

    Response answer(const Request &request) const
    {
        Response response;
        response.community = community;
        response.id = request.id;
        for (const Elements &name : request.names) {
            const auto found = request.type == 0xA0 ? variables.find(name) : variables.upper_bound(name);
            if (found != variables.end()) {
                response.bindings.push_back({found->first, found->second});
            } else {
                response.bindings.push_back(
                    {name, {static_cast<unsigned char>(request.type == 0xA0 ? 0x80 : 0x82), 0}});
            }
        }
        return response;
    }

private:
    std::string community;
};

struct Datagram {
    Bytes bytes;
    bool fromElsewhere = false; // sent from another port
};

// A socket of the loopback interface, with a port that the system chose.
class LoopbackSocket {
public:
    LoopbackSocket() : descriptor(socket(AF_INET, SOCK_DGRAM, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto *const generic = reinterpret_cast<sockaddr *>(&address);
        if (descriptor < 0 || bind(descriptor, generic, size) != 0 ||
            getsockname(descriptor, generic, &size) != 0) {
            std::abort();
        }
        port = ntohs(address.sin_port);
    }
    ~LoopbackSocket() { close(descriptor); }
    LoopbackSocket(const LoopbackSocket &) = delete;
    LoopbackSocket &operator=(const LoopbackSocket &) = delete;

    const int descriptor;
    int port = 0;
};

// Answers requests on a thread of its own until it goes.
class Responder {
public:
    using Handler = std::function<std::vector<Datagram>(const Request &)>;

    explicit Responder(Handler answers) : handler(std::move(answers)), thread([this] { serve(); }) {}
    ~Responder()
    {
        stopped = true;
        thread.join();
    }
    Responder(const Responder &) = delete;
    Responder &operator=(const Responder &) = delete;

    std::string target() const { return "127.0.0.1:" + std::to_string(own.port); }

private:
    void serve()
    {
        Bytes buffer(65536);
        while (!stopped) {
            pollfd wanted = {own.descriptor, POLLIN, 0};
            if (poll(&wanted, 1, 20) <= 0) {
                continue;
            }
            sockaddr_in sender = {};
            socklen_t senderSize = sizeof sender;
            auto *const generic = reinterpret_cast<sockaddr *>(&sender);
            const ssize_t size =
                recvfrom(own.descriptor, buffer.data(), buffer.size(), 0, generic, &senderSize);
            if (size < 0) {
                continue;
            }
            const Bytes packet(buffer.begin(), buffer.begin() + size);
            for (const Datagram &datagram : handler(RequestParser(packet).parse())) {
                const int from = datagram.fromElsewhere ? elsewhere.descriptor : own.descriptor;
                if (sendto(from, datagram.bytes.data(), datagram.bytes.size(), 0, generic, senderSize) < 0) {
                    std::abort(); // too large, say
                }
            }
        }
    }

    LoopbackSocket own;
    LoopbackSocket elsewhere;
    Handler handler;
    std::atomic<bool> stopped = false;
    std::thread thread;
};

// A node with the variables that snmp_poll asks for, and two interfaces.
inline Mib sampleMib()
{
    Mib mib("demo");
    const Elements system = {1, 3, 6, 1, 2, 1, 1};
    const Elements columns = {1, 3, 6, 1, 2, 1, 2, 2, 1};
    const auto at = [](Elements base, const Elements &rest) {
        base.insert(base.end(), rest.begin(), rest.end());
        return base;
    };
    mib.variables[at(system, {1, 0})] = text("Node of a test");
    mib.variables[at(system, {2, 0})] = identifier({1, 3, 6, 1, 4, 1, 4294967295});
    mib.variables[at(system, {3, 0})] = number(0x43, 4294967295);
    mib.variables[at(system, {7, 0})] = number(0x02, 72);
    for (uint32_t i = 1; i <= 2; ++i) {
        mib.variables[at(columns, {1, i})] = number(0x02, i);
        mib.variables[at(columns, {2, i})] = text("eth" + std::to_string(i));
        mib.variables[at(columns, {3, i})] = number(0x02, 6);
        mib.variables[at(columns, {4, i})] = number(0x02, 1500);
        mib.variables[at(columns, {5, i})] = number(0x42, 4294967295);
        mib.variables[at(columns, {6, i})] = text(std::string("\x02\x00\x00\x00\x00\xFF", 6));
        mib.variables[at(columns, {8, i})] = number(0x02, i == 1 ? 1 : -2);
        mib.variables[at(columns, {10, i})] = number(0x41, 2147483648);
        mib.variables[at(columns, {16, i})] = number(0x41, 1000 * i);
    }
    mib.variables[{1, 3, 6, 1, 2, 1, 4, 1, 0}] = number(0x02, 1); // behind the table
    return mib;
}

#endif
