// Type rules: which operators exist for which types, and how arguments are checked against
// parameters.
//
// A rule that fails sets state.error; a length of 0 there means that the position is unknown, and
// the parser fills it in.
#ifndef ORLI11_LANGUAGE_TYPES_H
#define ORLI11_LANGUAGE_TYPES_H

#include <cstdint>
#include <string_view>

#include "engine/name_index.h"
#include "language/parse_state.h"
#include "language/tree.h"

// True when the operator exists for the type of its left operand.
bool TypeOperatorAllowed(EC ec, int32_t kind, int16_t leftType);

// Data types above this are those of keywords, which no formula can have.
constexpr int16_t kLastValueType = 255;

// The type of the item or keyword of that name, and of the one that the current token names, or
// kNoType.
int16_t TypeOfName(EC ec, const NameKey &key);
int16_t TypeOfItem(const ParseState &state);

// The group of operator callbacks of an operator, or -1.
int32_t OperatorGroupOf(int32_t kind);

// The parts of a call while its node is built. The arguments are those of the parse's builder from
// `first` on.
struct CallDraft {
  std::string_view name;
  CallForm form;
  uint32_t first;
  uint32_t count;  // 0 without a list
};

// Set the type of a new node (kNoType with the error set) and its detail. TypeCall turns a call of
// a named formula into a NODE_FORMULA.
void TypeOperator(ParseState &state, DraftNode &node, const DraftNode &left,
                  const DraftNode &right);
void TypeCall(ParseState &state, DraftNode &node, const CallDraft &call);

// The common type of a set's members, the builder's arguments from `first` on, or kNoType with the
// error set.
int16_t TypeOfSet(ParseState &state, uint32_t first, uint32_t count);

// True when the arguments that a call passes by value have the types that the function's row
// declares.
bool TypeArgumentsFit(const ExprNode *call, const ExprItem *function);

#endif
