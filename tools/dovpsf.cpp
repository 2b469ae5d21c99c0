// dovpsf - compiles, prints and checks product specification files.
//
// What a file means is for the library to say: the tool runs its initialisation and passes on what it traces.
#include "captured_trace.h"
#include "dov0610.h"
#include "product_spec_text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>

namespace {

constexpr int UsageError = 2;

bool isIdentification(const std::string &line)
{
    return line.compare(0, FileID.size(), FileID) == 0;
}

// Control characters of a file must not reach the terminal.
std::string shown(const std::string &text)
{
    static constexpr char Digits[] = "0123456789ABCDEF";
    std::string result;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 0x20 && byte != 0x7F) {
            result += character;
        } else {
            result += {'\\', 'x', Digits[byte >> 4], Digits[byte & 0x0F]};
        }
    }
    return result;
}

std::string withoutLineEnd(std::string text)
{
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.pop_back();
    }
    return text;
}

// --- compile -----------------------------------------------------------------------------------------------------

class LineError : public std::runtime_error {
public:
    LineError(const std::string &file, size_t line, const std::string &what)
        : std::runtime_error(file + ":" + std::to_string(line) + ": " + what)
    {
    }
};

bool isLeftOut(const std::string &line)
{
    const size_t start = line.find_first_not_of(" \t");
    return start == std::string::npos || line[start] == '#';
}

struct Compiled {
    std::string contents;
    size_t records = 0;
    size_t leftOut = 0;
    bool hasIdentification = false;
};

Compiled compiled(const std::string &plainName, std::string plain)
{
    if (plain.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        plain.erase(0, 3); // the mark of an editor, not part of the first line
    }
    Compiled result;
    std::istringstream lines(plain);
    std::string line;
    for (size_t number = 1; std::getline(lines, line); ++number) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.find('\0') != std::string::npos) {
            throw LineError(plainName, number, "holds a zero byte, behind which nothing could be read back");
        }
        if (isLeftOut(line)) {
            ++result.leftOut;
            continue;
        }
        if (line.find('\r') != std::string::npos) {
            throw LineError(plainName, number,
                            "holds a carriage return, which would be read back as a blank or an end");
        }
        if (line.size() >= RecordLength) {
            throw LineError(plainName, number,
                            "has " + std::to_string(line.size()) + " bytes; a record has room for " +
                                std::to_string(RecordLength - 1) +
                                ", the rest would be read back as another record");
        }
        if (result.contents.empty()) {
            result.hasIdentification = isIdentification(line);
            if (result.hasIdentification) {
                result.contents = line + "\n";
                continue;
            }
            result.contents = std::string(FileID) + "\n";
        }
        ++result.records;
        result.contents += enciphered(line + "\n", static_cast<uint32_t>(result.records));
    }
    if (result.contents.empty()) {
        result.contents = std::string(FileID) + "\n";
    }
    return result;
}

int compile(const std::string &plainName, const std::string &outputName)
{
    std::error_code ignored;
    if (std::filesystem::equivalent(plainName, outputName, ignored)) {
        throw std::runtime_error(outputName + ": is the plain file itself");
    }
    const Compiled result = compiled(plainName, readFile(plainName));
    replaceFile(outputName, result.contents);
    std::cout << outputName << ": " << result.records << " records";
    if (result.leftOut != 0) {
        std::cout << "; " << result.leftOut << " blank and comment lines left out before numbering";
    }
    std::cout << (result.hasIdentification ? "\n" : "; //PSF added\n");
    return EXIT_SUCCESS;
}

// --- print -------------------------------------------------------------------------------------------------------

int print(const std::string &name)
{
    const std::vector<Piece> pieces = piecesOf(readFile(name));
    if (pieces.empty() || !isIdentification(pieces[0].bytes)) {
        throw std::runtime_error(name + ": does not begin with //PSF");
    }
    for (size_t number = 0; number < pieces.size(); ++number) {
        const Piece &piece = pieces[number];
        const std::string text = number == 0 ? piece.bytes.substr(0, piece.bytes.find('\0'))
                                             : deciphered(piece.bytes, static_cast<uint32_t>(number));
        std::cout << text << (text.empty() || text.back() != '\n' ? "\n" : "");
        if (piece.continues) {
            std::cerr << "dovpsf: " << name << ":" << piece.line
                      << ": is longer than a record and read as several\n";
        }
        if (piece.bytes.find('\0') != std::string::npos) {
            std::cerr << "dovpsf: " << name << ":" << piece.line
                      << ": what follows a zero byte is not read\n";
        }
    }
    return EXIT_SUCCESS;
}

// --- check -------------------------------------------------------------------------------------------------------

// A record as initialisation traced it.
struct Record {
    std::string text;      // without its line end
    std::string complaint; // what the library says against it
};

// What initialisation traced, sorted.
struct Report {
    std::vector<Record> records;
    std::vector<std::pair<std::string, std::string>>
        inEffect;                     // keyword and value, or the words for an unset one
    std::vector<std::string> remarks; // everything else that is wrong
    bool succeeds = false;
};

bool beginsWith(const std::string &text, std::string_view beginning)
{
    return text.compare(0, beginning.size(), beginning) == 0;
}

bool isComplaint(const std::string &message)
{
    return beginsWith(message, "*****Product Specification syntax error") ||
           beginsWith(message, "*****Unrecognized product specification keyword") ||
           beginsWith(message, "*****ERROR: PSF file");
}

Report sorted(const std::vector<std::string> &messages)
{
    Report report;
    bool inTable = false;
    for (const std::string &message : messages) {
        const std::string text = withoutLineEnd(message);
        if (beginsWith(text, "Rec ")) {
            report.records.push_back({text.substr(std::min(text.size(), text.find(' ', 4) + 1)), ""});
        } else if (isComplaint(text) && !report.records.empty()) {
            report.records.back().complaint = text;
        } else if (beginsWith(text, "The following Product Specification Parameters")) {
            inTable = true;
        } else if (beginsWith(text, "Product specification initialization successful")) {
            inTable = false;
        } else if (inTable) {
            const size_t equal = text.find('=');
            report.inEffect.emplace_back(text.substr(0, equal), text.substr(equal + 1));
        } else if (beginsWith(text, "*") || beginsWith(text, "NODP")) {
            report.remarks.push_back(text);
        }
    }
    return report;
}

// Lets the library initialise from this file as the agent would.
Report initializedFrom(const std::string &name, const std::string &instanceName)
{
    const std::filesystem::path path(name);
    if (!path.has_filename()) { // an empty name would stand for the default one
        throw std::runtime_error(name + ": names no file");
    }
    const std::string folder = path.has_parent_path() ? (path.parent_path() / "").string() : "./";
    if (folder.size() + path.filename().string().size() >= DOV0_PATH_NAME_SIZE) {
        throw std::runtime_error(name + ": the name is longer than the library can open");
    }
    setenv("DOV_PRODSPEC_PATH", folder.c_str(), 1);
    setenv("DOV_PRODSPEC_NAME", path.filename().c_str(), 1);
    if (path.filename() == "DOVPSF") {
        unsetenv("DOV_PRODSPEC_NAME"); // a packaged solution may have that name, but only by default
    }
    int32_t result = 0;
    const std::vector<std::string> messages =
        messagesOf("DOV0_InitializeProductSpec", DOV0_TRACE_CONFIGURATION | DOV0_TRACE_ERROR,
                   [&] { result = DOV0_InitializeProductSpec(instanceName.c_str(), 0); });
    Report report = sorted(messages);
    report.succeeds = result == 1;
    return report;
}

// The two sides of a record that the library took, to tell what became of it.
struct Assignment {
    std::string keyword; // in upper case
    std::string value;
};

Assignment assignmentOf(const std::string &record)
{
    const size_t start = std::min(record.find_first_not_of(' '), record.size());
    const size_t equal = record.find('=', start);
    std::string keyword = record.substr(start, equal - start);
    DOV0_ConvertStringToUpper(keyword.data(), 0);
    const size_t value = std::min(record.find_first_not_of(' ', equal + 1), record.size());
    return {keyword, record.substr(value)};
}

bool isBlank(const std::string &text)
{
    return text.find_first_not_of(' ') == std::string::npos;
}

class Checker {
public:
    Checker(const std::string &name, const std::string &instanceName)
        : report(initializedFrom(name, instanceName))
    {
        for (const auto &[keyword, value] : report.inEffect) {
            effective[keyword] = value;
        }
        for (size_t i = 0; i < report.records.size(); ++i) {
            const Record &record = report.records[i];
            if (record.complaint.empty() && !isBlank(record.text)) {
                const Assignment assignment = assignmentOf(record.text);
                if (!assignment.value.empty()) {
                    lastRecordOf[assignment.keyword] = i;
                }
            }
        }
    }

    bool run(const std::vector<Piece> &pieces) const
    {
        for (size_t i = 0; i < report.records.size(); ++i) {
            const std::string number = std::to_string(i + 1);
            if (i + 1 < pieces.size()) {
                const Piece &piece = pieces[i + 1];
                std::cout << "line " << piece.line << ", record " << number
                          << (piece.continues ? " (the line is longer than a record)" : "") << ": ";
            } else { // of a file that can be read only once
                std::cout << "record " << number << ": ";
            }
            std::cout << verdictOn(i) << "\n";
        }
        printTable();
        for (const std::string &remark : report.remarks) {
            std::cout << "trace: " << shown(remark) << "\n";
        }
        std::cout << (report.succeeds ? "Initialization would succeed.\n" : "Initialization would fail.\n");
        return report.succeeds;
    }

private:
    std::string verdictOn(size_t index) const
    {
        const Record &record = report.records[index];
        if (!record.complaint.empty()) {
            return "ignored  " + shown(record.text) + "\n    " + shown(record.complaint);
        }
        if (isBlank(record.text)) {
            return "ignored  (blank)";
        }
        const Assignment assignment = assignmentOf(record.text);
        if (assignment.value.empty()) {
            return "unset    " + shown(record.text) + "\n    an empty value sets nothing";
        }
        std::string verdict = "accepted " + shown(record.text);
        const size_t last = lastRecordOf.at(assignment.keyword);
        const auto found = effective.find(assignment.keyword);
        if (last != index) {
            verdict += "\n    replaced by record " + std::to_string(last + 1);
        } else if (found != effective.end() && found->second != assignment.value) {
            verdict += "\n    in effect: " + shown(found->second);
        }
        return verdict;
    }

    // What the file did not say.
    void printTable() const
    {
        std::string filled;
        std::string unset;
        for (const auto &[keyword, value] : report.inEffect) {
            if (lastRecordOf.count(keyword) != 0) {
                continue;
            }
            if (value == "Not Specified, default to No") {
                unset += " " + keyword;
            } else if (value == "Not Specified, default to Yes") {
                filled += "    " + keyword + "=Y, but only while the configuration bit of the trace is on\n";
            } else {
                filled += "    " + keyword + "=" + shown(value) + "\n";
            }
        }
        if (!filled.empty()) {
            std::cout << "filled in by default or from other values:\n" << filled;
        }
        if (!unset.empty()) {
            std::cout << "left unset:" << unset << "\n";
        }
    }

    Report report;
    std::map<std::string, std::string> effective;
    std::map<std::string, size_t> lastRecordOf;
};

int check(const std::string &name, const std::string &instanceName)
{
    const Checker checker(name, instanceName);
    std::vector<Piece> pieces;
    try {
        pieces = piecesOf(readFile(name));
    } catch (const std::runtime_error &) {
        // The library has said why the file cannot be read; there are no lines to speak of.
        pieces.clear();
    }
    return checker.run(pieces) ? EXIT_SUCCESS : EXIT_FAILURE;
}

int runTool(int argc, char **argv)
{
    CLI::App app("Compiles, prints and checks the product specification file of an agent.", "dovpsf");
    app.require_subcommand(1);
    app.set_version_flag("--version", "dovpsf " DOV0_VERSION);
    app.footer("A plain file has one record KEYWORD=value a line. Blank lines and lines that begin with # "
               "are left out before\n"
               "the records are numbered, so they do not reach the compiled file. The first line //PSF is "
               "added when it is\n"
               "missing. Exit status: 0, 1 when a file is refused or would be, 2 for a mistake on the "
               "command line.");
    std::string plainName;
    std::string outputName;
    std::string name;
    std::string instanceName;

    CLI::App *compileCommand = app.add_subcommand("compile", "Enciphers a plain text file");
    compileCommand->add_option("PLAIN", plainName, "The plain text")->required();
    compileCommand->add_option("-o,--output", outputName, "The file to write or replace")->required();
    CLI::App *printCommand = app.add_subcommand("print", "Deciphers a file to standard output");
    printCommand->add_option("FILE", name, "The compiled file")->required();
    CLI::App *checkCommand = app.add_subcommand(
        "check",
        "Says what initialization makes of each record, what defaults it fills in, and whether it succeeds");
    checkCommand->add_option("FILE", name, "The compiled file")->required();
    checkCommand->add_option("--instance", instanceName, "The instance name that the agent passes");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : UsageError;
    }
    const int status = *compileCommand ? compile(plainName, outputName)
                       : *printCommand ? print(name)
                                       : check(name, instanceName);
    if (!std::cout.flush()) {
        throw std::runtime_error("standard output cannot be written");
    }
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return runTool(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "dovpsf: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
