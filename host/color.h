// Colors on a terminal.
#ifndef ORLI11_HOST_COLOR_H
#define ORLI11_HOST_COLOR_H

#include <cstdio>
#include <string>

constexpr char kBold[] = "\033[1m";
constexpr char kNoColor[] = "\033[0m";

// Whether a stream is shown in color: it is a terminal that supports it, and NO_COLOR is not
// set.
bool ColorOn(FILE *stream);

// A message of one or more lines, with parts in color when the stream supports it: the program's
// name, lines of carets, the marks of hints.
std::string Colored(FILE *stream, const std::string &message);

#endif
