#include "driver/run.h"

#include <fcntl.h>
#include <unistd.h>

#include "base/diagnostics.h"
#include "driver/command_line.h"
#include "driver/file.h"
#include "driver/passes.h"
#include "output/print_text.h"

namespace {

constinit writer listing_out;
constinit writer text_out;

// Messages go to the "-E" file, where one is named. `original` receives the standard error that
// the tool was started with.
result redirect_messages(const command_line& line, file& original) {
    if (line.error == nullptr) return result::ok;
    const file messages = open_output(line.error, {line.script});
    if (!messages.is_open()) return result::failed;
    original = file(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3));
    return redirect(STDERR_FILENO, messages);
}

result load(conv& script, const char* name) {
    array<std::uint8_t> buffer;
    if (failed(load_file(buffer, name))) return RUN_ERROR("read error '%s'", name);
    conv_set_buffer(script, std::move(buffer));
    return result::ok;
}

result redirect_listing(const command_line& line) {
    if (line.output == nullptr) return result::ok;
    const file listing = open_output(line.output, {line.script, line.text, line.error});
    if (!listing.is_open()) return result::failed;
    return redirect(STDOUT_FILENO, listing);
}

result open_text_table(const command_line& line, file& text) {
    if (line.text == nullptr) return result::ok;
    text = open_output(line.text, {line.script, line.output, line.error});
    if (!text.is_open()) return result::failed;
    text_out.open(text.descriptor(), &diagnostics);
    text_out.put(text_table_header);
    text_out.flush();
    return result::ok;
}

result list_script(const command_line& line, conv& script) {
    if (failed(load(script, line.script))) return result::failed;
    if (failed(analyse(script))) return result::failed;
    diagnostics.flush();  // opening an output may wait for its reader
    if (failed(redirect_listing(line))) return result::failed;
    file text;
    if (failed(open_text_table(line, text))) return result::failed;
    listing_out.open(STDOUT_FILENO, &diagnostics);
    const char* const listing_name = line.output == nullptr ? "(standard output)" : line.output;
    const result printed =
        print_script(script, {&listing_out, listing_name}, {text.is_open() ? &text_out : nullptr, line.text});
    if (text.is_open()) text_out.flush();
    if (failed(printed)) return result::failed;
    if (!text.close()) return RUN_ERROR("can't write file '%s'", line.text);
    // Some file systems report only at closing that they did not take everything.
    if (line.output != nullptr && !file(dup(STDOUT_FILENO)).close()) {
        return RUN_ERROR("can't write file '%s'", line.output);
    }
    return result::ok;
}

// Messages that were cut or that the "-E" file did not take are not lost in silence.
result finish_messages(const command_line& line, const file& original) {
    const bool was_cut = message_cut;
    if (was_cut) (void)RUN_ERROR("memory exhausted! (a message was cut)");
    diagnostics.flush();
    if (diagnostics.error() == 0 || line.error == nullptr) return was_cut ? result::failed : result::ok;
    diagnostics.open(original.descriptor());
    const result outcome = RUN_ERROR("can't write file '%s'", line.error);
    diagnostics.flush();  // while the descriptor is open
    return outcome;
}

result run_command_line(const command_line& line) {
    select_game_mode(options.game_mode);
    if (line.script == nullptr) return RUN_ERROR("no conv filename");
    file original;
    if (failed(redirect_messages(line, original))) return result::failed;
    conv script;
    conv_init(script);
    script.dump = line.dump;
    const result listed = list_script(line, script);
    if (failed(finish_messages(line, original))) return result::failed;
    return listed;
}

}  // namespace

int run(int argc, const char* const* argv) {
    reserve_standard_descriptors();
    options = {};
    message_cut = false;
    diagnostics.open(STDERR_FILENO);
    command_line line;
    const bool done = !failed(parse_command_line(argc, argv, line)) && !failed(run_command_line(line));
    diagnostics.flush();
    return done ? 0 : 1;
}
