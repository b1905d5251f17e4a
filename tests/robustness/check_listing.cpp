#include "check_listing.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <numeric>
#include <set>
#include <string_view>
#include <vector>

#include "base/diagnostics.h"
#include "driver/passes.h"
#include "output/print_text.h"

namespace {

using bytes_view = std::span<const std::uint8_t>;

struct listing_run {
    conv script;
    array<char> listing;
    array<char> text_table;
    array<char> messages;
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
        if (tree.nodes[node].type == STATEMENT) add_printed(tree, inst_subblock(tree, tree.nodes[node]), printed);
    }
}

std::string check_order(const inst_tree& tree, const std::vector<std::int32_t>& printed) {
    const auto rises_to = [&](const inst& node, inst_index later) {
        return later == no_inst || node.offset < tree.nodes[later].offset;
    };
    for (const inst& node : tree.nodes) {
        if (!rises_to(node, node.next) || !rises_to(node, inst_subblock(tree, node)))
            return "a list's offsets do not rise";
    }
    const auto fall = std::adjacent_find(printed.begin(), printed.end(), std::greater_equal());
    return fall == printed.end() ? "" : "the listing goes back";
}

// No label is defined twice. Each jump target is a node's offset and, where that is listed, has a label.
std::string check_labels(const listing_run& run, const std::vector<std::int32_t>& printed) {
    std::set<std::size_t> labels;
    for (const std::string_view line : lines_of(view(run.listing))) {
        if (line.starts_with('L') && !labels.insert(hex_number(line.substr(label_size - 8, 8))).second) {
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

// How often each byte was counted, modulo 256.
std::vector<std::uint8_t> counted(const conv& script) {
    std::vector<std::uint8_t> counts(script.buffer.size() + 1);
    for (const dump_change& change : script.dump_count) {
        counts[static_cast<std::size_t>(change.offset)] += static_cast<std::uint8_t>(change.change);
    }
    std::partial_sum(counts.begin(), counts.end(), counts.begin());
    counts.pop_back();
    return counts;
}

// The dump lines show the script's bytes, each as often as was counted; when the report says
// nothing, they are the script. No other comment reaches the columns of a dump line's characters.
std::string check_dump(const listing_run& run, bytes_view bytes) {
    std::vector<std::uint8_t> counts(bytes.size());
    std::vector<std::uint8_t> rebuilt;
    for (const std::string_view line : lines_of(view(run.listing))) {
        constexpr std::size_t columns = 62;
        if (!line.starts_with("; ") || line.size() <= columns) continue;
        std::size_t offset = hex_number(line.substr(2, 8));
        for (std::size_t i = 0; i < line.size() - columns; ++i, ++offset) {
            rebuilt.push_back(static_cast<std::uint8_t>(hex_number(line.substr(12 + 3 * i, 2))));
            if (offset >= bytes.size() || bytes[offset] != rebuilt.back()) return "wrong dump: " + std::string(line);
            ++counts[offset];
        }
    }
    if (counts != counted(run.script)) return "the dump counts are wrong";
    const bool has_report = last_line_starts_with(run.messages, "dump count = ");
    if (has_report == (rebuilt == std::vector(bytes.begin(), bytes.end()))) return "the dump-count report is wrong";
    return {};
}

std::string check_success(const listing_run& run, const listing_request& request, bytes_view bytes) {
    std::vector<std::int32_t> printed;
    add_printed(run.script.tree, run.script.tree.root, printed);
    std::string fault = check_order(run.script.tree, printed);
    if (fault.empty()) fault = check_labels(run, printed);
    if (fault.empty() && request.dump) fault = check_dump(run, bytes);
    return fault;
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
    std::string fault = check_ends(first, request);
    if (fault.empty() && first.done) fault = check_success(first, request, bytes);
    if (!fault.empty()) return fault;

    listing_run second;
    list_script(second, request, bytes);
    const bool same = first.done == second.done && view(first.listing) == view(second.listing) &&
                      view(first.text_table) == view(second.text_table) &&
                      view(first.messages) == view(second.messages);
    return same ? "" : "a second run gives something else";
}
