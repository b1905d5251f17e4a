// Scripts as tests write them down.
#pragma once

#include <string>
#include <string_view>

// The bytes of a script written as hex bytes (B0), offsets of four bytes with the low one first
// (@15), texts in double quotes with the escapes of a listing, and comments from "#" to the end
// of the line. Throws std::runtime_error at anything else.
std::string script_bytes(std::string_view source);
