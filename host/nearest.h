// The name that the user probably meant.
#ifndef ORLI11_HOST_NEAREST_H
#define ORLI11_HOST_NEAREST_H

#include <string>
#include <string_view>
#include <vector>

// The text with ASCII letters in lower case.
std::string Lower(std::string_view text);

// The name that is most similar to a word, in any case; empty when none is similar.
std::string Nearest(std::string_view word, const std::vector<std::string> &names);

// The end of a message about an unknown name: a line with the nearest one; empty when none is near.
std::string NearestHint(std::string_view word, const std::vector<std::string> &names);

#endif
