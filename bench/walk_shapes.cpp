#include "walk_shapes.h"

#include <algorithm>

#include "script_builder.h"

constexpr std::size_t op_addkarma = 0xC4;
constexpr std::size_t op_add = 0x90;

using targets = std::vector<label>;
using body_writer = void (*)(script_builder& b, const targets& t);

static void name_block(script_builder& b, label block) { b.code({op_addkarma, op_int32}).address(block).byte(op_eval); }

// Jumps to the targets, which the body places, then a block that is known from the start.
template <body_writer body>
static void walks(script_builder& b, std::size_t count) {
    const label block = b.new_label();
    name_block(b, block);
    targets t(std::max<std::size_t>(count, 9));
    for (label& target : t) b.jump_to(target = b.new_label());
    body(b, t);
    b.place(block).int16(0x1234);
}

// Jumps to the targets, which the body places; then regions that each name one of them as a data block and
// jump to before the body.
template <body_writer body>
static void walks_naming(script_builder& b, std::size_t count) {
    const label block = b.new_label();
    label region = b.new_label();
    targets named(count);
    targets entries(count);
    b.jump_to(region);
    for (label& target : named) b.jump_to(target = b.new_label());
    name_block(b, block);
    b.byte('a');
    for (label& entry : entries) b.place(entry = b.new_label()).byte('b');
    body(b, named);
    b.place(block).int16(0x1234);
    for (std::size_t i = 0; i < count; ++i) {
        const label own_block = b.new_label();
        b.place(region).jump_to(entries[i]);
        if (i + 1 < count) b.jump_to(region = b.new_label());
        name_block(b, named[i]);
        name_block(b, own_block);
        b.place(own_block).int16(0x1234);
    }
}

static void text_of(script_builder& b, const targets& t) {
    b.byte('a');
    for (const label target : t) b.place(target).byte('b');
}

// A chain without an end.
static void write_message(script_builder& b) { b.code({op_keywords, 'y'}).jump_to_offset(0).byte(op_sconverse); }

static void past_messages(script_builder& b, const targets& t) {
    text_of(b, t);
    write_message(b);
    write_message(b);
}

static void past_nested_messages(script_builder& b, const targets& t) {
    const std::size_t depth = std::min<std::size_t>(t.size(), 1900);
    text_of(b, t);
    for (std::size_t i = 0; i < depth; ++i) b.code({op_if, 5, op_eval});
    write_message(b);
    for (std::size_t i = 0; i < depth; ++i) b.byte(op_endif);
}

// Few messages among many steps and ifs without any.
static void past_rare_messages(script_builder& b, const targets& t) {
    constexpr std::size_t depth = 30;
    text_of(b, t);
    for (std::size_t i = 0; i < depth; ++i) {
        b.code({op_if, 5, op_eval});
        for (std::size_t k = 0; k < 95; ++k) b.byte(op_sleep);
        if (i % 10 == 0) write_message(b);
    }
    for (std::size_t i = 0; i < depth; ++i) b.byte(op_endif);
}

static void past_names(script_builder& b, const targets& t) {
    text_of(b, t);
    for (std::size_t i = 0; i < t.size(); ++i) b.code({op_sident, 7, 'A', op_sleep});
}

static void in_nesting(script_builder& b, const targets& t) {
    constexpr std::size_t depth = 1000;
    for (std::size_t i = 0; i < t.size(); ++i) {
        b.code({op_if, 5, op_eval, 'a'}).place(t[i]).byte('b');
        const bool is_last = i + 1 == t.size();
        if (is_last || i % depth == depth - 1) {
            for (std::size_t k = 0; k <= i % depth; ++k) b.code({op_endif, op_sleep});
        }
    }
}

static void in_nested_text(script_builder& b, const targets& t) {
    const std::size_t depth = std::min<std::size_t>(t.size(), 3900);
    for (std::size_t i = 0; i < depth; ++i) b.code({op_if, 5, op_eval});
    b.byte('a');
    for (const label target : t) b.place(target).byte('b');
    for (std::size_t i = 0; i < depth; ++i) b.byte(op_endif);
    b.byte(op_sleep);
}

static void write_answer(script_builder& b) { b.code({op_keywords, 'a', op_answer, op_sleep, op_bye}); }

// A text in chains of many answers in ifs.
static void in_nested_chains(script_builder& b, const targets& t) {
    constexpr std::size_t answers = 12;
    const std::size_t depth = std::min<std::size_t>(t.size() / 16 + 1, 1900);
    for (std::size_t i = 0; i < depth; ++i) {
        b.code({op_if, 5, op_eval});
        for (std::size_t k = 0; k < answers; ++k) write_answer(b);
        b.code({op_keywords, 'a', op_answer});
    }
    text_of(b, t);
    for (std::size_t i = 0; i < depth; ++i) {
        for (std::size_t k = 0; k < answers; ++k) write_answer(b);
        b.code({op_endanswer, op_endif});
    }
    b.byte(op_sleep);
}

static void in_keywords(script_builder& b, const targets& t) {
    for (const label target : t) {
        b.code({op_keywords, 'a'}).place(target).code({'b', op_answer, 'c'}).jump_to_offset(0);
    }
    b.code({op_endanswer, op_sleep});
}

static void in_passage(script_builder& b, const targets& t) {
    b.byte('{');
    for (const label target : t) b.place(target).code({'b', 'c'});
    b.code({'}', op_eval, op_sleep});
}

template <std::size_t hidden>
static void write_literals(script_builder& b, const targets& t) {
    for (const label target : t) b.byte(op_byte).place(target).byte(hidden);
}

static void in_literals(script_builder& b, const targets& t) {
    b.byte(op_addkarma);
    write_literals<1>(b, t);
    b.byte(op_eval);
}

// A reference that begins at any but the last values ends at a "data" of its own.
static void in_references(script_builder& b, const targets& t) {
    b.byte(op_inputnum);
    write_literals<op_inputnum>(b, t);
    for (std::size_t i = 0; i < 4; ++i) b.code({op_byte, 1});
    for (std::size_t i = 0; i < t.size() + 3; ++i) b.byte(op_data);
    b.code({op_eval, op_sleep});
}

static void in_conditions(script_builder& b, const targets& t) {
    for (const label target : t) {
        b.code({op_if, op_byte}).place(target).code({1, op_byte, 2, op_add, op_eval, 'x', op_endif, op_sleep});
    }
}

static void in_hidden_ifs(script_builder& b, const targets& t) {
    b.byte(op_addkarma);
    write_literals<op_if>(b, t);
    b.byte(op_eval);
    for (std::size_t i = 0; i < t.size(); ++i) b.byte(op_sleep);
    b.byte(op_endif);
}

// Answers without an end, at the top level or in an else, and in the branch of an if that a literal hides.
static void in_hidden_branches(script_builder& b, const targets& t) {
    const auto rest = t.begin() + 8;
    for (auto target = t.begin(); target != rest; target += 2) {
        if ((rest - target) % 4 == 0) b.code({op_if, 5, op_eval, op_else});
        b.byte('a').place(target[0]).code({'b', op_addkarma, op_byte}).place(target[1]).code({op_if, 5, op_eval});
        b.code({op_keywords, 'y', op_answer, 'a', op_else, 'b', op_endif, op_bye});
    }
    text_of(b, {rest, t.end()});
    b.byte(op_sleep);
}

void walks_past_messages(script_builder& b, std::size_t size) { walks<past_messages>(b, size / 6); }
void walks_past_nested_messages(script_builder& b, std::size_t size) { walks<past_nested_messages>(b, size / 7); }
void walks_past_rare_messages(script_builder& b, std::size_t size) { walks<past_rare_messages>(b, size / 6); }
void walks_past_names(script_builder& b, std::size_t size) { walks<past_names>(b, size / 10); }
void walks_in_nesting(script_builder& b, std::size_t size) { walks<in_nesting>(b, size / 12); }
void walks_in_keywords(script_builder& b, std::size_t size) { walks<in_keywords>(b, size / 15); }
void walks_in_passage(script_builder& b, std::size_t size) { walks<in_passage>(b, size / 7); }
void walks_in_literals(script_builder& b, std::size_t size) { walks<in_literals>(b, size / 7); }
void walks_in_references(script_builder& b, std::size_t size) { walks<in_references>(b, size / 8); }
void walks_in_conditions(script_builder& b, std::size_t size) { walks<in_conditions>(b, size / 15); }
void walks_naming_nested(script_builder& b, std::size_t size) { walks_naming<in_nested_text>(b, size / 42); }
void walks_naming_in_chains(script_builder& b, std::size_t size) { walks_naming<in_nested_chains>(b, size / 51); }
void walks_naming_keywords(script_builder& b, std::size_t size) { walks_naming<in_keywords>(b, size / 47); }
void walks_in_hidden_branches(script_builder& b, std::size_t size) { walks<in_hidden_branches>(b, size / 6); }
void walks_in_hidden_ifs(script_builder& b, std::size_t size) { walks<in_hidden_ifs>(b, size / 8); }

// From the last region to the first, each uncovered by the one behind it.
void walks_past_blocks(script_builder& b, std::size_t size) {
    constexpr std::size_t region = 14;
    constexpr std::size_t first = 21;
    const std::size_t count = size / 16;
    const std::size_t blocks = first + region * count;
    const auto name = [&](std::size_t offset) { b.code({op_addkarma, op_int32}).int32(offset).byte(op_eval); };
    b.jump_to_offset(blocks - region);
    name(first - 2);
    name(blocks);
    b.int16(0x1234);
    for (std::size_t i = 0; i < count; ++i) {
        name(blocks + 2 * i);
        b.code({op_sleep, op_sleep}).jump_to_offset(first + region * (i == 0 ? 0 : i - 1));
    }
    for (std::size_t i = 0; i < count; ++i) b.int16(0x1234);
}

void walks_uncovering(script_builder& b, std::size_t size) {
    constexpr std::size_t region = 24;
    const std::size_t count = size / region;
    const label block = b.new_label();
    name_block(b, block);
    const std::size_t first = b.size() + 5;
    b.jump_to_offset(first + 1);
    for (std::size_t i = 0; i < count; ++i) {
        b.word(4).byte(op_sleep);
        b.jump_to_offset(first + region * (i * 7919 % count) + 1);
        b.jump_to_offset(first + region * ((i * 104729 + 5) % count) + 2);
        b.jump_to_offset(first + region * i + 3).code({op_sleep, op_sleep, op_sleep, op_sleep});
    }
    b.place(block).int16(0x1234);
}

// Jumps to places in texts and statements; then regions that each name one of them as a data block and jump
// to another text.
void walks_changing(script_builder& b, std::size_t size) {
    const label block = b.new_label();
    label region = b.new_label();
    targets named(size / 56);
    targets entries(named.size());
    b.jump_to(region);
    for (label& target : named) b.jump_to(target = b.new_label());
    name_block(b, block);
    std::size_t depth = 0;
    for (std::size_t i = 0; i < named.size(); ++i) {
        b.byte('a').place(entries[i] = b.new_label()).byte('b');
        if (depth == 0 && b.one_in(4)) {
            b.byte(op_sleep);
        } else if (b.one_in(2)) {
            b.code({op_if, 5, op_eval, 'a'});
            ++depth;
        }
        b.place(named[i]).byte('b');
        if (i % (named.size() / 16 + 1) == 0) write_message(b);
        if (b.one_in(3)) b.code({op_sident, b.below(256), 'A', op_sleep});
        for (; depth > 0 && b.one_in(2); --depth) b.byte(op_endif);
    }
    for (; depth > 0; --depth) b.byte(op_endif);
    b.byte(op_sleep).place(block).int16(0x1234);
    for (std::size_t i = 0; i < named.size(); ++i) {
        const label own_block = b.new_label();
        b.place(region).jump_to(entries[b.below(entries.size())]);
        b.jump_to(region = b.new_label());
        name_block(b, named[b.below(named.size())]);
        name_block(b, own_block);
        b.place(own_block).int16(0x1234);
    }
    b.place(region).byte(op_sleep);
}

// First from the inner half, then from the outer one.
void walks_into_halves(script_builder& b, std::size_t depth) {
    const label block = b.new_label();
    const label outer = b.new_label();
    const label inner = b.new_label();
    name_block(b, block);
    b.jump_to(inner).place(block).int16(0x1234).place(outer);
    for (std::size_t i = 0; i < depth; ++i) {
        if (i == depth / 2) b.place(inner);
        b.code({op_if, 5, op_eval});
    }
    b.byte('a');
    for (std::size_t i = 0; i < depth; ++i) b.byte(op_endif);
    const label last = b.new_label();
    b.jump_to(outer);
    name_block(b, last);
    b.place(last).int16(0x1234);
}
