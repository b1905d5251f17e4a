// How an operation that can fail says whether it did.
#pragma once

#include <optional>

// clang-format off
enum class [[nodiscard]] result : bool { failed, ok };
// clang-format on

constexpr bool failed(result outcome) { return outcome == result::failed; }

// What a failure leaves behind once its message is written: a failed result or no value.
struct [[nodiscard]] failure {
    constexpr operator result() const { return result::failed; }
    template <class T>
    constexpr operator std::optional<T>() const {
        return std::nullopt;
    }
};
