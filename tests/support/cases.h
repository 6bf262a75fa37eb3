// Cases kept as text, so that they are read and extended without the code around them.
//
//   [section]
//   # a comment
//   name := text         is \$name in the cells of its section
//   cell | cell | cell   a case; cells at the end may be missing and are empty then
//
// Blanks around a cell do not count. In a cell "\s" is a blank, "\n", "\r", "\t", "\\" and "\xHH"
// are the bytes of C, and "\p" is a bar.
#ifndef ORLI11_TESTS_SUPPORT_CASES_H
#define ORLI11_TESTS_SUPPORT_CASES_H

#include <cstdint>
#include <string>
#include <vector>

struct Case {
  std::vector<std::string> cells;
  std::string where;  // "tests/folder/file.txt:12: the line", for failure messages

  const std::string &operator[](size_t cell) const;  // empty where there is none
  int32_t Int(size_t cell) const;                    // 0 where there is none
  std::vector<int32_t> Ints(size_t cell) const;      // those between semicolons
  // The flags of a context by letters: R ranges, M modifiers, P percent, U no date units, D a date
  // less a string, S strings added, C no concatenation.
  uint16_t Flags(size_t cell) const;
};

// The cases of a section of tests/FILE. Without any it ends the program.
std::vector<Case> CasesOf(const char *file, const char *section);

// The parts of a cell between separators, without blanks around them.
std::vector<std::string> PartsOf(const std::string &cell, char separator);

#endif
