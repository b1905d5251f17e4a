#include "assemble/faults.h"

#include <algorithm>
#include <cstdio>
#include <tuple>

namespace {

bool comes_before(const fault& left, const fault& right) {
    return std::tie(left.file, left.position) < std::tie(right.file, right.position);
}

// Makes room for a fault at its place among those shown; null when it is behind them all.
fault* make_room(fault_list& faults, const fault& added) {
    fault* const first = faults.items.data();
    fault* const end = first + faults.shown().size();
    fault* const place = std::upper_bound(first, end, added, comes_before);
    ++faults.count;
    if (place == first + fault_list::max_shown) return nullptr;
    std::move_backward(place, std::min(end, first + fault_list::max_shown - 1), first + faults.shown().size());
    return place;
}

}  // namespace

failure add_fault_list(fault_list& faults, severity level, source_file file, std::uint32_t position, const char* format,
                       va_list arguments) {
    fault added = {.file = file, .level = level, .position = position};
    faults.has_errors |= level == severity::error;
    if (fault* const place = make_room(faults, added); place != nullptr) {
        std::vsnprintf(added.text.data(), added.text.size(), format, arguments);
        *place = added;
    }
    return {};
}

failure add_fault(fault_list& faults, severity level, source_file file, std::uint32_t position, const char* format,
                  ...) {
    va_list arguments;
    va_start(arguments, format);
    (void)add_fault_list(faults, level, file, position, format, arguments);
    va_end(arguments);
    return {};
}

void locate_faults(fault_list& faults, const source& listing, const source& table) {
    source_file file = source_file::listing;
    std::uint32_t line = 1;
    const std::uint8_t* start = listing.begin();  // of the line
    for (fault& each : std::span(faults.items.data(), faults.shown().size())) {
        const source& text = each.file == source_file::listing ? listing : table;
        if (each.file != file) {
            file = each.file;
            line = 1;
            start = text.begin();
        }
        const std::uint8_t* const place = text.begin() + each.position;
        for (const std::uint8_t* end = start; (end = std::find(end, place, '\n')) != place; ++line) start = ++end;
        each.line = line;
        each.column = static_cast<std::uint32_t>(place - start) + 1;
    }
}

std::uint32_t line_at(const source& text, std::uint32_t position) {
    return 1 + static_cast<std::uint32_t>(std::count(text.begin(), text.begin() + position, '\n'));
}
