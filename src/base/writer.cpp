#include "base/writer.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

void writer::open(int descriptor, writer* earlier) {
    end_ = buffer_;
    limit_ = buffer_ + buffer_size;
    error_ = 0;
    memory_ = nullptr;
    earlier_ = earlier;
    descriptor_ = descriptor;
}

void writer::open(array<char>& memory) {
    open(-1);
    memory_ = &memory;
}

void writer::discard() {
    open(-1);
    error_ = EBADF;
}

void writer::flush() {
    if (end_ == nullptr) return discard();  // it was never opened
    hand_on({buffer_, static_cast<std::size_t>(end_ - buffer_)});
    end_ = buffer_;
}

// A line that is being written stays, unless it leaves too little room.
void writer::make_room() {
    if (end_ == nullptr) return flush();
    const std::string_view held(buffer_, static_cast<std::size_t>(end_ - buffer_));
    const std::size_t whole = held.rfind('\n') + 1;  // 0 when no line is whole
    if (held.size() - whole > buffer_size - max_room) return flush();
    hand_on(held.substr(0, whole));
    end_ = std::copy(held.begin() + whole, held.end(), buffer_);
}

void writer::put_long(std::string_view text) {
    make_room();
    if (left() >= text.size()) return put(text);
    flush();
    hand_on(text);
}

void writer::hand_on(std::string_view text) {
    if (error_ != 0 || text.empty()) return;
    if (earlier_ != nullptr) earlier_->flush();
    if (memory_ != nullptr) {
        if (!memory_->append(text.data(), text.size())) error_ = ENOMEM;
        return;
    }
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor_, text.data(), text.size());
        if (written > 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            error_ = written == 0 ? EIO : errno;
            return;
        }
    }
}
