// The lines of data blocks.
#pragma once

#include "assemble/reader.h"

// These read what stands behind the directive and add its bytes to the script. They fail after
// reporting an error, and when memory runs out.

// ".data": a number of two bytes or a text.
result read_data_line(reader& read);

// ".unknown" and ".unknown.byte": a number.
result read_unknown_line(reader& read, int bytes);
