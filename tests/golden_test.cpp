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
// part, and in the status where they differ there. "options:" holds for the scripts below it.
// "arguments:" gives the whole command line of a run, without a script. Standard input is an empty
// pipe. A listing that begins with the usual lines, of npc id 7 and the first game, and ends as a
// whole one is shown without these. A message's source line is shown as "*", as is a node's
// identity behind "next="; a byte that is no printable ASCII as \x and two hex digits.
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
#include <set>
#include <sstream>

#include "robustness/tool_test.h"
#include "support/in_process.h"
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

std::string shown_listing(const std::string& listing) {
    constexpr std::string_view head = "; id: 07(7)\n    .option --kv\n";
    constexpr std::string_view end = "\n; END\n";
    if (!listing.starts_with(head) || !listing.ends_with(end)) return shown(listing);
    return shown(listing.substr(head.size(), listing.size() - head.size() - end.size() + 1));
}

std::string shown_messages(const std::string& messages) {
    static const std::regex identity(R"((next=)(?!0{8})[0-9A-F]{8})");
    return std::regex_replace(starred(shown(messages)), identity, "$1*");
}

// A test in an empty folder of its own that calls the tool.
class golden_test : public tool_test {
protected:
    static tool_result call_tool(const std::vector<std::string>& arguments) {
        return run_tool(arguments, [] {
            int input[2];
            if (pipe(input) == 0 && close(input[1]) == 0) dup2(input[0], STDIN_FILENO);
        });
    }
};

struct golden_case {
    std::string input;     // its lines up to the status
    std::string expected;  // its lines from the status on
};

class case_test : public golden_test {
public:
    explicit case_test(golden_case& each) : case_(each) {}

    void TestBody() override {
        std::istringstream lines(case_.input);
        std::vector<std::string> options;
        std::string script;
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("options:")) options = words_of(line.substr(8));
            if (line.starts_with("arguments:")) run(words_of(line.substr(10)));
            if (line.starts_with("script:")) script = line.substr(7) + "\n";
            if (line.starts_with(' ')) script += line + "\n";
            if (script.empty() || lines.peek() == ' ') continue;
            write_text("script", script_bytes(script));
            options.emplace_back("script");
            run(options);
            options.pop_back();
            fs::remove("script");
            script.clear();
        }
        const bool is_one_status = std::set(statuses_.begin(), statuses_.end()).size() == 1;
        std::string all = "status:";
        for (std::size_t k = 0; k < (is_one_status ? 1 : statuses_.size()); ++k) all += " " + statuses_[k];
        all += "\n";
        for (const auto& [name, text] : parts_) all.append("--- ").append(name.second).append("\n").append(text);
        if (is_update) case_.expected = all;
        EXPECT_EQ(case_.expected, all);
    }

private:
    void run(const std::vector<std::string>& arguments) {
        const tool_result result = call_tool(arguments);
        statuses_.push_back(std::to_string(result.status));
        if (!result.listing.empty()) parts_[{1, "listing"}] += shown_listing(result.listing);
        if (!result.messages.empty()) parts_[{4, "messages"}] += shown_messages(result.messages);
        for (const auto& file : fs::directory_iterator(".")) {
            const std::string name = file.path().filename();
            if (name == "script") continue;
            auto& part = name == "text" ? parts_[{2, "text table"}] : parts_[{3, "file " + name}];
            part += shown_messages(read_file(name));
            fs::remove(name);
        }
    }

    golden_case& case_;
    std::vector<std::string> statuses_;
    std::map<std::pair<int, std::string>, std::string> parts_;  // in the order of a case
};

class example_test : public golden_test {
public:
    explicit example_test(const fs::path& source) : source_(source) {}

    void TestBody() override {
        const std::string source = read_file(source_);
        const std::size_t command = source.find("varsul ");
        std::vector<std::string> arguments = words_of(source.substr(command + 7, source.find('\n', command) - command));
        arguments.back() = beside("scr");
        arguments.insert(arguments.end(), {"-t", "text"});
        const tool_result result = call_tool(arguments);
        if (is_update) {
            write_text(beside("lst"), result.listing);
            write_text(beside("txt"), read_file("text"));
        }
        EXPECT_TRUE(script_bytes(source) == read_file(beside("scr"))) << "the sources and the script differ";
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.messages, "");
        EXPECT_EQ(shown(read_file(beside("lst"))), shown(result.listing));
        EXPECT_EQ(shown(read_file(beside("txt"))), shown(read_file("text")));
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
    std::string* part = &file.head;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (line.starts_with("=== ")) {
            golden_case& each = file.cases.emplace_back();
            add_test(file.path, number, line.substr(4), [&each]() -> testing::Test* { return new case_test(each); });
            part = &each.input;
        }
        if (line.starts_with("status:")) part = &file.cases.back().expected;
        *part += line + "\n";
    }
    // The empty line between two cases.
    for (golden_case& each : file.cases) {
        if (&each != &file.cases.back() && each.expected.ends_with("\n\n")) each.expected.pop_back();
    }
}

void write_cases(const case_file& file) {
    std::string text = file.head;
    for (const golden_case& each : file.cases) {
        text += each.input + each.expected + (&each == &file.cases.back() ? "" : "\n");
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
