// The listing of a whole script.
#pragma once

#include "output/print_job.h"

// Prints the listing of an analysed script and, where there is a text table, its rows. Fails
// after ERROR lines; what was printed before stays.
result print_conv(print_job& job);
