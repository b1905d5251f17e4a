#include "support/script_text.h"

#include <charconv>
#include <cstdint>
#include <stdexcept>

namespace {

std::string_view take(std::string_view& source, std::size_t size) {
    const std::string_view taken = source.substr(0, size);
    source.remove_prefix(taken.size());
    return taken;
}

std::uint32_t hex_number(std::string_view digits) {
    std::uint32_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [behind, error] = std::from_chars(digits.data(), end, number, 16);
    if (error != std::errc() || behind != end) throw std::runtime_error("no hex number: " + std::string(digits));
    return number;
}

// A text from its opening quote on; the closing quote is taken as well.
std::string quoted_text(std::string_view& source) {
    std::string text;
    take(source, 1);
    while (!source.empty() && source[0] != '"') {
        const bool is_escaped = source[0] == '\\' && source.size() > 1;
        const char character = take(source, is_escaped ? 2 : 1).back();
        text += !is_escaped ? character : character == 'n' ? '\n' : character == 't' ? '\t' : character;
    }
    if (take(source, 1).empty()) throw std::runtime_error("no closing quote: " + text);
    return text;
}

}  // namespace

std::string script_bytes(std::string_view source) {
    constexpr std::string_view blanks = " \t\n";
    std::string bytes;
    while (!source.empty()) {
        if (source[0] == '"') {
            bytes += quoted_text(source);
        } else if (source[0] == '#') {
            take(source, source.find('\n'));
        } else if (blanks.find(source[0]) != blanks.npos) {
            take(source, 1);
        } else {
            std::string_view word = take(source, source.find_first_of(blanks));
            const bool is_offset = word[0] == '@';
            if (is_offset) word.remove_prefix(1);
            const std::uint32_t number = hex_number(word);
            if (!is_offset && word.size() != 2) throw std::runtime_error("no byte: " + std::string(word));
            for (int i = 0; i < (is_offset ? 4 : 1); ++i) bytes += static_cast<char>(number >> (8 * i));
        }
    }
    return bytes;
}
