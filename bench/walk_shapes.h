// Scripts in which phase 1 walks to the same places again and again: jumps lead to thousands of places that
// no walk has come to, and each walk from there goes on to the end.
#pragma once

#include <cstddef>

struct script_builder;

// Each writes a script of about `size` bytes. The targets of its jumps lie in ...
void walks_past_messages(script_builder& b, std::size_t size);         // a text; steps behind it give a WARNING
void walks_past_nested_messages(script_builder& b, std::size_t size);  // the same in blocks 1,900 deep
void walks_past_rare_messages(script_builder& b, std::size_t size);    // a text; few steps among many behind it do
void walks_past_names(script_builder& b, std::size_t size);            // a text with statements of names behind it
void walks_past_blocks(script_builder& b, std::size_t size);           // regions, each of which names another block
void walks_uncovering(script_builder& b, std::size_t size);            // regions that uncover each other, far apart
void walks_in_nesting(script_builder& b, std::size_t size);            // texts at every depth
void walks_in_keywords(script_builder& b, std::size_t size);           // the keyword texts of one chain
void walks_in_passage(script_builder& b, std::size_t size);            // one passage of double-byte characters
// And regions that each name as a data block ...
void walks_naming_nested(script_builder& b, std::size_t size);     // a letter of a text in blocks 3,900 deep
void walks_naming_in_chains(script_builder& b, std::size_t size);  // one of a text in chains in ifs
void walks_naming_keywords(script_builder& b, std::size_t size);   // one of the keyword texts of one chain
void walks_changing(script_builder& b, std::size_t size);          // any of texts and statements, some of them in ifs
// These lead into operands, which phase 2 refuses.
void walks_in_literals(script_builder& b, std::size_t size);         // the literals of one expression
void walks_in_references(script_builder& b, std::size_t size);       // those of one variable reference
void walks_in_conditions(script_builder& b, std::size_t size);       // those of conditions
void walks_in_hidden_branches(script_builder& b, std::size_t size);  // those that hide ifs before answers
void walks_in_hidden_ifs(script_builder& b, std::size_t size);       // those of an expression, as ifs with one branch
// ... and those of this one at the start and in the middle of blocks `depth` deep.
void walks_into_halves(script_builder& b, std::size_t depth);
