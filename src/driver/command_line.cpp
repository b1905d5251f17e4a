#include "driver/command_line.h"

#include <optional>
#include <string_view>

#include "base/diagnostics.h"
#include "version.h"

namespace {

void print_usage() {
    diagnostics.put(
        "usage: varsul [option] conv-file\n"
        "option: --kv|--bh|--qf      select game mode\n"
        "                                --kv    Kelvorath (default)\n"
        "                                --bh    Brenhollow\n"
        "                                --qf    Quillfen\n"
        "        -o|--output FILE    write to specified file\n"
        "                            if not specified, print to stdout\n"
        "        -t|--text   FILE    write text to specified file\n"
        "        -T|--text-label     use text label\n"
        "        -d|--dump           output hex dump\n"
        "           --no-int16-to-text\n"
        "                            not change data block type from INT16 to TEXT\n"
        "        -E|--error  FILE    write error message to specified file\n"
        "           --verbosity-parenthesis\n"
        "                            output verbosity parenthesis\n"
        "        -V|--verbose        increase verbose level (max=2)\n"
        "        -v|--version        print version\n"
        "        -?|--help           print usage\n");
}

void print_version() { diagnostics.put("varsul - Kelvorath converse file discompiler version " VARSUL_VERSION "\n"); }

// An option and the one thing that it does.
struct option_row {
    std::string_view short_name;
    std::string_view long_name;
    void (*print)() = nullptr;  // prints a text and ends the run
    std::optional<game_mode_id> mode = std::nullopt;
    bool* flag = nullptr;
    bool command_line::*line_flag = nullptr;
    int* counter = nullptr;
    const char* command_line::*file = nullptr;  // takes the next argument
    const char* missing_file = nullptr;         // the message when there is none
};

// clang-format off
constexpr option_row option_rows[] = {
    {.short_name = "-?", .long_name = "--help",                  .print = print_usage},
    {.short_name = "-v", .long_name = "--version",               .print = print_version},
    {.short_name = "",   .long_name = "--kv",                    .mode = game_mode_id::kelvorath},
    {.short_name = "",   .long_name = "--bh",                    .mode = game_mode_id::brenhollow},
    {.short_name = "",   .long_name = "--qf",                    .mode = game_mode_id::quillfen},
    {.short_name = "-o", .long_name = "--output",                .file = &command_line::output, .missing_file = "no output file"},
    {.short_name = "-d", .long_name = "--dump",                  .line_flag = &command_line::dump},
    {.short_name = "-t", .long_name = "--text",                  .file = &command_line::text,   .missing_file = "no text file"},
    {.short_name = "-T", .long_name = "--text-label",            .flag = &options.text_label},
    {.short_name = "-E", .long_name = "--error",                 .file = &command_line::error,  .missing_file = "no error file"},
    {.short_name = "",   .long_name = "--verbosity-parenthesis", .flag = &options.verbosity_parenthesis},
    {.short_name = "",   .long_name = "--omit-decl",             .flag = &options.omit_decl},
    {.short_name = "",   .long_name = "--omit-eval",             .flag = &options.omit_eval},
    {.short_name = "",   .long_name = "--omit-int32",            .flag = &options.omit_int32},
    {.short_name = "-V", .long_name = "--verbose",               .counter = &options.verbose_level},
    {.short_name = "",   .long_name = "--no-int16-to-text",      .flag = &options.no_int16_to_text},
};
// clang-format on

const option_row* find_option(std::string_view name) {
    for (const option_row& row : option_rows) {
        if (name == row.long_name || (!row.short_name.empty() && name == row.short_name)) return &row;
    }
    return nullptr;
}

// Does what an option without an argument asks for. Fails when the run ends there.
result act(const option_row& row, command_line& line) {
    if (row.mode) options.game_mode = *row.mode;
    if (row.flag != nullptr) *row.flag = true;
    if (row.line_flag != nullptr) line.*row.line_flag = true;
    if (row.counter != nullptr) ++*row.counter;
    if (row.print == nullptr) return result::ok;
    row.print();
    return result::failed;
}

result take_script_name(command_line& line, const char* name) {
    if (line.script != nullptr) return RUN_ERROR("illegal parameter '%s'", name);
    line.script = name;
    return result::ok;
}

// Takes the argument at `i`, which it moves to the last one that belongs to it.
result take_argument(int argc, const char* const* argv, int& i, command_line& line) {
    const char* const argument = argv[i];
    if (argument[0] != '-') return take_script_name(line, argument);
    const option_row* const row = find_option(argument);
    if (row == nullptr) return RUN_ERROR("unknown option '%s'", argument);
    if (row->file == nullptr) return act(*row, line);
    if (i + 1 == argc) return RUN_ERROR("%s", row->missing_file);
    line.*row->file = argv[++i];
    return result::ok;
}

}  // namespace

result parse_command_line(int argc, const char* const* argv, command_line& line) {
    for (int i = 1; i < argc; ++i) {
        if (failed(take_argument(argc, argv, i, line))) return result::failed;
    }
    return result::ok;
}
