// How an operation that can fail says whether it did.
#pragma once

// clang-format off
enum class [[nodiscard]] result : bool { failed, ok };
// clang-format on

constexpr bool failed(result outcome) { return outcome == result::failed; }

// A failure whose message is written.
struct [[nodiscard]] failure {
    constexpr operator result() const { return result::failed; }
};
