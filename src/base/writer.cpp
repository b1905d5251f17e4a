#include "base/writer.h"

#include <unistd.h>

#include <cerrno>

void writer::open(int descriptor) {
    end_ = buffer_;
    limit_ = buffer_ + buffer_size;
    error_ = 0;
    memory_ = nullptr;
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

void writer::put_long(std::string_view text) {
    flush();
    hand_on(text);
}

void writer::hand_on(std::string_view text) {
    if (error_ != 0) return;
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
