// Texts: runs of characters in which a passage between "{" and "}" holds double-byte characters.
#pragma once

#include <cstdint>

#include "base/byte_word.h"
#include "model/conv.h"

// The ranges of Shift_JIS (code page 932). Inside a passage a lead byte takes the next byte with
// it, which must be a trail byte.
constexpr bool is_lead_byte(std::uint8_t byte) {
    return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}
constexpr bool is_trail_byte(std::uint8_t byte) { return byte >= 0x40 && byte <= 0xFC && byte != 0x7F; }

// What stands at a place of a text, told by its byte and the byte behind it.
enum class text_item : std::uint8_t {
    single,  // a character of one byte
    pair,    // a character of two bytes
    opens,   // the "{" or "}" of a passage
    closes,
    half,  // a lead byte without its trail byte
    none,  // no part of a text
};
inline text_item text_item_at(bool in_passage, std::uint8_t byte, std::uint8_t next) {
    if (in_passage) {
        if (code_info[byte].type == MB_OUT) return text_item::closes;
        if (!is_lead_byte(byte)) return text_item::single;
        return is_trail_byte(next) ? text_item::pair : text_item::half;
    }
    if (code_info[byte].type == TEXT) return text_item::single;
    return code_info[byte].type == MB_IN ? text_item::opens : text_item::none;
}

// The letter that stands behind a backslash for a byte that a listing escapes, 0 for any other byte,
// and the way back.
constexpr char escape_letter(std::uint8_t byte) {
    switch (byte) {
        case '\t': return 't';
        case '\n': return 'n';
        case '"': return '"';
        case '\\': return '\\';
        default: return 0;
    }
}
constexpr std::uint8_t escaped_byte(std::uint8_t letter) {
    for (const std::uint8_t byte : {std::uint8_t{'\t'}, std::uint8_t{'\n'}, std::uint8_t{'"'}, std::uint8_t{'\\'}}) {
        if (escape_letter(byte) == static_cast<char>(letter)) return byte;
    }
    return 0;
}

// Marks, in eight bytes, those that are not surely a character that stands for itself.
constexpr byte_word mark_special(byte_word word) { return mark_below(word, 0x20) | mark_from(word, 0x7B); }

// Marks what is escaped or opens a passage, and what only looks so.
constexpr byte_word mark_escaped(byte_word word) {
    return mark_special(word) | mark_equal(word, '"') | mark_equal(word, '\\');
}

// Where a text ends, before the first byte outside a passage that is no text, or the fault that
// stops it: a lead byte without its trail byte, or a passage that is open at the end of the bytes. The
// search ends at the first place outside a passage at or behind `enough`, at most the bytes' number.
struct text_end {
    std::size_t position;
    enum : std::uint8_t { proper, malformed, unclosed } state;
};
text_end find_text_end(std::span<const std::uint8_t> bytes, std::size_t enough);

// The length in bytes of the text that starts at `start` and ends before the first byte, outside
// a passage, that is no text, at `end` at the latest. Fails after an ERROR line when a passage is
// malformed or not closed.
result text_length(const conv& script, std::int32_t start, std::int32_t end, std::int32_t& length);

// The length of a piece of that text: up to the first place outside a passage at or behind the next
// multiple of text_piece_size, so that pieces of one text end at the same places wherever they begin. 0
// where the text ends, -1 where it is malformed.
constexpr std::int32_t text_piece_size = 64;
std::int32_t text_piece(const conv& script, std::int32_t start);

// Reports a malformed text and returns the failure: at `offset` stands either a lead byte without
// its trail byte, or the first byte of a text with a passage that is not closed before `end`.
failure report_malformed_text(const conv& script, std::int32_t offset, std::int32_t end);
