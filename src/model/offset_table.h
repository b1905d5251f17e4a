// The offset tables: what the analysis recorded at which offset.
//
// The three tables of a script share one byte, a mark, for each offset of the script: adding,
// finding and retyping cost the same anywhere, and neighbours are found by scanning marks eight
// at a time. Offsets outside the script are recorded as read, in a list of each table's own.
#pragma once

#include <cstdint>
#include <optional>

#include "base/array.h"
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
    mark_bits bits;
    std::int32_t script_size = 0;
    marks* inside = nullptr;               // shared with the script's other tables
    mutable array<std::int32_t> outside;   // offsets outside the script; in order while settled
    mutable bool settled = true;
};

// Makes an empty table over a script of `script_size` bytes. The marks are `inside`, which all
// tables of the script share and which the first entry inside the script allocates.
void offset_table_init(offset_table& table, mark_bits bits, marks& inside, std::int32_t script_size);
// Releases what the table alone owns.
void offset_table_free(offset_table& table);

// Records that `type` starts at `offset`. An offset that is known keeps its type, with a WARNING
// when the two differ, except that NONE gives way to any type and DATA to DATA_TEXT or
// DATA_INT16. Outside the script every entry has the table's first type or, in the code table,
// DATA. Fails, after its message, only when memory runs out.
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
