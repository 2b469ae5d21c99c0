// A walk through the columns of a table.
#ifndef DOV0610_EXAMPLES_SNMP_WALK_H
#define DOV0610_EXAMPLES_SNMP_WALK_H

#include "node.h"
#include "sample_record.h"

#include <algorithm>

// The order of names. In C++20 the vectors' own operator compares too few bytes on big-endian hosts (GCC 12).
inline bool isBefore(const std::vector<uint32_t> &first, const std::vector<uint32_t> &second)
{
    return std::lexicographical_compare(first.begin(), first.end(), second.begin(), second.end());
}

// A column while it is walked.
struct Column {
    explicit Column(const Attribute &which)
        : attribute(&which), reached(snmp::nameOf(which.identifier)), prefix(snmp::elementsOf(reached))
    {
    }

    // Takes the variable that follows, and tells whether it was one of this column.
    bool advance(const snmp::Variable &variable, std::vector<Sample> &samples)
    {
        if (variable.tag == snmp::EndOfMibView) {
            return false;
        }
        const std::vector<uint32_t> elements = snmp::elementsOf(variable.name);
        if (!isBefore(snmp::elementsOf(reached), elements)) { // a walk must not go round in circles
            throw snmp::Refusal("the names in the column " + std::string(attribute->name) +
                                " do not increase");
        }
        if (std::mismatch(prefix.begin(), prefix.end(), elements.begin(), elements.end()).first !=
            prefix.end()) {
            return false;
        }
        samples.push_back(sampleOf(*attribute, variable));
        reached = variable.name;
        return true;
    }

    const Attribute *attribute;
    snmp::Bytes reached; // the name after which the walk goes on
    std::vector<uint32_t> prefix;
};

// Walks columns side by side, one row with each request. It ends by itself whatever the node answers.
inline void walk(snmp::Node &node, std::vector<Column> columns, size_t mostRows, std::vector<Sample> &samples)
{
    for (size_t rows = 0; !columns.empty(); ++rows) {
        if (rows > mostRows) {
            throw snmp::Refusal("the table has more than " + std::to_string(mostRows) + " rows");
        }
        std::vector<snmp::Bytes> names;
        names.reserve(columns.size());
        for (const Column &column : columns) {
            names.push_back(column.reached);
        }
        const std::vector<snmp::Variable> variables = node.ask(snmp::GetNextRequest, names);
        std::vector<Column> unfinished;
        for (size_t i = 0; i < columns.size(); ++i) {
            if (columns[i].advance(variables[i], samples)) {
                unfinished.push_back(columns[i]);
            }
        }
        columns.swap(unfinished);
    }
}

#endif
