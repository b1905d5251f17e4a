// The way back: from a listing to its script, in memory.
#pragma once

#include "assemble/faults.h"
#include "assemble/source.h"

enum class rebuild_outcome : std::uint8_t {
    built,      // the script is made; there may be warnings
    refused,    // there are errors
    exhausted,  // memory ran out; nothing is known
};

// Makes the script of a listing with its text table (null for none), lists it again in memory and
// compares. The faults, located, say what is wrong. Sets the game of the opcode table and the run
// options, and leaves the messages of the passes closed: open `diagnostics` before other runs.
rebuild_outcome rebuild(const source& listing, const source* table, array<std::uint8_t>& script, fault_list& faults);
