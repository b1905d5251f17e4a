#include "driver/explain.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

#include "assemble/lines.h"

namespace {

// The messages of the passes in the words of who writes a listing.
struct explanation {
    std::string_view message;  // a part of it
    const char* words;
};
constexpr explanation explanations[] = {
    {"'endif' not found", "this 'if' or 'else' has no 'endif'"},
    {"keywards without answer", "nothing follows this 'keywords'"},
    {"nesting too deep", "blocks are nested too deep here"},
    {"end of buffer", "the script ends before this statement or its block does"},
    {"illegal jump offset", "a jump leads here, where no statement or text begins"},
    {"illegal data block offset", "what lies here is named as a data block of another kind, or is no data block"},
    {"type=TEXT", "this data block is used as one of texts: what stands here is read as a text without its end"},
    {"type=INT16", "this data block is used as one of numbers: at its end a byte is left over"},
    {"'eval' not found", "what lies here is neither code nor named as data"},
    {"expression", "what lies here is read as an expression, and is none"},
    {"variable/data", "what lies here is read as a variable or an element of data, and is neither"},
};

// The failure is the first error behind the last one that the passes got over.
std::string_view find_failure(std::string_view messages) {
    const std::size_t recovered = messages.rfind("error recovery ...");
    const std::size_t start = messages.find("ERROR", recovered == std::string_view::npos ? 0 : recovered);
    if (start == std::string_view::npos) return {};
    return messages.substr(start, messages.find('\n', start) - start);
}

constexpr std::string_view hex_digits = "0123456789ABCDEF";

// The offset at the start of the text, if eight hexadecimal digits stand there.
bool read_offset(std::string_view text, std::uint32_t& offset) {
    constexpr std::size_t digits = 8;
    if (text.size() < digits || text.substr(0, digits).find_first_not_of(hex_digits) != std::string_view::npos)
        return false;
    if (text.size() > digits && hex_digits.find(text[digits]) != std::string_view::npos) return false;
    std::from_chars(text.data(), text.data() + digits, offset, 16);
    return true;
}

const line_start* line_of(const assembly& made, std::uint32_t offset) {
    const line_start* const line = find_line(made, offset);
    return line != nullptr ? line : made.lines.begin();
}

// Where the failure is: at the least offset that the message shows, other than one in front of it.
const line_start* find_place(const assembly& made, std::string_view message) {
    const line_start* place = made.lines.end() - 1;
    message = message.substr(0, message.find(", prev="));
    for (std::size_t i = 0; i < message.size(); ++i) {
        std::uint32_t offset = 0;
        if (read_offset(message.substr(i), offset)) place = std::min(place, line_of(made, offset));
    }
    return place;
}

// The message with lines in place of offsets.
struct line_message {
    std::array<char, 160> text = {};
    std::size_t size = 0;

    void add(std::string_view part) { size += part.copy(text.data() + size, text.size() - 1 - size); }
};

void add_lines(line_message& to, const assembly& made, std::string_view message) {
    while (!message.empty()) {
        std::uint32_t offset = 0;
        if (read_offset(message, offset)) {
            char line[24];
            const int size =
                std::snprintf(line, sizeof line, "line %u", line_at(made.listing, line_of(made, offset)->position));
            to.add({line, static_cast<std::size_t>(size)});
            message.remove_prefix(8);
        } else {
            to.add(message.substr(0, 1));
            message.remove_prefix(1);
        }
    }
}

}  // namespace

bool explain_analysis(assembly& made, std::string_view messages) {
    std::string_view message = find_failure(messages);
    if (message.empty()) return false;
    const line_start* const place = find_place(made, message);
    message.remove_prefix(message.find(": ") + 2);
    for (const explanation& each : explanations) {
        if (message.find(each.message) == std::string_view::npos) continue;
        (void)add_fault(made.faults, severity::error, source_file::listing, place->position, "%s", each.words);
        return true;
    }
    line_message text;
    add_lines(text, made, message);
    (void)add_fault(made.faults, severity::error, source_file::listing, place->position, "%.*s",
                    static_cast<int>(text.size), text.text.data());
    return true;
}

void warn_of_lone_endif(assembly& made, std::string_view messages) {
    const std::string_view message = messages.substr(std::min(messages.find("'endif' without"), messages.size()));
    (void)add_fault(made.faults, severity::warning, source_file::listing, find_place(made, message)->position,
                    "this 'endif' closes no 'if'; an option line --endif-without-if tells that it is meant");
}
