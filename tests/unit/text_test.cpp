#include "model/text.h"

#include <gtest/gtest.h>

#include <optional>

#include "support/in_process.h"
#include "support/script_text.h"

namespace {

TEST(text_length, steps_over_double_byte_passages) {
    struct row {
        const char* script;
        std::int32_t end;
        std::optional<std::int32_t> length;
        const char* message = "";
    };
    constexpr std::optional<std::int32_t> none = std::nullopt;
    const row rows[] = {
        {"\"ab\" A2", 3, 2},
        {"\"abc\"", 0, 0},
        {"A1 \"a\"", 2, 0},
        {"7C", 1, 0},
        {"\"a}b\"", 3, 1},
        {"\"ab\"", 1, 1},
        {"7B 82 7D 7D 00", 5, 4},              // the first brace belongs to a character
        {"7B 00 A0 80 A1 7D \"a\" 00", 8, 7},  // single bytes of any value
        {"\"{{}\"", 3, 3},                     // passages do not nest
        {"\"{a}b{c}\" 00", 8, 7},
        {"7B 81 40 9F FC E0 40 FC FC 7D", 10, 10},
        {"\"a\" 7B 82 7F 7D", 5, none, "ERROR(*): illegal multibyte text: offset=00000002, code=827F\n"},
        {"7B E0 3F 7D", 4, none, "ERROR(*): illegal multibyte text: offset=00000001, code=E03F\n"},
        {"7B FC FD 7D", 4, none, "ERROR(*): illegal multibyte text: offset=00000001, code=FCFD\n"},
        {"7B 82 7D", 2, none, "ERROR(*): illegal multibyte text: offset=00000001, code=82\n"},
        {"\"x{ab\"", 4, none, "ERROR(*): '}' not found: offset=00000000\n"},
        {"7B 82 7D", 3, none, "ERROR(*): '}' not found: offset=00000000\n"},
    };
    for (const row& each : rows) {
        conv script;
        set_script(script, script_bytes(each.script));
        std::int32_t length = 0;
        result outcome = result::ok;
        EXPECT_EQ(messages_of([&] { outcome = text_length(script, 0, each.end, length); }), each.message)
            << each.script;
        EXPECT_EQ(failed(outcome) ? none : std::optional(length), each.length) << each.script;
    }
}

}  // namespace
