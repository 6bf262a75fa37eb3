#include "host/tokens.h"

#include <orli11.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>

#include "host/chars.h"

namespace {

// The bytes of the string literal at the start, 0 when it is not closed. A quote inside is doubled
// or follows a backslash; a literal may end with a backslash when no later quote closes it.
size_t StringLength(std::string_view text) {
  enum State : uint8_t { kInside, kEscaped, kClosed, kDoubled, kQuoted, kRequoted, kStop };
  constexpr std::array<std::array<State, 3>, 6> kNext = {{// other, backslash, quote
                                                          {kInside, kEscaped, kClosed},
                                                          {kInside, kEscaped, kQuoted},
                                                          {kStop, kStop, kDoubled},
                                                          {kInside, kEscaped, kClosed},
                                                          {kInside, kEscaped, kRequoted},
                                                          {kInside, kEscaped, kRequoted}}};
  State state = kInside;
  size_t length = 0;
  for (size_t i = 1; i < text.size() && state != kStop; ++i) {
    state = kNext.at(state).at(text[i] == '\'' ? 2 : text[i] == '\\' ? 1 : 0);
    length = state == kClosed || state == kQuoted || state == kRequoted ? i + 1 : length;
  }
  return length;
}

Token TokenAt(std::string_view text, size_t offset) {
  const std::string_view rest = text.substr(offset);
  const auto token = [&](TokenKind kind, size_t length) {
    return Token{kind, offset, rest.substr(0, length)};
  };
  const char first = rest.front();
  if (first == '\'') {
    const size_t length = StringLength(rest);
    return length == 0 ? token(kTokenUnclosed, rest.size()) : token(kTokenString, length);
  }
  if (IsQuote(first) || IsNameStart(first)) {
    const size_t length = NameLength(rest);
    return length == 0 ? token(kTokenUnclosed, rest.size())
                       : token(IsNameStart(first) ? kTokenName : kTokenQuoted, length);
  }
  if (IsDigit(first) || (first == '.' && rest.size() > 1 && IsDigit(rest[1]))) {
    const size_t end = rest.find_first_not_of("0123456789.");
    return token(kTokenNumber, std::min(end, rest.size()));
  }
  if (rest.starts_with("||")) {
    return token(kTokenOperator, 2);
  }
  switch (first) {
    case '+':
    case '-':
    case '*':
    case '/':
    case '%':
      return token(kTokenOperator, 1);
    case '(':
      return token(kTokenOpen, 1);
    case ')':
      return token(kTokenClose, 1);
    case ',':
      return token(kTokenComma, 1);
    default:
      return token(kTokenOther, 1);
  }
}

// Whether a comma is part of a date: 12 Jan, 1999 or Jan 12, 1999.
bool IsInDate(const std::vector<Token> &tokens, size_t comma) {
  if (comma < 2 || comma + 1 == tokens.size() || tokens[comma + 1].kind != kTokenNumber) {
    return false;
  }
  const Token &first = tokens[comma - 2];
  const Token &second = tokens[comma - 1];
  const Token &word = first.kind == kTokenName ? first : second;
  const Token &day = first.kind == kTokenName ? second : first;
  return word.kind == kTokenName && day.kind == kTokenNumber && !EqualNoCase(word.text, "AND") &&
         word.text.size() < sizeof(ExprItem::name) && !IsUnitWord(word.text);
}

}  // namespace

size_t NameLength(std::string_view text) {
  size_t length = 0;
  for (;;) {
    if (IsQuote(text[length])) {
      const size_t closing = text.find(text[length], length + 1);
      if (closing == std::string_view::npos || closing == length + 1) {
        return 0;
      }
      length = closing + 1;
    } else {
      while (length < text.size() && (IsNameStart(text[length]) || IsDigit(text[length]))) {
        ++length;
      }
    }
    const bool more = length + 1 < text.size() && text[length] == '.' &&
                      (IsNameStart(text[length + 1]) || IsQuote(text[length + 1]));
    if (!more) {
      return length;
    }
    ++length;
  }
}

std::vector<Token> Tokens(std::string_view text) {
  std::vector<Token> tokens;
  for (size_t i = text.find_first_not_of(kBlanks); i < text.size();
       i = text.find_first_not_of(kBlanks, i)) {
    tokens.push_back(TokenAt(text, i));
    i += tokens.back().text.size();
  }
  return tokens;
}

std::vector<std::string> MembersOf(std::string_view text) {
  std::vector<std::string> members;
  const std::vector<Token> tokens = Tokens(text);
  size_t begin = 0;
  int depth = 0;
  for (size_t i = 0; i < tokens.size(); ++i) {
    const Token &token = tokens[i];
    if (token.kind == kTokenComma && IsInDate(tokens, i)) {
      continue;
    }
    depth += token.kind == kTokenOpen ? 1 : token.kind == kTokenClose ? -1 : 0;
    const bool word = token.kind == kTokenName && EqualNoCase(token.text, "AND");
    if (depth == 0 && (token.kind == kTokenComma || word)) {
      members.emplace_back(Trimmed(text.substr(begin, token.offset - begin)));
      begin = token.offset + token.text.size();
    }
  }
  members.emplace_back(Trimmed(text.substr(begin)));
  return members;
}

bool EqualNoCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](char one, char other) {
    return std::tolower(static_cast<unsigned char>(one)) ==
           std::tolower(static_cast<unsigned char>(other));
  });
}

bool IsUnitWord(std::string_view word) {
  std::array<char, sizeof(ExprItem::name) + 1> unused;
  return word.size() < sizeof(ExprItem::name) &&
         ORLInputNameIsKeyword(unused.data(), std::string(word).c_str()) == 1;
}

std::string Unquoted(std::string_view literal) {
  std::string text;
  literal = literal.substr(1, literal.size() - 2);
  for (size_t i = 0; i < literal.size(); ++i) {
    const auto quoteAt = [literal](size_t place) {
      return place < literal.size() && literal[place] == '\'';
    };
    i += literal[i] == '\\' && quoteAt(i + 1) ? 1 : 0;
    i += literal[i] == '\'' && quoteAt(i + 1) ? 1 : 0;
    text += literal[i];
  }
  return text;
}
