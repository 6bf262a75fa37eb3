#include "language/scanner.h"

#include <algorithm>
#include <cstring>

#include "language/automaton.h"
#include "language/scan_actions.h"
#include "language/simple_tokens.h"
#include "platform/text.h"

// Simple tokens are taken by straight loops; the automaton reads all others and is the rule for
// either. What it read ahead counts as delivered and is read again with the next token.

namespace {

// RunAutomaton: the longest match there may be could go on.
constexpr int32_t kOverflow = -1;

// The byte of the text at an index, one blank after the last one, then 0 for ever.
char ByteAt(const ParseState &state, int32_t index) {
  return index < state.textLength ? state.text[index] : index == state.textLength ? ' ' : '\0';
}

// Runs as far as any rule goes. Records the state after each byte and returns their number. Where
// no byte could go on, none is read.
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

// The last place up to `from` that stands at a mark, or 0.
int32_t LastMark(const ParseState &state, int32_t from) {
  while (from > 0 && !kStates[state.trail[from]].mark) {
    from--;
  }
  return from;
}

// Works back from the longest match to the first whose action does not refuse it.
int32_t TakeMatch(ParseState &state, int32_t longest) {
  const char *text = state.text + state.position;
  int32_t mark = longest;  // no mark lies between this place and `length`
  for (int32_t length = longest; length > 0; length--) {
    const AutomatonState &facts = kStates[state.trail[length]];
    for (int32_t i = 0; i < facts.acceptedCount; i++) {
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
  // Not reached: a line feed is white space, any other byte a token of its own, and neither is
  // refused.
  state.tokenLength = 1;
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
  if (state.error.id == ORL_ERR_MAXTOKEN) {
    return TOK_END;
  }
  for (;;) {
    state.position = std::min(state.position + state.tokenLength, state.delivered);
    int32_t token = ScanSimpleToken(state);
    if (token == kNotSimple) {
      const int32_t longest = RunAutomaton(state);
      if (longest == kOverflow) {
        return EndByOverflow(state);
      }
      if (longest == 0) {
        return TOK_END;
      }
      token = TakeMatch(state, longest);
    }
    if (token != kSkipped) {
      return token;
    }
  }
}

const char *TokenName(int32_t token) {
  static const char *const names[] = {"NUMBER",   "IDENT", "CALLNAME", "SYSNAME", "(formula)",
                                      "STRING",   "DATE",  "CONCAT",   "BAD",     "DATEUNIT",
                                      "MODIFIER", "",      "AND"};
  static_assert(std::size(names) == TOK_AND - TOK_NUMBER + 1);
  static const char characters[] = "%\0(\0)\0*\0+\0,\0-\0/\0<\0=\0>\0{\0}";
  if (token == TOK_END) {
    return "END";
  }
  if (token >= TOK_NUMBER && token <= TOK_AND) {
    return names[token - TOK_NUMBER];
  }
  for (const char *at = characters; *at != '\0'; at += 2) {
    if (*at == token) {
      return at;
    }
  }
  return "?";
}
