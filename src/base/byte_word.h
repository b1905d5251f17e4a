// Eight bytes at once, for the loops that pass over most of what they read.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

// The first of the bytes is the lowest.
using byte_word = std::uint64_t;

inline byte_word load_word(const std::uint8_t* bytes) {
    byte_word word = 0;
    std::memcpy(&word, bytes, sizeof word);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    return word;
}

constexpr byte_word repeated(std::uint8_t byte) { return 0x0101010101010101U * byte; }

// These set the highest bit of each byte that is below the limit, at least the limit, or equal. The
// limits are at most 0x80. Behind the first such byte others may be marked as well.
constexpr byte_word mark_below(byte_word word, std::uint8_t limit) {
    return (word - repeated(limit)) & ~word & repeated(0x80);
}
constexpr byte_word mark_from(byte_word word, std::uint8_t limit) {
    return ((word + repeated(static_cast<std::uint8_t>(0x80 - limit))) | word) & repeated(0x80);
}
constexpr byte_word mark_equal(byte_word word, std::uint8_t byte) { return mark_below(word ^ repeated(byte), 1); }

// How many bytes come before the first that is not 0 in a word that is not 0.
constexpr std::size_t bytes_before(byte_word word) { return static_cast<std::size_t>(std::countr_zero(word)) / 8; }

// The position of the first byte from `position` on that `mark` marks, else `size`.
template <byte_word (*mark)(byte_word)>
std::size_t find_marked(const std::uint8_t* bytes, std::size_t position, std::size_t size) {
    constexpr std::size_t step = sizeof(byte_word);
    for (; size - position >= step; position += step) {
        const byte_word marked = mark(load_word(bytes + position));
        if (marked != 0) return position + bytes_before(marked);
    }
    if (position == size) return size;
    if (size >= step) {  // what is left of the last eight
        const std::size_t seen = 8 * (step - (size - position));
        const byte_word marked = mark(load_word(bytes + size - step) >> seen) & (~byte_word{0} >> seen);
        return marked != 0 ? position + bytes_before(marked) : size;
    }
    while (position < size && (mark(bytes[position]) & 0x80) == 0) ++position;
    return position;
}
