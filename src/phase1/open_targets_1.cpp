#include "phase1/open_targets_1.h"

#include <bit>

#include "base/diagnostics.h"

namespace {

constexpr std::size_t word_bits = 64;
constexpr std::uint64_t bit_of(std::size_t at) { return std::uint64_t{1} << at % word_bits; }

}  // namespace

result keep_open_targets(open_targets& open, std::int32_t script_size) {
    auto size = static_cast<std::size_t>(script_size);
    for (array<std::uint64_t>& row : open.rows) {
        size = size / word_bits + 1;
        if (!row.assign_zero(size)) return memory_exhausted(size * sizeof(std::uint64_t));
    }
    return result::ok;
}

void open_target(open_targets& open, std::int32_t offset) {
    auto at = static_cast<std::size_t>(offset);
    for (array<std::uint64_t>& row : open.rows) {
        std::uint64_t& word = row[at / word_bits];
        const bool is_known_above = word != 0;
        word |= bit_of(at);
        if (is_known_above) break;
        at /= word_bits;
    }
}

void close_target(open_targets& open, std::int32_t offset) {
    auto at = static_cast<std::size_t>(offset);
    for (array<std::uint64_t>& row : open.rows) {
        std::uint64_t& word = row[at / word_bits];
        word &= ~bit_of(at);
        if (word != 0) break;
        at /= word_bits;
    }
}

std::optional<std::int32_t> lowest_open(const open_targets& open) {
    std::size_t at = 0;
    for (std::size_t row = open.rows.size(); row-- > 0;) {
        const std::uint64_t word = open.rows[row][at];
        if (word == 0) return std::nullopt;
        at = at * word_bits + static_cast<std::size_t>(std::countr_zero(word));
    }
    return static_cast<std::int32_t>(at);
}
