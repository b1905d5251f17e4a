// What writes the scripts made to order: bytes, labels that are placed later, random choices.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

#include "shapes.h"

enum : unsigned {
    op_and = 0x95,
    op_sleep = 0x9E,
    op_if = 0xA1,
    op_endif = 0xA2,
    op_else = 0xA3,
    op_decl = 0xA6,
    op_eval = 0xA7,
    op_assign = 0xA8,
    op_flag = 0xAB,
    op_jump = 0xB0,
    op_var = 0xB2,
    op_str = 0xB3,
    op_data = 0xB4,
    op_dprint = 0xB5,
    op_bye = 0xB6,
    op_indexof = 0xB7,
    op_enddata = 0xB8,
    op_inparty = 0xC6,
    op_give = 0xC9,
    op_int32 = 0xD2,
    op_byte = 0xD3,
    op_int16 = 0xD4,
    op_endanswer = 0xEE,
    op_keywords = 0xEF,
    op_slook = 0xF1,
    op_sconverse = 0xF2,
    op_answer = 0xF6,
    op_inputnum = 0xFC,
    op_sident = 0xFF,
};

inline constexpr std::string_view comparisons = "\x81\x82\x83\x84\x85\x86";
inline constexpr std::string_view operators = "\x81\x82\x83\x84\x85\x86\x90\x91\x92\x93\x94\x95";
inline constexpr std::string_view unary_functions = "\x9A\x9D\xC6\xCA\xCC\xD7\xDA\xDC";
inline constexpr std::string_view binary_functions = "\x9B\xA0\xAB\xBB\xC7";
inline constexpr std::string_view unary_statements = "\x9C\xBE\xBF\xC4\xC5\xD6\xD8\xD9\xDB";
inline constexpr std::string_view binary_statements = "\xA4\xA5\xCD";
inline constexpr std::string_view letters =
    "eeeeeetttttaaaaooooiiinnnsssrrhhdlluuccmmwwffggyyppbbvkIT'\",.?@\n            ";

// splitmix64: the distributions of <random> differ between libraries.
struct random_source {
    std::uint64_t state;

    std::uint64_t next() {
        std::uint64_t z = state += 0x9E3779B97F4A7C15;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
        return z ^ (z >> 31);
    }
    std::size_t below(std::size_t limit) { return next() % limit; }
    std::size_t between(std::size_t low, std::size_t high) { return low + below(high - low + 1); }
    bool one_in(std::size_t n) { return below(n) == 0; }
    std::size_t one_of(std::string_view bytes) { return static_cast<unsigned char>(bytes[below(bytes.size())]); }
};

using label = std::size_t;  // index into script_builder::places

struct script_builder : random_source {
    struct label_use {
        std::size_t at;
        label target;
    };

    script_bytes bytes = {};
    std::vector<std::size_t> places = {};  // the offset of each label, once it is placed
    std::vector<label_use> uses = {};      // four-byte gaps that wait for the place of their label

    std::size_t size() const { return bytes.size(); }

    script_builder& byte(std::size_t value) { return bytes.push_back(static_cast<std::uint8_t>(value)), *this; }
    script_builder& code(std::initializer_list<std::size_t> values) {
        for (std::size_t value : values) byte(value);
        return *this;
    }
    script_builder& int16(std::size_t value) { return code({value, value >> 8}); }
    script_builder& int32(std::size_t value) { return int16(value).int16(value >> 16); }

    label new_label() {
        places.push_back(0);
        return places.size() - 1;
    }
    script_builder& place(label l) { return places[l] = size(), *this; }
    script_builder& address(label l) { return uses.push_back({size(), l}), int32(0); }
    script_builder& jump_to(label l) { return byte(op_jump).address(l); }
    script_builder& jump_to_offset(std::size_t offset) { return byte(op_jump).int32(offset); }

    script_builder& word(std::size_t length) {
        while (length-- > 0) byte('a' + below(26));
        return *this;
    }
    // Two texts, or a keyword list and a text, need a statement between them, or they become one.
    script_builder& text(std::size_t length) {
        while (length-- > 1) byte(one_of(letters));
        return byte('\n');
    }
    script_builder& operand() { return value().byte(op_eval); }
    script_builder& value() {
        switch (below(4)) {
            case 0: return byte(op_int16).int16(below(1000));
            case 1: return code({below(32), op_var});
            default: return code({op_byte, below(256)});
        }
    }
};

// Writes a script or a part of one; `amount` is a size, a depth or a count.
using writer = void (*)(script_builder& b, std::size_t amount);

template <writer write>
script_bytes made(std::size_t amount, std::uint64_t seed) {
    script_builder b{{seed}};
    write(b, amount);
    for (const script_builder::label_use& use : b.uses)
        for (unsigned k = 0; k < 4; ++k)
            b.bytes[use.at + k] = static_cast<std::uint8_t>(b.places[use.target] >> (8 * k));
    return std::move(b.bytes);
}
