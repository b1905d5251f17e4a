#include "output/print_dump.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "base/diagnostics.h"

namespace {

constexpr std::size_t bytes_per_line = 16;

// "; 00000000:", 16 times " 00", " : ", 16 characters and the line's end.
constexpr std::size_t hex_column = 11;
constexpr std::size_t separator_column = hex_column + 3 * bytes_per_line;
constexpr std::size_t character_column = separator_column + 3;
constexpr std::size_t max_line = character_column + bytes_per_line + 1;

// " 00" to " FF", each with a fourth character, so that it is copied in one piece; what follows it
// in the line covers that.
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

// Prints and counts up to 16 bytes.
void print_dump_line(listing& print, std::size_t offset, std::size_t count) {
    const std::uint8_t* const bytes = print.script.buffer.data() + offset;
    std::uint8_t* const counts = print.script.dump_count.data() + offset;
    char* const line = print.out.room(max_line);
    std::memcpy(line, empty_line.data(), empty_line.size());
    put_hex(line + 2, static_cast<std::uint32_t>(offset), 8);
    char* hex = line + hex_column;
    char* character = line + character_column;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t byte = bytes[i];
        std::memcpy(hex, hex_bytes[byte].data(), 4);
        hex += 3;
        *character++ = characters[byte];
        ++counts[i];
    }
    *character++ = '\n';
    print.out.advance(character);
}

}  // namespace

void print_dump(listing& print, std::int32_t offset, std::int32_t size) {
    if (!print.script.dump) return;
    auto position = static_cast<std::size_t>(offset);
    for (const std::size_t end = position + static_cast<std::size_t>(size); position < end;) {
        const std::size_t count = std::min(end - position, bytes_per_line);
        print_dump_line(print, position, count);
        position += count;
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
            const int size =
                std::snprintf(line, sizeof line, "dump count = %4d: %08X - %08X\n", count,
                              static_cast<unsigned>(first - counts), static_cast<unsigned>(behind - 1 - counts));
            diagnostics.put({line, static_cast<std::size_t>(size)});
        }
        first = behind;
    }
}
