#include "output/print_dump.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <span>

#include "base/diagnostics.h"
#include "output/put.h"

namespace {

constexpr std::size_t bytes_per_line = 16;

// A line is "; 00000000:", 16 times " 00" or blanks, " : ", the characters and its end. While it is made, blanks
// stand in place of the characters.
constexpr std::size_t hex_size = 3 * bytes_per_line;
constexpr std::size_t max_line = 11 + 2 * hex_size;

// Prints the line of up to 16 bytes.
void print_dump_line(writer& out, std::int32_t offset, std::span<const std::uint8_t> bytes) {
    char* to = put_text(out.room(max_line), "; ");
    to = put_text(put_hex<8>(to, static_cast<std::uint32_t>(offset)), ":");
    for (const std::uint8_t byte : bytes) to = put_hex<2>(put_text(to, " "), byte);
    std::memset(to, ' ', hex_size);
    to = put_text(to + hex_size - 3 * bytes.size(), " : ");
    for (const std::uint8_t byte : bytes) *to++ = byte >= 0x20 && byte <= 0x7E ? static_cast<char>(byte) : '.';
    out.advance(put_text(to, "\n"));
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
        const std::int32_t count = std::min<std::int32_t>(end - start, bytes_per_line);
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
