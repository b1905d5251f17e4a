// A growable array of plain records whose growth can fail without an exception.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>

// Owns its memory. Growing doubles the capacity in place where the system can, so that the peak
// is what is in use. An operation that runs out of memory returns false and leaves the array as
// it was; growth_bytes() then tells how many bytes were asked for.
template <class T>
class array {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);

public:
    array() = default;
    array(const array&) = delete;
    array& operator=(const array&) = delete;
    array(array&& other) noexcept
        : items_(std::exchange(other.items_, nullptr)),
          size_(std::exchange(other.size_, 0)),
          capacity_(std::exchange(other.capacity_, 0)) {}
    array& operator=(array&& other) noexcept {
        std::swap(items_, other.items_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
        return *this;
    }
    ~array() { std::free(items_); }

    T* begin() { return items_; }
    T* end() { return items_ + size_; }
    const T* begin() const { return items_; }
    const T* end() const { return items_ + size_; }
    T* data() { return items_; }
    const T* data() const { return items_; }
    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] bool empty() const { return size_ == 0; }
    T& operator[](std::size_t index) {
        assert(index < size_);
        return items_[index];
    }
    const T& operator[](std::size_t index) const {
        assert(index < size_);
        return items_[index];
    }
    T& back() { return items_[size_ - 1]; }
    const T& back() const { return items_[size_ - 1]; }

    // A new last item for the caller to fill, or null when memory runs out.
    [[nodiscard]] T* push() {
        if (size_ == capacity_ && !grow()) return nullptr;
        return items_ + size_++;
    }
    [[nodiscard]] bool push_back(T item) {
        T* const slot = push();
        if (slot != nullptr) *slot = item;
        return slot != nullptr;
    }
    void pop_back() { --size_; }

    // Makes room for a first item.
    [[nodiscard]] bool reserve() { return capacity_ != 0 || grow(); }

    [[nodiscard]] bool append(const T* items, std::size_t count) {
        while (capacity_ - size_ < count) {
            if (!grow()) return false;
        }
        if (count != 0) std::memcpy(items_ + size_, items, count * sizeof(T));
        size_ += count;
        return true;
    }

    // Adds `count` items of any value for the caller to fill. Returns the first, null when memory runs out.
    [[nodiscard]] T* extend(std::size_t count) {
        while (capacity_ - size_ < count) {
            if (!grow()) return nullptr;
        }
        size_ += count;
        return items_ + size_ - count;
    }

    // Shortens the array to `size` items; the memory stays.
    void truncate(std::size_t size) {
        assert(size <= size_);
        size_ = size;
    }

    // Replaces the contents by `size` items whose bytes are all zero.
    [[nodiscard]] bool assign_zero(std::size_t size) {
        T* const items = static_cast<T*>(std::calloc(size == 0 ? 1 : size, sizeof(T)));
        if (items == nullptr) return false;
        *this = array(items, size);
        return true;
    }

    // Replaces the contents by `size` items of any value, for a caller that fills them.
    [[nodiscard]] bool assign_unset(std::size_t size) {
        T* const items = static_cast<T*>(std::malloc(size == 0 ? 1 : size * sizeof(T)));
        if (items == nullptr) return false;
        *this = array(items, size);
        return true;
    }

    void release() { *this = array(); }

    // Bytes that the next growth asks for, or that the last failed one asked for.
    [[nodiscard]] std::size_t growth_bytes() const { return grown_capacity() * sizeof(T); }

private:
    array(T* items, std::size_t size) : items_(items), size_(size), capacity_(size) {}

    [[nodiscard]] std::size_t grown_capacity() const { return capacity_ == 0 ? 256 : capacity_ * 2; }

    [[gnu::noinline, gnu::cold]] bool grow() {
        T* const items = static_cast<T*>(std::realloc(items_, growth_bytes()));
        if (items == nullptr) return false;
        items_ = items;
        capacity_ = grown_capacity();
        return true;
    }

    T* items_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};
