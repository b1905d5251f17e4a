#include "model/offset_table.h"

#include <algorithm>
#include <bit>

#include "base/diagnostics.h"

namespace {

constexpr auto marks_per_word = static_cast<std::int32_t>(sizeof(byte_word));

bool is_inside(const offset_table& table, std::int32_t offset) { return offset >= 0 && offset < table.script_size; }

bool is_marked(const offset_table& table, std::int32_t offset) {
    return ((*table.inside)[static_cast<std::size_t>(offset)] & table.bits.mask) != 0;
}

// The lowest marked offset at or above `offset`, else script_size.
std::int32_t next_mark(const offset_table& table, std::int32_t offset) {
    if (table.inside->empty()) return table.script_size;
    while (table.script_size - offset >= marks_per_word) {
        const byte_word word = entries_in(load_word(table.inside->data() + offset), table.bits);
        if (word != 0) return offset + static_cast<std::int32_t>(bytes_before(word));
        offset += marks_per_word;
    }
    while (offset < table.script_size && !is_marked(table, offset)) ++offset;
    return offset;
}

// The highest marked offset below `offset`, else -1.
std::int32_t previous_mark(const offset_table& table, std::int32_t offset) {
    if (table.inside->empty()) return -1;
    while (offset >= marks_per_word) {
        const byte_word word = entries_in(load_word(table.inside->data() + offset - marks_per_word), table.bits);
        if (word != 0) return offset - 1 - std::countl_zero(word) / 8;
        offset -= marks_per_word;
    }
    do --offset;
    while (offset >= 0 && !is_marked(table, offset));
    return offset;
}

// Outside the script a table records one kind of thing only.
code_type outside_type(const offset_table& table) {
    return table.bits.mask == code_marks.mask ? DATA : table.bits.first_type;
}

// Brings the offsets outside the script in order.
const array<std::int32_t>& settled_outside(const offset_table& table) {
    array<std::int32_t>& outside = table.outside;
    if (table.settled != outside.size()) {
        std::sort(outside.begin(), outside.end());
        const auto* const end = std::unique(outside.begin(), outside.end());
        outside.truncate(static_cast<std::size_t>(end - outside.begin()));
        table.settled = outside.size();
    }
    return outside;
}

// The lowest offset outside the script that is above `offset`.
std::optional<std::int32_t> outside_above(const offset_table& table, std::int32_t offset) {
    const array<std::int32_t>& outside = settled_outside(table);
    const auto* const above = std::upper_bound(outside.begin(), outside.end(), offset);
    if (above == outside.end()) return std::nullopt;
    return *above;
}

// The highest offset outside the script that is below `offset`.
std::optional<std::int32_t> outside_below(const offset_table& table, std::int32_t offset) {
    const array<std::int32_t>& outside = settled_outside(table);
    const auto* const above = std::lower_bound(outside.begin(), outside.end(), offset);
    if (above == outside.begin()) return std::nullopt;
    return above[-1];
}

// Decides what becomes of an entry whose offset is recorded with another type.
bool gives_way(code_type stored, std::int32_t offset, code_type type) {
    if (stored == NONE || (stored == DATA && (type == DATA_TEXT || type == DATA_INT16))) {
        INFORMATION(0, "change offset type: offset=%08X, type=%02X -> %02X", offset, stored, type);
        return true;
    }
    WARNING("offset type mismatch: offset=%08X, type=%02X, %02X", offset, stored, type);
    return false;
}

result add_outside(offset_table& table, std::int32_t offset, code_type type) {
    if (type != outside_type(table)) {
        // The operand of a jump whose opcode is the script's last byte: the walk that met it is
        // about to fail, so that it need not be kept.
        if (offset_table_find(table, offset)) gives_way(outside_type(table), offset, type);
        return result::ok;
    }
    // What is not settled is at most as much as what is, so that repeated offsets cost no memory
    // and settling little time.
    constexpr std::size_t least = 256;
    array<std::int32_t>& outside = table.outside;
    if (outside.size() >= 2 * table.settled + least) settled_outside(table);
    if (std::binary_search(outside.begin(), outside.begin() + table.settled, offset)) return result::ok;
    const bool is_next = table.settled == outside.size() && (outside.empty() || outside.back() < offset);
    if (!outside.push_back(offset)) return memory_exhausted(outside.growth_bytes());
    if (is_next) ++table.settled;
    ++table.inserted;
    return result::ok;
}

result offset_table_reserve(offset_table& table) {
    const auto size = static_cast<std::size_t>(table.script_size);
    return table.inside->assign_zero(size) ? result::ok : memory_exhausted(size);
}

}  // namespace

void offset_table_init(offset_table& table, mark_bits bits, marks& inside, std::int32_t script_size) {
    table.bits = bits;
    table.script_size = script_size;
    table.inserted = 0;
    table.inside = &inside;
    table.outside.release();
    table.settled = 0;
}

void offset_table_free(offset_table& table) {
    table.outside.release();
    table.settled = 0;
}

result add_or_retype(offset_table& table, std::int32_t offset, code_type type) {
    if (!is_inside(table, offset)) return add_outside(table, offset, type);
    if (table.inside->empty()) {
        if (failed(offset_table_reserve(table))) return result::failed;
        return offset_table_add(table, offset, type);
    }
    const auto stored = offset_table_find(table, offset);
    if (*stored == type || !gives_way(*stored, offset, type)) return result::ok;
    (*table.inside)[static_cast<std::size_t>(offset)] &= static_cast<std::uint8_t>(~table.bits.mask);
    return offset_table_add(table, offset, type);
}

std::optional<code_type> find_outside(const offset_table& table, std::int32_t offset) {
    const array<std::int32_t>& outside = settled_outside(table);
    if (!std::binary_search(outside.begin(), outside.end(), offset)) return std::nullopt;
    return outside_type(table);
}

std::optional<std::int32_t> offset_table_first(const offset_table& table) {
    constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
    if (offset_table_find(table, lowest)) return lowest;
    return offset_table_first_above(table, lowest);
}

std::int64_t find_first_above(const offset_table& table, std::int32_t offset) {
    if (offset < 0) {
        const auto below_script = outside_above(table, offset);
        if (below_script && *below_script < 0) return *below_script;
        offset = -1;
    }
    if (offset < table.script_size - 1) {
        offset = next_mark(table, offset + 1);
        if (offset < table.script_size) return offset;
        --offset;
    }
    const auto above_script = outside_above(table, offset);
    return above_script ? *above_script : std::numeric_limits<std::int64_t>::max();
}

std::optional<std::int32_t> offset_table_last_below(const offset_table& table, std::int32_t offset) {
    if (offset > table.script_size) {
        const auto above_script = outside_below(table, offset);
        if (above_script && *above_script >= table.script_size) return above_script;
        offset = table.script_size;
    }
    if (offset > 0) {
        offset = previous_mark(table, offset);
        if (offset >= 0) return offset;
        offset = 0;
    }
    return outside_below(table, offset);
}

std::int32_t offset_table_count(const offset_table& table) {
    std::int32_t count = 0;
    for (auto offset = offset_table_first(table); offset; offset = offset_table_first_above(table, *offset)) {
        ++count;
    }
    return count;
}

void offset_table_truncate(offset_table& table, std::int32_t offset) {
    const auto first = static_cast<std::size_t>(offset);
    for (std::size_t i = first; i < table.inside->size(); ++i) {
        (*table.inside)[i] &= static_cast<std::uint8_t>(~table.bits.mask);
    }
    const array<std::int32_t>& outside = settled_outside(table);
    const auto* const end = std::lower_bound(outside.begin(), outside.end(), offset);
    table.outside.truncate(static_cast<std::size_t>(end - outside.begin()));
    table.settled = table.outside.size();
}
