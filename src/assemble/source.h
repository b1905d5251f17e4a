// A file that is read: the listing or the text table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "base/array.h"
#include "base/result.h"

// Positions in it are bytes from its start. Behind its last byte stand a line feed, so that every
// line has an end, and zeros, so that a name's sixteen bytes can be read anywhere.
struct source {
    array<std::uint8_t> bytes;
    std::uint32_t size = 0;

    [[nodiscard]] const std::uint8_t* begin() const { return bytes.data(); }
    [[nodiscard]] const std::uint8_t* end() const { return bytes.data() + size; }
};

inline constexpr std::size_t max_source_size = 0x7FFFFF00;

// To be called when `bytes` are those of a whole file, at most max_source_size, to add what stands
// behind them. In a file without line feeds a carriage return ends a line. Fails without a message
// when memory runs out.
result source_finish(source& text);

// Copies the bytes of a whole file; the same failure.
result source_assign(source& text, std::span<const std::uint8_t> bytes);

// The last character that is no blank and ends no line, or the start of an empty file.
const std::uint8_t* last_character(const source& text);
