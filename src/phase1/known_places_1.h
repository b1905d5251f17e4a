// Phase 1: known places, and what lies between them.
//
// Each place leads to the next one. Leaps over many make it cheap to follow a way and to find what still
// holds of it: a leap goes over one place or over 2^n - 1, as the digits of a counter grow, so that the way
// from anywhere to anywhere takes a logarithm of its places.
#pragma once

#include <cstddef>
#include <cstdint>

#include "phase1/walk_memory_1.h"

// What one way and then another, or an if and one in it, do. The last npc id is the one that is farthest on.
effect join(const effect& first, const effect& second);

// The place of a role at an offset, 0 if it is not known.
std::uint32_t find_place(const walk_memory& memory, path_role role, std::int32_t offset);

// The same, and makes it known.
result make_place(walk_memory& memory, path_role role, std::int32_t offset, std::uint32_t& at);

// Follows the way that is known from `at` on, as far as it holds, and tells what was passed.
result follow(walk_memory& memory, std::uint32_t& at, std::int32_t balance, effect& passed);

// Finds the leap of a place whose next one has its own.
void find_leap(walk_memory& memory, known_place& place);

// Finds those of the memory's trail from a place in it on, and takes them from the trail.
void find_leaps(walk_memory& memory, std::size_t trail);
