// The hex dump inside the listing, and the report on what was dumped.
#pragma once

#include <cstdint>

#include "output/print_job.h"

// Prints `size` bytes of the script from `offset` on as dump lines and counts each; they lie
// inside the script. Does nothing unless dumping is on. Fails, after its message, when memory runs
// out.
result print_dump(print_job& job, std::int32_t offset, std::int32_t size);

// Writes to the messages every stretch of the script that was dumped other than exactly once.
// Puts the changes of the counts in order.
void report_dump_count(conv& script);
