// Random product specification files against the model: result, every value, and the whole trace.
#include "prodspec/product_spec_model.h"
#include "support/product_spec_file.h"

#include <random>

namespace {

constexpr char Function[] = "DOV0_InitializeProductSpec";

class RandomRecords {
public:
    explicit RandomRecords(uint32_t seed) : random(seed) {}

    int below(int limit) { return static_cast<int>(random() % static_cast<uint32_t>(limit)); }
    bool oneIn(int chances) { return below(chances) == 0; }

    template <typename List> std::string oneOf(const List &list)
    {
        return list[static_cast<size_t>(below(static_cast<int>(list.size())))];
    }

    std::vector<std::string> pieces()
    {
        std::vector<std::string> list;
        const bool solution = oneIn(2);
        if (!oneIn(20)) {
            list.push_back(solution
                               ? "PRODUCT_CODE=" + oneOf(std::vector<std::string>{"MR", "no", "xx x"}) + "\n"
                               : "product_code=" + oneOf(std::vector<std::string>{"OV", "ov", "oV"}) + "\n");
        }
        if (solution) {
            for (const char *required :
                 {"NODE_TYPE=RELAY", "PRODUCT_NAME=Mail Relay", "AGENT_AFF_NAME=MAIL_RELAY",
                  "SUBNODE_AFF_NAME=MAIL_RELAY_DATA", "DP_TO_START=SNMP,FILE", "DCH_PORT_NUMBER=2020",
                  "DP_PORT_OFFSET=5", "INITCNFG_FILE_NAME=MRCNFG", "DOVATBLS_FILE_NAME=MRATBLS"}) {
                if (!oneIn(60)) {
                    list.push_back(std::string(required) + "\n");
                }
            }
        }
        const int more = below(25);
        for (int i = 0; i < more; ++i) {
            list.insert(list.begin() + below(static_cast<int>(list.size()) + 1), piece());
        }
        if (!list.empty() && list.back().back() == '\n' && oneIn(4)) {
            list.back().pop_back();
        }
        if (!list.empty() && list.back().empty()) {
            list.pop_back();
        }
        return list;
    }

private:
    std::string blanks() { return oneIn(4) ? std::string(static_cast<size_t>(below(4)), ' ') : ""; }

    std::string lineEnd() { return oneOf(std::vector<std::string>{"\n", "\n", "\n", "\r\n", " \n", "\t\n"}); }

    std::string mixedCase(std::string text)
    {
        for (char &c : text) {
            c = oneIn(2) && c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        }
        return text;
    }

    std::string value(int index)
    {
        static const std::vector<std::string> common = {
            "",    "NO",   "no thanks",  "N",   "n x", "None", "NOT",  "Y",  "YES",
            "yes", "text", "two words ", "a=b", "=",   "NO\t", "\tNO", "N O"};
        static const std::vector<std::string> versions = {"061000",  "000000", "61000", "06100A",
                                                          "0610000", "NO",     ""};
        static const std::vector<std::string> providers = {
            "SNMP", "snmp,FILE", "x", ",,", "NODP,SOCK", "apis,,odbc,zz", "HTTP, POST", "NO", "N,SCRP"};
        static const std::vector<std::string> features = {"12345678901", "NO", "1", "123456789012"};
        static const std::vector<std::string> names = {"OMNIA_AGENT", "TAPE_LIBRARY", "DOOR_CONTROL_DATA",
                                                       "OMNIA_AGENT", "MAIL_RELAY"};
        switch (index) {
        case 46:
            return oneOf(versions);
        case 17:
            return oneOf(providers);
        case 8:
            return oneIn(4) ? oneOf(features) : features[0];
        case 4:
        case 6:
            return oneIn(6) ? "unknown" : oneOf(names);
        case 1:
            return "";
        default:
            return oneOf(common);
        }
    }

    std::string piece()
    {
        if (oneIn(12)) { // a piece of a longer line
            std::string text = "METAFILES_TO_LOAD=" + std::string(511, 'm');
            text.resize(511);
            return text;
        }
        if (oneIn(12)) {
            return oneOf(std::vector<std::string>{"\n", "   \n", "# a comment\n", "no record\n", "=x\n",
                                                  " = \n", "UNKNOWN=1\n", "NODE_TYPE =x\n", "NODE\rTYPE=x\n",
                                                  "\r\n", "AGENT_AFF_STRING=x\n", "\xC3\xA9t\xC3\xA9=1\n"});
        }
        auto keyword = Keywords.begin();
        std::advance(keyword, below(static_cast<int>(Keywords.size())));
        return blanks() + mixedCase(keyword->first) + "=" + blanks() + value(keyword->second) + lineEnd();
    }

    std::mt19937 random;
};

void compareWithModel(uint32_t seed)
{
    RandomRecords records(seed);
    const std::vector<std::string> pieces = records.pieces();
    std::string contents = "//PSF\n";
    uint32_t number = 0;
    for (const std::string &piece : pieces) {
        contents += enciphered(piece, ++number);
    }
    const ProductSpecFile file = ProductSpecFile::withContents(contents);
    ProductSpecModel model;
    model.fileName = file.path();
    model.instanceName = records.oneIn(3) ? "inst1" : "";
    model.level = records.oneIn(3) ? Trace::All & ~Trace::Configuration : Trace::All;
    model.run(pieces);
    inProcessOfItsOwn([&] {
        int32_t result = -1;
        const TraceLog log = traceOf(Function, model.level, [&] {
            result = DOV0_InitializeProductSpec(
                model.instanceName.empty() ? nullptr : model.instanceName.c_str(), 0);
        });
        EXPECT_EQ(withoutAddresses(log), model.log) << "seed " << seed;
        ASSERT_EQ(result, model.initialized) << "seed " << seed;
        for (int index = 0; index <= 49; ++index) {
            const char *value = DOV0_QueryProductSpec(index);
            EXPECT_EQ(value != nullptr ? std::optional<std::string>(value) : std::nullopt,
                      result != 0 ? model.value(index) : std::nullopt)
                << "seed " << seed << " index " << index;
        }
    });
}

} // namespace

TEST(InitializeProductSpecAtRandom, AgreesWithTheModel)
{
    uloc_getDefault();
    int successes = 0;
    for (uint32_t seed = 1; seed <= 400; ++seed) {
        compareWithModel(seed);
        if (HasFatalFailure()) {
            break;
        }
    }
    // The files must be worth the comparison: both results come up often.
    for (uint32_t seed = 1; seed <= 400; ++seed) {
        ProductSpecModel model;
        model.run(RandomRecords(seed).pieces());
        successes += model.initialized;
    }
    EXPECT_GT(successes, 100);
    EXPECT_LT(successes, 350);
}
