#include "language/parser.h"

#include "language/parser_tables.h"
#include "language/scanner.h"

namespace {

constexpr int32_t kNoToken = -1;  // there is no lookahead token

// The table's column for a token; kParserColumns for one that is in no production.
constexpr int32_t kTokenCodes = TOK_AND + 1;
struct ColumnTable {
  uint8_t columns[kTokenCodes];
};

constexpr ColumnTable MakeColumns() {
  ColumnTable table = {};
  for (uint8_t &column : table.columns) {
    column = kParserColumns;
  }
  for (int32_t i = 0; i < kParserColumns; ++i) {
    table.columns[kParserTokens[i]] = static_cast<uint8_t>(i);
  }
  return table;
}

constexpr ColumnTable kColumns = MakeColumns();

// Reports a syntax error. Its position is that of the last token, computed from the bytes read, so
// bytes that the scanner read ahead shift it to the right. An earlier error of the scanner, such as
// a text that is too long, is kept.
void Report(ParseState &state, int32_t id) {
  if (state.error.id != ORL_ERR_MAXTOKEN) {
    SetError(state, id, state.delivered - state.tokenLength, state.tokenLength);
  }
}

// The next action of the state, a value of parser_tables.h. Reads a token only when the action
// depends on it.
int32_t ActionOf(ParseState &state, int32_t at, int32_t &token) {
  if (!kParserStates[at].decides) {
    return kParserRefuse;
  }
  if (token == kNoToken) {
    token = ScanToken(state);
  }
  const int32_t column = kColumns.columns[token];
  return column < kParserColumns ? kParserActions[at][column] : kParserRefuse;
}

}  // namespace

bool RunParser(ParseState &state) {
  int32_t top = 0;
  int32_t at = 0;  // states[top]
  int32_t token = kNoToken;
  state.states[0] = 0;
  for (;;) {
    const int32_t action = ActionOf(state, at, token);
    if (action > 0) {
      if (++top == kParserStackSize) {
        Report(state, ORL_ERR_TOCOMPLEX);
        return false;
      }
      token = kNoToken;
      at = action;
      state.states[top] = static_cast<int8_t>(at);
      state.entries[top].offset = state.tokenOffset;
      state.entries[top].length = state.tokenSpan;
      continue;
    }
    if (action == kParserAccept) {
      // A text that was cut because a token of it is too long has not been read whole, even when
      // what comes before that token is a formula.
      return state.error.id != ORL_ERR_MAXTOKEN;
    }
    const int32_t production =
        action == kParserRefuse ? kParserStates[at].defaultProduction : kReduceFirst - action;
    if (production == kParserNoProduction) {
      Report(state, ORL_ERR_SYNTAX);
      return false;
    }
    // The left side replaces the right side's first symbol.
    const ParserProduction row = kParserProductions[production];
    top -= row.length - 1;
    if (!RunAction(state, static_cast<Production>(production), &state.entries[top])) {
      return false;
    }
    at = kParserGoto[state.states[top - 1]][row.left];
    state.states[top] = static_cast<int8_t>(at);
  }
}
