/* nearest.h - the name that somebody probably meant. */
#ifndef ORLI11_HOST_NEAREST_H
#define ORLI11_HOST_NEAREST_H

#include <string>
#include <string_view>
#include <vector>

/* The text with small letters for the capitals of ASCII. */
std::string Lower(std::string_view text);

/* The name that is nearest to a word, in whatever case; empty when none is near. */
std::string Nearest(std::string_view word, const std::vector<std::string> &names);

/* The end of a message about an unknown name: a line with the nearest one; empty when none is near.
 */
std::string NearestHint(std::string_view word, const std::vector<std::string> &names);

#endif
