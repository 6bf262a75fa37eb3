// Bytes of text that readers of fields and of formulas classify alike.
#ifndef ORLI11_HOST_CHARS_H
#define ORLI11_HOST_CHARS_H

#include <algorithm>
#include <string_view>

constexpr std::string_view kBlanks = " \t\r\n";

inline bool IsDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

// A byte that may begin a plain name; every byte of a character that is not ASCII counts as a
// letter.
inline bool IsNameStart(char byte) {
  const bool letter = (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
  return letter || (byte & 0x80) != 0 || byte == '#' || byte == '$' || byte == '_' || byte == '@';
}

// The two quotes of names.
inline bool IsQuote(char byte) {
  return byte == '"' || byte == '`';
}

// The part of the text without leading and trailing blanks.
inline std::string_view Trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

#endif
