// Text as a terminal shows it: the bytes of each character and its width.
#ifndef ORLI11_HOST_DISPLAY_H
#define ORLI11_HOST_DISPLAY_H

#include <string>
#include <string_view>

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // the replacement character

// One character of a text. A control character is shown by its symbol and a byte that is not UTF-8
// by the replacement character, so that no text can control the terminal.
struct DisplayCharacter {
  std::string shown;
  size_t bytes = 0;  // taken from the text, at least 1
  size_t width = 0;  // columns on the terminal: 0, 1 or 2
};

// Initialises the process for the two routines below. Numbers and dates are not affected.
void DisplayStart();

// Whether all bytes are text in UTF-8.
bool IsUtf8(std::string_view text);
// The character at the start of a text that is not empty.
DisplayCharacter DisplayNext(std::string_view text);
// The bytes of the character at the start of a text that is not empty; 0 when they are not UTF-8.
size_t DisplayCharacterBytes(std::string_view text);
// The whole text on one line, with its width, truncated to at most `most` columns.
std::string DisplayLine(std::string_view text, size_t most, size_t &width);
// The text on one line as messages show it, truncated when it is very long.
std::string DisplayName(std::string_view text);

#endif
