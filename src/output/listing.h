// What the printers of a listing share: the streams, and the forms of numbers and labels.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/array.h"
#include "base/writer.h"
#include "model/conv.h"

// A part of an expression that is rendered later.
enum class piece_kind : std::uint8_t;
struct pending_piece {
    std::uint32_t item;
    piece_kind kind;
    std::uint8_t code;
};

struct listing {
    conv& script;
    writer& out;
    writer* text_file;                 // the text table, or null
    array<pending_piece> pieces = {};  // kept from one expression to the next for its memory
};

// The first `size` characters, or all where there are fewer.
inline std::string_view first_part(std::string_view text, std::size_t size) {
    return {text.data(), std::min(size, text.size())};
}

// "00" to "FF".
constexpr auto make_hex_pairs() {
    std::array<std::array<char, 2>, 256> pairs{};
    for (std::size_t byte = 0; byte < 256; ++byte) {
        pairs[byte] = {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
    }
    return pairs;
}
inline constexpr auto hex_pairs = make_hex_pairs();

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

// The put_ functions write at `to` and return the end of what they wrote.
inline char* put_text(char* to, std::string_view text) {
    std::memcpy(to, text.data(), text.size());
    return to + text.size();
}
// The lowest digits of a number, an even count of them.
template <int digits>
char* put_hex(char* to, std::uint32_t number) {
    for (int shift = 4 * (digits - 2); shift >= 0; shift -= 8, to += 2) {
        std::memcpy(to, hex_pairs[number >> shift & 0xFF].data(), 2);
    }
    return to;
}
// At least `digits` digits, filled with zeros.
char* put_long_decimal(char* to, std::uint32_t number, int digits);
// In a place for max_decimal_size characters.
inline char* put_decimal(char* to, std::uint32_t number) {
    if (number >= decimals.size()) return put_long_decimal(to, number, 1);
    std::memcpy(to, decimals[number].digits.data(), sizeof decimals[number].digits);
    return to + decimals[number].size;
}
// "L" npc id "_" offset, 14 characters.
inline char* put_label(char* to, const conv& script, std::uint32_t offset) {
    *to++ = 'L';
    to = put_hex<4>(to, script.npc_id);
    *to++ = '_';
    return put_hex<8>(to, offset);
}

inline constexpr std::size_t label_size = 14;
inline constexpr std::size_t max_decimal_size = 10;

// The name of an opcode, in a place for code_name::max_size characters.
inline char* put_name(char* to, std::uint8_t code) { return code_info[code].name.copy_padded(to); }

void print_deep_indent(writer& out, int n);

// Begins a line with four spaces, n times, and gives the place behind them, which has room for `size`
// characters; advance() takes what of it was filled.
inline char* begin_line(writer& out, int n, std::size_t size) {
    constexpr std::size_t usual = 8;  // up to here a copy of fixed size does
    const auto depth = static_cast<std::size_t>(n);
    if (depth > usual) {
        print_deep_indent(out, n);
        return out.room(size);
    }
    char* const to = out.room(4 * usual + size);
    std::memset(to, ' ', 4 * usual);
    return to + 4 * depth;
}

// Four spaces, n times.
inline void print_indent(writer& out, int n) { out.advance(begin_line(out, n, 0)); }
