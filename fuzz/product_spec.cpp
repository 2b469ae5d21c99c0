// Product specification files of any bytes, or of any records that are then enciphered: result, every value and the
// whole trace against the model that the tests have; then queries and updates. The specification of a process can be
// initialised only once, so this program has the product specification's objects in itself and takes the flag back.
// Functions: DOV0_InitializeProductSpec DOV0_QueryProductSpec DOV0_UpdateProductSpec
// Functions: findKeyword defaultFileNames copyProductSpecValue
#include "fuzz_target.h"

#include "prodspec/product_spec_model.h"
#include "text/record_model.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

extern std::atomic<int32_t> ProductSpecInitialized;

namespace {

constexpr char Function[] = "DOV0_InitializeProductSpec";

// A folder with one file under two names, for as long as the process lives. The file itself is in memory.
class Folder {
public:
    Folder()
    {
        const char *parent = std::getenv("TMPDIR");
        name = std::string(parent != nullptr ? parent : "/tmp") + "/fuzz.XXXXXX";
        MUST(mkdtemp(name.data()) != nullptr);
        name += '/';
        const std::string file = "/proc/self/fd/" + std::to_string(descriptor);
        for (const char *link : Links) {
            MUST(symlink(file.c_str(), (name + link).c_str()) == 0);
        }
        setenv("DOV_PRODSPEC_PATH", name.c_str(), 1);
        std::atexit([] {
            for (const char *link : Links) {
                unlink((folder().name + link).c_str());
            }
            rmdir(folder().name.c_str());
        });
    }

    void write(const std::string &contents) const
    {
        MUST(ftruncate(descriptor, 0) == 0);
        MUST(pwrite(descriptor, contents.data(), contents.size(), 0) ==
             static_cast<ssize_t>(contents.size()));
    }

    static Folder &folder()
    {
        static auto *const instance = new Folder;
        return *instance;
    }

    std::string name;

private:
    static constexpr const char *Links[] = {"SPEC", "DOVPSF"};

    const int descriptor = memfd_create("fuzz", MFD_CLOEXEC);
};

// The parts of a file as they are read: lines with their ends, of at most 511 bytes.
std::vector<std::string> piecesOf(const std::string &contents)
{
    std::vector<std::string> pieces;
    for (size_t start = 0; start < contents.size();) {
        const size_t lineEnd = std::min(contents.find('\n', start), contents.size() - 1) + 1;
        const size_t size = std::min<size_t>(lineEnd - start, 511);
        pieces.push_back(contents.substr(start, size));
        start += size;
    }
    return pieces;
}

// Every piece but the first, shifted back or forth. The key counts all bytes; the text ends at a zero byte.
std::vector<std::string> shiftedPieces(const std::vector<std::string> &pieces, int direction)
{
    static const std::string cycle = substitutionCycle();
    std::vector<std::string> result;
    for (size_t i = 1; i < pieces.size(); ++i) {
        const auto seed = static_cast<int32_t>(static_cast<uint32_t>(pieces[i].size() * i));
        const std::string text = pieces[i].c_str();
        result.push_back(shifted(text, seed, direction, cycle) + pieces[i].substr(text.size()));
    }
    return result;
}

std::optional<std::string> valueOf(int32_t index)
{
    const char *const value = DOV0_QueryProductSpec(index);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

std::string printed(const std::optional<std::string> &text)
{
    return text ? ::printed(*text) : "unset";
}

void compareValues(const ProductSpecModel &model, int32_t result)
{
    for (int32_t index = -1; index <= 50; ++index) {
        const auto expected = result != 0 ? model.value(index) : std::nullopt;
        const auto actual = valueOf(index);
        if (actual != expected) {
            demandFailed(("value " + std::to_string(index)).c_str(), printed(actual), printed(expected),
                         __FILE__, __LINE__);
        }
    }
}

void update(FuzzInput &input, ProductSpecModel &model)
{
    const int32_t index = input.number(-1, 50);
    const bool isNull = input.number(0, 15) == 15;
    const std::string text = input.take(static_cast<size_t>(input.number(0, 20))).c_str();
    const ExactBuffer newValue = ExactBuffer::ofText(text);
    const int32_t result = DOV0_UpdateProductSpec(index, isNull ? nullptr : newValue.text());
    if (model.initialized == 0 || isNull || index < 0 || index > 48) {
        MUST_EQUAL(result, 0);
        return;
    }
    const auto held = model.values.find(index);
    if (takeStorageFailure()) {
        MUST_EQUAL(result, 0);
        if (held != model.values.end() && !held->second.isConstant) {
            model.values.erase(held); // the old text was freed before
        }
        return;
    }
    MUST_EQUAL(result, 1);
    if (text[0] == 'N' && unsetWhenOff(index)) {
        model.values.erase(index);
    } else if (held != model.values.end() && held->second.isConstant) {
        held->second = {text.substr(0, 1), false};
    } else {
        model.values[index] = {text, false};
    }
}

// Frees the values at the level at which they were allocated, so that the accounting of storage sees both.
void forgetValues(const Folder &folder)
{
    ProductSpecInitialized = 0;
    folder.write("//PSF\n");
    MUST_EQUAL(DOV0_InitializeProductSpec(nullptr, 0), 0);
}

void initialize(ProductSpecModel &model, const std::vector<std::string> &pieces, bool hasID)
{
    takeTrace();
    const int32_t result = DOV0_InitializeProductSpec(
        model.instanceName.empty() ? nullptr : model.instanceName.c_str(), model.commonDataProvider ? 1 : 0);
    const TraceLog log = withoutAddresses(from(Function, takeTrace()));
    if (takeStorageFailure()) {
        MUST_EQUAL(result, 0);
        model.initialized = 0;
    } else if (!hasID && !model.commonDataProvider) {
        MUST_EQUAL(result, 0);
        if (!log.empty()) {
            const TraceLog expected = {message(Function,
                                               "*****ERROR: Invalid product specification file ID <%s>\n",
                                               pieces.empty() ? "" : pieces[0].c_str())};
            MUST_EQUAL(log[log.size() - 2],
                       withoutAddresses(expected)[0]); // it may look like one with an address
        }
    } else {
        std::vector<std::string> records = shiftedPieces(pieces, -1);
        for (std::string &record : records) {
            record = record.c_str();
        }
        model.run(records);
        MUST_EQUAL(result, model.initialized);
        MUST_EQUAL(log, withoutAddresses(model.log)); // a record may look like such a message
    }
    compareValues(model, result);
}

} // namespace

void fuzzOneInput(FuzzInput &input)
{
    const Folder &folder = Folder::folder();
    ProductSpecModel model;
    model.level = input.level;
    const int32_t kind = input.number(0, 15);
    const int32_t updates = input.number(0, 6);
    const bool isPlain = kind < 12; // else the bytes stand as they are, the first line too
    model.commonDataProvider = kind == 11;
    static constexpr const char *Names[] = {"SPEC", "DOVPSF", ""};
    model.specName = Names[input.number(0, 5) % 3];
    setenv("DOV_PRODSPEC_NAME", model.specName.c_str(), 1); // empty counts as unset
    model.fileName = folder.name + (model.specName.empty() ? "DOVPSF" : model.specName);
    model.instanceName =
        input.flag() ? std::string(input.take(static_cast<size_t>(input.number(0, 12))).c_str()) : "";
    FuzzInput later = input; // updates take their numbers from behind the file's text
    const std::string text = input.rest();
    std::string contents = isPlain ? "//PSF\n" + text : text;
    std::vector<std::string> pieces = piecesOf(contents);
    if (isPlain) {
        contents = pieces[0];
        for (const std::string &record : shiftedPieces(pieces, 1)) {
            contents += record;
        }
        pieces = piecesOf(contents);
    }
    folder.write(contents);

    ProductSpecInitialized = 0;
    initialize(model, pieces, contents.compare(0, 5, "//PSF") == 0);
    if (updates > 0) {
        for (int32_t i = 0; i < updates; ++i) {
            update(later, model);
        }
        compareValues(model, model.initialized);
    }
    failStorageRequest(0);
    forgetValues(folder);
}
