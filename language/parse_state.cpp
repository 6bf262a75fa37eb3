#include "language/parse_state.h"

void ResetParseState(ParseState &state, ExprContext *context, const char *text, bool nameCheck) {
  state.context = context;
  state.textStart = text;
  state.cursor = text;
  state.blankGiven = false;
  state.nameCheckMode = nameCheck;
  state.bufferEnd = 0;
  state.tokenLength = 0;
  state.tokenOffset = 0;
  state.tokenSpan = 0;
  state.tokenValue = nullptr;
  state.dateUnit = 0;
  state.modifier = 0;
  state.badDateSeen = false;
  state.badDateOffset = 0;
  state.badDateLength = 0;
  state.root = nullptr;
  state.error = FormulaError{0, 0, 0};
}
