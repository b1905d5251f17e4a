// Runs the tool on written-down cases and compares all that it hands out.
//
//     golden_test FILE...            tests each case of the files
//     golden_test --update FILE...   rewrites what the cases expect, for review in the diff
//
// A FILE.case holds cases in this form; of the parts below the status, those that are empty or
// were not written are left out:
//
//     === the fault that the case would catch
//     options: -d -t text        what stands before the script's name, none if left out
//     script: B0 @5 "Hithe"      its bytes, see support/script_text.h; further lines are indented
//     status: 0
//     --- listing                standard output
//     --- text table             the file named "text"
//     --- file NAME              any other file that the run leaves
//     --- messages               standard error
//
// Each further "script:" is a run of its own; what the runs hand out follows one another in each
// part. "arguments:" gives the whole command line of a run, without a script. Standard input is
// an empty pipe. A message's source line is shown as "*", as is a node's identity behind "next=";
// a byte that is no printable ASCII as \x and two hex digits.
//
// A FILE.hex is the source of the example FILE.scr; its first line with "varsul" is the command
// that lists it. FILE.lst is its listing, FILE.txt its text table.

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <list>
#include <map>
#include <optional>
#include <regex>
#include <sstream>

#include "robustness/tool_test.h"
#include "support/messages.h"
#include "support/script_text.h"

namespace {

namespace fs = std::filesystem;

bool is_update = false;

void write_text(const fs::path& path, const std::string& text) {
    write_file(path, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

std::vector<std::string> words_of(const std::string& line) {
    std::istringstream stream(line.substr(0, line.find('#')));
    return {std::istream_iterator<std::string>(stream), {}};
}

// What a case shows of a file.
std::string shown(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        char code[8];
        std::snprintf(code, sizeof code, "\\x%02X", static_cast<unsigned char>(byte));
        text += (byte >= ' ' && byte <= '~') || byte == '\t' || byte == '\n' ? std::string(1, byte) : code;
    }
    if (!text.empty() && text.back() != '\n') text += "\n\\ no newline at the end\n";
    return text;
}

std::string shown_messages(const std::string& messages) {
    static const std::regex identity(R"((next=)(?!0{8})[0-9A-F]{8})");
    return std::regex_replace(starred(shown(messages)), identity, "$1*");
}

struct tool_call {
    std::vector<std::string> arguments;
    std::optional<std::string> script;
};

struct golden_case {
    std::string input;  // its lines up to the status
    std::string status;
    std::string expected;  // its lines behind the status

    [[nodiscard]] std::vector<tool_call> calls() const {
        std::vector<tool_call> all;
        std::vector<std::string> options;
        std::istringstream lines(input);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("options:")) options = words_of(line.substr(8));
            if (line.starts_with("arguments:")) all.push_back({words_of(line.substr(10)), {}});
            if (line.starts_with("script:")) {
                all.push_back({options, script_bytes(line.substr(7))});
                all.back().arguments.emplace_back("script");
            } else if (line.starts_with(' ')) {
                *all.back().script += script_bytes(line);
            }
        }
        return all;
    }
};

// A test in an empty folder of its own that calls the tool.
class golden_test : public tool_test {
protected:
    static tool_result call_tool(const tool_call& call) {
        if (call.script) write_text("script", *call.script);
        return run_tool(call.arguments, [] {
            int input[2];
            if (pipe(input) == 0 && close(input[1]) == 0) dup2(input[0], STDIN_FILENO);
        });
    }
};

class case_test : public golden_test {
public:
    explicit case_test(golden_case& each) : case_(each) {}

    void TestBody() override {
        const std::string status = case_.status;
        std::string other_status = status;
        std::map<std::pair<int, std::string>, std::string> parts;  // in the order of a case
        for (const tool_call& call : case_.calls()) {
            const tool_result run = call_tool(call);
            if (std::to_string(run.status) != status) other_status = std::to_string(run.status);
            if (!run.listing.empty()) parts[{1, "listing"}] += shown(run.listing);
            if (!run.messages.empty()) parts[{4, "messages"}] += shown_messages(run.messages);
            fs::remove("script");
            for (const auto& file : fs::directory_iterator(".")) {
                const std::string name = file.path().filename();
                auto& part = name == "text" ? parts[{2, "text table"}] : parts[{3, std::string("file ") + name}];
                part += shown_messages(read_file(name));
                fs::remove(name);
            }
        }
        std::string all;
        for (const auto& [name, text] : parts) all.append("--- ").append(name.second).append("\n").append(text);
        if (is_update && status == other_status) case_.expected = all;
        EXPECT_EQ("status: " + status + "\n" + case_.expected, "status: " + other_status + "\n" + all);
    }

private:
    golden_case& case_;
};

// Takes the bytes from a listing's dump lines.
std::string dumped_bytes(const std::string& listing) {
    const std::regex dump_line(R"((?:^|\n); ([0-9A-F]{8}):((?: [0-9A-F]{2}){1,16}) +: )");
    std::string bytes;
    for (std::sregex_iterator line(listing.begin(), listing.end(), dump_line), end; line != end; ++line) {
        EXPECT_EQ(std::stoul(line->str(1), nullptr, 16), bytes.size());
        bytes += script_bytes(line->str(2));
    }
    return bytes;
}

class example_test : public golden_test {
public:
    explicit example_test(const fs::path& source) : source_(source) {}

    void TestBody() override {
        const std::string text = read_file(source_);
        tool_call call = {words_of(text.substr(text.find("varsul ") + 7, text.find(".scr") - text.find("varsul ") - 7)),
                          script_bytes(text)};
        call.arguments.back() = "script";
        call.arguments.insert(call.arguments.end(), {"-t", "text"});
        const tool_result plain = call_tool(call);
        if (is_update && plain.status == 0) {
            write_text(beside("lst"), plain.listing);
            write_text(beside("txt"), read_file("text"));
        }
        EXPECT_TRUE(*call.script == read_file(beside("scr")))
            << "the .scr file does not hold the bytes of the .hex file";
        EXPECT_EQ(plain.status, 0);
        EXPECT_EQ(plain.messages, "");
        EXPECT_EQ(shown(read_file(beside("lst"))), shown(plain.listing));
        EXPECT_EQ(shown(read_file(beside("txt"))), shown(read_file("text")));
        call.arguments.emplace_back("-d");
        const tool_result dump = call_tool(call);
        EXPECT_EQ(dump.messages, "");
        EXPECT_TRUE(dumped_bytes(dump.listing) == *call.script) << "the dump does not rebuild the script";
    }

private:
    [[nodiscard]] fs::path beside(const char* extension) const {
        return fs::path(source_).replace_extension(extension);
    }

    fs::path source_;
};

struct case_file {
    fs::path path;
    std::string head;  // what stands above the first case
    std::list<golden_case> cases = {};
};

template <class Make>
void add_test(const fs::path& path, int line, const std::string& name, Make make) {
    const std::string test_name = std::regex_replace(name, std::regex("[^A-Za-z0-9]+"), "_");
    testing::RegisterTest(path.stem().c_str(), test_name.c_str(), nullptr, nullptr, path.c_str(), line, make);
}

void add_cases(case_file& file) {
    std::istringstream lines(read_file(file.path));
    bool is_below_status = false;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (line.starts_with("=== ")) {
            golden_case& each = file.cases.emplace_back();
            add_test(file.path, number, line.substr(4), [&each]() -> testing::Test* { return new case_test(each); });
            is_below_status = false;
        }
        if (line.starts_with("status: ")) {
            file.cases.back().status = line.substr(8);
            is_below_status = true;
        } else if (file.cases.empty()) {
            file.head += line + "\n";
        } else if (is_below_status) {
            file.cases.back().expected += line.empty() && file.cases.back().expected.empty() ? "" : line + "\n";
        } else {
            file.cases.back().input += line + "\n";
        }
    }
    for (golden_case& each : file.cases) {
        while (each.expected.ends_with("\n\n")) each.expected.pop_back();
    }
}

void write_cases(const case_file& file) {
    std::string text = file.head;
    for (const golden_case& each : file.cases) {
        text +=
            each.input + "status: " + each.status + "\n" + each.expected + (&each == &file.cases.back() ? "" : "\n");
    }
    write_text(file.path, text);
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    std::vector<std::string> names(argv + 1, argv + argc);
    is_update = std::erase(names, "--update") != 0;
    std::list<case_file> files;
    for (const std::string& name : names) {
        const fs::path path = fs::absolute(name);
        if (path.extension() == ".case")
            add_cases(files.emplace_back(case_file{path, {}}));
        else
            add_test(path, 1, "example", [path]() -> testing::Test* { return new example_test(path); });
    }
    const bool is_good = RUN_ALL_TESTS() == 0 && testing::UnitTest::GetInstance()->test_to_run_count() != 0;
    if (is_update) std::for_each(files.begin(), files.end(), write_cases);
    return is_good ? 0 : 1;
}
