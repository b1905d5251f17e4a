#include "model/reference.h"

#include "base/diagnostics.h"

result add_reference_item(reference& read, std::int32_t offset, code_type type, std::uint8_t code) {
    if (type == OPERATOR || type == FUNCTION) read.depth -= code_info[code].num_params;
    if (read.depth < 0) {
        return ERROR("can't find variable/data: stack exhausted: offset=%08X, %08X, code=%02X, type=%02X", read.start,
                     offset, code, type);
    }
    read.is_closed = type == FUNCTION && is_reference(code) && read.depth == 0;
    ++read.depth;
    return result::ok;
}

failure report_open_reference(const reference& read) {
    return ERROR("variable/data not found: offset=%08X", read.start);
}
