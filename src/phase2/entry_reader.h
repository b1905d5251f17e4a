// Phase 2: reads the code offset table from its first entry to its last.
#pragma once

#include <cstdint>

#include "model/conv.h"

// Stands on one entry, or behind the last one.
struct entry_reader {
    const conv& script;
    bool at_end = true;
    std::int32_t index = 0;  // how many entries come before
    std::int32_t offset = 0;
    code_type type = NONE;
    std::uint8_t code = 0;  // the script byte at `offset`; 0, which is no opcode, outside the script
};

entry_reader read_first_entry(const conv& script);

// Moves to an entry that is not among the next eight bytes, or behind the last one.
void advance_far(entry_reader& entry);

// Moves to the next entry or, from the last one, behind it.
inline void advance(entry_reader& entry) {
    const conv& script = entry.script;
    ++entry.index;
    const byte_word word = next_entries(script.code_offset_table, entry.offset);
    if (word == 0) return advance_far(entry);
    const std::size_t distance = bytes_before(word);
    entry.offset += static_cast<std::int32_t>(distance) + 1;
    entry.type = type_in(word >> (8 * distance), code_marks);
    entry.code = conv_byte(script, entry.offset);
}
