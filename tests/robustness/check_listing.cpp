#include "check_listing.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <set>
#include <string_view>
#include <vector>

#include "base/diagnostics.h"
#include "driver/passes.h"
#include "driver/rebuild.h"
#include "output/print_text.h"
#include "phase1/walk_memory_1.h"

namespace {

using bytes_view = std::span<const std::uint8_t>;

struct listing_run {
    conv script;
    array<char> listing;
    array<char> text_table;
    array<char> messages;
    std::int64_t looks = 0;
    bool done = false;
};

std::string_view view(const array<char>& text) { return {text.data(), text.size()}; }

void list_script(listing_run& run, const listing_request& request, bytes_view bytes) {
    static writer listing_out;
    static writer text_out;
    options = request.options;
    select_game_mode(options.game_mode);
    diagnostics.open(run.messages);
    listing_out.open(run.listing);
    text_out.open(run.text_table);
    text_out.put(text_table_header);

    array<std::uint8_t> buffer;  // of the script's exact size, so that no read behind it goes unseen
    if (!buffer.assign_unset(bytes.size())) std::abort();
    std::copy(bytes.begin(), bytes.end(), buffer.begin());
    conv_init(run.script);
    conv_set_buffer(run.script, std::move(buffer));
    run.script.dump = request.dump;
    const named_writer text_file = {request.text_table ? &text_out : nullptr, "text table"};
    run.done = !failed(analyse(run.script)) && !failed(print_script(run.script, {&listing_out, "listing"}, text_file));
    run.looks = phase_1_looks;
    text_out.flush();
    diagnostics.flush();
}

std::vector<std::string_view> lines_of(std::string_view text) {
    std::vector<std::string_view> lines;
    for (std::size_t end; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1)) {
        lines.push_back(text.substr(0, end));
    }
    return lines;
}

bool last_line_starts_with(const array<char>& text, std::string_view start) {
    const auto lines = lines_of(view(text));
    return !lines.empty() && lines.back().starts_with(start);
}

std::size_t hex_number(std::string_view digits) { return std::stoul(std::string(digits), nullptr, 16); }

// Phase 1 looks at no more than n log n, n being the script's bytes and the messages.
std::string check_looks(const listing_run& run, std::size_t size) {
    const auto messages = std::count(run.messages.begin(), run.messages.end(), '\n');
    const auto n = static_cast<double>(size) + static_cast<double>(messages) + 64;
    if (static_cast<double>(run.looks) <= 3 * n * std::log2(n)) return {};
    return "phase 1 looks too often: " + std::to_string(run.looks) + " times";
}

// A run that fails says so in its last message; one that succeeds ends its listing and its table.
std::string check_ends(const listing_run& run, const listing_request& request) {
    char end[24] = "\n; END\n";
    if (request.dump) std::snprintf(end, sizeof end, "\n\n; %08zX: END\n", run.script.buffer.size());
    const bool has_table_end = view(run.text_table).ends_with("\n" + std::string(text_table_end));
    if (view(run.listing).ends_with(end) != run.done) return "success and the listing's end line disagree";
    if (has_table_end != (run.done && request.text_table)) return "success and the text table's end line disagree";
    if (last_line_starts_with(run.messages, "ERROR: ") == run.done) return "success and the last message disagree";
    return {};
}

// Adds the offsets of a list in the order of the listing. A data block whose first byte also
// opens an answer or a branch is listed without that sub block.
void add_printed(const inst_tree& tree, inst_index first, std::vector<std::int32_t>& printed) {
    for (inst_index node = first; node != no_inst; node = tree.nodes[node].next) {
        printed.push_back(tree.nodes[node].offset);
        if (tree.nodes[node].type == STATEMENT) add_printed(tree, inst_subblock(tree, node), printed);
    }
}

// No label is defined twice. Each jump target is a node's offset and, where that is listed, has a label.
std::string check_labels(const listing_run& run, const std::vector<std::int32_t>& printed) {
    std::set<std::size_t> labels;
    for (const std::string_view line : lines_of(view(run.listing))) {
        if (line.starts_with('L') && !labels.insert(hex_number(line.substr(6, 8))).second) {
            return "label defined twice: " + std::string(line);
        }
    }
    std::set<std::int32_t> nodes;
    for (const inst& node : run.script.tree.nodes) nodes.insert(node.offset);
    const offset_table& targets = run.script.jump_offset_table;
    for (auto target = offset_table_first(targets); target; target = offset_table_first_above(targets, *target)) {
        const bool is_printed = std::binary_search(printed.begin(), printed.end(), *target);
        if (!nodes.contains(*target)) return "a jump leads to no node";
        if (is_printed && !labels.contains(static_cast<std::uint32_t>(*target))) return "a jump's target has no label";
    }
    return {};
}

// What the report says of bytes that were dumped so often, modulo 256.
std::string report_of(const std::vector<std::uint8_t>& counts) {
    std::string report;
    for (auto start = counts.begin(), end = start; start != counts.end(); start = end) {
        end = std::find_if(start, counts.end(), [&](std::uint8_t count) { return count != *start; });
        char line[64];
        std::snprintf(line, sizeof line, "dump count = %4d: %08zX - %08zX\n", *start,
                      static_cast<std::size_t>(start - counts.begin()),
                      static_cast<std::size_t>(end - counts.begin()) - 1);
        if (*start != 1) report += line;
    }
    return report;
}

// The dump lines show the script's bytes, and the report says how often. No other comment reaches the
// columns of a dump line's characters.
std::string check_dump(const listing_run& run, bytes_view bytes) {
    std::vector<std::uint8_t> counts(bytes.size());
    for (const std::string_view line : lines_of(view(run.listing))) {
        constexpr std::size_t columns = 62;
        if (!line.starts_with("; ") || line.size() <= columns) continue;
        std::size_t offset = hex_number(line.substr(2, 8));
        for (std::size_t i = 0; i < line.size() - columns; ++i, ++offset) {
            const bool is_right = offset < bytes.size() && bytes[offset] == hex_number(line.substr(12 + 3 * i, 2));
            if (!is_right) return "wrong dump: " + std::string(line);
            ++counts[offset];
        }
    }
    const std::string_view messages = view(run.messages);
    const std::size_t report = std::min(messages.find("dump count = "), messages.size());
    return messages.substr(report) == report_of(counts) ? "" : "the dump-count report is wrong";
}

source source_of(std::string_view text) {
    source copy;
    if (failed(source_assign(copy, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}))) std::abort();
    return copy;
}

// Whether the listing does not show all of the script: a data block hides the branch of the statement
// that it begins at, or a text that only a jump into a double-byte passage leads to has a zero byte.
bool hides_bytes(const conv& script, std::size_t printed) {
    for (const inst& node : script.tree.nodes) {
        const operand param = inst_param(script.tree, node, 0);
        const auto start = static_cast<std::uint32_t>(node.offset);
        if (node.type == TEXT && start + text_of(script, param).size() != param.value) return true;
    }
    return printed != script.tree.nodes.size();
}

// An "eval" inside a reference is in the listing only while its word is not implicit.
bool has_inner_eval(const conv& script) {
    const array<expr_item>& items = script.tree.items;
    for (const operand& param : script.tree.operands) {
        if (param.type != VARIABLE) continue;
        for (std::uint32_t i = 0; i < items[param.value].extent; ++i) {
            const std::int32_t offset = items[param.value - i].offset;
            const bool is_operator = offset_table_find(script.code_offset_table, offset) == OPERATOR;
            if (is_operator && conv_byte(script, offset) == OP_EVAL) return true;
        }
    }
    return false;
}

// What a listing may be refused for: it can be read in two ways, or does not say all.
bool is_excused(std::string_view text) {
    for (const char* excuse :
         {"read in two ways", "was cut at", "no variable can be named by it", "in the jump above it as well"}) {
        if (text.find(excuse) != std::string_view::npos) return true;
    }
    return false;
}

// The listing comes back as the script, or is refused for what it can't say.
std::string check_way_back(const listing_run& run, const listing_request& request, bytes_view bytes,
                           std::size_t printed) {
    const source listing = source_of(view(run.listing));
    const source table = source_of(view(run.text_table));
    array<std::uint8_t> script;
    fault_list faults;
    const rebuild_outcome outcome = rebuild(listing, request.text_table ? &table : nullptr, script, faults);
    if (outcome == rebuild_outcome::refused && is_excused(faults.items[0].text.data())) return {};
    if (outcome == rebuild_outcome::built && std::ranges::equal(script, bytes)) return {};
    if (hides_bytes(run.script, printed) || (request.options.omit_eval && has_inner_eval(run.script))) return {};
    if (outcome == rebuild_outcome::built) return "the listing comes back as another script";
    return "line " + std::to_string(faults.items[0].line) + ": " + faults.items[0].text.data();
}

std::string check_success(const listing_run& run, const listing_request& request, bytes_view bytes) {
    std::vector<std::int32_t> printed;
    add_printed(run.script.tree, run.script.tree.root, printed);
    if (std::adjacent_find(printed.begin(), printed.end(), std::greater_equal()) != printed.end()) {
        return "the listing goes back";
    }
    std::string fault = check_labels(run, printed);
    if (fault.empty() && request.dump) fault = check_dump(run, bytes);
    return fault.empty() ? check_way_back(run, request, bytes, printed.size()) : fault;
}

// What the lines of a listing are: the names of statements, "text" for a text and "data" for data.
std::vector<std::string_view> statements_of(std::string_view listing) {
    constexpr std::string_view names = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_.";
    std::vector<std::string_view> statements;
    for (std::string_view line : lines_of(listing)) {
        line.remove_prefix(std::min(line.find_first_not_of(" \t\r"), line.size()));
        const std::size_t end = std::min(line.find_first_not_of(names), line.size());
        std::string_view word = line.substr(0, end);
        const std::string_view behind = line.substr(end);
        const bool is_label = !word.empty() && behind.starts_with(":") && !behind.starts_with(":=");
        if (is_label || line.starts_with(";") || word == ".option") continue;
        if (line.starts_with("$") || word == "data") word = "decl";
        if (line.starts_with("\"") || line.starts_with("T")) word = "text";
        if (word.starts_with(".") || word == "enddata") word = "data";
        const bool goes_on = !statements.empty() && statements.back() == word && (word == "text" || word == "data");
        if (!word.empty() && !goes_on) statements.push_back(word);
    }
    return statements;
}

}  // namespace

listing_request request_of(unsigned first, unsigned second) {
    listing_request request;
    request.options.game_mode = static_cast<game_mode_id>((first & 3) % 3);
    request.options.verbose_level = static_cast<int>((first >> 2 & 3) % 3);
    request.dump = (first & 0x10) != 0;
    request.text_table = (first & 0x20) != 0;
    request.options.text_label = (first & 0x40) != 0;
    request.options.no_int16_to_text = (first & 0x80) != 0;
    request.options.verbosity_parenthesis = (second & 1) != 0;
    request.options.omit_decl = (second & 2) != 0;
    request.options.omit_eval = (second & 4) != 0;
    request.options.omit_int32 = (second & 8) != 0;
    return request;
}

std::string check_listing(const listing_request& request, bytes_view bytes) {
    listing_run first;
    list_script(first, request, bytes);
    if (request.must_succeed && !first.done) return std::string(view(first.messages).substr(0, 1000));
    std::string fault = check_looks(first, bytes.size());
    if (fault.empty()) fault = check_ends(first, request);
    if (fault.empty() && first.done) fault = check_success(first, request, bytes);
    if (!fault.empty()) return fault;

    for (const remembering how : {remembering::always, remembering::never}) {
        constexpr std::size_t walked_again_soon = 8192;
        if (how == remembering::never && bytes.size() > walked_again_soon) continue;
        listing_run other;
        walks_remember = how;
        list_script(other, request, bytes);
        walks_remember = remembering::when_it_pays;
        const bool same = first.done == other.done && view(first.listing) == view(other.listing) &&
                          view(first.text_table) == view(other.text_table) &&
                          view(first.messages) == view(other.messages);
        if (!same) return "walks that remember, or do not, give something else";
    }
    return {};
}

std::string check_rebuild(bytes_view bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const std::size_t end = std::min(text.find("# label"), text.size());
    const source listing = source_of(text.substr(0, end));
    const source table = source_of(text.substr(end));
    array<std::uint8_t> script;
    fault_list faults;
    const rebuild_outcome outcome = rebuild(listing, end == text.size() ? nullptr : &table, script, faults);
    if (outcome == rebuild_outcome::refused && faults.has_errors) return {};
    if (outcome != rebuild_outcome::built || faults.has_errors) return "the outcome and the faults disagree";

    listing_request request;
    request.options.game_mode = options.game_mode;
    request.options.no_int16_to_text = options.no_int16_to_text;
    request.options.verbosity_parenthesis = true;
    request.must_succeed = true;
    std::string fault = check_listing(request, {script.data(), script.size()});
    if (!fault.empty()) return fault;
    listing_run again;
    list_script(again, request, {script.data(), script.size()});
    const std::string_view read(reinterpret_cast<const char*>(listing.begin()), listing.size);
    return statements_of(read) == statements_of(view(again.listing)) ? "" : "what was accepted lists otherwise";
}
