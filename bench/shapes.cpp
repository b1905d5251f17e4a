#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "script_builder.h"
#include "walk_shapes.h"

using namespace std::literals;

// A data block; the statement that names it says what it holds.
struct script_block {
    label start;
    bool texts;
};

static void use_block(script_builder& b, script_block k) {
    if (k.texts)
        b.code({op_dprint, op_int32}).address(k.start).operand();
    else
        b.code({op_decl, b.below(32), op_var, op_assign, op_int32}).address(k.start).value().code({op_data, op_eval});
}

// Small numbers: a high byte below 0x20 keeps them from passing for texts, and no low byte opens a
// double-byte passage.
static void write_block(script_builder& b, script_block k, std::size_t count) {
    b.place(k.start);
    while (count-- > 0) {
        const std::size_t number = b.below(1000);
        if (k.texts)
            b.word(b.between(2, 20)).byte(0);
        else
            b.int16((number & 0xFF) == '{' ? number + 1 : number);
    }
}

// The ordinary mix: paragraphs of texts, statements, ifs and keyword chains, with jumps between
// them, and every few KB a text table and a number table in the way.

struct mix_state {
    script_builder& b;
    std::vector<label> paragraphs = {};  // known a few ahead, for the jumps forward
    std::size_t current = 0;             // index of the paragraph being written
    script_block texts = {};             // the tables written last
    script_block numbers = {};
};

static void mix_text(mix_state& m) { m.b.text(m.b.between(20, 120)); }

static void mix_jump(mix_state& m) {
    const std::size_t distance = m.b.between(0, 4);
    m.b.jump_to(m.paragraphs[m.b.one_in(2) ? m.current + distance : m.current - std::min(distance, m.current)]);
}

static void mix_condition(mix_state& m) {
    switch (m.b.below(4)) {
        case 0: m.b.value().value().byte(op_flag); break;
        case 1: m.b.byte(op_int32).address(m.texts.start).code({0, op_str, op_indexof}); break;
        case 2: m.b.byte(op_int32).address(m.numbers.start).value().byte(op_data); break;
        default: m.b.value(); break;
    }
    if (m.b.one_in(2)) m.b.value().byte(m.b.one_of(comparisons));
    if (m.b.one_in(4)) m.b.value().code({op_inparty, op_and});
    m.b.byte(op_eval);
}

static void mix_statement(mix_state& m) {
    switch (m.b.below(8)) {
        case 0: use_block(m.b, m.numbers); break;
        case 1: use_block(m.b, m.texts); break;
        case 2: m.b.byte(op_sleep); break;
        case 3: m.b.code({op_inputnum, m.b.below(32), op_var}); break;
        case 4: m.b.byte(op_give).operand().operand().operand().operand(); break;
        case 5: m.b.byte(m.b.one_of(binary_statements)).operand().operand(); break;
        default: m.b.byte(m.b.one_of(unary_statements)).operand(); break;
    }
}

// Ends with a statement, so that a text may follow.
static void mix_body(mix_state& m, std::size_t depth) {
    for (std::size_t i = m.b.between(2, 8); i > 0; --i) {
        if (m.b.one_in(16)) mix_text(m);
        mix_statement(m);
        if (depth == 4 || !m.b.one_in(10)) continue;
        m.b.byte(op_if);
        mix_condition(m);
        mix_body(m, depth + 1);
        if (m.b.one_in(4)) mix_jump(m);
        if (m.b.one_in(2)) {
            m.b.byte(op_else);
            mix_body(m, depth + 1);
        }
        m.b.byte(op_endif);
    }
}

static void mix_keywords(mix_state& m) {
    for (std::size_t i = m.b.between(1, 4); i > 0; --i) {
        m.b.byte(op_keywords).word(m.b.between(3, 12)).byte(op_answer);
        mix_text(m);
        mix_body(m, 2);
        if (m.b.one_in(4))
            mix_jump(m);
        else if (m.b.one_in(8))
            m.b.byte(op_bye);
    }
    m.b.byte(op_endanswer);
}

// The code goes on behind the tables, where nothing but the jump leads.
static void mix_tables(mix_state& m) {
    const label behind = m.b.new_label();
    m.texts = {m.b.new_label(), true};
    m.numbers = {m.b.new_label(), false};
    use_block(m.b, m.texts);
    use_block(m.b, m.numbers);
    if (m.b.one_in(2)) {
        m.b.byte(op_if);
        mix_condition(m);
        m.b.jump_to(behind).code({op_endif, op_bye});
    } else {
        m.b.jump_to(behind);
    }
    write_block(m.b, m.texts, m.b.between(4, 16));
    m.b.byte(op_enddata);
    write_block(m.b, m.numbers, m.b.between(8, 40));
    m.b.byte(op_enddata).place(behind);
}

// Writes up to about the offset `end`. One more statement has to follow: the last jumps lead to it.
static void write_mix(script_builder& b, std::size_t end) {
    constexpr std::size_t table_distance = 3000;
    mix_state m{b};
    std::size_t next_tables = b.size();
    for (; b.size() < end; ++m.current) {
        while (m.paragraphs.size() < m.current + 5) m.paragraphs.push_back(b.new_label());
        b.place(m.paragraphs[m.current]);
        if (b.size() >= next_tables) {
            mix_tables(m);
            next_tables = b.size() + table_distance;
        }
        mix_text(m);
        mix_body(m, 1);
        if (b.one_in(2)) mix_keywords(m);
        if (b.one_in(4)) mix_jump(m);
    }
    for (; m.current < m.paragraphs.size(); ++m.current) b.place(m.paragraphs[m.current]);
}

static void ordinary_mix(script_builder& b, std::size_t size) {
    b.code({op_sident, b.below(256)}).word(8).byte(op_slook).text(40).byte(op_sconverse);
    write_mix(b, size);
    b.byte(op_bye);
}

// Texts.

static void one_text(script_builder& b, std::size_t size) { b.text(size); }

static void text_heavy(script_builder& b, std::size_t size) {
    while (b.size() < size) b.text(b.between(200, 2000)).byte(op_sleep);
}

static void double_byte_texts(script_builder& b, std::size_t size) {
    while (b.size() < size) {
        b.word(2).byte('{');
        for (std::size_t i = b.between(10, 60); i > 0; --i) {
            const std::size_t lead = b.below(60);
            const std::size_t trail = b.between(0x40, 0xFC);
            b.code({lead < 31 ? 0x81 + lead : 0xE0 + lead - 31, trail == 0x7F ? 0x80 : trail});
        }
        b.code({'\n', '}', op_sleep});
    }
}

static void keyword_chains(script_builder& b, std::size_t size) {
    while (b.size() < size) {
        const std::size_t start = b.size();
        for (std::size_t i = b.between(1, 40); i > 0; --i) {
            b.byte(op_keywords).word(b.between(3, 12)).byte(op_answer).text(b.between(5, 60));
            if (b.one_in(2))
                b.jump_to_offset(start);
            else if (b.one_in(4))
                b.byte(op_bye);
        }
        b.byte(op_endanswer);
    }
}

// Jumps. A run of them needs no labels: each is five bytes long, and a target of others.

template <std::size_t target(random_source& r, std::size_t from, std::size_t count)>
static void jumps(script_builder& b, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) b.jump_to_offset(5 * target(b, i, count));
    b.byte(op_bye);
}

static std::size_t any(random_source& r, std::size_t, std::size_t count) { return r.below(count + 1); }
static std::size_t middle(random_source&, std::size_t, std::size_t count) { return count / 2; }
static std::size_t earlier(random_source& r, std::size_t from, std::size_t) { return r.below(from + 1); }
static std::size_t later(random_source& r, std::size_t from, std::size_t count) { return r.between(from + 1, count); }

static void jumps_into_text(script_builder& b, std::size_t size) {
    const std::size_t start = b.size();
    const std::size_t length = size / 4 * 3;
    b.text(length);
    while (b.size() < size) b.jump_to_offset(start + b.below(length));
    b.byte(op_bye);
}

// The block ends the walk, which then starts again at each target in the text, through all the rest.
static void jumps_into_walked_text(script_builder& b, std::size_t size) {
    const script_block numbers{b.new_label(), false};
    use_block(b, numbers);
    jumps_into_text(b, size);
    write_block(b, numbers, 4);
}

// Data blocks.

template <block_place where>
static void data_blocks(script_builder& b, std::size_t count) {
    std::vector<script_block> blocks(count);
    for (std::size_t i = 0; i < count; ++i) blocks[i] = {b.new_label(), i % 2 == 1};
    std::vector<script_block> mixed = blocks;
    for (std::size_t i = count; i > 2; --i)  // all but the first, which must be known before it is met
        std::swap(mixed[i - 1], mixed[b.between(1, i - 1)]);

    const label code = b.new_label();
    if (where == block_place::before_code) {
        use_block(b, blocks[0]);
        b.jump_to(code);
        for (script_block k : blocks) write_block(b, k, 2);
    }
    b.place(code);
    for (script_block k : mixed) use_block(b, k);
    b.byte(op_bye);
    if (where == block_place::behind_code)
        for (script_block k : blocks) write_block(b, k, 2);
}

static void blocks_between_code(script_builder& b, std::size_t size) {
    while (b.size() < size) {
        const script_block k{b.new_label(), b.one_in(2)};
        const label behind = b.new_label();
        use_block(b, k);
        b.jump_to(behind);
        write_block(b, k, 2);
        b.place(behind).text(b.between(10, 40));
    }
    b.byte(op_bye);
}

template <bool texts>
static void one_block(script_builder& b, std::size_t count) {
    const script_block k{b.new_label(), texts};
    use_block(b, k);
    b.byte(op_bye);
    write_block(b, k, count);
}

// What the block repeats, and how it ends: each of whole numbers, that is of even length.
struct late_fault {
    std::string_view period;
    std::string_view end;
};
constexpr late_fault late_faults[] = {
    {"{\x82_\x82_\x82_\x82_\x82_\x82_\x82_\x82"sv, ""sv},  // half a character; each "{" completes one
    {"there was once a row of numbers\0"sv, "ab"sv},       // no end of the last text
    {"neverending "sv, ""sv},                              // no end of the only text
    {"there was once a row of numbers\0"sv, "a\t\t\0"sv},  // a control character
    {"{neverclosing___"sv, ""sv},                          // no end of a double-byte passage
};

static void late_failing_text_test(script_builder& b, std::size_t size) {
    const late_fault fault = late_faults[b.state % std::size(late_faults)];
    one_block<false>(b, 1);
    const std::size_t length = (size - b.size() - fault.end.size()) & ~std::size_t{1};
    for (std::size_t i = 0; i < length; ++i) b.byte(static_cast<unsigned char>(fault.period[i % fault.period.size()]));
    for (char c : fault.end) b.byte(static_cast<unsigned char>(c));
}

// The bytes behind the jump are no code: the scan for an expression records nearly each of them
// before it fails, and all of that is taken back.
static void error_recovery(script_builder& b, std::size_t size) {
    b.text(20).jump_to_offset(0).byte(0);
    while (b.size() < size) {
        const std::size_t value = b.below(256);
        b.byte(value == op_eval || value == op_int32 ? 0 : value);
    }
}

// Nesting.

static void nest(script_builder& b, std::size_t depth, std::initializer_list<std::size_t> open,
                 std::initializer_list<std::size_t> close) {
    for (std::size_t i = 0; i < depth; ++i) b.code({op_if, op_byte, 1, op_eval}).code(open);
    b.byte(op_sleep);
    for (std::size_t i = 0; i < depth; ++i) b.code(close);
}

// `depth` counts the sub blocks: an answer stands in an if of its own.
static void nested_ifs(script_builder& b, std::size_t depth) { nest(b, depth, {}, {op_endif}); }
static void nested_elses(script_builder& b, std::size_t depth) { nest(b, depth, {op_else}, {op_endif}); }
static void nested_keywords(script_builder& b, std::size_t depth) {
    nest(b, depth / 2, {op_keywords, 'a', op_answer}, {op_endanswer, op_endif});
}

// A nest lists as some 1,500 bytes for each of its own, nearly all of them indentation. One in 64 KB
// keeps the listing of a large script within a disk's reach.
static void nesting(script_builder& b, std::size_t size) {
    constexpr writer kinds[] = {nested_ifs, nested_elses, nested_keywords};
    for (std::size_t i = 0; b.size() < size; ++i) {
        kinds[i % 3](b, std::min<std::size_t>(1900, size / 10));
        write_mix(b, std::min<std::size_t>(size, (i + 1) << 16));
    }
    b.byte(op_bye);
}

// Expressions.

static void left_deep(script_builder& b, std::size_t items) {
    for (std::size_t i = 0; i < items; ++i) {
        b.code({op_byte, b.below(256)});
        if (i > 0) b.byte(b.one_of(operators));
    }
}

static void right_deep(script_builder& b, std::size_t items) {
    for (std::size_t i = 0; i < items; ++i) b.code({op_byte, b.below(256)});
    for (std::size_t i = 1; i < items; ++i) b.byte(b.one_of(operators));
}

static void balanced(script_builder& b, std::size_t items) {
    if (items < 2) return left_deep(b, items);
    balanced(b, items / 2);
    balanced(b, items - items / 2);
    b.byte(b.one_of(operators));
}

static void nested_functions(script_builder& b, std::size_t items) {
    b.code({op_byte, b.below(256)});
    for (std::size_t i = 0; i < items; ++i) {
        if (b.one_in(2))
            b.byte(b.one_of(unary_functions));
        else
            b.code({op_byte, b.below(256), b.one_of(binary_functions)});
    }
}

template <writer expression>
static void assignment(script_builder& b, std::size_t items) {
    b.code({op_decl, b.below(32), op_var, op_assign});
    expression(b, items);
    b.byte(op_eval);
}

// Deep, but within what a limit on nesting should allow.
template <writer expression>
static void long_expressions(script_builder& b, std::size_t size) {
    while (b.size() < size) assignment<expression>(b, std::min<std::size_t>(4000, 1 + (size - b.size()) / 3));
}

static void short_expressions(script_builder& b, std::size_t size) {
    while (b.size() < size) {
        assignment<left_deep>(b, b.between(1, 6));
        assignment<balanced>(b, b.between(1, 6));
    }
}

template <writer write, std::size_t bytes_for_one>
static script_bytes fill(std::size_t size, std::uint64_t seed) {
    return made<write>(size / bytes_for_one, seed);
}

constexpr auto before_code = block_place::before_code;
constexpr auto behind_code = block_place::behind_code;

constexpr std::array shapes = {
    script_shape{"mix", "the ordinary mix: half text, code of every kind, tables", made<ordinary_mix>, ""},
    script_shape{"mix_verbose", "the same, with every message", made<ordinary_mix>, "-V -V"},
    script_shape{"text_heavy", "long texts with a statement between them", made<text_heavy>, ""},
    script_shape{"one_text", "a single text", made<one_text>, ""},
    script_shape{"double_byte_texts", "texts of double-byte passages", made<double_byte_texts>, ""},
    script_shape{"keyword_chains", "chains of up to 40 answers", made<keyword_chains>, ""},
    script_shape{"jumps_forward", "jumps to later jumps", fill<jumps<later>, 5>, ""},
    script_shape{"jumps_backward", "jumps to earlier jumps", fill<jumps<earlier>, 5>, ""},
    script_shape{"jumps_to_one", "jumps to one place", fill<jumps<middle>, 5>, ""},
    script_shape{"jumps_into_text", "jumps that split one text", made<jumps_into_text>, ""},
    script_shape{"jumps_into_walked_text", "the same, and each walked from", made<jumps_into_walked_text>, ""},
    script_shape{"blocks_before_code", "blocks, then the code that names them", fill<data_blocks<before_code>, 25>, ""},
    script_shape{"blocks_behind_code", "the code that names them, then blocks", fill<data_blocks<behind_code>, 25>, ""},
    script_shape{"blocks_between_code", "blocks, each a break in the code", made<blocks_between_code>, ""},
    script_shape{"one_text_block", "a single block of texts", fill<one_block<true>, 12>, ""},
    script_shape{"one_number_block", "a single block of numbers", fill<one_block<false>, 2>, ""},
    script_shape{"late_text_test", "numbers like texts up to a fault at the end", made<late_failing_text_test>, ""},
    script_shape{"error_recovery", "a tail that is no code (two ERROR lines)", made<error_recovery>, ""},
    script_shape{"nesting", "1,900 sub blocks in each other, then mix up to 64 KB", made<nesting>, ""},
    script_shape{"left_deep", "left-deep expressions of 4,000 items", made<long_expressions<left_deep>>, ""},
    script_shape{"right_deep", "right-deep expressions of 4,000 items", made<long_expressions<right_deep>>, ""},
    script_shape{"balanced", "balanced expressions of 4,000 items", made<long_expressions<balanced>>, ""},
    script_shape{"nested_functions", "4,000 calls in each other", made<long_expressions<nested_functions>>, ""},
    script_shape{"short_expressions", "expressions of up to 6 items", made<short_expressions>, ""},
    script_shape{"one_balanced", "a single balanced expression", fill<assignment<balanced>, 3>, ""},
    script_shape{"one_left_deep", "a single left-deep expression", fill<assignment<left_deep>, 3>, ""},
    script_shape{"one_right_deep", "a single right-deep expression", fill<assignment<right_deep>, 3>, ""},
    script_shape{"walks_past_messages", "jumps into a text before steps that warn", made<walks_past_messages>, ""},
    script_shape{"walks_past_nested", "the same in blocks 1,900 deep", made<walks_past_nested_messages>, ""},
    script_shape{"walks_past_rare", "before few steps that warn among many", made<walks_past_rare_messages>, "", false},
    script_shape{"walks_past_names", "jumps into a text before names of the speaker", made<walks_past_names>, ""},
    script_shape{"walks_past_blocks", "regions that each name another block", made<walks_past_blocks>, ""},
    script_shape{"walks_uncovering", "regions that uncover each other", made<walks_uncovering>, ""},
    script_shape{"walks_in_nesting", "jumps into texts at every depth", made<walks_in_nesting>, ""},
    script_shape{"walks_in_keywords", "jumps into the keywords of one chain", made<walks_in_keywords>, ""},
    script_shape{"walks_naming_nested", "letters of a nested text as data blocks", made<walks_naming_nested>, "",
                 false},
    script_shape{"walks_naming_in_chains", "letters in nested chains as data blocks", made<walks_naming_in_chains>, "",
                 false},
    script_shape{"walks_naming_chain", "letters of keywords as data blocks", made<walks_naming_keywords>, "", false},
    script_shape{"walks_changing", "texts and statements as data blocks", made<walks_changing>, "", false},
    script_shape{"walks_in_passage", "jumps into one double-byte passage", made<walks_in_passage>, "", false},
    script_shape{"walks_in_literals", "jumps into one expression", made<walks_in_literals>, "", false},
    script_shape{"walks_in_references", "jumps into one variable reference", made<walks_in_references>, "", false},
    script_shape{"walks_in_conditions", "jumps into conditions", made<walks_in_conditions>, "", false},
    script_shape{"walks_in_branches", "jumps into literals before answers", made<walks_in_hidden_branches>, "", false},
    script_shape{"walks_in_hidden_ifs", "jumps into literals that read as ifs", made<walks_in_hidden_ifs>, "", false},
};

std::span<const script_shape> script_shapes() { return shapes; }

script_bytes make_nested_ifs(std::size_t depth) { return made<nested_ifs>(depth, 0); }
script_bytes make_nested_elses(std::size_t depth) { return made<nested_elses>(depth, 0); }
script_bytes make_nested_keywords(std::size_t depth) { return made<nested_keywords>(depth, 0); }
script_bytes make_known_halves(std::size_t depth) { return made<walks_into_halves>(depth, 0); }
script_bytes make_siblings(std::size_t count) { return script_bytes(count, op_sleep); }
script_bytes make_left_deep(std::size_t items) { return made<assignment<left_deep>>(items, 1); }
script_bytes make_right_deep(std::size_t items) { return made<assignment<right_deep>>(items, 1); }
script_bytes make_balanced(std::size_t items) { return made<assignment<balanced>>(items, 1); }
script_bytes make_nested_functions(std::size_t items) { return made<assignment<nested_functions>>(items, 1); }
script_bytes make_one_text(std::size_t size) { return made<one_text>(size, 1); }
script_bytes make_one_number_block(std::size_t size) { return made<one_block<false>>(size / 2, 1); }
script_bytes make_jumps(std::size_t count) { return made<jumps<any>>(count, 1); }

script_bytes make_data_blocks(std::size_t count, block_place where) {
    return where == before_code ? made<data_blocks<before_code>>(count, 1) : made<data_blocks<behind_code>>(count, 1);
}

script_bytes make_late_failing_text_test(std::size_t size, std::uint64_t seed) {
    return made<late_failing_text_test>(size, seed);
}
