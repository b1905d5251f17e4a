// A whole run of the tool.
#pragma once

// Runs with the command line's arguments and returns the exit status: 0 after a complete run,
// 1 in every other case. Can be called again in the same process.
int run(int argc, const char* const* argv);
