// The string table: every text of the module for users, and the rows of the function table.
#ifndef ORLI11_RESOURCES_STRING_TABLE_H
#define ORLI11_RESOURCES_STRING_TABLE_H

#include <cstdint>
#include <span>

struct StringRow {
  uint32_t id;
  const char *text;  // ASCII, so that it reads the same in every code page
};

// All rows, in ascending order of their ids.
std::span<const StringRow> StringTable();

// The text of row `id`, null when there is no such row.
const char *StringText(uint32_t id);

#endif
