#include "model/inst.h"

#include <algorithm>

#include "base/diagnostics.h"

namespace {

// The script bytes that an entry of the directory stands for. No more nodes than that are looked
// at to find one.
constexpr std::int32_t directory_step = 64;

}  // namespace

failure report_tree_exhausted(std::size_t size) { return ERROR("memory exhausted! (size=%zu)", size); }

result inst_add_block_user(inst_tree& tree, inst_index node) { return push(tree.block_users, node); }

result inst_build_directory(inst_tree& tree, std::int32_t script_size) {
    const auto size = static_cast<std::size_t>(script_size / directory_step) + 1;
    if (!tree.directory.assign_unset(size)) return report_tree_exhausted(size * sizeof(inst_index));
    std::size_t entry = 0;
    for (inst_index node = 0; node < tree.walked && entry < size; ++node) {
        const std::int64_t offset = tree.nodes[node].offset;
        while (entry < size && offset >= static_cast<std::int64_t>(entry) * directory_step)
            tree.directory[entry++] = node;
    }
    while (entry < size) tree.directory[entry++] = tree.walked;
    return result::ok;
}

inst_index inst_find(const inst_tree& tree, std::int32_t offset) {
    const inst* const end = tree.nodes.begin() + tree.walked;
    const inst* node = tree.nodes.begin();
    const auto entry = static_cast<std::size_t>(offset / directory_step);
    if (offset >= 0 && entry < tree.directory.size()) {
        node += tree.directory[entry];
        while (node != end && node->offset < offset) ++node;
    } else {
        node = std::lower_bound(node, end, offset,
                                [](const inst& other, std::int32_t wanted) { return other.offset < wanted; });
    }
    return node == end || node->offset != offset ? no_inst : static_cast<inst_index>(node - tree.nodes.begin());
}

void inst_free(inst_tree& tree) { tree = inst_tree(); }
