// The library behind a small C interface, for the page. Bytes go in through varsul_input, what a call
// makes stands in named parts until the next call. Nothing is read from files or written to them.
#include <cstdint>
#include <utility>

#include "base/array.h"
#include "base/diagnostics.h"
#include "base/writer.h"
#include "driver/passes.h"
#include "model/conv.h"
#include "output/print_text.h"

namespace {

// The bits of varsul_list's options.
enum list_option : std::uint32_t {
    dump = 1,
    text_label = 2,
    no_int16_to_text = 4,
    verbosity_parenthesis = 8,
    omit_decl = 16,
    omit_eval = 32,
    omit_int32 = 64,
    verbose = 128,
    trace = 256,
};

// What a call makes.
enum part : std::uint32_t { listing_part, table_part, messages_part, parts };

array<std::uint8_t> input;
array<char> made[parts];
constinit writer listing_out;
constinit writer table_out;

void set_options(std::uint32_t game, std::uint32_t bits) {
    const auto has = [bits](list_option option) { return (bits & option) != 0; };
    options = {};
    options.game_mode = static_cast<game_mode_id>(game);
    options.no_int16_to_text = has(no_int16_to_text);
    options.text_label = has(text_label);
    options.verbosity_parenthesis = has(verbosity_parenthesis);
    options.omit_decl = has(omit_decl);
    options.omit_eval = has(omit_eval);
    options.omit_int32 = has(omit_int32);
    options.verbose_level = has(trace) ? 2 : has(verbose) ? 1 : 0;
    select_game_mode(options.game_mode);
}

void begin_run() {
    for (array<char>& bytes : made) bytes.release();
    message_cut = false;
    diagnostics.open(made[messages_part]);
    listing_out.open(made[listing_part]);
    table_out.open(made[table_part]);
}

result list_input(bool with_dump) {
    conv script;
    conv_init(script);
    script.dump = with_dump;
    conv_set_buffer(script, std::move(input));
    if (failed(analyse(script))) return result::failed;
    table_out.put(text_table_header);
    return print_script(script, {&listing_out, "the listing"}, {&table_out, "the text table"});
}

int end_run(result outcome) {
    if (message_cut) (void)RUN_ERROR("memory exhausted! (a message was cut)");
    listing_out.flush();
    table_out.flush();
    diagnostics.flush();
    return failed(outcome) || message_cut ? 1 : 0;
}

}  // namespace

extern "C" {

// Room for the bytes that the next call takes, null when memory runs out.
std::uint8_t* varsul_input(std::uint32_t size) { return input.assign_unset(size) ? input.data() : nullptr; }

// Lists the script that was put in; game 0, 1, 2 as in game_mode_id. Returns the exit status that the
// command line would give. The input is used up.
int varsul_list(std::uint32_t game, std::uint32_t bits) {
    set_options(game, bits);
    begin_run();
    return end_run(list_input((bits & dump) != 0));
}

// A part of what the last call made.
const char* varsul_part(std::uint32_t part) { return made[part].data(); }
std::uint32_t varsul_part_size(std::uint32_t part) { return made[part].size(); }
}
