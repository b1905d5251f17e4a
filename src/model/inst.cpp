#include "model/inst.h"

#include <algorithm>

#include "base/diagnostics.h"

namespace {

template <class T>
result add(array<T>& items, const T& item) {
    if (items.push_back(item)) return result::ok;
    return ERROR("memory exhausted! (size=%zu)", items.growth_bytes());
}

inst_index find_in_run(const inst_tree& tree, std::size_t first, std::size_t last, std::int32_t offset) {
    const inst* const begin = tree.nodes.begin() + first;
    const inst* const end = tree.nodes.begin() + last;
    const inst* const found = std::lower_bound(
        begin, end, offset, [](const inst& node, std::int32_t wanted) { return node.offset < wanted; });
    if (found == end || found->offset != offset) return no_inst;
    return static_cast<inst_index>(found - tree.nodes.begin());
}

}  // namespace

inst_index inst_new(inst_tree& tree, std::int32_t offset, code_type type, std::uint8_t code) {
    const inst node = {.offset = offset, .type = type, .code = code};
    if (failed(add(tree.nodes, node))) return no_inst;
    return static_cast<inst_index>(tree.nodes.size() - 1);
}

result inst_add_param(inst_tree& tree, inst_index node, const operand& param) {
    if (failed(add(tree.operands, param))) return result::failed;
    inst& owner = tree.nodes[node];
    if (owner.num_params == 0) owner.params = static_cast<std::uint32_t>(tree.operands.size() - 1);
    ++owner.num_params;
    return result::ok;
}

result inst_add_item(inst_tree& tree, std::int32_t offset) {
    return add(tree.items, {.offset = offset});
}

result inst_add_block_user(inst_tree& tree, inst_index node) { return add(tree.block_users, node); }

inst_index inst_find(const inst_tree& tree, std::int32_t offset) {
    const inst_index walked = find_in_run(tree, 0, tree.walked, offset);
    if (walked != no_inst) return walked;
    return find_in_run(tree, tree.walked, tree.nodes.size(), offset);
}

void inst_free(inst_tree& tree) { tree = inst_tree(); }
