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

bool Shift(ParserRun &run, int32_t next) {
  ParseState &state = run.state;
  if (run.top + 1 >= kParserStackSize) {
    Report(state, ORL_ERR_TOCOMPLEX);
    return false;
  }
  run.top++;
  run.token = kNoToken;
  state.states[run.top] = static_cast<int16_t>(next);
  state.entries[run.top].offset = state.tokenOffset;
  state.entries[run.top].length = state.tokenSpan;
  return true;
}

// The left side takes the place of the right side's first symbol.
bool Reduce(ParserRun &run, uint8_t production) {
  ParseState &state = run.state;
  const ParserProduction row = kParserProductions[production];
  run.top -= row.length - 1;
  if (!RunAction(state, static_cast<Production>(production), &state.entries[run.top])) {
    return false;
  }
  const int32_t below = state.states[run.top - 1];
  state.states[run.top] = kParserGoto[below][row.left];
  return true;
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
  Step step = Step::More;
  while (step == Step::More) {
    step = DoStep(run);
  }
  // A text that was cut because a token of it is too long has not been read whole, even when what
  // comes before that token is a formula.
  return step == Step::Accepted && state.error.id != ORL_ERR_MAXTOKEN;
}
