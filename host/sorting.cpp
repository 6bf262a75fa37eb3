#include "host/sorting.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string_view>

#include "host/tokens.h"
#include "host/values.h"

SortArgument SortArgumentOf(const std::string &argument) {
  const size_t colon = argument.rfind(':');
  const std::string_view order =
      colon == std::string::npos ? std::string_view() : std::string_view(argument).substr(colon);
  const bool known = order == ":asc" || order == ":desc";
  return {known ? argument.substr(0, colon) : argument, order == ":desc"};
}

std::string SortProblem(const std::string &name) {
  if (MembersOf(name).size() > 1) {
    return "--sort takes one name; give it once for each: --sort a --sort b:desc";
  }
  const size_t colon = name.rfind(':');
  const bool word = colon != std::string::npos && colon + 1 < name.size() &&
                    std::all_of(name.begin() + static_cast<std::ptrdiff_t>(colon) + 1, name.end(),
                                [](unsigned char byte) { return std::isalpha(byte) != 0; });
  return word ? "--sort: the order is asc or desc, not " + name.substr(colon + 1) : "";
}

SortValue SortValueOf(int32_t type, const void *block) {
  SortValue value;
  if (block != nullptr && type == ORL_TYPE_STRING) {
    value.text = static_cast<const char *>(block);
  } else if (block != nullptr) {
    std::memcpy(&value.number, block, sizeof value.number);
  }
  return value;
}

void SorterEnd(Sorter &sorter, Output &output) {
  const auto before = [&sorter](const Sorter::Row &left, const Sorter::Row &right) {
    for (size_t i = 0; i < sorter.keys.size(); ++i) {
      const SortKey &key = sorter.keys[i];
      const SortValue &one = left.values[i];
      const SortValue &other = right.values[i];
      const int order = key.type == ORL_TYPE_STRING
                            ? CompareTexts(one.text.c_str(), other.text.c_str())
                            : CompareValues(key.type, one.number, other.number);
      if (order != 0) {
        return key.descending ? order > 0 : order < 0;
      }
    }
    return false;
  };
  std::stable_sort(sorter.rows.begin(), sorter.rows.end(), before);
  int64_t left = sorter.limit;
  for (const Sorter::Row &row : sorter.rows) {
    if (left-- == 0) {
      break;
    }
    OutputRow(output, row.cells);
  }
  sorter.rows.clear();
}
