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

// Marks, in eight bytes, those that are not surely a character that stands for itself.
constexpr byte_word mark_special(byte_word word) { return mark_below(word, 0x20) | mark_from(word, 0x7B); }

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
