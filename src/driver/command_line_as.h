// The command line of varsul-as.
#pragma once

#include <cstdint>
#include <string_view>

// The file names point into the argument vector.
struct command_line_as {
    const char* listing = nullptr;
    const char* table = nullptr;   // null for none
    const char* script = nullptr;  // null when the listing is only to be checked
};

enum class request : std::uint8_t { rebuild, help, version, wrong_use };

// Reads the arguments after the program name. A wrong use is reported.
request parse_command_line_as(int argc, const char* const* argv, command_line_as& line);

extern const std::string_view help_text_as;
extern const std::string_view version_text_as;
