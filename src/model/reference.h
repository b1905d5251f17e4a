// Where a variable reference ends: at the "$var", "$str" or "data" that takes every value pushed before it.
#pragma once

#include <cstdint>

#include "base/result.h"
#include "model/code_info.h"

// What the items of a reference come to, from its first one on.
struct reference {
    std::int32_t start;      // the first item's offset
    std::int32_t depth = 0;  // values on the evaluation stack
    bool is_closed = false;
};

// Takes the reference's next item. Fails, after an ERROR line, when it needs more values than there are.
result add_reference_item(reference& read, std::int32_t offset, code_type type, std::uint8_t code);

// The depth from which on an item neither fails for want of values nor closes the reference.
inline std::int32_t least_depth(std::uint8_t code) {
    const code_info_entry& info = code_info[code];
    if (info.item_type != OPERATOR && info.item_type != FUNCTION) return 0;
    return info.num_params + (is_reference(code) ? 1 : 0);
}

// Reports that nothing closes the reference.
failure report_open_reference(const reference& read);
