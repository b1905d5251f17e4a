// Every message of the sources is seen by a golden case.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

// Messages that no case can show, by reason.
const std::map<std::string, std::vector<std::string>> unseen = {
    {"shown by the test with failing allocations",
     {"ERROR(*): memory exhausted! (size=%zu)", "ERROR(*): memory exhausted! (size=%d)",
      "ERROR(*): memory exhausted! (strdup)", "ERROR: memory exhausted! (size=%d)",
      "ERROR(*): can't add code offset table", "ERROR(*): can't add jump offset table",
      "ERROR(*): can't add data offset table"}},
    {"shown by the test of deep nesting", {"ERROR(*): nesting too deep: offset=%08X"}},
    {"a system that opens and measures a file does this as well",
     {"ERROR: can't dup file descriptor", "ERROR(*): can't seek(SEEK_SET) '%s'"}},
    {"excluded by the opcode table",
     {"ERROR(*): BUG: code_info[%02X].num_params=%d", "ERROR(*): BUG: code_info[%02X].params[0].type=%02X",
      "ERROR(*): BUG: code_info[%02X].params[%d].type=%02X",
      "ERROR(*): BUG: illegal parameter type: offset=%08X, param=%08X, type=%02X",
      "ERROR(*): BUG: offset=%08X, code=%02X, type=STORE"}},
    {"no pass types an offset twice; shown by the test of the offset table",
     {"INFORMATION(*): change offset type: offset=%08X, type=%02X -> %02X"}},
    {"an answer ends in one of the ways before",
     {"ERROR(*): 'endanswer' not found: 'keywords'=%08X, offset=%08X, code=%02X",
      "ERROR(*): 'endanswer' not found: offset=%08X, code=%02X, type=%02X"}},
    {"phase 1 fails when what phase 2 looks for is cut off",
     {"ERROR(*): can't get sub block: offset=%08X", "ERROR(*): assign without value: offset=%08X"}},
    {"the piece of a split text that begins inside a passage comes after one that fails",
     {"ERROR(*): illegal text: %02X"}},
};

template <class Act>
void for_each_line(const fs::path& directory, const char* extension, Act act) {
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        if (entry.path().extension() != extension) continue;
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);) act(line);
    }
}

// The message formats of the sources, each behind its severity as the cases show it.
std::set<std::string> formats_of_sources() {
    const std::map<std::string, std::string> severities = {{"ERROR(", "ERROR(*): "},
                                                           {"WARNING(", "WARNING(*): "},
                                                           {"INFORMATION(", "INFORMATION(*): "},
                                                           {"DEBUG(", "DEBUG(*): "},
                                                           {"TRACE(", "DEBUG: "},
                                                           {"RUN_ERROR(", "ERROR: "},
                                                           {"report(\"WARNING\",", "WARNING: "},
                                                           {"report(\"DEBUG\",", "DEBUG: "},
                                                           {"dump count", "dump count"},
                                                           {"parse_conv_2(): ", "DEBUG: parse_conv_2(): "}};
    std::string sources;
    for_each_line(VARSUL_SOURCES, ".cpp", [&](const std::string& line) { sources += line + "\n"; });
    sources = std::regex_replace(sources, std::regex(R"("\s*\n\s*")"), "");
    const std::regex call(
        R"re((\b(?:RUN_ERROR|ERROR|WARNING|INFORMATION|DEBUG|TRACE)\(|\breport\("[A-Z]+",)(?:\s*\d,)?\s*"([^"]*)")re"
        R"re(|"(dump count|parse_conv_2\(\): )([^"]*?)(?:\\n)?")re");
    std::set<std::string> formats;
    for (std::sregex_iterator match(sources.begin(), sources.end(), call), end; match != end; ++match) {
        const bool is_call = (*match)[1].matched;
        const bool is_node = match->str(3).starts_with("parse_conv_2");  // what trace_node() says before a node
        formats.insert(severities.at(match->str(is_call ? 1 : 3)) + match->str(is_call ? 2 : 4) +
                       (is_node ? ": offset=%08X, code=%02X, type=%02X" : ""));
    }
    return formats;
}

std::vector<std::string> messages_of_cases() {
    std::vector<std::string> messages;
    bool is_message = false;
    for_each_line(VARSUL_CASES, ".case", [&](const std::string& line) {
        if (line.starts_with("---") || line.starts_with("==="))
            is_message = line == "--- messages";
        else if (is_message)
            messages.push_back(line);
    });
    return messages;
}

// The lines that can come from a format.
std::regex lines_of(const std::string& format) {
    std::string pattern = std::regex_replace(format, std::regex(R"([.*+?^$()|\[\]{}])"), R"(\$&)");
    pattern = std::regex_replace(pattern, std::regex("%(?:0(\\d))X"), "(?:[0-9A-F]{$1,}|\\*)");
    pattern = std::regex_replace(pattern, std::regex("%\\d?d"), " *-?\\d+");
    return std::regex(std::regex_replace(pattern, std::regex(R"(%(\\\.\\\*)?s)"), ".*"));
}

TEST(messages, are_each_seen_by_a_case) {
    const std::set<std::string> formats = formats_of_sources();
    const std::vector<std::string> messages = messages_of_cases();
    EXPECT_GT(formats.size(), 80U) << "the search for messages misses most";
    std::set<std::string> exceptions;
    for (const auto& [reason, excused] : unseen) exceptions.insert(excused.begin(), excused.end());
    for (const std::string& format : formats) {
        const std::regex pattern = lines_of(format);
        const bool is_seen = std::any_of(messages.begin(), messages.end(), [&](const std::string& message) {
            return std::regex_match(message, pattern);
        });
        EXPECT_NE(is_seen, exceptions.contains(format))
            << format << (is_seen ? ": no exception any more" : ": no case");
    }
    for (const std::string& format : exceptions) EXPECT_TRUE(formats.contains(format)) << format << ": gone";
}

}  // namespace
