/* underline.h - a text with a part of it underlined. */
#ifndef ORLI11_HOST_UNDERLINE_H
#define ORLI11_HOST_UNDERLINE_H

#include <cstdint>
#include <string>
#include <string_view>

/* The lines of `text`, each indented by two blanks, and below each line that has bytes of the span
 * a line of carets under them. A span may go one byte past the end, where a caret then stands; one
 * that goes further ends with the text. A span of no bytes marks its place with one caret, and
 * (0, 0), the place that is not known, marks nothing. */
std::string Underline(std::string_view text, int32_t offset, int32_t length);

#endif
