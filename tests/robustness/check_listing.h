// What holds for every script, sound or damaged, under all options.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "base/options.h"

struct listing_request {
    run_options options;
    bool dump = false;
    bool text_table = false;
    bool must_succeed = false;  // a run that fails is a fault
};

// Two bytes choose the options: each value of each can be reached.
listing_request request_of(unsigned first, unsigned second);

// Lists a script in memory, through the same passes as the tool, checks what came out and how much work
// it was, and that the same comes out where walks remember each place, or nothing.
// Returns what is wrong with it; nothing when all is well.
std::string check_listing(const listing_request& request, std::span<const std::uint8_t> bytes);

// Makes a script of a listing in memory, behind which "# label" begins a text table, and lists what is
// accepted again. Returns what is wrong; nothing when the listing is refused.
std::string check_rebuild(std::span<const std::uint8_t> bytes);
