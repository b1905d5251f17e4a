// What is made of a listing: the script, and what layout and check need to know of its lines.
#pragma once

#include <cstdint>

#include "assemble/faults.h"
#include "assemble/labels.h"
#include "assemble/source.h"
#include "assemble/text_table.h"
#include "base/array.h"
#include "base/options.h"

// A line that gives bytes to the script.
struct line_start {
    std::uint32_t offset;    // of its first byte
    std::uint32_t position;  // of its first character behind the indentation
};

// The first dump line of a node: the offset that it shows, and where the line below it has come to lie.
struct dump_start {
    std::uint32_t listed;
    std::uint32_t offset;
};

// Bytes of ".unknown" lines that follow one another.
struct unknown_run {
    std::uint32_t offset;
    std::uint32_t end;
};

// A listed label behind a jump, whose offset lay inside the jump's operand if nothing was edited in
// between: then the bytes behind the label are the operand's last ones, listed twice.
struct possible_overlap {
    std::uint32_t target = 0;    // of the jump, as listed
    std::uint32_t size = 0;      // bytes that the two would share; 0 when there is no such label
    std::uint32_t place = 0;     // of the label
    std::uint32_t position = 0;  // of the label's line
};

// A listed label and where it lies.
struct moved_label {
    std::uint32_t offset = 0;
    std::uint32_t place = 0xFFFFFFFF;
};

// What option lines say besides the game.
struct listing_options {
    bool implicit_decl = false;
    bool implicit_eval = false;
    bool implicit_int32 = false;
    bool endif_without_if = false;
};

struct assembly {
    const source& listing;
    text_table* table;  // null when none is named
    fault_list& faults;

    game_mode_id game_mode = game_mode_id::kelvorath;
    listing_options option = {};

    array<std::uint8_t> script = {};
    array<line_start> lines = {};  // ascending in both
    label_table labels = {};
    array<dump_start> dumps = {};
    array<unknown_run> unknowns = {};
    possible_overlap overlap = {};
    moved_label first_moved = {};  // the first listed label that is not at its offset

    bool exhausted = false;  // memory ran out; nothing else here counts then

    // More than the offset of any line of the script that was listed: each of its bytes takes a
    // character.
    [[nodiscard]] std::uint32_t max_offset() const { return listing.size + (table == nullptr ? 0 : table->file.size); }
};

// Adds a byte, or several, to the script.
inline void put_byte(assembly& to, std::uint8_t byte) { to.exhausted |= !to.script.push_back(byte); }
inline void put_bytes(assembly& to, const std::uint8_t* bytes, std::size_t size) {
    to.exhausted |= !to.script.append(bytes, size);
}
inline std::uint32_t script_size(const assembly& from) { return static_cast<std::uint32_t>(from.script.size()); }
