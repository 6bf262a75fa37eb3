#include "language/simple_tokens.h"

#include <algorithm>

#include "engine/context.h"
#include "language/scan_actions.h"
#include "wreni11.h"

// Each loop ends at the byte where no rule of token_rules.h can continue, which is also the last
// one that the automaton would have read. Where that depends on more than a few bytes, as for a
// possible date, the token is left to the automaton.

namespace {

enum class ByteClass : uint8_t {
  Other,
  Letter,  // ASCII only, as everywhere here
  Sign,    // continues a name
  Digit,
  Blank,
  Break,  // other white space
  Operator,
  Quote,
  High  // its meaning depends on the code page
};

struct ClassTable {
  ByteClass classes[256];
};

constexpr void SetClass(ClassTable &table, const char *bytes, ByteClass byteClass) {
  for (; *bytes != '\0'; ++bytes) {
    table.classes[static_cast<uint8_t>(*bytes)] = byteClass;
  }
}

constexpr ClassTable MakeClasses() {
  ClassTable table = {};
  SetClass(table, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", ByteClass::Letter);
  SetClass(table, "#$_@", ByteClass::Sign);
  SetClass(table, "0123456789", ByteClass::Digit);
  SetClass(table, " ", ByteClass::Blank);
  SetClass(table, "\t\n", ByteClass::Break);
  SetClass(table, "%()*+,-/<=>{}", ByteClass::Operator);
  SetClass(table, "'", ByteClass::Quote);
  for (int32_t byte = 0x80; byte < 256; ++byte) {
    table.classes[byte] = ByteClass::High;
  }
  return table;
}

constexpr ClassTable kClasses = MakeClasses();

ByteClass ClassOf(char byte) {
  return kClasses.classes[static_cast<uint8_t>(byte)];
}

bool IsDash(char byte) {
  return byte == '-' || byte == '/' || byte == '\\';
}
bool IsSeparator(char byte) {
  return IsDash(byte) || byte == '.' || byte == ':';
}

const char *SkipLetters(const char *at) {
  while (ClassOf(*at) == ByteClass::Letter) {
    ++at;
  }
  return at;
}
const char *SkipDigits(const char *at) {
  while (ClassOf(*at) == ByteClass::Digit) {
    ++at;
  }
  return at;
}
const char *SkipSpace(const char *at) {
  while (ClassOf(*at) == ByteClass::Blank || ClassOf(*at) == ByteClass::Break) {
    ++at;
  }
  return at;
}

// Sets the token from `start` to `end`, for which the scanner reads up to and including the byte at
// `last`. False when that is longer than the automaton allows.
bool Take(ParseState &state, const char *start, const char *end, const char *last) {
  if (last - start >= kLongestMatch - 1) {
    return false;
  }
  state.tokenLength = static_cast<int32_t>(end - start);
  state.delivered = std::max(state.delivered, static_cast<int32_t>(last - state.text) + 1);
  return true;
}

int32_t TakeAs(ParseState &state, int32_t token, const char *start, const char *end,
               const char *last) {
  if (!Take(state, start, end, last)) {
    return kNotSimple;
  }
  state.tokenOffset = state.position;
  state.tokenSpan = state.tokenLength;
  return token;
}

// White space with the blank after the text.
int32_t ScanSpace(ParseState &state, const char *start) {
  const char *end = SkipSpace(start);
  const bool atEnd = *end == '\0';
  return Take(state, start, atEnd ? end + 1 : end, end) ? kSkipped : kNotSimple;
}

int32_t ScanName(ParseState &state, const char *start) {
  const char *end = SkipLetters(start);
  const bool isWord = ClassOf(*end) != ByteClass::Sign && ClassOf(*end) != ByteClass::Digit;
  while (ClassOf(*end) == ByteClass::Letter || ClassOf(*end) == ByteClass::Sign ||
         ClassOf(*end) == ByteClass::Digit) {
    ++end;
  }
  const char *last = end;
  while (*last == ' ') {
    ++last;
  }
  const bool blanks = last != end;
  switch (ClassOf(*last)) {
    case ByteClass::High:
    case ByteClass::Break:
    case ByteClass::Letter:  // may be a keyword of two words, or a date
    case ByteClass::Digit:
      return kNotSimple;
    default:
      break;
  }
  if (*last == '.' && !blanks) {
    return kNotSimple;
  }
  if (*last == '(') {
    return TakeAs(state, TOK_CALLNAME, start, last + 1, last);
  }
  if (!isWord) {
    return TakeAs(state, TOK_IDENT, start, end, last);
  }
  return Take(state, start, end, last) ? TakeWord(state, start, state.tokenLength) : kNotSimple;
}

// The last byte that is read for a number that ends at `end`, or null where it may be part of a
// date, a time or a number with exponent.
const char *LastReadForNumber(const char *end, bool fraction) {
  switch (ClassOf(*end)) {
    case ByteClass::Letter:
      return nullptr;
    case ByteClass::Blank:
    case ByteClass::Break: {
      const char *last = SkipSpace(end);
      return ClassOf(*last) == ByteClass::Letter ? nullptr : last;
    }
    default:
      break;
  }
  if (*end == '.' || *end == ':') {
    return nullptr;
  }
  if (!IsDash(*end)) {
    return end;
  }
  const char *next = end + 1;
  if (ClassOf(*next) == ByteClass::Digit) {
    return nullptr;
  }
  if (fraction || ClassOf(*next) != ByteClass::Letter) {
    return next;
  }
  const char *last = SkipLetters(next);
  if (!IsSeparator(*last)) {
    return last;
  }
  return ClassOf(last[1]) == ByteClass::Digit ? nullptr : last + 1;
}

int32_t ScanNumber(ParseState &state, const char *start) {
  const char *end = SkipDigits(start);
  const bool fraction = *end == '.' && ClassOf(end[1]) == ByteClass::Digit;
  if (fraction) {
    end = SkipDigits(end + 1);
  }
  const char *last = LastReadForNumber(end, fraction);
  return last == nullptr ? kNotSimple : TakeAs(state, TOK_NUMBER, start, end, last);
}

int32_t ScanString(ParseState &state, const char *start) {
  const char *at = start + 1;
  bool high = false;
  while (*at != '\'' && *at != '\\' && *at != '\0') {
    high = high || ClassOf(*at) == ByteClass::High;
    ++at;
  }
  if (*at != '\'' || at[1] == '\'' || (high && WRENIsDoubleByte() != 0)) {
    return kNotSimple;
  }
  return TakeAs(state, TOK_STRING, start, at + 1, at + 1);
}

// The blank that is read after the text, then the end.
int32_t ScanEnd(ParseState &state) {
  if (state.position > state.textLength) {
    return TOK_END;
  }
  state.tokenLength = 1;
  state.delivered = state.textLength + 1;
  return kSkipped;
}

int32_t ScanOperator(ParseState &state, const char *start) {
  const bool known = *start != '%' || (state.context->flags & ORL_FLAG_PERCENT) != 0;
  return TakeAs(state, known ? *start : int32_t{TOK_BAD}, start, start + 1, start);
}

}  // namespace

int32_t ScanSimpleToken(ParseState &state) {
  if (state.position >= state.textLength) {
    return ScanEnd(state);
  }
  const char *start = state.text + state.position;
  switch (ClassOf(*start)) {
    case ByteClass::Letter:
      return ScanName(state, start);
    case ByteClass::Sign:
      return *start == '@' ? kNotSimple : ScanName(state, start);
    case ByteClass::Digit:
      return ScanNumber(state, start);
    case ByteClass::Blank:
    case ByteClass::Break:
      return ScanSpace(state, start);
    case ByteClass::Operator:
      return ScanOperator(state, start);
    case ByteClass::Quote:
      return ScanString(state, start);
    default:
      return kNotSimple;
  }
}

bool IsPlainName(std::string_view text) {
  if (text.empty() || text.size() >= kLongestMatch - 1 || ClassOf(text[0]) != ByteClass::Letter) {
    return false;
  }
  const auto bit = [](ByteClass byteClass) { return 1U << static_cast<uint32_t>(byteClass); };
  const uint32_t letters = bit(ByteClass::Letter);
  const uint32_t allowed = letters | bit(ByteClass::Sign) | bit(ByteClass::Digit);
  uint32_t seen = 0;
  for (const char byte : text) {
    seen |= bit(ClassOf(byte));
  }
  return (seen & ~allowed) == 0 && (seen != letters || !MayBeReserved(text));
}
