// The library behind a small C interface, for the page. Bytes go in through varsul_input, what a call
// makes stands in named parts until the next call. Nothing is read from files or written to them.
#include <cstdint>
#include <cstdio>
#include <span>
#include <utility>

#include "base/array.h"
#include "base/diagnostics.h"
#include "base/writer.h"
#include "driver/passes.h"
#include "driver/rebuild.h"
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
enum part : std::uint32_t { listing_part, table_part, messages_part, script_part, parts };

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

// One line for each fault: the file it is in, how bad it is, its position there and what it is.
void put_faults(writer& out, const fault_list& faults) {
    for (const fault& each : faults.shown()) {
        char head[64];
        std::snprintf(head, sizeof head, "%s\t%s\t%u\t", each.file == source_file::listing ? "listing" : "table",
                      each.level == severity::error ? "error" : "warning", each.position);
        out.put(head);
        out.put(each.text.data());
        out.put('\n');
    }
}

bool take_sources(std::uint32_t listing_size, source& listing, source& table) {
    const std::span<const std::uint8_t> bytes(input.data(), input.size());
    return !failed(source_assign(listing, bytes.first(listing_size))) &&
           !failed(source_assign(table, bytes.subspan(listing_size)));
}

rebuild_outcome rebuild_input(std::uint32_t listing_size, fault_list& faults) {
    source listing;
    source table;
    array<std::uint8_t> script;
    if (!take_sources(listing_size, listing, table)) return rebuild_outcome::exhausted;
    input.release();
    const rebuild_outcome outcome = rebuild(listing, table.size == 0 ? nullptr : &table, script, faults);
    const bool kept = made[script_part].append(reinterpret_cast<const char*>(script.data()), script.size());
    return kept ? outcome : rebuild_outcome::exhausted;
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

// Makes the script of the listing that was put in, with the text table behind it where it has text labels.
// Returns 0 when the script is made, 1 when the listing has errors, 2 when memory ran out. The
// faults stand in the messages. The input is used up.
int varsul_rebuild(std::uint32_t listing_size) {
    begin_run();
    fault_list faults;
    const rebuild_outcome outcome = rebuild_input(listing_size, faults);
    diagnostics.open(made[messages_part]);
    put_faults(diagnostics, faults);
    diagnostics.flush();
    return static_cast<int>(outcome);
}

// A part of what the last call made.
const char* varsul_part(std::uint32_t part) { return made[part].data(); }
std::uint32_t varsul_part_size(std::uint32_t part) { return made[part].size(); }
}
