/* color.h - colors for people in front of a terminal. */
#ifndef ORLI11_HOST_COLOR_H
#define ORLI11_HOST_COLOR_H

#include <cstdio>
#include <string>

constexpr char kBold[] = "\033[1m";
constexpr char kNoColor[] = "\033[0m";

/* Whether a stream is shown in color: it is a terminal that can, and NO_COLOR is not set. */
bool ColorOn(FILE *stream);

/* A message of one or more lines with its parts in color when the stream has it: the program's name
 * at its start, lines of carets, the marks of hints. */
std::string Colored(FILE *stream, const std::string &message);

#endif
