// Texts in the listing and in the text table.
#pragma once

#include <string_view>

#include "output/print_job.h"

// The text of a TEXT operand, a view into the script that stops at its first zero byte.
std::string_view text_of(const conv& script, const operand& param);

// Checks that a text is well formed. Fails after its ERROR line.
result check_text(std::string_view text);

// Prints a node that is a text: one quoted line for each line of the text or, with text labels,
// its label; enters it in the text table. Fails, with nothing written, when it is malformed.
result print_text(print_job& job, const inst& node, int depth);

// Prints a text that was checked: quoted on the line that is being written or, with text labels,
// as its label. Enters it in the text table.
void print_quoted_text(print_job& job, const operand& param);

// The text table's first and last line.
inline constexpr std::string_view text_table_header = "# label\toffset\ttext\n";
inline constexpr std::string_view text_table_end = "# end\n";
