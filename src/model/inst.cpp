#include "model/inst.h"

#include <algorithm>

inst_index inst_find(const inst_tree& tree, std::int32_t offset) {
    const inst* const end = tree.nodes.begin() + tree.walked;
    const inst* const node = std::lower_bound(
        tree.nodes.begin(), end, offset, [](const inst& other, std::int32_t wanted) { return other.offset < wanted; });
    return node == end || node->offset != offset ? no_inst : static_cast<inst_index>(node - tree.nodes.begin());
}
