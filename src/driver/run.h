// A whole run of the tool.
#pragma once

// Runs with the command line's arguments and returns the exit status: 0 after a complete run,
// 1 in every other case. It keeps no state, but for descriptors 1 and 2, which stay on the files
// named for listing and messages.
int run(int argc, const char* const* argv);
