// The operands of statements.
#pragma once

#include "assemble/read_text.h"
#include "assemble/reader.h"

// These read from the reader's place and add bytes to the script. They fail after reporting an error,
// and when memory runs out.

// The operands of a statement, separated by commas.
result read_operands(reader& read, std::uint8_t code);

// A whole text, in quotes or as a text label.
result read_text(reader& read, bool may_be_empty);

// A text in quotes, at whose opening quote it stands.
result read_quotes(reader& read, quoted_text& text);

failure report_empty_text(reader& read, const std::uint8_t* place);
