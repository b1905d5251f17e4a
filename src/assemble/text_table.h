// The text table: the texts that stand in a listing as labels.
#pragma once

#include <cstdint>

#include "assemble/faults.h"
#include "assemble/source.h"

// A text label, "T", an id in hexadecimal, "_" and a number.
using text_key = std::uint64_t;
inline constexpr text_key no_text_key = ~text_key{0};

// The label with which a name begins, and its length, 0 for none.
struct text_label {
    text_key key;
    std::uint32_t size;
};
text_label read_text_label(const std::uint8_t* name);

struct text_row {
    text_key key;
    std::uint32_t position;  // of the row in the table
    std::uint32_t text;      // of its text, behind the quote
    bool is_used = false;
    bool is_wrong = false;  // which was reported
};

struct text_table {
    const source& file;
    array<text_row> rows = {};  // ascending by key, once the table is read
    bool is_whole = true;       // false when faults hide rows
};

// Reads a whole table, and reports what is wrong with it. Fails when memory runs out.
result read_text_table(text_table& table, fault_list& faults);

// The row of a label, or null.
text_row* find_row(text_table& table, text_key key);

// Warns of each row that is not used.
void report_unused_rows(const text_table& table, fault_list& faults);
