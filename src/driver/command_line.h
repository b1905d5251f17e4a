// The command line.
#pragma once

#include "base/result.h"

// The file names of a run, each null when not given. They point into the argument vector.
struct command_line {
    const char* script = nullptr;
    const char* output = nullptr;
    const char* text = nullptr;
    const char* error = nullptr;
    bool dump = false;
};

// Reads the arguments after the program name into `line` and the run options. Fails when the run
// ends there: after an ERROR line, or after the usage or version text was written.
result parse_command_line(int argc, const char* const* argv, command_line& line);
