// Names the service layers that a node reports in its sysServices value.
#include "foundation/frame.h"

#include <cstring>

namespace {

struct Layer {
    int32_t weight;
    const char *word;
};

// Layers five and six have no word: their weights fall through to the smaller ones, and are shown as those.
constexpr Layer Layers[] = {{DOV0_SERVICE_APPLICATIONS, "Applications,"},
                            {DOV0_SERVICE_HOSTS, "Hosts,"},
                            {DOV0_SERVICE_GATEWAYS, "Gateways,"},
                            {DOV0_SERVICE_BRIDGES, "Bridges,"},
                            {DOV0_SERVICE_REPEATERS, "Repeaters,"}};

} // namespace

TRACE_CONTROL("dov0dnst", DOV0_DetermineNodeServiceType);
extern "C" char *DOV0_DetermineNodeServiceType(int32_t services) noexcept
{
    const Frame frame(TRC1__EPB_);

    auto *text = static_cast<char *>(DOV0_GetStorage(DOV0_SERVICE_TEXT_SIZE));
    if (text == nullptr) {
        return frame.leave<char *>(nullptr);
    }
    static_assert(DOV0_SERVICE_TEXT_SIZE == 64);
    TRACE(frame, Trace::Storage, "Allocated service type buffer @%p for length 64\n",
          static_cast<void *>(text));
    size_t length = 0;
    const auto append = [&](const char *word) {
        std::memcpy(text + length, word, std::strlen(word));
        length += std::strlen(word);
    };
    if (services < 1) {
        append("Unspecified");
    } else {
        for (const Layer &layer : Layers) {
            if (services >= layer.weight) {
                append(layer.word);
                services -= layer.weight;
            }
        }
        text[length - 1] = '\0'; // the last comma
    }
    TRACE(frame, Trace::Detail, "Service Type text [%s]\n", text);
    return frame.leave(text);
}
