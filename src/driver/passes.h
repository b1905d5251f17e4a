// The passes of a run over a loaded script, in their order.
#pragma once

#include "base/result.h"
#include "base/writer.h"
#include "model/conv.h"

// Runs every pass from phase 1 to the last jump check. Each failure is reported.
result analyse(conv& script);

// Where output goes, null for nowhere, and what messages call that.
struct named_writer {
    writer* out;
    const char* name;
};

// Prints an analysed script: the listing and, where there is a text table, its rows and end line.
// Reports each failure.
result print_script(conv& script, const named_writer& listing_file, const named_writer& text_file);
