// Where labels come to lie.
#pragma once

#include "assemble/assembly.h"

// Puts the place of each label into the bytes that name it. Reports labels that no line has, and
// bytes that were listed twice.
void lay_out(assembly& to);

// Warns of bytes that no analysis understood and that hold the offset of a label that has moved.
void report_stale_names(assembly& to);
