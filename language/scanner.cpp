#include "language/scanner.h"

#include <algorithm>
#include <cstring>

#include "language/automaton.h"
#include "language/scan_actions.h"
#include "platform/text.h"

// The buffer always begins at the current token. What the automaton read ahead of it stays there
// for the next call, so a text is read once.

namespace {

// RunAutomaton: the buffer is full and the match could go on.
constexpr int32_t kOverflow = -1;

// The next byte of the text, one blank behind the last one, then 0 for ever.
char NextByte(ParseState &state) {
  if (*state.cursor != '\0') return *state.cursor++;
  if (state.blankGiven) return '\0';
  state.blankGiven = true;
  return ' ';
}

void DropPreviousToken(ParseState &state) {
  const int32_t dropped = std::min(state.tokenLength, state.bufferEnd);
  state.bufferEnd -= dropped;
  std::memmove(state.buffer, state.buffer + dropped, static_cast<size_t>(state.bufferEnd));
}

// Runs as far as any rule goes, reading what the buffer does not hold. Records the state behind
// each byte and returns their number. Where no byte could go on, none is read.
int32_t RunAutomaton(ParseState &state) {
  const uint8_t *classOf = ActiveCodePage() == kCodePageUtf8 ? kByteClassUtf8 : kByteClass;
  uint8_t at = kStartState;
  int32_t length = 0;
  while (!kStates[at].ends) {
    if (length == kTokenBufferSize) return kOverflow;
    if (length == state.bufferEnd) {
      const char byte = NextByte(state);
      if (byte == '\0') break;
      state.buffer[state.bufferEnd++] = byte;
    }
    at = kNextState[at][classOf[static_cast<uint8_t>(state.buffer[length])]];
    if (at == kDeadState) break;
    state.trail[++length] = at;
  }
  return length;
}

// The last place up to `from` that stands at a mark, or 0.
int32_t LastMark(const ParseState &state, int32_t from) {
  while (from > 0 && !kStates[state.trail[from]].mark) from--;
  return from;
}

// Runs the action on the first `length` bytes, terminated in place meanwhile.
int32_t RunAction(ParseState &state, uint8_t rule, int32_t length) {
  char &end = state.buffer[length];
  state.savedByte = end;
  end = '\0';
  const int32_t token = kRuleActions[rule](state, state.buffer, length);
  end = state.savedByte;
  return token;
}

// Works back from the longest match to the first whose action does not refuse it.
int32_t TakeMatch(ParseState &state, int32_t longest) {
  int32_t mark = longest;  // no mark lies between this place and `length`
  for (int32_t length = longest; length > 0; length--) {
    const AutomatonState &facts = kStates[state.trail[length]];
    for (int32_t i = 0; i < facts.acceptedCount; i++) {
      const uint8_t rule = kAcceptedRules[facts.firstAccepted + i];
      int32_t taken = length;
      if ((kMarkedRules >> rule & 1U) != 0) {
        mark = LastMark(state, std::min(mark, length));
        if (mark > 0) taken = mark;
      }
      const int32_t token = RunAction(state, rule, taken);
      if (token == kRefused) continue;
      state.tokenLength = taken;
      return token;
    }
  }
  // Not reached: a line feed is white space, any other byte a token of its own, and neither is
  // refused.
  state.tokenLength = std::min(state.bufferEnd, 1);
  return TOK_BAD;
}

// The span reaches one byte further than the token before the overlong one is long, and ends with
// the last byte read.
int32_t EndByOverflow(ParseState &state) {
  SetError(state, ORL_ERR_MAXTOKEN, BytesDelivered(state) - state.tokenLength + 1,
           state.tokenLength + 1);
  return TOK_END;
}

}  // namespace

int32_t ScanToken(ParseState &state) {
  state.tokenValue = nullptr;
  if (state.error.id == ORL_ERR_MAXTOKEN) return TOK_END;
  for (;;) {
    DropPreviousToken(state);
    const int32_t longest = RunAutomaton(state);
    if (longest == kOverflow) return EndByOverflow(state);
    if (longest == 0) return TOK_END;
    const int32_t token = TakeMatch(state, longest);
    if (token != kSkipped) return token;
  }
}

const char *TokenName(int32_t token) {
  static const char *const names[] = {"NUMBER",   "IDENT", "CALLNAME", "SYSNAME", "(formula)",
                                      "STRING",   "DATE",  "CONCAT",   "BAD",     "DATEUNIT",
                                      "MODIFIER", "NOMEM", "AND"};
  static_assert(std::size(names) == TOK_AND - TOK_NUMBER + 1);
  static const char characters[] = "%\0(\0)\0*\0+\0,\0-\0/\0<\0=\0>\0{\0}";
  if (token == TOK_END) return "END";
  if (token >= TOK_NUMBER && token <= TOK_AND) return names[token - TOK_NUMBER];
  for (const char *at = characters; *at != '\0'; at += 2) {
    if (*at == token) return at;
  }
  return "?";
}
