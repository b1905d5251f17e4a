#include "driver/run_as.h"

int main(int argc, char** argv) { return run_as(argc, argv); }
