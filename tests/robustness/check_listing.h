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

// Lists a script in memory, twice, through the same passes as the tool, and checks what came out.
// Returns what is wrong with it; nothing when all is well.
std::string check_listing(const listing_request& request, std::span<const std::uint8_t> bytes);
