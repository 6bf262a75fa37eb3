// Random columns of all forms with the values of their elements, and random formulas over them.
#ifndef ORLI11_TESTS_ENGINE_RANDOM_ROWS_H
#define ORLI11_TESTS_ENGINE_RANDOM_ROWS_H

#include <cstdint>
#include <deque>
#include <random>
#include <string>
#include <vector>

#include "orli11.h"

__extension__ typedef __int128 Wide;

constexpr int64_t kDay = INT64_C(86400000000);

// The values of one input item: as a column, and as values.
struct Item {
  std::string name;
  int32_t form = 0, scale = 0;
  std::string bytes;  // the elements
  std::vector<int32_t> offsets;
  std::vector<uint8_t> valid;
  bool allValid = false;
  std::vector<NumberValue> numbers;
  std::vector<std::string> texts;

  OrlColumn Column() const {
    return {name.c_str(),
            form,
            scale,
            bytes.data(),
            offsets.empty() ? nullptr : offsets.data(),
            allValid ? nullptr : valid.data()};
  }
  bool HasValue(size_t row) const { return allValid || (valid[row / 8] >> (row % 8) & 1) != 0; }
};

struct World {
  std::mt19937_64 random;
  size_t rows = 0;
  std::deque<Item> items;
  size_t current = 0;   // the row that is evaluated
  size_t counted = 0;   // calls of the routines that count them
  bool hosted = false;  // formulas call them

  explicit World(uint64_t seed) : random(seed) {}
  size_t Below(size_t end) { return random() % end; }
  bool OneIn(size_t n) { return Below(n) == 0; }
  template <class T, size_t n>
  T Any(const T (&values)[n]) {
    return values[Below(n)];
  }

  void Fill(Item &item);
  void FillNumber(Item &item);
  void FillDate(Item &item);
  void FillText(Item &item);
  NumberValue AnyNumber();
  std::string Number(int depth), Date(int depth), Text(int depth), Count();
  std::string Items(char kind), Filled(const char *pattern, int depth);
};

#endif
