// A sorted list with an index beside it. The index divides the list into segments of about equal length and keeps
// them in a sorted table, so that a search takes a few steps in the table and a few in one segment. The table is a
// fixed area, which needs no storage of its own and cannot fail; when it is full, segments become longer.
#include "net/unresolved_hosts.h"

#include <algorithm>

constinit FirstUseLock UnresolvedHostListLock;
constinit UnresolvedHost *UnresolvedHostList = nullptr;

namespace {

struct Segment {
    uint32_t firstAddress; // of the first entry, so that the search stays inside the table
    uint32_t length;
    UnresolvedHost *first;
};

constexpr uint32_t MostSegments = 16384; // even

// Together these segments are the list, in its order. There are none as long as it is empty.
constinit Segment segments[MostSegments] = {};
constinit uint32_t segmentCount = 0;

// A segment of twice this length is split.
constinit uint32_t usualLength = 8;

// The last segment that begins below an address, or the first one.
Segment *segmentBelow(uint32_t address) noexcept
{
    Segment *end = std::partition_point(segments, segments + segmentCount, [=](const Segment &segment) {
        return segment.firstAddress < address;
    });
    return end != segments ? end - 1 : segments;
}

// The last entry below an address, or null; from the address's own segment on.
UnresolvedHost *lastBelow(const Segment &segment, uint32_t address) noexcept
{
    UnresolvedHost *last = nullptr;
    for (UnresolvedHost *host = segment.first; host != nullptr && host->address < address;
         host = host->next) {
        last = host;
    }
    return last;
}

void joinSegmentsInPairs() noexcept
{
    for (uint32_t i = 0; i < MostSegments / 2; ++i) {
        segments[i] = segments[2 * i];
        segments[i].length += segments[2 * i + 1].length;
    }
    segmentCount = MostSegments / 2;
    usualLength *= 2;
}

void split(Segment *segment) noexcept
{
    if (segmentCount == MostSegments) {
        joinSegmentsInPairs(); // what is too long even so is split at its next entry
        return;
    }
    UnresolvedHost *middle = segment->first;
    for (uint32_t i = 0; i < usualLength; ++i) {
        middle = middle->next;
    }
    std::copy_backward(segment + 1, segments + segmentCount, segments + segmentCount + 1);
    ++segmentCount;
    segment[1] = {middle->address, segment->length - usualLength, middle};
    segment->length = usualLength;
}

void countNewHost(Segment *segment) noexcept
{
    ++segment->length;
    if (segment->length >= 2 * usualLength) {
        split(segment);
    }
}

} // namespace

const UnresolvedHost *findUnresolvedHost(uint32_t address) noexcept
{
    if (UnresolvedHostList == nullptr) {
        return nullptr;
    }
    const UnresolvedHost *below = lastBelow(*segmentBelow(address), address);
    const UnresolvedHost *host = below != nullptr ? below->next : UnresolvedHostList;
    return host != nullptr && host->address == address ? host : nullptr;
}

const UnresolvedHost *insertUnresolvedHost(UnresolvedHost *newHost) noexcept
{
    if (UnresolvedHostList == nullptr) {
        UnresolvedHostList = newHost;
        segments[0] = {newHost->address, 1, newHost};
        segmentCount = 1;
        return nullptr;
    }
    if (newHost->address < UnresolvedHostList->address) {
        newHost->next = UnresolvedHostList;
        UnresolvedHostList = newHost;
        segments[0].first = newHost;
        segments[0].firstAddress = newHost->address;
        countNewHost(&segments[0]);
        return nullptr;
    }
    Segment *segment = segmentBelow(newHost->address);
    UnresolvedHost *before = lastBelow(*segment, newHost->address);
    if (before == nullptr) {
        before = UnresolvedHostList; // its address is the new one
    }
    newHost->next = before->next;
    before->next = newHost;
    countNewHost(segment);
    return before;
}
