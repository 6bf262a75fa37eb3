// The state of one running parse: scanner, parser and the error.
#ifndef ORLI11_LANGUAGE_PARSE_STATE_H
#define ORLI11_LANGUAGE_PARSE_STATE_H

#include <cstdint>

#include "language/tree.h"
#include "orli11.h"

// ORDER TOKEN: TokenName in scanner.cpp and the grammar's terminals follow these codes. A code from
// 0 to 127 is the character itself, 0 the end of the text.
enum Token : int32_t {
  TOK_END = 0,
  TOK_NUMBER = 257,    // value: NumberValue block
  TOK_IDENT = 258,     // value: text as written, quotes included
  TOK_CALLNAME = 259,  // a name with its "("; value: the name alone
  TOK_SYSNAME = 260,   // @NOW or @PI; value: text as written
  TOK_STRING = 262,    // value: the text between the outer quotes, escapes in place
  TOK_DATE = 263,      // value: text as written
  TOK_CONCAT = 264,
  TOK_BAD = 265,       // a byte that starts no token
  TOK_DATEUNIT = 266,  // code in dateUnit
  TOK_MODIFIER = 267,  // code in modifier
  TOK_NOMEM = 268,
  TOK_AND = 269
};

// Modifier words.
enum : uint16_t { kModifierDistinct = 1, kModifierAll = 2 };

constexpr int32_t kTokenBufferSize = 2048;
constexpr int32_t kParserStackSize = 150;

// An entry of the parser's stack: a token or a reduced symbol.
struct StackEntry {
  int32_t offset, length;
  void *value;
};

struct ParseState {
  ExprContext *context;

  // Scanner input.
  const char *textStart;
  const char *cursor;  // the next byte to read
  bool blankGiven;     // the one blank behind the text has been delivered
  bool nameCheckMode;  // ORLValidName is running

  // Scanner buffer: the current token and what was read ahead of it.
  int32_t bufferEnd;    // bytes held
  int32_t tokenLength;  // bytes of the match last taken, skipped white space included
  char savedByte;       // the byte under the terminator of the current token

  // The token handed to the parser.
  int32_t tokenOffset, tokenSpan;
  void *tokenValue;  // a block that the receiver owns, or null

  // Words that are pending until a node takes them.
  uint16_t dateUnit;
  uint16_t modifier;

  // The first date-shaped match that would not convert.
  bool badDateSeen;
  int32_t badDateOffset, badDateLength;

  ExprNode *root;
  FormulaError error;

  char buffer[kTokenBufferSize + 1];
  uint8_t trail[kTokenBufferSize + 1];  // the automaton's state behind each byte
  int16_t states[kParserStackSize];
  StackEntry entries[kParserStackSize];
};

// Makes a state, which may hold anything, ready for a text. A state lives as long as its parse, on
// the stack of the entry that runs it: so threads share nothing, and a parse needs no memory for
// it.
void ResetParseState(ParseState &state, ExprContext *context, const char *text, bool nameCheck);

// Bytes of the text delivered to the scanner so far, the blank behind it included.
inline int32_t BytesDelivered(const ParseState &state) {
  return static_cast<int32_t>(state.cursor - state.textStart) + (state.blankGiven ? 1 : 0);
}

inline void SetError(ParseState &state, int32_t id, int32_t offset, int32_t length) {
  state.error = FormulaError{id, offset, length};
}

#endif
