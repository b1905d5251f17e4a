// Texts, names and numbers, written in place: the put_ functions write at `to`, where there is room,
// and return the end of what they wrote.
#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "model/code_info.h"

inline char* put_text(char* to, std::string_view text) {
    std::memcpy(to, text.data(), text.size());
    return to + text.size();
}

// The name of an opcode, in a place for code_name::max_size characters.
inline char* put_name(char* to, std::uint8_t code) { return code_info[code].name.copy_padded(to); }

// "00" to "FF".
constexpr auto make_hex_pairs() {
    std::array<std::array<char, 2>, 256> pairs{};
    for (std::size_t byte = 0; byte < 256; ++byte) {
        pairs[byte] = {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
    }
    return pairs;
}
inline constexpr auto hex_pairs = make_hex_pairs();

// The lowest digits of a number, an even count of them.
template <int digits>
char* put_hex(char* to, std::uint32_t number) {
    for (int shift = 4 * (digits - 2); shift >= 0; shift -= 8, to += 2) {
        std::memcpy(to, hex_pairs[number >> shift & 0xFF].data(), 2);
    }
    return to;
}

// "0" to "255": most numbers are bytes.
struct decimal {
    std::array<char, 3> digits;
    std::uint8_t size;
};
constexpr auto make_decimals() {
    std::array<decimal, 256> table{};
    for (std::size_t number = 0; number < 256; ++number) {
        decimal& entry = table[number];
        for (std::size_t power = number < 10 ? 1 : number < 100 ? 10 : 100; power > 0; power /= 10) {
            entry.digits[entry.size++] = static_cast<char>('0' + number / power % 10);
        }
    }
    return table;
}
inline constexpr auto decimals = make_decimals();

// In a place for max_decimal_size characters.
inline constexpr std::size_t max_decimal_size = 10;
inline char* put_decimal(char* to, std::uint32_t number) {
    if (number >= decimals.size()) return std::to_chars(to, to + max_decimal_size, number).ptr;
    std::memcpy(to, decimals[number].digits.data(), sizeof decimals[number].digits);
    return to + decimals[number].size;
}
