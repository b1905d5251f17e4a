// The fuzz target of the way back: any bytes as a listing and a text table.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "robustness/check_listing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string fault = check_rebuild({data, size});
    if (fault.empty()) return 0;
    std::fprintf(stderr, "%s\n", fault.c_str());
    std::abort();
}
