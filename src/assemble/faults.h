// What is wrong with a listing or a text table, and where.
#pragma once

#include <array>
#include <cstdarg>
#include <cstdint>
#include <span>

#include "assemble/source.h"

enum class source_file : std::uint8_t { listing, table };
enum class severity : std::uint8_t { error, warning };

struct fault {
    source_file file = source_file::listing;
    severity level = severity::error;
    std::uint32_t position = 0;  // in the file
    std::uint32_t line = 0;      // both from 1, once they are located
    std::uint32_t column = 0;    // in bytes
    std::array<char, 200> text = {};
};

// The first faults by file and position, and how many there are. Warnings are counted with errors:
// they are looked for only where there are none.
struct fault_list {
    static constexpr std::size_t max_shown = 20;

    std::array<fault, max_shown> items;
    std::uint32_t count = 0;
    bool has_errors = false;

    [[nodiscard]] std::span<const fault> shown() const { return {items.data(), count < max_shown ? count : max_shown}; }
};

// Adds a fault, whose text is cut where it is too long. Returns the failure that an error is.
[[gnu::format(printf, 5, 6)]] failure add_fault(fault_list& faults, severity level, source_file file,
                                                std::uint32_t position, const char* format, ...);
failure add_fault_list(fault_list& faults, severity level, source_file file, std::uint32_t position, const char* format,
                       va_list arguments);

// Sets line and column of what is shown.
void locate_faults(fault_list& faults, const source& listing, const source& table);

// The line, from 1, of a position.
std::uint32_t line_at(const source& text, std::uint32_t position);
