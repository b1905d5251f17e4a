#include "model/inst.h"

#include <algorithm>

#include "base/diagnostics.h"

namespace {

inst_index find_in_run(const inst_tree& tree, std::size_t first, std::size_t last, std::int32_t offset) {
    const inst* const begin = tree.nodes.begin() + first;
    const inst* const end = tree.nodes.begin() + last;
    const inst* const found = std::lower_bound(
        begin, end, offset, [](const inst& node, std::int32_t wanted) { return node.offset < wanted; });
    if (found == end || found->offset != offset) return no_inst;
    return static_cast<inst_index>(found - tree.nodes.begin());
}

}  // namespace

failure report_tree_exhausted(std::size_t size) { return ERROR("memory exhausted! (size=%zu)", size); }

result inst_add_block_user(inst_tree& tree, inst_index node) {
    if (tree.block_users.push_back(node)) return result::ok;
    return report_tree_exhausted(tree.block_users.growth_bytes());
}

inst_index inst_find(const inst_tree& tree, std::int32_t offset) {
    const inst_index walked = find_in_run(tree, 0, tree.walked, offset);
    if (walked != no_inst) return walked;
    return find_in_run(tree, tree.walked, tree.nodes.size(), offset);
}

void inst_free(inst_tree& tree) { tree = inst_tree(); }
