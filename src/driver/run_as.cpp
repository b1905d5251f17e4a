#include "driver/run_as.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>

#include "base/diagnostics.h"
#include "driver/command_line_as.h"
#include "driver/file.h"
#include "driver/rebuild.h"
#include "driver/source_file.h"

namespace {

constinit writer text_out;

// Names of standard input in messages as of any file.
const char* shown_name(const char* name) { return name[0] == '-' && name[1] == '\0' ? "(standard input)" : name; }

// The line, of a long one as much as is around the place, without what a terminal would obey; and a caret
// below the place.
void print_line(const std::uint8_t* line, std::size_t place) {
    constexpr std::size_t most = 240;
    std::size_t size = 0;
    while (line[size] != '\n') ++size;
    if (size != 0 && line[size - 1] == '\r') --size;
    const std::size_t before = std::min(place, most / 2);
    const std::size_t start = size <= most ? 0 : std::min(place - before, size - most);
    for (std::size_t i = start; i < std::min(size, start + most); ++i) {
        const bool is_shown = line[i] >= ' ' || line[i] == '\t';
        diagnostics.put(is_shown ? static_cast<char>(line[i]) : '?');
    }
    diagnostics.put('\n');
    for (std::size_t i = start; i < place; ++i) diagnostics.put(line[i] == '\t' ? '\t' : ' ');
    diagnostics.put("^\n");
}

// "FILE:LINE:COLUMN: error: TEXT", the line, and a caret below its place.
void print_fault(const fault& each, const source& text, const char* name) {
    char place[64];
    std::snprintf(place, sizeof place, ":%u:%u: %s: ", each.line, each.column,
                  each.level == severity::error ? "error" : "warning");
    diagnostics.put(shown_name(name));
    diagnostics.put(place);
    diagnostics.put(each.text.data());
    diagnostics.put('\n');
    print_line(text.begin() + each.position + 1 - each.column, each.column - 1);
}

void print_faults(const fault_list& faults, const command_line_as& line, const source& listing, const source& table) {
    for (const fault& each : faults.shown()) {
        const bool is_listing = each.file == source_file::listing;
        print_fault(each, is_listing ? listing : table, is_listing ? line.listing : line.table);
    }
    const std::size_t more = faults.count - faults.shown().size();
    if (more == 0) return;
    char text[64];
    std::snprintf(text, sizeof text, "and %zu more %s%s\n", more, faults.has_errors ? "error" : "warning",
                  more == 1 ? "" : "s");
    diagnostics.put(text);
}

result load_sources(const command_line_as& line, source& listing, source& table) {
    file_identity files[2];
    if (failed(load_source(listing, line.listing, files[0]))) return result::failed;
    if (line.table != nullptr && failed(load_source(table, line.table, files[1]))) return result::failed;
    for (const file_identity& each : files) {
        if (line.script == nullptr || !is_file(each, line.script)) continue;
        return RUN_ERROR("can't write '%s': the %s is read from it", line.script,
                         &each == files ? "listing" : "text table");
    }
    return result::ok;
}

result rebuild_files(const command_line_as& line) {
    source listing;
    source table;
    if (failed(load_sources(line, listing, table))) return result::failed;
    array<std::uint8_t> script;
    fault_list faults;
    const rebuild_outcome outcome = rebuild(listing, line.table == nullptr ? nullptr : &table, script, faults);
    diagnostics.open(STDERR_FILENO);
    if (outcome == rebuild_outcome::exhausted) return report_exhausted();
    print_faults(faults, line, listing, table);
    if (outcome == rebuild_outcome::refused) return result::failed;
    return line.script == nullptr ? result::ok : replace_file(line.script, {script.data(), script.size()});
}

result print(std::string_view text) {
    text_out.open(STDOUT_FILENO);
    text_out.put(text);
    text_out.flush();
    return text_out.error() == 0 ? result::ok : RUN_ERROR("can't write standard output");
}

int run_request(int argc, const char* const* argv) {
    constexpr int wrong_use = 2;
    command_line_as line;
    result outcome = result::failed;
    switch (parse_command_line_as(argc, argv, line)) {
        case request::wrong_use: return wrong_use;
        case request::help: outcome = print(help_text_as); break;
        case request::version: outcome = print(version_text_as); break;
        case request::rebuild: outcome = rebuild_files(line); break;
    }
    return failed(outcome) ? 1 : 0;
}

}  // namespace

int run_as(int argc, const char* const* argv) {
    reserve_standard_descriptors();
    std::signal(SIGXFSZ, SIG_IGN);  // a file that grows too large is a failure to write
    diagnostics.open(STDERR_FILENO);
    const int status = run_request(argc, argv);
    diagnostics.flush();
    return status;
}
