// The products that the agent knows, by affinity name. A product specification names two of them: one for the
// agent and one for the subnodes that its data providers make.
#ifndef DOV0610_PRODSPEC_AFFINITY_TABLE_H
#define DOV0610_PRODSPEC_AFFINITY_TABLE_H

#include <cstddef>
#include <cstdint>

// A row of the table.
struct AffinityRow {
    const char *name;   // null or empty ends the table
    const char *string; // AffinityStringLength characters: what the management server knows the product by
    uintptr_t reserved[2] = {};
};

constexpr size_t AffinityStringLength = 43;

// Length that the feature string of a subnode must have, AFF_FEATURE_BYTES in messages.
constexpr size_t AffinityFeatureLength = 11;

extern const AffinityRow map[];

// The agent's own affinities, both in the table, and the features of its subnodes.
constexpr char OA_AgentAffinityName[] = "OMNIA_AGENT";
constexpr char OA_SubnodeAffinityName[] = "OMNIA_AGENT_DATA";
constexpr char OA_SubnodeAffinityFeatures[] = "00100000000";
static_assert(sizeof OA_SubnodeAffinityFeatures - 1 == AffinityFeatureLength);

// The features of subnodes of a product that names none.
constexpr char NoAffinityFeatures[] = "00000000000";
static_assert(sizeof NoAffinityFeatures - 1 == AffinityFeatureLength);

#endif
