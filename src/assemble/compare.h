// The check: the lines that were read beside those that the script would be listed in.
#pragma once

#include "assemble/assembly.h"
#include "model/conv.h"

enum class comparison : std::uint8_t {
    equal,
    data_differs,  // only lines of data blocks differ
    code_differs,
    exhausted,  // memory ran out
};

struct difference {
    comparison kind = comparison::equal;
    const line_start* line = nullptr;   // the first one that differs
    const line_start* other = nullptr;  // the line that it would belong to, if to one
    const char* format = nullptr;  // what would become of it; shows the number of the other line where there is one
};

// Compares each line with what an analysed script has at its place: kind, offset and bytes.
difference compare_lines(const assembly& from, const conv& script);

// Reports a difference: an error or, where only data differs, a warning.
void report_difference(assembly& to, const difference& found);
