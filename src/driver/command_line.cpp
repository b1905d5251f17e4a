#include "driver/command_line.h"

#include <iterator>
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

// Does what an option asks for, with the argument that follows it where it takes one. Fails when
// the run ends there.
using option_action = result (*)(command_line& line, const char* argument);

struct option_row {
    std::string_view short_name;
    std::string_view long_name;
    const char* missing_argument;  // the message when it lacks its argument; null when it takes none
    option_action act;
};

constexpr option_row option_rows[] = {
    {"-?", "--help", nullptr, [](command_line&, const char*) { print_usage(); return result::failed; }},
    {"-v", "--version", nullptr, [](command_line&, const char*) { print_version(); return result::failed; }},
    {"", "--kv", nullptr, [](command_line&, const char*) { options.game_mode = game_mode_id::kelvorath; return result::ok; }},
    {"", "--bh", nullptr, [](command_line&, const char*) { options.game_mode = game_mode_id::brenhollow; return result::ok; }},
    {"", "--qf", nullptr, [](command_line&, const char*) { options.game_mode = game_mode_id::quillfen; return result::ok; }},
    {"-o", "--output", "no output file", [](command_line& line, const char* name) { line.output = name; return result::ok; }},
    {"-d", "--dump", nullptr, [](command_line& line, const char*) { line.dump = true; return result::ok; }},
    {"-t", "--text", "no text file", [](command_line& line, const char* name) { line.text = name; return result::ok; }},
    {"-T", "--text-label", nullptr, [](command_line&, const char*) { options.text_label = true; return result::ok; }},
    {"-E", "--error", "no error file", [](command_line& line, const char* name) { line.error = name; return result::ok; }},
    {"", "--verbosity-parenthesis", nullptr, [](command_line&, const char*) { options.verbosity_parenthesis = true; return result::ok; }},
    {"", "--omit-decl", nullptr, [](command_line&, const char*) { options.omit_decl = true; return result::ok; }},
    {"", "--omit-eval", nullptr, [](command_line&, const char*) { options.omit_eval = true; return result::ok; }},
    {"", "--omit-int32", nullptr, [](command_line&, const char*) { options.omit_int32 = true; return result::ok; }},
    {"-V", "--verbose", nullptr, [](command_line&, const char*) { ++options.verbose_level; return result::ok; }},
    {"", "--no-int16-to-text", nullptr, [](command_line&, const char*) { options.no_int16_to_text = true; return result::ok; }},
};

const option_row* find_option(std::string_view name) {
    for (const option_row& row : option_rows) {
        if (name == row.long_name || (!row.short_name.empty() && name == row.short_name)) return &row;
    }
    return nullptr;
}

result take_script_name(command_line& line, const char* name) {
    if (line.script != nullptr) return RUN_ERROR("illegal parameter '%s'", name);
    line.script = name;
    return result::ok;
}

}  // namespace

result parse_command_line(int argc, const char* const* argv, command_line& line) {
    for (int i = 1; i < argc; ++i) {
        const char* argument = argv[i];
        if (argument[0] != '-') {
            if (failed(take_script_name(line, argument))) return result::failed;
            continue;
        }
        const option_row* const row = find_option(argument);
        if (row == nullptr) return RUN_ERROR("unknown option '%s'", argument);
        if (row->missing_argument != nullptr) {
            if (++i == argc) return RUN_ERROR("%s", row->missing_argument);
            argument = argv[i];
        }
        if (failed(row->act(line, argument))) return result::failed;
    }
    return result::ok;
}
