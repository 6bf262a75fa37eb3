#include "language/parser.h"

#include "language/parser_tables.h"
#include "language/scanner.h"

namespace {

constexpr int32_t kNoToken = -1;  // no token has been read ahead

// The table's column of a token; kParserColumns for one that is in no production.
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
  run.token = kNoToken;
  return Push(run, next, {run.state.tokenOffset, run.state.tokenSpan, 0, 0});
}

// The result takes the place of the right side's first symbol, so it has that symbol's span.
bool Reduce(ParserRun &run, uint8_t production) {
  ParseState &state = run.state;
  const ParserProduction row = kParserProductions[production];
  const StackEntry *rhs = &state.entries[run.top - row.length + 1];
  StackEntry entry = {rhs->offset, rhs->length, 0, 0};
  if (!RunAction(state, static_cast<Production>(production), rhs, &entry)) {
    return false;
  }
  run.top -= row.length;
  return Push(run, kParserGoto[state.states[run.top]][row.left], entry);
}

// One step: a reduction, a shift, or the end. True while there is more to do.
enum class Step : uint8_t { More, Accepted, Failed };

Step StepOf(bool done) {
  return done ? Step::More : Step::Failed;
}

Step DoStep(ParserRun &run) {
  const int32_t at = run.state.states[run.top];
  const ParserState &row = kParserStates[at];
  if (row.decides) {
    if (run.token == kNoToken) {
      run.token = ScanToken(run.state);
    }
    const int32_t column = kColumns.columns[run.token];
    const int32_t action = column < kParserColumns ? kParserActions[at][column] : kParserRefuse;
    if (action > 0) {
      return StepOf(Shift(run, action));
    }
    if (action == kParserAccept) {
      return Step::Accepted;
    }
    if (action <= kReduceFirst) {
      return StepOf(Reduce(run, static_cast<uint8_t>(kReduceFirst - action)));
    }
  }
  if (row.defaultProduction == kParserNoProduction) {
    Report(run.state, ORL_ERR_SYNTAX);
    return Step::Failed;
  }
  return StepOf(Reduce(run, row.defaultProduction));
}

}  // namespace

bool RunParser(ParseState &state) {
  ParserRun run = {state, 0, kNoToken};
  state.states[0] = 0;
  state.entries[0] = StackEntry{};
  Step step = Step::More;
  while (step == Step::More) {
    step = DoStep(run);
  }
  // A text that was cut because a token of it is too long has not been read whole, even when what
  // comes before that token is a formula.
  return step == Step::Accepted && state.error.id != ORL_ERR_MAXTOKEN;
}
