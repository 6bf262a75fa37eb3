#include "language/scan_actions.h"

#include <algorithm>

#include "dates/date_arithmetic.h"
#include "engine/context.h"
#include "engine/items.h"
#include "language/literals.h"
#include "language/scan_checks.h"
#include "language/scanner.h"

namespace {

struct WordCode {
  std::string_view word;
  uint16_t code;
};

constexpr WordCode kDateUnits[] = {{"DAY", kUnitDay},       {"MONTH", kUnitMonth},
                                   {"YEAR", kUnitYear},     {"HOUR", kUnitHour},
                                   {"MINUTE", kUnitMinute}, {"SECOND", kUnitSecond}};
constexpr size_t kLongestUnit = sizeof "MINUTES" - 1;
constexpr WordCode kModifiers[] = {{"DISTINCT", kModifierDistinct}, {"ALL", kModifierAll}};

char Capital(char byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}

// True when the text is `word` (in capitals) in any case.
bool IsWord(std::string_view text, std::string_view word) {
  return text.size() == word.size() &&
         std::equal(text.begin(), text.end(), word.begin(),
                    [](char byte, char capital) { return Capital(byte) == capital; });
}

// A set of ASCII letters of any case, to exclude most words without a comparison.
constexpr uint32_t LetterBit(char letter) {
  return uint32_t{1} << (letter & 31);
}
constexpr uint32_t LetterSet(std::string_view letters) {
  uint32_t set = 0;
  for (const char letter : letters) {
    set |= LetterBit(letter);
  }
  return set;
}
constexpr uint32_t kFirstOfUnits = LetterSet("DMYHS");
constexpr uint32_t kFirstOfReserved = kFirstOfUnits | LetterSet("A");  // DISTINCT, ALL, AND
constexpr size_t kLongestReserved = sizeof "DISTINCT" - 1;

uint16_t ModifierOfWord(std::string_view text) {
  for (const WordCode &row : kModifiers) {
    if (IsWord(text, row.word)) {
      return row.code;
    }
  }
  return 0;
}

bool HasFlag(const ParseState &state, uint16_t flag) {
  return (state.context->flags & flag) != 0;
}

std::string_view Match(const char *text, int32_t length) {
  return {text, static_cast<size_t>(length)};
}

// Sets the token's offset to `index` bytes after the start of the match.
int32_t TakeAs(ParseState &state, int32_t token, int32_t index, int32_t span) {
  state.tokenOffset = state.position + index;
  state.tokenSpan = span;
  return token;
}

// Two words are one name only when the host declared a keyword of that name.
int32_t TakePhrase(ParseState &state, const char *text, int32_t length) {
  const bool refused =
      state.nameCheckMode || KeywordDataType(state.context, Match(text, length)) == -1;
  return refused ? int32_t{kRefused} : TakeAs(state, TOK_IDENT, 0, length);
}

int32_t TakeSystemName(ParseState &state, const char * /*text*/, int32_t length) {
  return TakeAs(state, TOK_SYSNAME, 0, length);
}

int32_t TakeName(ParseState &state, const char *text, int32_t length) {
  const int32_t badByte = CheckName(text, length, false);
  if (badByte == kNameRefused) {
    return kRefused;
  }
  return badByte >= 0 ? TakeAs(state, TOK_BAD, badByte, 1) : TakeAs(state, TOK_IDENT, 0, length);
}

int32_t TakeNumber(ParseState &state, const char * /*text*/, int32_t length) {
  return TakeAs(state, TOK_NUMBER, 0, length);
}

// With ranges a date must be valid here, so that «13/45/99» can be read as a chain of divisions.
// Without, it is taken as it is and rejected when its node is built.
int32_t TakeDate(ParseState &state, const char *text, int32_t length) {
  if (HasFlag(state, ORL_FLAG_RANGES) && !IsDateLiteral(Match(text, length))) {
    if (!state.badDateSeen) {
      state.badDateSeen = true;
      state.badDateOffset = state.position;
      state.badDateLength = length;
    }
    return kRefused;
  }
  return TakeAs(state, TOK_DATE, 0, length);
}

int32_t TakeString(ParseState &state, const char *text, int32_t length) {
  return IsWholeLiteral(text, length) ? TakeAs(state, TOK_STRING, 0, length) : int32_t{kRefused};
}

int32_t TakeCall(ParseState &state, const char *text, int32_t length) {
  const int32_t badByte = CheckName(text, length, true);
  return badByte >= 0 ? TakeAs(state, TOK_BAD, badByte, 1) : TakeAs(state, TOK_CALLNAME, 0, length);
}

int32_t TakeConcat(ParseState &state, const char * /*text*/, int32_t length) {
  return TakeAs(state, TOK_CONCAT, 0, length);
}

int32_t TakeOperator(ParseState &state, const char *text, int32_t length) {
  const bool known = *text != '%' || HasFlag(state, ORL_FLAG_PERCENT);
  return TakeAs(state, known ? *text : int32_t{TOK_BAD}, 0, length);
}

int32_t SkipSpace(ParseState & /*state*/, const char * /*text*/, int32_t /*length*/) {
  return kSkipped;
}

int32_t TakeOther(ParseState &state, const char * /*text*/, int32_t length) {
  return TakeAs(state, TOK_BAD, 0, length);
}

}  // namespace

bool MayBeReserved(std::string_view word) {
  return word.size() <= kLongestReserved && (kFirstOfReserved & LetterBit(word[0])) != 0;
}

int32_t TakeWord(ParseState &state, const char *text, int32_t length) {
  const std::string_view word = Match(text, length);
  if (!MayBeReserved(word)) {
    return TakeAs(state, TOK_IDENT, 0, length);
  }
  if (IsWord(word, "AND")) {
    return TOK_AND;
  }
  const uint16_t unit = HasFlag(state, ORL_FLAG_NO_DATE_UNITS) ? 0 : DateUnitOfWord(word);
  if (unit != 0) {
    state.dateUnit = unit;
    return TakeAs(state, TOK_DATEUNIT, 0, length);
  }
  const uint16_t modifier = HasFlag(state, ORL_FLAG_MODIFIERS) ? ModifierOfWord(word) : 0;
  if (modifier != 0) {
    state.modifier = modifier;
    return TakeAs(state, TOK_MODIFIER, 0, length);
  }
  return TakeAs(state, TOK_IDENT, 0, length);
}

const RuleAction kRuleActions[] = {
    TakeWord,    // kRuleWord
    TakePhrase,  // kRulePhrase
    TakeSystemName,
    TakeName,      // kRuleName
    TakeNumber,    // kRuleNumber
    TakeNumber,    // kRuleExponent
    TakeNumber,    // kRuleFraction
    TakeDate,      // kRuleMonthDate
    TakeDate,      // kRuleDate
    TakeString,    // kRuleString
    TakeCall,      // kRuleCall
    TakeConcat,    // kRuleConcat
    TakeOperator,  // kRuleOperator
    SkipSpace,     // kRuleSpace
    TakeOther,     // kRuleOther
};

uint16_t DateUnitOfWord(std::string_view word) {
  if (word.empty() || word.size() > kLongestUnit || (kFirstOfUnits & LetterBit(word[0])) == 0) {
    return 0;
  }
  for (const WordCode &row : kDateUnits) {
    const std::string_view unit = row.word;
    const bool plural = word.size() == unit.size() + 1 && Capital(word.back()) == 'S';
    if (IsWord(plural ? word.substr(0, unit.size()) : word, unit)) {
      return row.code;
    }
  }
  return 0;
}
