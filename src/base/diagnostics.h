// Messages: one line each, in the order in which their conditions are met.
#pragma once

#include <cstdint>

#include "base/options.h"
#include "base/result.h"
#include "base/writer.h"

// Where messages go: standard error, the file named by "-E", or memory in tests. They are buffered;
// the driver flushes them before it opens an output, before any of the listing and when the run ends.
inline constinit writer diagnostics;

// How many messages there were.
inline std::uint64_t messages_said = 0;

// A message was too long for the memory there is, or for printing at all, and was cut. The run
// can't end well then.
inline bool message_cut = false;

[[gnu::format(printf, 2, 3)]] void report(const char* severity, const char* format, ...);
[[gnu::format(printf, 3, 4)]] void report_at(const char* severity, int line, const char* format, ...);

inline bool verbose(int level) { return options.verbose_level >= level; }

// The severities of the passes, stamped with the source line that reports. ERROR yields the
// failure to return, so that saying it and returning it are one statement. INFORMATION is
// written from the given verbose level on, DEBUG and TRACE (a DEBUG line without a number) from
// level 2 on; below their level they cost one branch.
#define ERROR(...) (report_at("ERROR", __LINE__, __VA_ARGS__), failure())
#define WARNING(...) report_at("WARNING", __LINE__, __VA_ARGS__)
#define INFORMATION(level, ...) (verbose(level) ? report_at("INFORMATION", __LINE__, __VA_ARGS__) : void())
#define DEBUG(...) (verbose(2) ? report_at("DEBUG", __LINE__, __VA_ARGS__) : void())
#define TRACE(...) (verbose(2) ? report("DEBUG", __VA_ARGS__) : void())

// The driver's own messages carry no number.
#define RUN_ERROR(...) (report("ERROR", __VA_ARGS__), failure())

// Reports that there is no memory for `size` bytes.
failure memory_exhausted(std::size_t size);

// Adds an item to an array. Fails, after its message, when memory runs out.
template <class T>
result push(array<T>& items, const T& item) {
    return items.push_back(item) ? result::ok : memory_exhausted(items.growth_bytes());
}
