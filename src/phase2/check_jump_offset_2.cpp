#include "phase2/check_jump_offset_2.h"

#include "base/diagnostics.h"

namespace {

// Moves on to the first node at or above `offset` and tells whether it is at the offset.
bool reach(const inst*& node, const inst* end, std::int32_t offset) {
    while (node != end && node->offset < offset) ++node;
    return node != end && node->offset == offset;
}

}  // namespace

result check_jump_offset_2(const conv& script) {
    const inst* const elements = script.tree.nodes.begin() + script.tree.walked;
    const inst* walked = script.tree.nodes.begin();
    const inst* element = elements;
    auto target = offset_table_first(script.jump_offset_table);
    for (; target; target = offset_table_first_above(script.jump_offset_table, *target)) {
        const bool is_walked = reach(walked, elements, *target);
        const bool is_element = reach(element, script.tree.nodes.end(), *target);
        if (!is_walked && !is_element) return ERROR("illegal jump offset: offset=%08X", *target);
    }
    return result::ok;
}
