// What the printers of a listing share: the streams, and the forms of numbers and labels.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/array.h"
#include "base/writer.h"
#include "model/conv.h"

// A part of an expression that is rendered later.
struct pending_piece {
    std::uint32_t item;
    std::uint8_t kind;
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

// The put_ functions write at `to` and return the end of what they wrote.
inline char* put_text(char* to, std::string_view text) {
    std::memcpy(to, text.data(), text.size());
    return to + text.size();
}
// An even number of digits.
char* put_hex(char* to, std::uint32_t number, int digits);
// At least `digits` digits, filled with zeros.
char* put_decimal(char* to, std::uint32_t number, int digits = 1);
// "L" npc id "_" offset, 14 characters.
char* put_label(char* to, const conv& script, std::uint32_t offset);

inline constexpr std::size_t label_size = 14;
inline constexpr std::size_t max_decimal_size = 10;

// The name of an opcode.
inline void print_name(writer& out, std::uint8_t code) {
    out.advance(code_info[code].name.copy_padded(out.room(code_name::max_size)));
}

// Four spaces, n times.
void print_indent(writer& out, int n);
