#include "base/diagnostics.h"

#include <cstdarg>
#include <cstdio>

namespace {

// Formats straight into the buffer; a message that does not fit there (it shows a long text) is
// formatted again into memory of its own size, and cut when there is none.
[[gnu::format(printf, 1, 0)]] void put_formatted(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    char* const room = diagnostics.room(writer::max_room);
    const int length = std::vsnprintf(room, writer::max_room, format, arguments);
    message_cut |= length < 0;  // longer than a printed text may be
    const std::size_t size = length < 0 ? 0 : static_cast<std::size_t>(length);
    array<char> text;
    if (size < writer::max_room) {
        diagnostics.advance(room + size);
    } else if (text.assign_unset(size + 1)) {
        std::vsnprintf(text.data(), size + 1, format, again);
        diagnostics.put({text.data(), size});
    } else {
        diagnostics.advance(room + writer::max_room - 1);
        message_cut = true;
    }
    va_end(again);
    diagnostics.put('\n');
    ++reported_messages;
}

}  // namespace

void report(const char* severity, const char* format, ...) {
    diagnostics.put(severity);
    diagnostics.put(": ");
    va_list arguments;
    va_start(arguments, format);
    put_formatted(format, arguments);
    va_end(arguments);
}

void report_at(const char* severity, int line, const char* format, ...) {
    char number[16];
    std::snprintf(number, sizeof number, "(%d): ", line);
    diagnostics.put(severity);
    diagnostics.put(number);
    va_list arguments;
    va_start(arguments, format);
    put_formatted(format, arguments);
    va_end(arguments);
}

failure memory_exhausted(std::size_t size) { return ERROR("memory exhausted! (size=%zu)", size); }
