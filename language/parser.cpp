#include "language/parser.h"

#include "language/parser_tables.h"
#include "language/scanner.h"

namespace {

constexpr int32_t kNoToken = -1;  // no token has been read ahead

void FreeValue(ValueKind kind, void *value) {
  switch (kind) {
    case ValueKind::Block:
      WRENMemFree(value);
      break;
    case ValueKind::Node:
      ExprNodeFree(static_cast<ExprNode *>(value));
      break;
    case ValueKind::List:
      ExprListFree(static_cast<HandleArray>(value));
      break;
    case ValueKind::None:
      break;
  }
}

// The table's column of a token; kParserColumns for one that stands in no production.
constexpr int32_t kTokenCodes = 270;
struct ColumnTable {
  uint8_t columns[kTokenCodes];
};

constexpr ColumnTable MakeColumns() {
  ColumnTable table = {};
  for (uint8_t &column : table.columns) {
    column = kParserColumns;
  }
  for (int32_t i = 0; i < kParserColumns; i++) {
    table.columns[kParserTokens[i]] = static_cast<uint8_t>(i);
  }
  return table;
}

constexpr ColumnTable kColumns = MakeColumns();

int32_t ActionOn(int32_t at, int32_t token) {
  const int32_t column =
      token >= 0 && token < kTokenCodes ? kColumns.columns[token] : kParserColumns;
  return column < kParserColumns ? kParserActions[at][column] : 0;
}

// What went wrong in the automaton itself. The place is that of the token read last, counted from
// the bytes delivered, so what the scanner read ahead shifts it to the right. A text that was too
// long for the scanner stays the reason.
void Report(ParseState &state, int32_t id) {
  if (state.error.id != ORL_ERR_MAXTOKEN) {
    SetError(state, id, BytesDelivered(state) - state.tokenLength, state.tokenLength);
  }
}

// One run: the stack, and the token read ahead.
struct ParserRun {
  ParseState &state;
  int32_t top;
  int32_t token;
};

bool Push(ParserRun &run, int32_t next, const StackEntry &entry) {
  if (run.top + 1 >= kParserStackSize) {
    Report(run.state, ORL_ERR_TOCOMPLEX);
    return false;
  }
  run.top++;
  run.state.states[run.top] = static_cast<int16_t>(next);
  run.state.entries[run.top] = entry;
  return true;
}

bool Shift(ParserRun &run, int32_t next) {
  ParseState &state = run.state;
  if (!Push(run, next, {state.tokenOffset, state.tokenSpan, state.tokenValue})) {
    return false;
  }
  state.tokenValue = nullptr;
  run.token = kNoToken;
  return true;
}

// The result stands where the right side's first symbol stood, so it has that symbol's span.
bool Reduce(ParserRun &run, int32_t production) {
  ParseState &state = run.state;
  const ParserProduction row = kParserProductions[production];
  StackEntry *rhs = &state.entries[run.top - row.length + 1];
  StackEntry entry = {rhs->offset, rhs->length, nullptr};
  if (!RunAction(state, static_cast<Production>(production), rhs, &entry.value)) {
    return false;
  }
  run.top -= row.length;
  return Push(run, kParserGoto[state.states[run.top]][row.left], entry);
}

// One step: a reduction, a shift, or the end. True while there is more to do.
enum class Step : uint8_t { More, Accepted, Failed };

Step DoStep(ParserRun &run) {
  const int32_t at = run.state.states[run.top];
  const ParserState &row = kParserStateRows[at];
  int32_t action = 0;
  if (row.decides) {
    if (run.token == kNoToken) {
      run.state.tokenValue = nullptr;
      run.token = ScanToken(run.state);
    }
    action = ActionOn(at, run.token);
  }
  if (action == kParserAccept) {
    return Step::Accepted;
  }
  if (action > 0) {
    return Shift(run, action) ? Step::More : Step::Failed;
  }
  const int32_t production = action < 0 ? -action : row.defaultProduction;
  if (production == 0) {
    Report(run.state, ORL_ERR_SYNTAX);
    return Step::Failed;
  }
  return Reduce(run, production) ? Step::More : Step::Failed;
}

// Frees what stands on the stack above entry `keep` and the value of the token read ahead.
void CleanUp(ParserRun &run, int32_t keep) {
  ParseState &state = run.state;
  for (; run.top > keep; run.top--) {
    FreeValue(kParserStateRows[state.states[run.top]].value, state.entries[run.top].value);
  }
  WRENMemFree(state.tokenValue);
  state.tokenValue = nullptr;
}

}  // namespace

int32_t RunParser(ParseState &state) {
  ParserRun run = {state, 0, kNoToken};
  state.states[0] = 0;
  state.entries[0] = StackEntry{0, 0, nullptr};
  Step step = Step::More;
  while (step == Step::More) {
    step = DoStep(run);
  }
  // A text that was cut because a token of it is too long has not been read whole, even when what
  // stands before that token is a formula.
  if (step == Step::Accepted && state.error.id != ORL_ERR_MAXTOKEN) {
    return 0;
  }
  CleanUp(run, 0);
  state.root = nullptr;
  return 1;
}
