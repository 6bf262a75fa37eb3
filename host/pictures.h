// Pictures in formulas that are literals.
#ifndef ORLI11_HOST_PICTURES_H
#define ORLI11_HOST_PICTURES_H

#include <string>
#include <vector>

// A message for each invalid picture in the text, with its position underlined.
std::vector<std::string> PictureProblems(const std::string &text);

#endif
