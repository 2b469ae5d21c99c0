// Checks a message catalogue: its keys, that all locales have the same ones with the same parameters, and its patterns.
// Usage: check_catalogue FOLDER LOCALE... (the first locale is the one that the others are compared with)
#include "nls/message_pattern.h"

#include <cstdio>
#include <exception>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <unicode/messagepattern.h>
#include <unicode/ures.h>

namespace {

constexpr int32_t LongestMessage = 2048; // units; the library would cut the rest

using Parameters = std::set<int32_t>;
using Bundle = std::map<std::string, Parameters>;

int problems = 0;

void complain(const std::string &locale, const std::string &key, const std::string &problem)
{
    std::fprintf(stderr, "%s: %s%s%s\n", locale.c_str(), key.c_str(), key.empty() ? "" : ": ",
                 problem.c_str());
    ++problems;
}

// The class letter and the number as the library writes it, of at most seven digits.
bool isKey(const std::string &key)
{
    static const std::regex form("DOVP[AGLSV](0|[1-9][0-9]{0,6})");
    return std::regex_match(key, form);
}

// The library's own judgement, so that the check is never milder than the library.
UErrorCode judge(const std::string &locale, const char16_t *pattern, int32_t length)
{
    UErrorCode status = U_ZERO_ERROR;
    const MessagePattern judged(locale.c_str(), pattern, length, status);
    const icu::MessagePattern parsed(icu::UnicodeString(pattern, length), nullptr, status);
    if (U_SUCCESS(status) && parsed.hasNamedArguments()) {
        return U_ARGUMENT_TYPE_MISMATCH; // the library takes them, but no message means to show one
    }
    return status;
}

Parameters parametersOf(const char16_t *pattern, int32_t length)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::MessagePattern parsed(icu::UnicodeString(pattern, length), nullptr, status);
    Parameters parameters;
    for (int32_t i = 0; U_SUCCESS(status) && i < parsed.countParts(); ++i) {
        if (parsed.getPart(i).getType() == UMSGPAT_PART_TYPE_ARG_NUMBER) {
            parameters.insert(parsed.getPart(i).getValue());
        }
    }
    return parameters;
}

Bundle read(const std::string &folder, const std::string &locale)
{
    Bundle messages;
    UErrorCode status = U_ZERO_ERROR;
    UResourceBundle *bundle = ures_openDirect(folder.c_str(), locale.c_str(), &status);
    if (U_FAILURE(status)) {
        complain(locale, "", std::string("cannot be opened: ") + u_errorName(status));
        return messages;
    }
    while (ures_hasNext(bundle) != 0) {
        const char *name = nullptr;
        int32_t length = 0;
        status = U_ZERO_ERROR;
        const char16_t *pattern = ures_getNextString(bundle, &length, &name, &status);
        const std::string key = name != nullptr ? name : "";
        if (!isKey(key)) {
            complain(locale, key, "is no key of a message (DOVP, one of AGLSV, a number)");
        }
        if (pattern == nullptr) {
            complain(locale, key, "is no text");
            continue;
        }
        status = judge(locale, pattern, length);
        if (U_FAILURE(status)) {
            complain(locale, key, std::string("is no pattern for five texts: ") + u_errorName(status));
        }
        if (length == 0 || length > LongestMessage) {
            complain(locale, key, "has a length of " + std::to_string(length));
        }
        messages[key] = parametersOf(pattern, length);
    }
    ures_close(bundle);
    return messages;
}

void compare(const Bundle &model, const std::string &locale, const Bundle &messages)
{
    if (messages.empty()) {
        return; // takes everything from the model
    }
    for (const auto &[key, parameters] : model) {
        const auto found = messages.find(key);
        if (found == messages.end()) {
            complain(locale, key, "is missing");
        } else if (found->second != parameters) {
            complain(locale, key, "has other parameters");
        }
    }
    for (const auto &[key, parameters] : messages) {
        if (model.count(key) == 0) {
            complain(locale, key, "is in this locale only");
        }
    }
}

int checkCatalogue(int argc, char **argv)
{
    const Bundle model = read(argv[1], argv[2]);
    if (model.empty()) {
        complain(argv[2], "", "has no messages");
    }
    for (int i = 3; i < argc; ++i) {
        compare(model, argv[i], read(argv[1], argv[i]));
    }
    if (problems != 0) {
        std::fprintf(stderr, "message catalogue: %d problems\n", problems);
        return 1;
    }
    std::printf("message catalogue: %d locales, %zu messages\n", argc - 2, model.size());
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: check_catalogue FOLDER LOCALE...\n");
        return 2;
    }
    try {
        return checkCatalogue(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "check_catalogue: %s\n", error.what());
        return 1;
    }
}
