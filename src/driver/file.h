// The files of a run.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <utility>

#include "base/array.h"
#include "base/result.h"

// An open file, closed at the end of its life. -1 stands for none.
class file {
public:
    file() = default;
    explicit file(int descriptor) : descriptor_(descriptor) {}
    file(file&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    file& operator=(file&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    file(const file&) = delete;
    file& operator=(const file&) = delete;
    ~file() { (void)close(); }

    [[nodiscard]] int descriptor() const { return descriptor_; }
    [[nodiscard]] bool is_open() const { return descriptor_ >= 0; }
    // Returns whether the system took everything that was written.
    bool close();

private:
    int descriptor_ = -1;
};

// Reads a whole file, fewer than 2 GiB and not empty. Writes an ERROR line when it can't.
result load_file(array<std::uint8_t>& buffer, const char* path);

// Opens a file for writing and empties it. A regular file that is also known by one of the other
// names (null for none) is refused and stays untouched. The result is not open on failure, which
// is reported.
file open_output(const char* name, std::initializer_list<const char*> other_names);

// Makes a standard descriptor (1 or 2) a duplicate of the file. Writes an ERROR line on failure.
result redirect(int descriptor, const file& target);

// Occupies standard descriptors that the caller closed, so that no file of the run takes their
// place. Writing to them fails.
void reserve_standard_descriptors();
