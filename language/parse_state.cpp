#include "language/parse_state.h"

#include <cstring>

#include "platform/text.h"

bool ResetParseState(ParseState &state, ExprContext *context, const char *text, bool nameCheck) {
  state.context = context;
  state.text = text;
  const size_t length = std::strlen(text);
  state.textLength = length < INT32_MAX ? static_cast<int32_t>(length) : 0;
  state.codePage = ActiveCodePage();
  state.nameCheckMode = nameCheck;
  state.position = 0;
  state.tokenLength = 0;
  state.delivered = 0;
  state.tokenOffset = 0;
  state.tokenSpan = 0;
  state.dateUnit = 0;
  state.modifier = 0;
  state.badDateSeen = false;
  state.badDateOffset = 0;
  state.badDateLength = 0;
  state.error = FormulaError{0, 0, 0};
  return length < INT32_MAX;
}
