// The rendering of expressions, each as the operand of a statement of its own.

#include <array>
#include <sstream>

#include "robustness/tool_test.h"
#include "support/script_text.h"

namespace {

class sprint_eval : public tool_test {
protected:
    // Adds an expression, in the form of support/script_text.h, and how it should read.
    void expect(const std::string& items, const std::string& rendering) {
        script_ += script_bytes("9C " + items + " A7");
        expected_ += "    horse eval ";
        expected_ += rendering + "\n";
    }

    void check(const std::vector<std::string>& arguments) {
        write_file("script", {reinterpret_cast<const std::uint8_t*>(script_.data()), script_.size()});
        std::istringstream lines(run_tool(arguments).listing);
        std::string listed;
        for (std::string line; std::getline(lines, line);) listed += line.starts_with("    horse") ? line + "\n" : "";
        EXPECT_EQ(listed, expected_);
    }

    void expect_grid(bool wraps_all);

private:
    std::string script_;
    std::string expected_;
};

struct op {
    std::string name;
    std::string code;
};
const std::array<op, 12> ops = {{{">", "81"},
                                 {">=", "82"},
                                 {"<", "83"},
                                 {"<=", "84"},
                                 {"!=", "85"},
                                 {"==", "86"},
                                 {"+", "90"},
                                 {"-", "91"},
                                 {"*", "92"},
                                 {"/", "93"},
                                 {"||", "94"},
                                 {"&&", "95"}}};

// For each operator, in the same order across: in which places each operator below it stands in
// parentheses, on both sides (b), on the right one only (r) or nowhere (-).
constexpr std::array<std::string_view, 12> grid = {
    "bbbbbbbbbbbb",  // >
    "bbbbbbbbbbbb",  // >=
    "bbbbbbbbbbbb",  // <
    "bbbbbbbbbbbb",  // <=
    "bbbbbbbbbbbb",  // !=
    "bbbbbbbbbbbb",  // ==
    "bbbbbbrr--bb",  // +
    "bbbbbbrr--bb",  // -
    "bbbbbbbbrrbb",  // *
    "bbbbbbbbrrbb",  // /
    "bbbbbbbbbbrb",  // ||
    "bbbbbbbbbbbr",  // &&
};

std::string in_parentheses_if(bool condition, const std::string& text) { return condition ? "(" + text + ")" : text; }

void sprint_eval::expect_grid(bool wraps_all) {
    for (std::size_t above = 0; above < ops.size(); ++above) {
        for (std::size_t below = 0; below < ops.size(); ++below) {
            const char side = wraps_all ? 'b' : grid[above][below];
            const std::string middle = " " + ops[above].name + " ";
            const std::string inner = "1 " + ops[below].name + " 2";
            const std::string on_left = in_parentheses_if(side == 'b', inner) + middle + "3";
            const std::string on_right = "3" + middle + in_parentheses_if(side != '-', inner);
            expect("01 02 " + ops[below].code + " 03 " + ops[above].code, in_parentheses_if(wraps_all, on_left));
            expect("03 01 02 " + ops[below].code + " " + ops[above].code, in_parentheses_if(wraps_all, on_right));
        }
    }
}

TEST_F(sprint_eval, groups_every_operator_under_every_other) {
    expect_grid(false);
    check({"script"});
}

TEST_F(sprint_eval, wraps_every_operator_on_request) {
    expect_grid(true);
    expect("01 02 03 91 91 CA", "join((1 - (2 - 3)))");
    check({"--verbosity-parenthesis", "script"});
}

TEST_F(sprint_eval, looks_at_what_stands_below) {
    expect("01 02 91 03 91", "1 - 2 - 3");
    expect("01 02 86 03 04 86 95", "(1 == 2) && (3 == 4)");
    // A right operand that begins with a parenthesis gets no second pair.
    expect("01 02 03 90 04 92 92", "1 * (2 + 3) * 4");
    expect("01 02 03 92 04 92 92", "1 * (2 * 3 * 4)");
    // Functions and brackets separate.
    expect("01 02 90 CA 03 92", "join(1 + 2) * 3");
    expect("01 02 90 03 04 85 B4", "data(1 + 2, 3 != 4)");
    expect("D3 FF D4 34 F2 48 B2 9F", "hasobj(byte 255, int16 0xF234, $var[72])");
    check({"script"});
}

// A long expression is cut at 4095 characters, its line is not.
TEST_F(sprint_eval, cuts_a_long_expression) {
    std::string items = "09";
    std::string rendering = "9";
    for (int i = 0; i < 1200; ++i) {
        items += " 09 90";
        rendering += " + 9";
    }
    expect(items, rendering.substr(0, 4095 - std::string_view("eval ").size()));
    check({"script"});
}

}  // namespace
