#include "driver/rebuild.h"

#include <string_view>
#include <utility>

#include "assemble/assembly.h"
#include "assemble/compare.h"
#include "assemble/layout.h"
#include "assemble/read_listing.h"
#include "base/diagnostics.h"
#include "driver/explain.h"
#include "driver/passes.h"

namespace {

// Sends the script through the passes, as the tool does with the script's file.
result analyse_again(conv& script, assembly& made, bool no_int16_to_text) {
    options = {.game_mode = made.game_mode, .no_int16_to_text = no_int16_to_text};
    conv_init(script);
    conv_set_buffer(script, std::move(made.script));
    return analyse(script);
}

// Takes the bytes back.
void finish_analysis(conv& script, assembly& made) {
    made.script = std::move(script.buffer);
    conv_free(script);
}

// The messages of an analysis are wanted after all: the passes run once more. `outcome` is theirs. Fails
// when memory runs out.
result collect_messages(assembly& made, bool no_int16_to_text, array<char>& messages, result& outcome) {
    conv script;
    diagnostics.open(messages);
    outcome = analyse_again(script, made, no_int16_to_text);
    diagnostics.flush();
    finish_analysis(script, made);
    const bool is_complete = diagnostics.error() == 0;
    diagnostics.discard();
    return is_complete ? result::ok : result::failed;
}

// The messages of passes that failed. Fails when it was for want of memory.
result collect_failure(assembly& made, bool no_int16_to_text, array<char>& messages) {
    result again = result::ok;
    if (failed(collect_messages(made, no_int16_to_text, messages, again)) || !failed(again)) return result::failed;
    const std::string_view text(messages.data(), messages.size());
    return text.find("memory exhausted!") == std::string_view::npos ? result::ok : result::failed;
}

rebuild_outcome explain_failure(assembly& made) {
    array<char> messages;
    if (failed(collect_failure(made, false, messages))) return rebuild_outcome::exhausted;
    const bool is_explained = explain_analysis(made, {messages.data(), messages.size()});
    return is_explained ? rebuild_outcome::refused : rebuild_outcome::exhausted;
}

rebuild_outcome find_lone_endif(assembly& made) {
    array<char> messages;
    result again = result::ok;
    if (failed(collect_messages(made, false, messages, again)) || failed(again)) return rebuild_outcome::exhausted;
    warn_of_lone_endif(made, {messages.data(), messages.size()});
    return rebuild_outcome::built;
}

result compare_with(assembly& made, bool no_int16_to_text, difference& found) {
    conv script;
    const result analysed = analyse_again(script, made, no_int16_to_text);
    if (!failed(analysed)) found = compare_lines(made, script);
    finish_analysis(script, made);
    return analysed;
}

rebuild_outcome check(assembly& made) {
    difference found;
    diagnostics.discard();
    if (failed(compare_with(made, false, found))) return explain_failure(made);
    if (found.kind == comparison::data_differs) {
        // A listing may have been made without looking for texts among numbers.
        difference found_otherwise;
        array<char> messages;
        const bool can_list = !failed(compare_with(made, true, found_otherwise));
        if (!can_list && failed(collect_failure(made, true, messages))) return rebuild_outcome::exhausted;
        const bool is_equal = can_list && found_otherwise.kind == comparison::equal;
        if (is_equal) found = found_otherwise;
        options.no_int16_to_text = is_equal;
    }
    if (found.kind == comparison::exhausted) return rebuild_outcome::exhausted;
    if (found.kind != comparison::equal) report_difference(made, found);
    if (made.faults.has_errors) return rebuild_outcome::refused;
    return options.endif_without_if && !made.option.endif_without_if ? find_lone_endif(made) : rebuild_outcome::built;
}

rebuild_outcome assemble(assembly& made) {
    if (made.table != nullptr && failed(read_text_table(*made.table, made.faults))) return rebuild_outcome::exhausted;
    if (failed(label_table_init(made.labels, made.max_offset()))) return rebuild_outcome::exhausted;
    read_listing(made);
    if (made.exhausted) return rebuild_outcome::exhausted;
    lay_out(made);
    if (made.faults.has_errors) return rebuild_outcome::refused;
    const rebuild_outcome outcome = check(made);
    if (outcome != rebuild_outcome::built) return outcome;
    report_stale_names(made);
    if (made.table != nullptr) report_unused_rows(*made.table, made.faults);
    return rebuild_outcome::built;
}

}  // namespace

rebuild_outcome rebuild(const source& listing, const source* table, array<std::uint8_t>& script, fault_list& faults) {
    faults = {};
    text_table rows = {table == nullptr ? listing : *table};
    assembly made = {listing, table == nullptr ? nullptr : &rows, faults};
    const rebuild_outcome outcome = assemble(made);
    locate_faults(faults, listing, rows.file);
    if (outcome == rebuild_outcome::built) script = std::move(made.script);
    return outcome;
}
