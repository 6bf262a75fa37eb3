// The tokens of a formula's text, for the host's messages about formulas.
#ifndef ORLI11_HOST_TOKENS_H
#define ORLI11_HOST_TOKENS_H

#include <string>
#include <string_view>
#include <vector>

enum TokenKind {
  kTokenNumber,    // digits and points; the parts of a date are numbers and operators
  kTokenName,      // a plain name or word
  kTokenQuoted,    // a name in double quotes or backticks
  kTokenString,    // a string literal with its quotes
  kTokenOperator,  // + - * / % or ||
  kTokenOpen,
  kTokenClose,
  kTokenComma,
  kTokenUnclosed,  // an unclosed quote, and the rest of the text
  kTokenOther      // a byte that has no meaning in formulas
};

struct Token {
  TokenKind kind;
  size_t offset;          // in the text
  std::string_view text;  // a part of it
};

// The tokens of the text without blanks. They point into the text.
std::vector<Token> Tokens(std::string_view text);

// The bytes of the name at the start of the text, which begins with one: plain and quoted parts
// with points between. 0 for an open quote.
size_t NameLength(std::string_view text);

// The members of a range ("a AND b") or set ("a, b"), or the whole text when it is neither.
std::vector<std::string> MembersOf(std::string_view text);

// Whether two words are equal ignoring ASCII case.
bool EqualNoCase(std::string_view left, std::string_view right);

// Whether a word is a unit of dates, such as DAYS.
bool IsUnitWord(std::string_view word);

// The value of a string literal with its quotes.
std::string Unquoted(std::string_view literal);

#endif
