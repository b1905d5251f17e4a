#include "driver/passes.h"

#include <cstdio>

#include "base/diagnostics.h"
#include "output/print_conv.h"
#include "output/print_dump.h"
#include "output/print_text.h"
#include "phase1/check_jump_offset_1.h"
#include "phase1/parse_conv_1.h"
#include "phase2/check_jump_offset_2.h"
#include "phase2/data_block.h"
#include "phase2/parse_conv_2.h"

namespace {

void report_offsets(const char* what, const offset_table& table) {
    report("DEBUG", "%s offset: %d", what, offset_table_count(table));
    for (auto offset = offset_table_first(table); offset; offset = offset_table_first_above(table, *offset)) {
        char line[16];
        diagnostics.put({line, static_cast<std::size_t>(std::snprintf(line, sizeof line, "\t%08X\n", *offset))});
    }
}

// Hands on what is left in the buffer and reports a file that could not be written whole.
result finish(const named_writer& file) {
    file.out->flush();
    if (file.out->error() == 0) return result::ok;
    return RUN_ERROR("can't write file '%s'", file.name);
}

}  // namespace

result analyse(conv& script) {
    if (failed(parse_conv_1(script))) return RUN_ERROR("parse code error: phase 1");
    if (failed(check_jump_offset_1(script))) return RUN_ERROR("jump offset check error: phase 1");
    if (failed(parse_conv_2(script))) return RUN_ERROR("parse code error: phase 2");
    if (failed(set_data_block_type(script))) return RUN_ERROR("set data block type error");
    if (failed(parse_data_block(script))) return RUN_ERROR("parse data block error");
    if (failed(check_jump_offset_2(script))) return RUN_ERROR("jump offset check error: phase 2");
    return result::ok;
}

result print_script(conv& script, const named_writer& listing_file, const named_writer& text_file) {
    // An ordinary listing needs no more for its counts, so that memory does not run out in its middle.
    if (!script.dump_count.reserve()) return RUN_ERROR("memory exhausted! (size=%d)", script.data_size);
    if (script.npc_id == no_npc_id) report("WARNING", "no npc id");
    if (verbose(1)) {
        report_offsets("jump", script.jump_offset_table);
        report_offsets("data", script.data_offset_table);
    }
    diagnostics.flush();

    options.text_counter = 0;
    print_job job = {script, *listing_file.out, text_file.out};
    const result printed = print_conv(job);
    if (failed(printed)) (void)RUN_ERROR("print error");
    if (failed(finish(listing_file)) || failed(printed)) return result::failed;
    if (script.dump) report_dump_count(script);
    if (text_file.out == nullptr) return result::ok;
    text_file.out->put(text_table_end);
    return finish(text_file);
}
