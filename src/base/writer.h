// Buffered output to a file descriptor or into memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/array.h"

// Collects bytes and hands them on when its buffer is full and when it is flushed. The first
// failure is kept in `error` (an errno value, 0 while all went well); what is put after it is
// dropped. `room` and the put functions never fail themselves.
class writer {
public:
    static constexpr std::size_t buffer_size = std::size_t{64} * 1024;
    static constexpr std::size_t max_room = std::size_t{16} * 1024;  // the most that one call of room() gives

    writer() = default;
    writer(const writer&) = delete;
    writer& operator=(const writer&) = delete;

    void open(int descriptor);       // starts anew; the descriptor stays the caller's
    void open(array<char>& memory);  // starts anew; the bytes are added to `memory`
    void flush();
    [[nodiscard]] int error() const { return error_; }

    // Space for at least `size` (at most max_room) bytes at the place where the output goes on;
    // advance() takes what of it was filled.
    char* room(std::size_t size) {
        if (buffer_size - used_ < size) [[unlikely]]
            flush();
        return buffer_ + used_;
    }
    void advance(const char* end) { used_ = static_cast<std::size_t>(end - buffer_); }

    void put(std::string_view text) {
        if (buffer_size - used_ < text.size()) [[unlikely]]
            return put_long(text);
        std::memcpy(buffer_ + used_, text.data(), text.size());
        used_ += text.size();
    }
    void put(char character) {
        *room(1) = character;
        ++used_;
    }

private:
    void put_long(std::string_view text);
    void hand_on(std::string_view text);

    std::size_t used_ = 0;
    int descriptor_ = -1;
    int error_ = 0;
    array<char>* memory_ = nullptr;
    char buffer_[buffer_size];
};
