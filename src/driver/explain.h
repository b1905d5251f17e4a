// What a failed analysis means for the lines of a listing.
#pragma once

#include <string_view>

#include "assemble/assembly.h"

// Reports the failure that the messages of the passes tell of, at the line that lies at its offset.
// Returns whether they tell of one.
bool explain_analysis(assembly& made, std::string_view messages);

// Warns of the first "endif" that closes no "if", as the messages tell.
void warn_of_lone_endif(assembly& made, std::string_view messages);
