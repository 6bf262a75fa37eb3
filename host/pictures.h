/* pictures.h - the pictures that stand in formulas as literals. */
#ifndef ORLI11_HOST_PICTURES_H
#define ORLI11_HOST_PICTURES_H

#include <string>
#include <vector>

/* A message for each picture in the text that is bad, with the place underlined. */
std::vector<std::string> PictureProblems(const std::string &text);

#endif
