// What the public headers declare, for tests that must leave no function out.
#ifndef DOV0610_TESTS_EXPORTED_FUNCTIONS_H
#define DOV0610_TESTS_EXPORTED_FUNCTIONS_H

#include <fstream>
#include <map>
#include <string>

// Each exported function with the comment before it.
inline std::map<std::string, std::string> exportedFunctions()
{
    std::map<std::string, std::string> functions;
    for (const char *const header : {"dov0610.h", "dov0610_platform.h"}) {
        std::ifstream stream(std::string(PUBLIC_HEADERS) + "/" + header);
        std::string comment;
        bool inComment = false;
        for (std::string line; std::getline(stream, line);) {
            if (line == "/**") {
                comment.clear();
                inComment = true;
            } else if (inComment) {
                comment += line + "\n";
                inComment = line != " */";
            } else if (line.starts_with("DOV0_EXPORT ")) {
                const size_t end = line.find('(');
                const size_t begin = line.find_last_of(" *", end) + 1;
                functions[line.substr(begin, end - begin)] = comment;
            }
        }
    }
    return functions;
}

#endif
