#include "output/print_dump.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "base/diagnostics.h"

namespace {

constexpr std::int32_t bytes_per_line = 16;

// "; 00000000:", 16 times " 00", " : ", 16 characters and the line's end.
constexpr std::size_t hex_column = 11;
constexpr std::size_t separator_column = hex_column + 3 * bytes_per_line;
constexpr std::size_t character_column = separator_column + 3;
constexpr std::size_t max_line = character_column + bytes_per_line + 1;

// " 00" to " FF", each with one more character so that it can be copied as four bytes.
constexpr auto make_hex_bytes() {
    std::array<std::array<char, 4>, 256> table{};
    for (std::size_t byte = 0; byte < 256; ++byte) {
        table[byte] = {' ', "0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15], ' '};
    }
    return table;
}
constexpr auto hex_bytes = make_hex_bytes();

constexpr auto make_characters() {
    std::array<char, 256> table{};
    for (std::size_t byte = 0; byte < 256; ++byte) {
        table[byte] = byte >= 0x20 && byte <= 0x7E ? static_cast<char>(byte) : '.';
    }
    return table;
}
constexpr auto characters = make_characters();

constexpr auto make_empty_line() {
    std::array<char, character_column> line{};
    line.fill(' ');
    line[0] = ';';
    line[hex_column - 1] = ':';
    line[separator_column + 1] = ':';
    return line;
}
constexpr auto empty_line = make_empty_line();

void print_dump_line(writer& out, std::int32_t offset, const std::uint8_t* bytes, std::size_t count) {
    char* const line = out.room(max_line);
    std::memcpy(line, empty_line.data(), empty_line.size());
    put_hex(line + 2, static_cast<std::uint32_t>(offset), 8);
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(line + hex_column + 3 * i, hex_bytes[bytes[i]].data(), 4);
        line[character_column + i] = characters[bytes[i]];
    }
    line[character_column + count] = '\n';
    out.advance(line + character_column + count + 1);
}

}  // namespace

void print_dump(listing& print, std::int32_t offset, std::int32_t size) {
    conv& script = print.script;
    if (!script.dump) return;
    const std::int32_t end = offset + size;
    while (offset < end) {
        const auto start = static_cast<std::size_t>(offset);
        const auto count = static_cast<std::size_t>(std::min(end - offset, bytes_per_line));
        print_dump_line(print.out, offset, script.buffer.data() + start, count);
        for (std::size_t i = start; i < start + count; ++i) ++script.dump_count[i];
        offset += static_cast<std::int32_t>(count);
    }
}

void report_dump_count(const conv& script) {
    char line[64];
    const std::uint8_t* const counts = script.dump_count.begin();
    const std::uint8_t* const end = script.dump_count.end();
    for (const std::uint8_t* first = counts; first != end;) {
        const std::uint8_t count = *first;
        const std::uint8_t* const behind =
            std::find_if(first, end, [count](std::uint8_t other) { return other != count; });
        if (count != 1) {
            const int size = std::snprintf(line, sizeof line, "dump count = %4d: %08X - %08X\n", count,
                                           static_cast<unsigned>(first - counts),
                                           static_cast<unsigned>(behind - 1 - counts));
            diagnostics.put({line, static_cast<std::size_t>(size)});
        }
        first = behind;
    }
}
