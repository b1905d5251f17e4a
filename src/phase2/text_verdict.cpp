#include "phase2/text_verdict.h"

#include "base/diagnostics.h"
#include "model/text.h"

namespace {

// How the text that a position belongs to goes on from there.
struct text_rest {
    enum : std::uint8_t { ended, malformed, unclosed } state = ended;
    bool has_control = false;        // a byte below 0x20 follows in the text
    std::int32_t end = 0;            // where it ends, or where it is malformed
    text_verdict verdict = no_text;  // of what follows the text's NUL
};

// The block is read from its end to its start, so that what follows a position is known when the
// position is judged. Two futures are kept for each position: a byte that is reached inside a
// double-byte passage reads differently from the same byte outside.
struct text_judge {
    const conv& script;
    std::int32_t end;
    text_rest outside;                  // of the position behind
    text_rest inside;                   // of the position behind
    text_rest inside_behind_next = {};  // of the position after that
    text_verdict verdict = all_text;    // of the position behind
};

text_rest with_byte(text_rest rest, std::uint8_t byte) {
    rest.has_control = rest.has_control || byte < 0x20;
    return rest;
}

text_rest rest_outside(const text_judge& judge, std::int32_t position, std::uint8_t byte) {
    if (code_info[byte].type == TEXT) return with_byte(judge.outside, byte);
    if (code_info[byte].type == MB_IN) return judge.inside;
    return {.end = position, .verdict = byte == 0 ? judge.verdict : no_text};
}

text_rest rest_inside(const text_judge& judge, std::int32_t position, std::uint8_t byte) {
    if (code_info[byte].type == MB_OUT) return judge.outside;
    if (!is_lead_byte(byte)) return with_byte(judge.inside, byte);
    if (judge.end - position < 2 || !is_trail_byte(conv_byte(judge.script, position + 1))) {
        return {.state = text_rest::malformed, .end = position};
    }
    return judge.inside_behind_next;
}

text_verdict judge_text(const text_judge& judge, std::int32_t start, std::uint8_t byte, const text_rest& text) {
    if (text.state == text_rest::malformed) return text.end;
    if (text.state == text_rest::unclosed) return start;
    const std::int32_t length = text.end - start;
    if (length == 0 && byte == OP_ENDDATA && judge.end - start == 1) return all_text;
    if (length < 2 || text.has_control) return no_text;
    return text.verdict;
}

void step_back(text_judge& judge, std::int32_t position) {
    const std::uint8_t byte = conv_byte(judge.script, position);
    const text_rest outside = rest_outside(judge, position, byte);
    const text_rest inside = rest_inside(judge, position, byte);
    judge.inside_behind_next = judge.inside;
    judge.inside = inside;
    judge.outside = outside;
    judge.verdict = judge_text(judge, position, byte, outside);
}

}  // namespace

result judge_texts(const conv& script, std::int32_t start, std::int32_t end, array<text_verdict>& verdicts) {
    const std::size_t count = (static_cast<std::size_t>(end - start) + 1) / 2;
    if (!verdicts.assign_unset(count)) return memory_exhausted(count * sizeof(text_verdict));
    text_judge judge = {script, end, {.end = end}, {.state = text_rest::unclosed}};
    for (std::int32_t position = end - 1; position >= start; --position) {
        step_back(judge, position);
        const std::int32_t distance = position - start;
        if (distance % 2 == 0) verdicts[static_cast<std::size_t>(distance / 2)] = judge.verdict;
    }
    return result::ok;
}
