// The time of an address look-up among 10, 1,000 and 100,000 addresses that have failed before: of an address that is
// one of them, and of one that has a name. The resolver is stood in for, so that only the library's own time is seen.
#include "dov0610.h"

#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <cerrno>
#include <random>
#include <vector>

namespace {

char hostName[] = "host.example";
hostent namedHost = {hostName, nullptr, AF_INET, sizeof(in_addr_t), nullptr};

// The last bit of an address tells whether it has a name.
const in_addr_t named = htonl(1);

std::vector<in_addr_t> failed;

// The list only grows, so the runs come in the order of its length.
bool failUpTo(size_t count)
{
    static std::mt19937 random(20260101);
    while (failed.size() < count) {
        failed.push_back(htonl(static_cast<uint32_t>(random())) & ~named);
        if (DOV0_GetHostByAddr(&failed.back()) != nullptr) {
            return false;
        }
    }
    return failed.size() == count;
}

void lookUp(benchmark::State &state, size_t count, bool withName)
{
    if (!failUpTo(count)) {
        state.SkipWithError("the list has another length");
        return;
    }
    size_t i = 0;
    for ([[maybe_unused]] const auto step : state) {
        const in_addr_t address = withName ? failed[i] | named : failed[i];
        hostent *record = DOV0_GetHostByAddr(&address);
        if ((record != nullptr) != withName) {
            state.SkipWithError("wrong answer");
            break;
        }
        DOV0_FreeStorage(&record);
        i = i + 1 < count ? i + 1 : 0;
    }
}

} // namespace

extern "C" hostent *gethostbyaddr(const void *address, socklen_t, int)
{
    const auto *bytes = static_cast<const unsigned char *>(address);
    if ((bytes[3] & 1) != 0) {
        return &namedHost;
    }
    h_errno = HOST_NOT_FOUND;
    return nullptr;
}

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    for (const size_t count : {10U, 1000U, 100000U}) {
        const std::string length = std::to_string(count);
        benchmark::RegisterBenchmark(("failed before/" + length).c_str(), lookUp, count, false);
        benchmark::RegisterBenchmark(("with a name/" + length).c_str(), lookUp, count, true);
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
