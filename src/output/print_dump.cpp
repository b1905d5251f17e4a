#include "output/print_dump.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "base/diagnostics.h"

namespace {

constexpr std::size_t bytes_per_line = 16;

// "; 00000000:", 16 times " 00", " : ", 16 characters and the line's end.
constexpr std::size_t hex_column = 11;
constexpr std::size_t separator_column = hex_column + 3 * bytes_per_line;
constexpr std::size_t character_column = separator_column + 3;
constexpr std::size_t max_line = separator_column + 3 * bytes_per_line;  // what is covered included

using line_bytes = std::array<std::uint8_t, bytes_per_line>;

// The bytes of a line and whatever follows them, 0 behind the script.
line_bytes read_line(const conv& script, std::size_t offset) {
    line_bytes bytes{};
    const std::uint8_t* const from = script.buffer.data() + offset;
    if (script.buffer.size() - offset >= bytes_per_line) {
        std::memcpy(bytes.data(), from, bytes_per_line);
    } else {
        std::copy(from, script.buffer.end(), bytes.begin());
    }
    return bytes;
}

// A line is made whole, since that takes less time than to count: compilers do each of the loops
// below in a few instructions for all bytes at once.

constexpr std::uint8_t hex_digit(std::uint8_t number) {
    return static_cast<std::uint8_t>(number + '0' + (number > 9 ? 'A' - '9' - 1 : 0));
}

void put_hex_columns(char* to, const line_bytes& bytes) {
    std::array<std::uint8_t, 2 * bytes_per_line> digits;
    for (std::size_t i = 0; i < bytes_per_line; ++i) {
        digits[2 * i] = hex_digit(bytes[i] >> 4);
        digits[2 * i + 1] = hex_digit(bytes[i] & 0xF);
    }
    for (std::size_t i = 0; i < bytes_per_line; ++i) std::memcpy(to + 3 * i, &digits[2 * i], 2);
}

void put_characters(char* to, line_bytes bytes) {
    for (std::uint8_t& byte : bytes) byte = byte >= 0x20 && byte <= 0x7E ? byte : std::uint8_t{'.'};
    std::memcpy(to, bytes.data(), bytes_per_line);
}

// Prints up to 16 bytes. Inside the loop over the lines its own loops would be unrolled.
[[gnu::noinline]] void print_dump_line(listing& print, std::size_t offset, std::size_t count) {
    const line_bytes bytes = read_line(print.script, offset);
    char* const line = print.out.room(max_line);
    char* const hex = line + hex_column;
    std::memset(line, ' ', character_column);
    line[0] = ';';
    put_hex<8>(line + 2, static_cast<std::uint32_t>(offset));
    line[hex_column - 1] = ':';
    put_hex_columns(hex + 1, bytes);
    std::memset(hex + 3 * count, ' ', 3 * bytes_per_line);  // what is no longer of the line
    line[separator_column + 1] = ':';
    put_characters(line + character_column, bytes);
    line[character_column + count] = '\n';
    print.out.advance(line + character_column + count + 1);
}

// Nodes mostly follow each other, so that the last change, the end of the last dump, moves on.
result count_dump(array<dump_change>& changes, std::int32_t start, std::int32_t end) {
    if (!changes.empty() && changes.back().offset == start) {
        changes.back().offset = end;
        return result::ok;
    }
    return failed(push(changes, {start, +1})) ? result::failed : push(changes, {end, -1});
}

void report_stretch(std::int32_t start, std::int32_t end, std::uint8_t count) {
    if (start == end || count == 1) return;
    char line[64];
    const int size = std::snprintf(line, sizeof line, "dump count = %4d: %08X - %08X\n", count,
                                   static_cast<unsigned>(start), static_cast<unsigned>(end - 1));
    diagnostics.put({line, static_cast<std::size_t>(size)});
}

}  // namespace

result print_dump(listing& print, std::int32_t offset, std::int32_t size) {
    if (!print.script.dump || size == 0) return result::ok;
    auto position = static_cast<std::size_t>(offset);
    for (const std::size_t end = position + static_cast<std::size_t>(size); position < end;) {
        const std::size_t count = std::min(end - position, bytes_per_line);
        print_dump_line(print, position, count);
        position += count;
    }
    return count_dump(print.script.dump_count, offset, offset + size);
}

void report_dump_count(conv& script) {
    array<dump_change>& changes = script.dump_count;
    std::sort(changes.begin(), changes.end(),
              [](const dump_change& left, const dump_change& right) { return left.offset < right.offset; });
    std::int32_t start = 0;
    std::uint8_t count = 0;  // from `start` on; it wraps
    for (std::size_t i = 0; i < changes.size();) {
        const std::int32_t offset = changes[i].offset;
        std::uint8_t behind = count;
        for (; i < changes.size() && changes[i].offset == offset; ++i)
            behind = static_cast<std::uint8_t>(behind + changes[i].change);
        if (behind == count) continue;
        report_stretch(start, offset, count);
        start = offset;
        count = behind;
    }
    report_stretch(start, script.data_size, count);
}
