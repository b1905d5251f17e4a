// Texts in quotes.
#pragma once

#include <cstdint>

#include "assemble/faults.h"
#include "assemble/source.h"
#include "base/array.h"

// Where a text is read from, and what its faults are called.
struct quoted_text {
    const source& file;
    source_file name;
    fault_list& faults;
    const std::uint8_t* at;                 // behind the opening quote; behind the closing one when it is read
    const std::uint8_t* passage = nullptr;  // the "{" of the double-byte passage that is open, if one is
};

// Reads a text up to its closing quote and adds its bytes, without escapes. A passage may be open
// before and behind it. Fails after reporting an error, and when memory runs out, without.
result read_quoted(quoted_text& text, array<std::uint8_t>& bytes);

// Reports a passage that is open where its text ends.
failure report_open_passage(const quoted_text& text);
