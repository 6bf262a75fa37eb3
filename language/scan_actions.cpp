#include "language/scan_actions.h"

#include <cstring>

#include "dates/date_arithmetic.h"
#include "dates/date_text.h"
#include "engine/context.h"
#include "engine/items.h"
#include "language/scan_checks.h"
#include "language/scanner.h"

namespace {

struct WordCode {
  const char *word;
  uint16_t code;
};

constexpr WordCode kDateUnits[] = {{"DAY", kUnitDay},       {"MONTH", kUnitMonth},
                                   {"YEAR", kUnitYear},     {"HOUR", kUnitHour},
                                   {"MINUTE", kUnitMinute}, {"SECOND", kUnitSecond}};
constexpr WordCode kModifiers[] = {{"DISTINCT", kModifierDistinct}, {"ALL", kModifierAll}};

char Capital(char byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}

// The bytes of `text` that are `word` (in capitals) in any case: all of them or 0.
size_t MatchWord(const char *text, const char *word) {
  size_t at = 0;
  while (word[at] != '\0' && Capital(text[at]) == word[at]) at++;
  return word[at] == '\0' ? at : 0;
}

uint16_t ModifierOfWord(const char *text) {
  for (const WordCode &row : kModifiers) {
    const size_t matched = MatchWord(text, row.word);
    if (matched > 0 && text[matched] == '\0') return row.code;
  }
  return 0;
}

bool HasFlag(const ParseState &state, uint16_t flag) {
  return (state.context->flags & flag) != 0;
}

// The offset in the text of the first byte in the buffer.
int32_t BufferOffset(const ParseState &state) {
  return BytesDelivered(state) - state.bufferEnd;
}

void PlaceToken(ParseState &state, int32_t index, int32_t span) {
  state.tokenOffset = BufferOffset(state) + index;
  state.tokenSpan = span;
}

// A token whose value is a copy of `length` bytes.
int32_t TextToken(ParseState &state, int32_t token, const char *text, int32_t length) {
  const auto bytes = static_cast<uint32_t>(length);
  void *copy = WRENMemAlloc(bytes + 1);
  if (copy == nullptr) return TOK_NOMEM;
  std::memcpy(copy, text, bytes);
  state.tokenValue = copy;
  return token;
}

int32_t TakeWord(ParseState &state, const char *text, int32_t length) {
  if (length == 3 && MatchWord(text, "AND") != 0) return TOK_AND;
  PlaceToken(state, 0, length);
  const uint16_t unit = HasFlag(state, ORL_FLAG_NO_DATE_UNITS) ? 0 : DateUnitOfWord(text);
  if (unit != 0) {
    state.dateUnit = unit;
    return TOK_DATEUNIT;
  }
  const uint16_t modifier = HasFlag(state, ORL_FLAG_MODIFIERS) ? ModifierOfWord(text) : 0;
  if (modifier != 0) {
    state.modifier = modifier;
    return TOK_MODIFIER;
  }
  return TextToken(state, TOK_IDENT, text, length);
}

// Two words are one name only when the host declared a keyword of that name.
int32_t TakePhrase(ParseState &state, const char *text, int32_t length) {
  if (state.nameCheckMode || KeywordDataType(state.context, text) == -1) return kRefused;
  PlaceToken(state, 0, length);
  return TextToken(state, TOK_IDENT, text, length);
}

int32_t TakeSystemName(ParseState &state, const char *text, int32_t length) {
  PlaceToken(state, 0, length);
  return TextToken(state, TOK_SYSNAME, text, length);
}

int32_t TakeName(ParseState &state, const char *text, int32_t length) {
  const int32_t answer = CheckName(text, length, false);
  if (answer == kNameRefused) return kRefused;
  if (answer >= 0) {
    PlaceToken(state, answer, 1);
    return TOK_BAD;
  }
  PlaceToken(state, 0, length);
  return TextToken(state, TOK_IDENT, text, length);
}

int32_t TakeNumber(ParseState &state, const char *text, int32_t length) {
  PlaceToken(state, 0, length);
  auto *value = static_cast<NumberValue *>(WRENMemAlloc(sizeof(NumberValue)));
  if (value == nullptr) return TOK_NOMEM;
  WRENNumFromText(value, text);
  state.tokenValue = value;
  return TOK_NUMBER;
}

// With ranges a date must convert here, so that «13/45/99» can read on as a chain of divisions.
// Without, it is taken as it stands and refused when its node is built.
int32_t TakeDate(ParseState &state, const char *text, int32_t length) {
  NumberValue unused;
  if (HasFlag(state, ORL_FLAG_RANGES) && DateFromText(&unused, text) == 0) {
    if (!state.badDateSeen) {
      state.badDateSeen = true;
      state.badDateOffset = BufferOffset(state);
      state.badDateLength = length;
    }
    return kRefused;
  }
  PlaceToken(state, 0, length);
  return TextToken(state, TOK_DATE, text, length);
}

int32_t TakeString(ParseState &state, const char *text, int32_t length) {
  if (!IsWholeLiteral(text, length)) return kRefused;
  PlaceToken(state, 0, length);
  return TextToken(state, TOK_STRING, text + 1, length - 2);
}

int32_t TakeCall(ParseState &state, const char *text, int32_t length) {
  const int32_t answer = CheckName(text, length, true);
  if (answer >= 0) {
    PlaceToken(state, answer, 1);
    return TOK_BAD;
  }
  PlaceToken(state, 0, length);
  int32_t end = length - 1;
  while (text[end - 1] == ' ') end--;
  return TextToken(state, TOK_CALLNAME, text, end);
}

int32_t TakeConcat(ParseState &state, const char * /*text*/, int32_t length) {
  PlaceToken(state, 0, length);
  return TOK_CONCAT;
}

int32_t TakeOperator(ParseState &state, const char *text, int32_t length) {
  PlaceToken(state, 0, length);
  if (*text == '%' && !HasFlag(state, ORL_FLAG_PERCENT)) return TOK_BAD;
  return *text;
}

int32_t SkipSpace(ParseState & /*state*/, const char * /*text*/, int32_t /*length*/) {
  return kSkipped;
}

int32_t TakeOther(ParseState &state, const char * /*text*/, int32_t length) {
  PlaceToken(state, 0, length);
  return TOK_BAD;
}

}  // namespace

const RuleAction kRuleActions[] = {
    TakeWord,    // RULE_WORD
    TakePhrase,  // RULE_PHRASE
    TakeSystemName,
    TakeName,      // RULE_NAME
    TakeNumber,    // RULE_NUMBER
    TakeNumber,    // RULE_EXPONENT
    TakeNumber,    // RULE_FRACTION
    TakeDate,      // RULE_MONTH_DATE
    TakeDate,      // RULE_DATE
    TakeString,    // RULE_STRING
    TakeCall,      // RULE_CALL
    TakeConcat,    // RULE_CONCAT
    TakeOperator,  // RULE_OPERATOR
    SkipSpace,     // RULE_SPACE
    TakeOther,     // RULE_OTHER
};

uint16_t DateUnitOfWord(const char *word) {
  for (const WordCode &row : kDateUnits) {
    const size_t matched = MatchWord(word, row.word);
    if (matched == 0) continue;
    const char *rest = word + matched;
    if (*rest == '\0' || (Capital(rest[0]) == 'S' && rest[1] == '\0')) return row.code;
  }
  return 0;
}
