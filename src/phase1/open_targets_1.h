// Phase 1: the jump targets inside the script that are still to be walked. They are kept from the first code break
// on, which most scripts do not have.
//
// A row of bits, one for each offset, and above it rows with one bit for each word of the row below that is
// not 0, up to a single word: adding, removing and finding the lowest take a step for each row.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "base/array.h"
#include "base/result.h"

struct open_targets {
    std::array<array<std::uint64_t>, 6> rows = {};  // 64^6 offsets are more than a script can have
};

inline bool are_kept(const open_targets& open) { return !open.rows.back().empty(); }

// Begins to keep those of a script of `script_size` bytes. Fails, after its message, when memory runs out.
result keep_open_targets(open_targets& open, std::int32_t script_size);

void open_target(open_targets& open, std::int32_t offset);
void close_target(open_targets& open, std::int32_t offset);

std::optional<std::int32_t> lowest_open(const open_targets& open);
