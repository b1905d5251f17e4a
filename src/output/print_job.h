// What the printers of a listing share: what they print, where to, and how lines are indented.
#pragma once

#include "base/writer.h"
#include "model/conv.h"
#include "output/sprint_eval.h"

struct print_job {
    conv& script;
    writer& out;                       // the listing
    writer* text_file;                 // the text table, or null
    array<pending_piece> pieces = {};  // kept from one expression to the next for its memory
};

// Four spaces, `depth` times.
inline void print_indent(writer& out, int depth) {
    for (int i = 0; i < depth; ++i) out.put("    ");
}
