// A whole run of varsul-as.
#pragma once

// Runs with the command line's arguments and returns the exit status: 0 when the script was made, 1
// when it was refused or something failed, 2 for a wrong use.
int run_as(int argc, const char* const* argv);
