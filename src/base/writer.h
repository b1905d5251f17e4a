// Buffered output to a file descriptor or into memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/array.h"

// Collects bytes and hands them on when its buffer is full, whole lines then, and when it is flushed.
// The first failure is kept in `error` (an errno value, 0 while all went well); what is put after it is
// dropped. `room` and the put functions never fail themselves.
class writer {
public:
    static constexpr std::size_t buffer_size = std::size_t{64} * 1024;
    static constexpr std::size_t max_room = std::size_t{16} * 1024;  // the most that one call of room() gives

    constexpr writer() = default;
    writer(const writer&) = delete;
    writer& operator=(const writer&) = delete;

    // Starts anew; the descriptor stays the caller's. `earlier` is flushed whenever something is handed
    // on: handing on may end the process, when it writes to a pipe that nobody reads any more.
    void open(int descriptor, writer* earlier = nullptr);
    void open(array<char>& memory);  // starts anew; the bytes are added to `memory`
    void discard();                  // starts anew; what is put is lost
    void flush();
    [[nodiscard]] int error() const { return error_; }

    // Space for at least `size` (at most max_room) bytes at the place where the output goes on;
    // advance() takes what of it was filled.
    char* room(std::size_t size) {
        if (left() < size) [[unlikely]]
            make_room();
        return end_;
    }
    void advance(char* end) { end_ = end; }

    void put(std::string_view text) {
        if (left() < text.size()) [[unlikely]]
            return put_long(text);
        std::memcpy(end_, text.data(), text.size());
        end_ += text.size();
    }
    void put(char character) {
        *room(1) = character;
        ++end_;
    }

private:
    [[nodiscard]] std::size_t left() const { return static_cast<std::size_t>(limit_ - end_); }
    void make_room();
    void put_long(std::string_view text);
    void hand_on(std::string_view text);

    // All zero at first, so that a writer that is not opened costs no memory.
    char* end_ = nullptr;  // of what the buffer holds
    char* limit_ = nullptr;
    int descriptor_ = 0;  // once it is opened
    int error_ = 0;
    array<char>* memory_ = nullptr;
    writer* earlier_ = nullptr;
    char buffer_[buffer_size] = {};
};
