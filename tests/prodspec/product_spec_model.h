// What a product specification comes to, computed once more from its rules and with other means than the library's:
// the values, and everything that the initialisation traces itself.
#ifndef DOV0610_TESTS_PRODUCT_SPEC_MODEL_H
#define DOV0610_TESTS_PRODUCT_SPEC_MODEL_H

#include "support/trace_recorder.h"

#include <array>
#include <map>
#include <optional>
#include <string>
#include <unicode/uloc.h>
#include <vector>

// The keywords with their indexes. 0, 5 and 7 are none.
inline const std::map<std::string, int> Keywords = {
    {"PRODUCT_CODE", 1},
    {"NODE_TYPE", 2},
    {"PRODUCT_NAME", 3},
    {"AGENT_AFF_NAME", 4},
    {"SUBNODE_AFF_NAME", 6},
    {"SUBNODE_AFF_FEAT", 8},
    {"REGISTER_OAGENT", 9},
    {"ENABLE_SNMP_TRAP", 10},
    {"ENABLE_SNMP_DISCOVERY", 11},
    {"ENABLE_SNMP_MIBSTATUS", 12},
    {"ENABLE_DISCOVERY_DATA_UPDATE", 13},
    {"ENABLE_DPLOG", 14},
    {"ENABLE_METAFILE_COMMANDS", 15},
    {"MANAGED_NETWORK_MS", 16},
    {"DP_TO_START", 17},
    {"METAFILES_TO_LOAD", 18},
    {"SNMP_HOTLIST_TO_LOAD", 19},
    {"SNMP_HOTLIST_TABLENAME", 20},
    {"DCH_PORT_NUMBER", 21},
    {"DP_PORT_OFFSET", 22},
    {"INITCNFG_FILE_NAME", 23},
    {"TRAPCNFG_FILE_NAME", 24},
    {"SNMPCOMM_FILE_NAME", 25},
    {"SNMPLIST_FILE_NAME", 26},
    {"SNMPNAME_FILE_NAME", 27},
    {"SNMPNETS_FILE_NAME", 28},
    {"SNMPROUT_FILE_NAME", 29},
    {"SNMPMIBI_FILE_NAME", 30},
    {"DOVATBLS_FILE_NAME", 31},
    {"DOVPURLS_FILE_NAME", 32},
    {"INSTANCE_NAME", 33},
    {"ENABLE_CONSOLE_COMMANDS", 34},
    {"SUBNODE_APPEND_APIS", 35},
    {"SUBNODE_APPEND_ASFS", 36},
    {"SUBNODE_APPEND_FILE", 37},
    {"SUBNODE_APPEND_HTTP", 38},
    {"SUBNODE_APPEND_ODBC", 39},
    {"SUBNODE_APPEND_POST", 40},
    {"SUBNODE_APPEND_SCRP", 41},
    {"SUBNODE_APPEND_SNMP", 42},
    {"SUBNODE_APPEND_SOCK", 43},
    {"ADD_SNMP_OBJECTINSTANCE", 44},
    {"ENABLE_GLOBALIZATION", 45},
    {"AGENT_VERSION", 46},
    {"AGENT_LOCALE", 47},
    {"ENABLE_AUTOMATION_SERVER", 48},
};

// The products that the agent knows.
inline const std::vector<std::string> AffinityNames = {
    "OMNIA_AGENT",        "OMNIA_AGENT_DATA", "MAIL_RELAY",        "MAIL_RELAY_DATA", "PRINT_SPOOLER",
    "PRINT_SPOOLER_DATA", "TAPE_LIBRARY",     "TAPE_LIBRARY_DATA", "DOOR_CONTROL",    "DOOR_CONTROL_DATA"};
inline const std::map<std::string, std::string> AffinityStrings = {
    {"OMNIA_AGENT", "DOV0610.AGT.0001.80000000000000000000000000"},
    {"OMNIA_AGENT_DATA", "DOV0610.SUB.0001.40000000000000000000000000"},
    {"MAIL_RELAY", "DOV0610.AGT.0002.20000000000000000000000000"},
    {"MAIL_RELAY_DATA", "DOV0610.SUB.0002.10000000000000000000000000"},
    {"PRINT_SPOOLER", "DOV0610.AGT.0003.08000000000000000000000000"},
    {"PRINT_SPOOLER_DATA", "DOV0610.SUB.0003.04000000000000000000000000"},
    {"TAPE_LIBRARY", "DOV0610.AGT.0004.02000000000000000000000000"},
    {"TAPE_LIBRARY_DATA", "DOV0610.SUB.0004.01000000000000000000000000"},
    {"DOOR_CONTROL", "DOV0610.AGT.0005.00800000000000000000000000"},
    {"DOOR_CONTROL_DATA", "DOV0610.SUB.0005.00400000000000000000000000"},
};
inline const std::string AgentFeatures = "00100000000";

// The keywords whose "no" turns into unset.
inline bool unsetWhenOff(int index)
{
    return index == 10 || index == 12 || index == 14 || index == 15 || index == 44 || index == 45 ||
           index == 48;
}

inline std::string keywordOf(int index)
{
    for (const auto &[keyword, number] : Keywords) {
        if (number == index) {
            return keyword;
        }
    }
    return index == 5 ? "AGENT_AFF_STRING" : index == 7 ? "SUBNODE_AFF_STRING" : " ";
}

inline std::string upper(std::string text)
{
    for (char &c : text) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return text;
}

// A log with every address of the work on DP_TO_START replaced by a mark, as it cannot be foreseen.
inline TraceLog withoutAddresses(const TraceLog &log)
{
    static const std::string mark = "pDPindex @";
    TraceLog result = log;
    for (std::string &line : result) {
        const size_t start = line.find(mark);
        if (start != std::string::npos) {
            const size_t address = start + mark.size();
            line.replace(address, line.find(' ', address) - address, "PTR");
        }
    }
    return result;
}

inline bool isSixDigits(const std::string &text)
{
    return text.size() == 6 && text.find_first_not_of("0123456789") == std::string::npos;
}

struct ModelValue {
    std::string text;
    bool isConstant = false; // the shared yes or no, which others than its text tell
};

struct ProductSpecModel {
    // The arguments and the environment.
    std::string instanceName;
    bool commonDataProvider = false;
    std::string fileName; // as messages show it
    std::string specName = "SPEC";
    uint32_t level = Trace::All;

    // The result.
    int initialized = 0;
    std::map<int, ModelValue> values;
    TraceLog log;

    // Takes the pieces of the file behind its first line, deciphered.
    void run(const std::vector<std::string> &pieces)
    {
        say(Trace::Flow, " entry");
        say(Trace::Detail,
            message("", "Assigned uLocale @%p\n", static_cast<const void *>(uloc_getDefault())));
        if (!instanceName.empty()) {
            say(Trace::Configuration,
                ": Initializing Product Specification File with instance name <" + instanceName + ">\n");
        }
        if (!commonDataProvider) {
            say(Trace::Configuration,
                ": -----Product Specification File being used is " + fileName + "-----\n");
        }
        const bool built = commonDataProvider ? beCommonDataProvider() : read(pieces);
        if (built) {
            finish();
        }
        say(Trace::Configuration, initialized != 0 ? ": Product specification initialization successful\n"
                                                   : ": *****Product specification initialization failed\n");
        say(Trace::Flow, " exit " + std::to_string(initialized));
    }

    std::optional<std::string> value(int index) const
    {
        const auto found = values.find(index);
        return found == values.end() ? std::nullopt : std::optional<std::string>(found->second.text);
    }

private:
    static constexpr char Function[] = "DOV0_InitializeProductSpec";

    void say(uint32_t bits, const std::string &text)
    {
        if ((level & bits) != 0) {
            log.push_back(Function + text);
        }
    }

    void yes(int index)
    {
        if (values.count(index) == 0) {
            values[index] = {"Y", true};
        }
    }

    void text(int index, const std::string &value)
    {
        if (values.count(index) == 0) {
            values[index] = {value, false};
        }
    }

    bool beCommonDataProvider()
    {
        values[1] = {"OV", false};
        say(Trace::Detail, ": Initialized PRODUCT_CODE=OV for Common Data Provider\n");
        return checkProduct();
    }

    bool read(const std::vector<std::string> &pieces)
    {
        int number = 0;
        for (const std::string &piece : pieces) {
            ++number;
            const std::string digits = std::to_string(number);
            say(Trace::Configuration,
                ": Rec " + std::string(digits.size() < 2 ? "0" : "") + digits + " " + piece);
            take(piece);
        }
        return checkProduct();
    }

    // The first carriage return and the first line feed go: cut off near the end, else replaced by a blank.
    static std::string withoutLineEnd(const std::string &piece)
    {
        std::string text = piece;
        for (const char end : {'\r', '\n'}) {
            const size_t place = piece.find(end);
            if (place != std::string::npos) {
                text[place] = piece.size() - place < 3 ? '\0' : ' ';
            }
        }
        return text.c_str();
    }

    void take(const std::string &piece)
    {
        std::string record = withoutLineEnd(piece);
        record.erase(0, record.find_first_not_of(' '));
        if (record.empty()) {
            return;
        }
        const size_t equal = record.find('=');
        if (equal == std::string::npos) {
            say(Trace::Configuration, ": *****Product Specification syntax error. Ignored\n");
            return;
        }
        const std::string keyword = upper(record.substr(0, equal));
        const auto found = Keywords.find(keyword);
        if (found == Keywords.end()) {
            say(Trace::Configuration,
                ": *****Unrecognized product specification keyword " + keyword + ". Ignored\n");
            return;
        }
        std::string value = record.substr(equal + 1);
        value.erase(0, value.find_first_not_of(' '));
        if (value.empty()) {
            return;
        }
        if (found->second == 46 && !isSixDigits(value)) {
            say(Trace::Configuration,
                ": *****ERROR: PSF file " + fileName + " specifies invalid AGENT_VERSION=" + value +
                    "; value must be 6 digits - padded w/ leading/trailing zeroes , as needed\n");
            return;
        }
        const std::string firstWord = upper(value.substr(0, value.find(' ')));
        values[found->second] =
            firstWord == "N" || firstWord == "NO" ? ModelValue{"N", true} : ModelValue{value, false};
    }

    bool checkProduct()
    {
        if (values.count(1) == 0) {
            say(Trace::Configuration, ": *****Error: Product Code not specified\n");
            return false;
        }
        values[1].text = upper(values[1].text);
        if (!agent()) {
            for (const int required : {2, 3, 4, 6, 17, 21, 22, 23, 31}) {
                if (values.count(required) == 0) {
                    say(Trace::Configuration,
                        ": *****Required product specifications not defined for non-OA product.\n");
                    return false;
                }
            }
        }
        return true;
    }

    bool agent() const { return values.at(1).text == "OV"; }

    void fillAgent()
    {
        text(2, "OA");
        text(3, "Omnia Agent");
        text(4, "OMNIA_AGENT");
        text(6, "OMNIA_AGENT_DATA");
        if (values.count(8) == 0) {
            text(8, AgentFeatures);
            say(Trace::Detail, ": Setting DOV2_SUBNODE_AFF_FEAT to <" + AgentFeatures + ">\n");
        }
        text(21, "1919");
        text(22, "0");
        for (int index = 9; index <= 15; ++index) {
            yes(index);
        }
        for (const int index : {34, 48}) {
            if (values.count(index) == 0) {
                yes(index);
                say(Trace::Detail, ": Setting DOV2_" + keywordOf(index) + " to <Y>\n");
            }
        }
        yes(16);
        if (!instanceName.empty()) {
            values[33] = {instanceName, false};
            say(Trace::Detail, ": Setting DOV2_INSTANCE_NAME to <" + instanceName + ">\n");
        }
        const std::string ending = values.count(33) != 0 ? "_" + values[33].text : "";
        const std::map<int, std::string> bases = {
            {23, "DOVPCNFG"}, {24, "TRAPCNFG"}, {25, "DOVSCOMM"}, {26, "DOVSLIST"}, {27, "DOVSNAME"},
            {28, "DOVSNETS"}, {29, "DOVSROUT"}, {30, "DOVSMIBI"}, {31, "DOVATBLS"}, {32, "DOVPURLS"}};
        for (const auto &[index, base] : bases) {
            text(index, base + ending);
        }
        const std::string locale = uloc_getDefault();
        if (values.count(47) == 0 && !locale.empty()) {
            text(47, locale);
            say(Trace::Detail, ": Setting DOV2_AGENT_LOCALE to <" + locale + ">\n");
        }
        yes(45);
    }

    void translateProviders()
    {
        static const std::array<std::string, 10> codes = {"APIS", "ASFS", "FILE", "HTTP", "ODBC",
                                                          "POST", "SCRP", "SNMP", "SOCK", "NODP"};
        std::string rest = upper(values[17].text) + ",";
        std::string numbers;
        while (!rest.empty()) {
            const std::string code = rest.substr(0, rest.find(','));
            rest.erase(0, code.size() + 1);
            if (code.empty()) {
                continue; // the tokenizer never gives an empty item
            }
            size_t type = 0;
            while (type < codes.size() && codes[type] != code) {
                ++type;
            }
            if (type == codes.size() || numbers.size() == 78) {
                say(Trace::Error, ": *****Error: Invalid DP [" + code + "], ignored\n");
                continue;
            }
            if (type == 9) {
                say(Trace::Error, ": NODP was specified in DP_TO_START\n");
            }
            numbers += std::to_string(type) + ",";
            if (type != 9) {
                say(Trace::Detail,
                    ": Copied " + std::to_string(type) + " to pDPindex @PTR <" + numbers + ">\n");
            }
        }
        values.erase(17);
        if (!numbers.empty()) {
            say(Trace::Detail, ": Clearing one byte from pDPindex @PTR <" + numbers + "> + " +
                                   std::to_string(numbers.size() - 1) + "\n");
            numbers.pop_back();
            values[17] = {numbers, false};
            say(Trace::Detail, ": ProductSpecValueArray <" + numbers + ">\n");
        }
    }

    void resolve(int nameIndex, int stringIndex, const std::string &what)
    {
        const std::string name = values[nameIndex].text;
        for (size_t row = 0; row < AffinityNames.size(); ++row) {
            say(Trace::Detail, ": Comparing " + what + " #" + std::to_string(row) + " <" +
                                   AffinityNames[row] + "> against <" + name + ">\n");
            if (AffinityNames[row] == name) {
                values[stringIndex] = {AffinityStrings.at(name), false};
                return;
            }
        }
    }

    void finish()
    {
        initialized = 1;
        if (agent()) {
            fillAgent();
        } else {
            yes(0);
        }
        if (values.count(17) != 0) {
            translateProviders();
        }
        text(8, "00000000000");
        if (values[8].text.size() != 11) {
            initialized = 0;
            say(Trace::Configuration, ": *****Error: Affinity feature specification length " +
                                          std::to_string(values[8].text.size()) +
                                          " error. Must be AFF_FEATURE_BYTES\n");
        }
        resolve(4, 5, "affinity");
        resolve(6, 7, "subnode affinity");
        if (values.count(5) == 0) {
            initialized = 0;
            say(Trace::Configuration, ": *****Error: Agent affinity name invalid <" + values[4].text + ">\n");
        }
        if (values.count(7) == 0) {
            initialized = 0;
            say(Trace::Configuration,
                ": *****Error: Subnode affinity name invalid <" + values[6].text + ">\n");
        }
        if (specName == "DOVPSF" && !agent()) {
            initialized = 0;
            say(Trace::Configuration,
                ": *****Error: Override OA product specification file with packaged solution not allowed\n");
        }
        if (initialized != 0 && (level & Trace::Configuration) != 0) {
            report();
        }
    }

    void report()
    {
        const uint32_t bits = commonDataProvider ? Trace::Detail : Trace::Configuration;
        say(bits, ": The following Product Specification Parameters are in effect:\n");
        for (int index = 1; index <= 48; ++index) {
            const std::string keyword = keywordOf(index);
            if (values.count(index) == 0) {
                const bool yesByDefault = index == 34 || index == 45 || index == 48;
                say(bits,
                    ": " + keyword + "=Not Specified, default to " + (yesByDefault ? "Yes" : "No") + "\n");
                if (yesByDefault) {
                    yes(index);
                }
                continue;
            }
            say(bits, ": " + keyword + "=" + values[index].text + "\n");
            if (values[index].isConstant && values[index].text == "N" && unsetWhenOff(index)) {
                values.erase(index);
            }
        }
    }
};

#endif
