// The fuzz target: two bytes of options, then a script. Goes through the passes of the tool in
// memory and stops at anything that no listing may do.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "robustness/check_listing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t option_bytes = 2;
    if (size <= option_bytes) return 0;  // no run gets to the passes with an empty script
    const std::string fault = check_listing(request_of(data[0], data[1]), {data + option_bytes, size - option_bytes});
    if (fault.empty()) return 0;
    std::fprintf(stderr, "%s\n", fault.c_str());
    std::abort();
}
