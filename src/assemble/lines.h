// The lines that give bytes, as they are found again.
#pragma once

#include "assemble/assembly.h"

// The line that gives the byte at an offset of the script, or null in front of the first.
const line_start* find_line(const assembly& from, std::uint32_t offset);
