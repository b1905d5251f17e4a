// The passes of a run over a loaded script, in their order.
#pragma once

#include "base/result.h"
#include "base/writer.h"
#include "model/conv.h"

// Runs every pass from phase 1 to the last jump check. Each failure is reported.
result analyse(conv& script);

// Prints an analysed script: the listing to `out` and, unless null, the text table's rows and end
// line to `text_file`. `out_name` and `text_name` are what messages call the two when they can't
// be written. Reports each failure.
struct named_writer {
    writer* out;
    const char* name;
};
result print_script(conv& script, const named_writer& listing_file, const named_writer& text_file);
