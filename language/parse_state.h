// The state of one running parse: scanner, parser, the tree under construction and the error.
#ifndef ORLI11_LANGUAGE_PARSE_STATE_H
#define ORLI11_LANGUAGE_PARSE_STATE_H

#include <cassert>
#include <cstdint>
#include <string_view>

#include "language/tree_builder.h"
#include "orli11.h"

// ORDER TOKEN: the grammar's terminals and the tests' TokenName follow these codes. A code from
// 0 to 127 is the character itself, 0 the end of the text. The text of a token is its span.
enum Token : int32_t {
  TOK_END = 0,
  TOK_NUMBER = 257,
  TOK_IDENT = 258,     // a name, quotes included
  TOK_CALLNAME = 259,  // a name with the blanks and the parenthesis that follow it
  TOK_SYSNAME = 260,   // @NOW or @PI
  TOK_STRING = 262,    // with the outer quotes
  TOK_DATE = 263,
  TOK_CONCAT = 264,
  TOK_BAD = 265,       // a byte that starts no token
  TOK_DATEUNIT = 266,  // code in dateUnit
  TOK_MODIFIER = 267,  // code in modifier
  TOK_AND = 269
};

// Modifier words.
enum : uint16_t { kModifierDistinct = 1, kModifierAll = 2 };

constexpr int32_t kLongestMatch = 2048;
constexpr int32_t kParserStackSize = 150;

// An entry of the parser's stack: a token or a reduced symbol. Its kind determines which of the
// fields after the span are valid; the nodes themselves belong to the builder.
struct StackEntry {
  int32_t offset, length;
  uint32_t first;  // of an expression: its node; of a list: the first of the builder's arguments
  uint32_t count;  // of a list: its length
};

struct ParseState {
  ExprContext *context;

  // Scanner input. A text is read as if one blank followed it.
  const char *text;
  int32_t textLength;
  int32_t codePage;    // the active one
  bool nameCheckMode;  // ORLValidName is running

  // The scanner's position.
  int32_t position;     // of the match last taken
  int32_t tokenLength;  // bytes of it, skipped white space included
  int32_t delivered;    // bytes read so far, the blank after the text included

  // The token passed to the parser.
  int32_t tokenOffset, tokenSpan;

  // Unit and modifier words that are scanned but not yet part of a node.
  uint16_t dateUnit;
  uint16_t modifier;

  // The first match of a date rule that is not a valid date.
  bool badDateSeen;
  int32_t badDateOffset, badDateLength;

  FormulaError error;

  TreeBuilder builder;

  uint8_t trail[kLongestMatch + 1];  // the automaton's state after each byte of a match

  int8_t states[kParserStackSize];
  StackEntry entries[kParserStackSize];
};

// Prepares a new state for a text, which must outlive the parse. The fields after `builder` are set
// as they are used. False, with an empty text, when it is too long.
bool ResetParseState(ParseState &state, ExprContext *context, const char *text, bool nameCheck);

// A token's text, and that of a leaf.
inline std::string_view TextAt(const ParseState &state, int32_t offset, int32_t length) {
  return {state.text + offset, static_cast<size_t>(length)};
}
inline std::string_view TokenText(const ParseState &state, const DraftNode &leaf) {
  return TextAt(state, leaf.offset, leaf.length);
}

// The name in the token of a call, without the blanks and the parenthesis.
inline std::string_view CallName(std::string_view token) {
  assert(!token.empty());
  if (token.back() == '(') {
    token.remove_suffix(1);
    token.remove_suffix(token.size() - 1 - token.find_last_not_of(' '));
  }
  return token;
}

inline void SetError(ParseState &state, int32_t id, int32_t offset, int32_t length) {
  state.error = FormulaError{id, offset, length};
}

#endif
