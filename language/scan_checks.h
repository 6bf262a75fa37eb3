// Checks of what the automaton cannot know: which bytes the active code page has letters and
// double-byte characters for.
#ifndef ORLI11_LANGUAGE_SCAN_CHECKS_H
#define ORLI11_LANGUAGE_SCAN_CHECKS_H

#include <cstdint>

// Results of CheckName besides the index of the first bad byte.
enum : int32_t {
  kNameGood = -1,
  kNameRefused = -2  // the match extends beyond the name
};

// Checks the `length` bytes of a name, quoted segments and points included. With `call` the text is
// the opening of a call: blanks and a parenthesis end it. Returns the index of the first bad byte
// or one of the results above.
int32_t CheckName(const char *text, int32_t length, bool call);

// True when the `length` bytes, quotes included, are one whole literal.
bool IsWholeLiteral(const char *text, int32_t length);

#endif
