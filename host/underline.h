// A text with a part of it underlined.
#ifndef ORLI11_HOST_UNDERLINE_H
#define ORLI11_HOST_UNDERLINE_H

#include <cstdint>
#include <string>
#include <string_view>

// The lines of `text`, each indented by two blanks, and below each line that has bytes of the span
// a line of carets under them. A span may end one byte past the end, which is marked by a caret; a
// longer one ends with the text. An empty span is marked with one caret, and (0, 0), an unknown
// position, with nothing.
std::string Underline(std::string_view text, int32_t offset, int32_t length);

#endif
