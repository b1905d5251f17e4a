// Messages as tests compare them.
#pragma once

#include <regex>
#include <string>

// Replaces the source line that a message is stamped with by "*": "ERROR(*): ...".
inline std::string starred(const std::string& messages) {
    static const std::regex number(R"(((?:^|\n)(?:ERROR|WARNING|INFORMATION|DEBUG)\()\d+(\): ))");
    return std::regex_replace(messages, number, "$1*$2");
}
