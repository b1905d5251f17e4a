#include "support/script_text.h"

#include <regex>
#include <stdexcept>

namespace {

std::string unescaped(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool is_escaped = text[i] == '\\';
        const char character = text[is_escaped ? ++i : i];
        plain += !is_escaped ? character : character == 'n' ? '\n' : character == 't' ? '\t' : character;
    }
    return plain;
}

}  // namespace

std::string script_bytes(std::string_view source) {
    static const std::regex item(R"re("((?:\\[^]|[^"\\])*)"|@([0-9A-F]{1,8})(?!\S)|([0-9A-F]{2})(?!\S)|(#.*)|\S+)re");
    std::string bytes;
    for (std::cregex_iterator match(source.data(), source.data() + source.size(), item), end; match != end; ++match) {
        if ((*match)[1].matched) {
            bytes += unescaped(match->str(1));
        } else if ((*match)[2].matched) {
            const std::size_t offset = std::stoul(match->str(2), nullptr, 16);
            for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(offset >> shift);
        } else if ((*match)[3].matched) {
            bytes += static_cast<char>(std::stoi(match->str(3), nullptr, 16));
        } else if (!(*match)[4].matched) {
            throw std::runtime_error("no byte, offset or text: " + match->str());
        }
    }
    return bytes;
}
