// The record of one run: a loaded script and everything derived from it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "base/array.h"
#include "model/inst.h"
#include "model/offset_table.h"

inline constexpr std::uint32_t no_npc_id = 0xFFFF;

// From `offset` on the bytes were dumped `change` times more often than those before it.
struct dump_change {
    std::int32_t offset;
    std::int32_t change;
};

// Owns all that hangs on it. The offset tables refer to `position_marks`, so it stays in place.
struct conv {
    conv() = default;
    conv(const conv&) = delete;
    conv& operator=(const conv&) = delete;

    std::uint32_t npc_id = no_npc_id;  // of the "sident" statement
    offset_table code_offset_table;    // what starts at each decoded position
    offset_table jump_offset_table;    // jump targets, all of type NONE
    offset_table data_offset_table;    // data block starts, all of type DATA
    marks position_marks;
    inst_tree tree;
    array<std::uint8_t> buffer;  // the whole script file
    std::int32_t data_size = 0;  // its size in bytes
    bool dump = false;
    array<dump_change> dump_count;  // how often each byte was dumped: where that changes
};

// Makes the record of a script that is not loaded yet. Called once for each run.
void conv_init(conv& script);

// Takes over the script's bytes, fewer than 2 GiB, and sets up empty tables over them.
void conv_set_buffer(conv& script, array<std::uint8_t> buffer);

// Releases everything; safe at any stage of a run.
void conv_free(conv& script);

// Every read of the script goes through these: a byte outside the script reads as 0. Numbers are
// stored low byte first.
inline bool conv_has(const conv& script, std::int32_t offset) {
    return static_cast<std::uint32_t>(offset) < static_cast<std::uint32_t>(script.data_size);
}
inline std::uint8_t conv_byte(const conv& script, std::int32_t offset) {
    return conv_has(script, offset) ? script.buffer[static_cast<std::size_t>(offset)] : std::uint8_t{0};
}
template <int bytes>
std::uint32_t conv_number(const conv& script, std::int32_t offset) {
    const std::int32_t inside = conv_has(script, offset) ? std::min(bytes, script.data_size - offset) : 0;
    std::uint32_t number = 0;
    for (std::int32_t i = 0; i < inside; ++i)
        number |= static_cast<std::uint32_t>(conv_byte(script, offset + i)) << (8 * i);
    return number;
}
inline std::uint32_t conv_int16(const conv& script, std::int32_t offset) { return conv_number<2>(script, offset); }
inline std::uint32_t conv_int32(const conv& script, std::int32_t offset) { return conv_number<4>(script, offset); }

// The bytes from `start` up to `end`, as far as they lie inside the script.
std::span<const std::uint8_t> conv_bytes(const conv& script, std::int32_t start, std::int32_t end);

// Reports that the code offset table could not take an entry.
failure report_code_table();

// Adds an entry to one of the script's tables; a failure is reported with the table's name.
inline result add_code_offset(conv& script, std::int32_t offset, code_type type) {
    return failed(offset_table_add(script.code_offset_table, offset, type)) ? report_code_table() : result::ok;
}
result add_jump_offset(conv& script, std::int32_t offset);
result add_data_offset(conv& script, std::int32_t offset);
// Records a data block start, in the code and in the data offset table.
result add_data_block(conv& script, std::int32_t offset);
