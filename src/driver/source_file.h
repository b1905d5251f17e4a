// The files of a rebuild. Failures are told with the system's reason.
#pragma once

#include <sys/stat.h>

#include <span>

#include "assemble/source.h"

// What tells one file from another.
struct file_identity {
    dev_t device = 0;
    ino_t inode = 0;
    bool is_regular = false;
};

// Reports that memory ran out.
failure report_exhausted();

// Reads a whole file, or standard input when the name is "-". Fails after its message.
result load_source(source& text, const char* name, file_identity& identity);

// Whether the name is that of this regular file.
bool is_file(const file_identity& identity, const char* name);

// Writes a file, or standard output when the name is "-". A regular file is replaced as a whole or
// keeps its bytes. Fails after its message.
result replace_file(const char* name, std::span<const std::uint8_t> bytes);
