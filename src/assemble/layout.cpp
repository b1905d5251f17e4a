#include "assemble/layout.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "assemble/lines.h"
#include "model/code_info.h"

namespace {

failure report(assembly& to, std::uint32_t position, const char* what) {
    return add_fault(to.faults, severity::error, source_file::listing, position, "%s", what);
}

std::uint32_t number_at(const assembly& to, std::uint32_t at) {
    std::uint32_t number = 0;
    for (std::uint32_t i = 0; i < 4; ++i) number |= std::uint32_t{to.script[at + i]} << (8 * i);
    return number;
}

void put_number(assembly& to, std::uint32_t at, std::uint32_t number) {
    for (std::uint32_t i = 0; i < 4; ++i) to.script[at + i] = static_cast<std::uint8_t>(number >> (8 * i));
}

// The offset that a label had when it was listed, if it is a listed label.
std::optional<std::uint32_t> listed_offset(const assembly& to, label_key label) {
    if (label < to.labels.max_offset) return label;
    const named_label& named = to.labels.named[label - to.labels.max_offset];
    const auto listed = read_listed_label(to.listing.begin() + named.position, named.size);
    return listed ? std::optional(listed->offset) : std::nullopt;
}

// Where a label that has a line lies. A listed one outside the script, with nothing behind it, stays
// where it was.
std::uint32_t final_place(const assembly& to, label_key label, std::uint32_t place) {
    const auto listed = listed_offset(to, label);
    if (!listed) return place;
    const bool is_below = *listed >= 0x80000000;
    const bool is_behind = place == script_size(to) && *listed >= place;
    return is_below || is_behind ? *listed : place;
}

bool has_moved(const assembly& to) {
    const std::uint32_t size = script_size(to);
    return to.first_moved.place < size || (to.first_moved.place == size && to.first_moved.offset < size);
}

// Brings what the dump lines show in order, as it is unless lines were moved.
void sort_dumps(assembly& to) {
    const auto by_listed = [](const dump_start& left, const dump_start& right) { return left.listed < right.listed; };
    if (std::is_sorted(to.dumps.begin(), to.dumps.end(), by_listed)) return;
    std::sort(to.dumps.begin(), to.dumps.end(), by_listed);
}

// The place of a label that no line shows: what lay there, by the dump lines; or where it was, while
// an "enddata" lies there and nothing has moved.
std::optional<std::uint32_t> find_unshown(const assembly& to, label_key label) {
    const auto listed = listed_offset(to, label);
    if (!listed) return std::nullopt;
    const dump_start* const dump =
        std::lower_bound(to.dumps.begin(), to.dumps.end(), *listed,
                         [](const dump_start& other, std::uint32_t wanted) { return other.listed < wanted; });
    if (dump != to.dumps.end() && dump->listed == *listed) return dump->offset;
    if (!to.dumps.empty() || has_moved(to) || *listed >= script_size(to)) return std::nullopt;
    const line_start* const line = find_line(to, *listed);
    if (line == nullptr || line->offset != *listed || to.script[*listed] != OP_ENDDATA) return std::nullopt;
    return *listed;
}

// While lines are wrong it is not known what lies where a data block without a label was.
bool may_be_consequence(const assembly& to, const label_use& use, bool had_errors) {
    return had_errors && to.script[use.at - 1] != OP_JUMP && listed_offset(to, use.label);
}

void report_unknown_label(assembly& to, const label_use& use) {
    (void)report(to, use.position,
                 listed_offset(to, use.label)
                     ? "no line has this label: put it before the line it means, or list with -d"
                     : "no line has this label: put it before the line it means");
    place_label(to.labels, use.label, 0);  // so that it is reported once
}

void place_uses(assembly& to) {
    constexpr std::size_t ahead = 16;
    const bool had_errors = to.faults.has_errors;
    const array<label_use>& uses = to.labels.uses;
    for (std::size_t i = 0; i < uses.size(); ++i) {
        if (i + ahead < uses.size()) {
            const label_key next = uses[i + ahead].label;
            if (next < to.labels.max_offset) __builtin_prefetch(to.labels.offsets.data() + next);
        }
        const label_use& use = uses[i];
        if (const auto place = place_of(to.labels, use.label)) {
            put_number(to, use.at, final_place(to, use.label, *place));
        } else if (const auto unshown = find_unshown(to, use.label)) {
            put_number(to, use.at, *unshown);
        } else if (!may_be_consequence(to, use, had_errors)) {
            report_unknown_label(to, use);
        }
    }
}

failure report_overlap(assembly& to, std::uint32_t position) {
    return report(to, position,
                  "the listed script has bytes of this line in the jump above it as well; give the line a label "
                  "of your own if it is to stand behind the jump");
}

void check_overlap(assembly& to) {
    const possible_overlap& overlap = to.overlap;
    if (overlap.size == 0 || !to.dumps.empty()) return;
    for (std::uint32_t i = 0; i < overlap.size && overlap.place + i < script_size(to); ++i) {
        const auto shared = static_cast<std::uint8_t>(overlap.target >> (8 * (4 - overlap.size + i)));
        if (to.script[overlap.place + i] != shared) return;
    }
    (void)report_overlap(to, overlap.position);
}

// Dump lines show for certain what was listed twice.
void check_dumped_overlaps(assembly& to) {
    constexpr std::uint32_t jump_size = 5;
    for (std::size_t i = 1; i < to.dumps.size(); ++i) {
        const dump_start& jump = to.dumps[i - 1];
        const dump_start& behind = to.dumps[i];
        const bool is_jump = behind.offset - jump.offset == jump_size && to.script[jump.offset] == OP_JUMP;
        const std::uint32_t shown = behind.listed - jump.listed;
        if (is_jump && shown != 0 && shown < jump_size)
            (void)report_overlap(to, find_line(to, behind.offset)->position);
    }
}

}  // namespace

void lay_out(assembly& to) {
    sort_dumps(to);
    if (!to.faults.has_errors) {
        check_overlap(to);
        check_dumped_overlaps(to);
        if (to.faults.has_errors) return;  // what follows would only be its consequence
    }
    place_uses(to);
}

void report_stale_names(assembly& to) {
    if (!has_moved(to)) return;
    for (const unknown_run& run : to.unknowns) {
        for (std::uint32_t at = run.offset; run.end - at >= 5; ++at) {
            if (to.script[at] != OP_INT32) continue;
            const std::uint32_t offset = number_at(to, at + 1);
            if (offset >= to.labels.max_offset) continue;
            const auto place = place_of(to.labels, offset);
            if (!place || final_place(to, offset, *place) == offset) continue;
            (void)add_fault(to.faults, severity::warning, source_file::listing, find_line(to, at)->position,
                            "these bytes name L%04X_%08X, which has moved", to.labels.id, offset);
        }
    }
}
