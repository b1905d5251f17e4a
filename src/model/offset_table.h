// The offset tables: what the analysis recorded at which offset.
//
// The three tables of a script share one byte, a mark, for each offset of the script: adding,
// finding and retyping cost the same anywhere, and neighbours are found by scanning marks eight
// at a time. Offsets outside the script are recorded as read, in a list of each table's own.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>

#include "base/array.h"
#include "base/byte_word.h"
#include "base/result.h"
#include "model/code_info.h"

// The bits that a table uses of a mark. They hold 0 for no entry, else the entry's type counted
// from `first_type` as 1.
struct mark_bits {
    std::uint8_t shift;
    std::uint8_t mask;
    code_type first_type;
};

inline constexpr mark_bits code_marks = {0, 0x1F, NONE};
inline constexpr mark_bits jump_marks = {5, 0x20, NONE};
inline constexpr mark_bits data_marks = {6, 0xC0, DATA};

using marks = array<std::uint8_t>;

// At most one entry for each offset, visited in ascending order of the signed offsets.
struct offset_table {
    mark_bits bits = code_marks;
    std::int32_t script_size = 0;
    std::int32_t inserted = 0;            // how many entries were ever added; some outside count twice
    marks* inside = nullptr;              // shared by the script's tables; empty before the first entry
    mutable array<std::int32_t> outside;  // offsets outside the script
    mutable std::size_t settled = 0;      // how many of them, the first, are in order and distinct
};

// Makes an empty table over a script of `script_size` bytes. The marks are `inside`, which all
// tables of the script share and which the first entry inside the script allocates.
void offset_table_init(offset_table& table, mark_bits bits, marks& inside, std::int32_t script_size);
// Releases what the table alone owns.
void offset_table_free(offset_table& table);

// Records that `type` starts at `offset`. An offset that is known keeps its type, with a WARNING
// when the two differ, except that NONE gives way to any type and DATA to DATA_TEXT or
// DATA_INT16, which an INFORMATION line says. Outside the script a table keeps entries of one type
// only, DATA in the code table; any other is dropped there. Fails, after its message, only when
// memory runs out.
result offset_table_add(offset_table& table, std::int32_t offset, code_type type);

// The type recorded at exactly this offset, if any.
std::optional<code_type> offset_table_find(const offset_table& table, std::int32_t offset);

// The offsets of the table's lowest entry and of the nearest entries below and above an offset.
std::optional<std::int32_t> offset_table_first(const offset_table& table);
std::optional<std::int32_t> offset_table_last_below(const offset_table& table, std::int32_t offset);
std::optional<std::int32_t> offset_table_first_above(const offset_table& table, std::int32_t offset);

std::int32_t offset_table_count(const offset_table& table);

// Drops every entry at or above `offset`, which lies inside the script.
void offset_table_truncate(offset_table& table, std::int32_t offset);

// What follows is the part of the operations above that nearly every call comes down to.

// Among marks of the given bits, those of an entry are not 0.
constexpr byte_word entries_in(byte_word word, mark_bits bits) { return word & repeated(bits.mask); }
// The type in a mark that holds an entry.
constexpr code_type type_in(byte_word mark, mark_bits bits) {
    return static_cast<code_type>(bits.first_type + ((mark & bits.mask) >> bits.shift) - 1);
}
// The bits of an entry's type in its mark.
constexpr std::uint8_t mark_of(code_type type, mark_bits bits) {
    return static_cast<std::uint8_t>((type - bits.first_type + 1) << bits.shift);
}

// The entries among the eight marks behind an offset; 0 also near the script's end and outside it.
inline byte_word next_entries(const offset_table& table, std::int32_t offset) {
    const auto position = static_cast<std::uint32_t>(offset);
    const std::size_t size = table.inside->size();
    if (position >= size || size - position <= sizeof(byte_word)) return 0;
    return entries_in(load_word(table.inside->data() + position + 1), table.bits);
}

result add_or_retype(offset_table& table, std::int32_t offset, code_type type);
std::optional<code_type> find_outside(const offset_table& table, std::int32_t offset);
// INT64_MAX when there is none.
std::int64_t find_first_above(const offset_table& table, std::int32_t offset);

inline std::optional<code_type> offset_table_find(const offset_table& table, std::int32_t offset) {
    const auto position = static_cast<std::uint32_t>(offset);
    if (position >= table.inside->size()) [[unlikely]]
        return find_outside(table, offset);
    const std::uint8_t mark = (*table.inside)[position];
    if ((mark & table.bits.mask) == 0) return std::nullopt;
    return type_in(mark, table.bits);
}

inline std::optional<std::int32_t> offset_table_first_above(const offset_table& table, std::int32_t offset) {
    if (const byte_word word = next_entries(table, offset); word != 0) {
        return offset + 1 + static_cast<std::int32_t>(bytes_before(word));
    }
    const std::int64_t above = find_first_above(table, offset);
    if (above == std::numeric_limits<std::int64_t>::max()) return std::nullopt;
    return static_cast<std::int32_t>(above);
}

inline result offset_table_add(offset_table& table, std::int32_t offset, code_type type) {
    const auto position = static_cast<std::uint32_t>(offset);
    if (position >= table.inside->size()) [[unlikely]]
        return add_or_retype(table, offset, type);
    std::uint8_t& mark = (*table.inside)[position];
    if ((mark & table.bits.mask) != 0) return add_or_retype(table, offset, type);
    ++table.inserted;
    mark |= mark_of(type, table.bits);
    return result::ok;
}
