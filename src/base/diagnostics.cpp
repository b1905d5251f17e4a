#include "base/diagnostics.h"

#include <cstdarg>
#include <cstdio>
#include <span>

namespace {

constexpr int no_line = -1;

// Writes one message into `room`, as far as it goes. Returns its length, or less than 0 when it is
// longer than a printed text may be.
[[gnu::format(printf, 4, 0)]] int format_message(std::span<char> room, const char* severity, int line,
                                                 const char* format, va_list arguments) {
    const int begun = line == no_line ? std::snprintf(room.data(), room.size(), "%s: ", severity)
                                      : std::snprintf(room.data(), room.size(), "%s(%d): ", severity, line);
    const std::span<char> rest = room.subspan(static_cast<std::size_t>(begun));
    const int length = std::vsnprintf(rest.data(), rest.size(), format, arguments);
    return length < 0 ? length : begun + length;
}

// A message is handed on whole, so that no other output gets into it. One that does not fit in the
// buffer's room (it shows a long text) is formatted again into memory of its own, and cut when there
// is none.
[[gnu::format(printf, 3, 0)]] void put_message(const char* severity, int line, const char* format, va_list arguments) {
    ++messages_said;
    va_list again;
    va_copy(again, arguments);
    const std::span<char> room(diagnostics.room(writer::max_room), writer::max_room);
    const int length = format_message(room, severity, line, format, arguments);
    const std::size_t size = length < 0 ? room.size() : static_cast<std::size_t>(length);
    array<char> text;
    if (size < room.size()) {
        room[size] = '\n';
        diagnostics.advance(room.data() + size + 1);
    } else if (length >= 0 && text.assign_unset(size + 1)) {
        (void)format_message({text.data(), text.size()}, severity, line, format, again);
        text[size] = '\n';
        diagnostics.put({text.data(), text.size()});
    } else {
        room.back() = '\n';
        diagnostics.advance(room.data() + room.size());
        message_cut = true;
    }
    va_end(again);
}

}  // namespace

void report(const char* severity, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    put_message(severity, no_line, format, arguments);
    va_end(arguments);
}

void report_at(const char* severity, int line, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    put_message(severity, line, format, arguments);
    va_end(arguments);
}

failure memory_exhausted(std::size_t size) { return ERROR("memory exhausted! (size=%zu)", size); }
