// The rows of the affinity table: each product, and the data subnodes of each. A new product goes before the last
// row. What is there never changes, because management servers keep the strings.
#include "prodspec/affinity_table.h"

#include <string_view>

// A string names the library, the role and the product, and ends in the product's bit of the affinity mask.
constexpr AffinityRow map[] = {
    {OA_AgentAffinityName, "DOV0610.AGT.0001.80000000000000000000000000"},
    {OA_SubnodeAffinityName, "DOV0610.SUB.0001.40000000000000000000000000"},
    {"MAIL_RELAY", "DOV0610.AGT.0002.20000000000000000000000000"},
    {"MAIL_RELAY_DATA", "DOV0610.SUB.0002.10000000000000000000000000"},
    {"PRINT_SPOOLER", "DOV0610.AGT.0003.08000000000000000000000000"},
    {"PRINT_SPOOLER_DATA", "DOV0610.SUB.0003.04000000000000000000000000"},
    {"TAPE_LIBRARY", "DOV0610.AGT.0004.02000000000000000000000000"},
    {"TAPE_LIBRARY_DATA", "DOV0610.SUB.0004.01000000000000000000000000"},
    {"DOOR_CONTROL", "DOV0610.AGT.0005.00800000000000000000000000"},
    {"DOOR_CONTROL_DATA", "DOV0610.SUB.0005.00400000000000000000000000"},
    {nullptr, nullptr},
};

static_assert([] {
    bool hasAgent = false;
    bool hasSubnode = false;
    for (const AffinityRow &row : map) {
        if (row.name == nullptr) {
            break;
        }
        if (std::string_view(row.name).empty() ||
            std::string_view(row.string).size() != AffinityStringLength) {
            return false;
        }
        hasAgent = hasAgent || std::string_view(row.name) == OA_AgentAffinityName;
        hasSubnode = hasSubnode || std::string_view(row.name) == OA_SubnodeAffinityName;
    }
    return hasAgent && hasSubnode;
}());
