#include "output/print_dump.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <span>

#include "base/diagnostics.h"
#include "output/put.h"

namespace {

constexpr std::int32_t bytes_per_line = 16;

// "; 00000000:", 16 times " 00", " : " and 16 characters.
constexpr std::size_t hex_column = 12;
constexpr std::size_t separator_column = 60;
constexpr std::size_t character_column = 62;
constexpr std::size_t line_size = 78;

// Prints the line of up to 16 bytes.
void print_dump_line(writer& out, std::int32_t offset, std::span<const std::uint8_t> bytes) {
    char* const line = out.room(line_size + 1);
    std::memset(line, ' ', line_size);
    put_text(put_hex<8>(put_text(line, "; "), static_cast<std::uint32_t>(offset)), ":");
    line[separator_column] = ':';
    char* hex = line + hex_column;
    char* character = line + character_column;
    for (const std::uint8_t byte : bytes) {
        hex = put_hex<2>(hex, byte) + 1;
        *character++ = byte >= 0x20 && byte <= 0x7E ? static_cast<char>(byte) : '.';
    }
    out.advance(put_text(character, "\n"));
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

result print_dump(print_job& job, std::int32_t offset, std::int32_t size) {
    if (!job.script.dump || size == 0) return result::ok;
    const std::int32_t end = offset + size;
    for (std::int32_t start = offset; start < end;) {
        const std::int32_t count = std::min(end - start, bytes_per_line);
        print_dump_line(job.out, start, conv_bytes(job.script, start, start + count));
        start += count;
    }
    return count_dump(job.script.dump_count, offset, end);
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
