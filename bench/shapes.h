// Scripts made to order for the benchmark and the stress tests.
//
// Every maker is deterministic: the same arguments give the same bytes on every machine. The time to
// make a script grows linearly with its size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

using script_bytes = std::vector<std::uint8_t>;

struct script_shape {
    const char* name;
    const char* purpose;                                         // what the script is made of
    script_bytes (*make)(std::size_t size, std::uint64_t seed);  // about `size` bytes, from 2 KB up
    const char* options;                                         // what the tool is to be run with
    bool is_sound = true;                                        // the tool lists it
};

std::span<const script_shape> script_shapes();

// `depth` sub blocks, each inside the one before. A keyword answer stands in an if of its own, which
// counts too.
script_bytes make_nested_ifs(std::size_t depth);
script_bytes make_nested_elses(std::size_t depth);
script_bytes make_nested_keywords(std::size_t depth);
script_bytes make_known_halves(std::size_t depth);

// One expression of `items` values with an operator for each two, or of `items` function calls.
script_bytes make_left_deep(std::size_t items);
script_bytes make_right_deep(std::size_t items);
script_bytes make_balanced(std::size_t items);
script_bytes make_nested_functions(std::size_t items);

// `count` (at least 1) statements, jumps to each other both ways, or blocks named in mixed order.
enum class block_place { before_code, behind_code };
script_bytes make_siblings(std::size_t count);
script_bytes make_jumps(std::size_t count);
script_bytes make_data_blocks(std::size_t count, block_place where = block_place::before_code);

script_bytes make_one_text(std::size_t size);
script_bytes make_one_number_block(std::size_t size);

// A number block whose bytes look like texts from nearly every number on, up to a fault at the end:
// by `seed` % 5 the last text has no end (1), the only text has none (2), the last holds a control
// character (3), a double-byte passage never closes (4) or ends in half a character (0). The last two
// give messages for each number that begins with a passage or has one behind it in the same text.
script_bytes make_late_failing_text_test(std::size_t size, std::uint64_t seed = 1);
