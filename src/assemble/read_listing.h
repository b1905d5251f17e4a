// Reads a listing and puts its script together.
#pragma once

#include "assemble/assembly.h"

// Reads the whole listing, from its start to its end, into `to`. The game's table is selected as the
// option lines say. Every error is reported; places of labels are left out of the script.
void read_listing(assembly& to);
