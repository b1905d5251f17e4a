#include "assemble/lines.h"

#include <algorithm>

const line_start* find_line(const assembly& from, std::uint32_t offset) {
    const line_start* const behind =
        std::upper_bound(from.lines.begin(), from.lines.end(), offset,
                         [](std::uint32_t wanted, const line_start& line) { return wanted < line.offset; });
    return behind == from.lines.begin() ? nullptr : behind - 1;
}
