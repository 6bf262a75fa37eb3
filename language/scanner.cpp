#include "language/scanner.h"

#include <algorithm>
#include <cstring>

#include "language/automaton.h"
#include "language/scan_actions.h"
#include "language/simple_tokens.h"
#include "platform/text.h"

// Simple tokens are read by plain loops; the automaton reads all others and defines the result of
// both. Bytes read beyond a token stay counted in `delivered`; the next token reads them again.

namespace {

// RunAutomaton: the longest match that is allowed could continue.
constexpr int32_t kOverflow = -1;

// The byte of the text at an index; after the last one a blank, then zeros.
char ByteAt(const ParseState &state, int32_t index) {
  return index < state.textLength ? state.text[index] : index == state.textLength ? ' ' : '\0';
}

// Runs as far as any rule can match. Records the state after each byte and returns their number.
// Stops before reading when the state has no transition.
int32_t RunAutomaton(ParseState &state) {
  const uint8_t *classOf = state.codePage == kCodePageUtf8 ? kByteClassUtf8 : kByteClass;
  uint8_t at = kStartState;
  int32_t length = 0;
  while (!kStates[at].ends) {
    if (length == kLongestMatch) {
      return kOverflow;
    }
    const int32_t index = state.position + length;
    const char byte = ByteAt(state, index);
    if (byte == '\0') {
      break;
    }
    state.delivered = std::max(state.delivered, index + 1);
    at = kNextState[at][classOf[static_cast<uint8_t>(byte)]];
    if (at == kDeadState) {
      break;
    }
    state.trail[++length] = at;
  }
  return length;
}

// The last position up to `from` that is at a mark, or 0.
int32_t LastMark(const ParseState &state, int32_t from) {
  while (from > 0 && !kStates[state.trail[from]].mark) {
    --from;
  }
  return from;
}

// Goes back from the longest match to the first whose action does not reject it.
int32_t TakeMatch(ParseState &state, int32_t longest) {
  const char *text = state.text + state.position;
  int32_t mark = longest;  // there is no mark between this position and `length`
  for (int32_t length = longest; length > 0; --length) {
    const AutomatonState &facts = kStates[state.trail[length]];
    for (int32_t i = 0; i < facts.acceptedCount; ++i) {
      const uint8_t rule = kAcceptedRules[facts.firstAccepted + i];
      int32_t taken = length;
      if ((kMarkedRules >> rule & 1U) != 0) {
        mark = LastMark(state, std::min(mark, length));
        if (mark > 0) {
          taken = mark;
        }
      }
      const int32_t token = kRuleActions[rule](state, text, taken);
      if (token == kRefused) {
        continue;
      }
      state.tokenLength = taken;
      return token;
    }
  }
  // Not reached: a line feed is white space, any other byte is a token, and neither is rejected.
  state.tokenLength = 1;
  return TOK_BAD;
}

// The span is one byte longer than the previous token, and ends with the last byte read.
int32_t EndByOverflow(ParseState &state) {
  SetError(state, ORL_ERR_MAXTOKEN, state.delivered - state.tokenLength + 1, state.tokenLength + 1);
  return TOK_END;
}

// Out of line, as few tokens need it.
[[gnu::noinline]] int32_t ScanByAutomaton(ParseState &state) {
  const int32_t longest = RunAutomaton(state);
  if (longest == kOverflow) {
    return EndByOverflow(state);
  }
  return longest == 0 ? int32_t{TOK_END} : TakeMatch(state, longest);
}

}  // namespace

int32_t ScanToken(ParseState &state) {
  if (state.error.id == ORL_ERR_MAXTOKEN) {
    return TOK_END;
  }
  for (;;) {
    state.position = std::min(state.position + state.tokenLength, state.delivered);
    int32_t token = ScanSimpleToken(state);
    if (token == kNotSimple) {
      token = ScanByAutomaton(state);
    }
    if (token != kSkipped) {
      return token;
    }
  }
}
