#include "driver/command_line_as.h"

#include "base/diagnostics.h"
#include "version.h"

namespace {

request wrong_use(const char* format, const char* argument) {
    if (argument == nullptr) {
        (void)RUN_ERROR("%s", format);
    } else {
        (void)RUN_ERROR("%s '%s'", format, argument);
    }
    diagnostics.put("usage: varsul-as [-t TABLE] -o SCRIPT LISTING   (--help says more)\n");
    return request::wrong_use;
}

bool is_one_of(std::string_view argument, std::string_view name, std::string_view other, std::string_view third = "") {
    return argument == name || argument == other || (!third.empty() && argument == third);
}

}  // namespace

const std::string_view help_text_as =
    "usage: varsul-as [-t TABLE] -o SCRIPT LISTING\n"
    "       varsul-as [-t TABLE] --check LISTING\n"
    "Make a script of a listing that varsul wrote, as it was or changed.\n"
    "\n"
    "  LISTING              the listing; - is standard input\n"
    "  -o, --output SCRIPT  write the script to this file; - is standard output\n"
    "      --check          make the script, but write nothing\n"
    "  -t, --text TABLE     the text table of a listing that shows text labels\n"
    "  -h, -?, --help       print this text\n"
    "  -v, --version        print the version\n"
    "\n"
    "List with varsul --verbosity-parenthesis, so that no expression can be read in two\n"
    "ways, and with -d as well, so that every label is found when lines move. SCRIPT is\n"
    "replaced only when the script is whole.\n"
    "\n"
    "Exit status: 0 when the script is made, 1 when it is not, 2 for a wrong use.\n";

const std::string_view version_text_as = "varsul-as " VARSUL_VERSION "\n";

request parse_command_line_as(int argc, const char* const* argv, command_line_as& line) {
    bool is_check = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (is_one_of(argument, "-h", "-?", "--help")) return request::help;
        if (is_one_of(argument, "-v", "--version")) return request::version;
        if (argument == "--check") {
            is_check = true;
        } else if (is_one_of(argument, "-o", "--output") || is_one_of(argument, "-t", "--text")) {
            if (i + 1 == argc) return wrong_use("no file name behind", argv[i]);
            (is_one_of(argument, "-o", "--output") ? line.script : line.table) = argv[i + 1];
            ++i;
        } else if (argument.starts_with('-') && argument != "-") {
            return wrong_use("unknown option", argv[i]);
        } else if (line.listing != nullptr) {
            return wrong_use("a second listing", argv[i]);
        } else {
            line.listing = argv[i];
        }
    }
    if (line.listing == nullptr) return wrong_use("no listing", nullptr);
    if (is_check == (line.script != nullptr)) return wrong_use("one of --output and --check must be given", nullptr);
    return request::rebuild;
}
