// Every built-in function against the results of function_oracle.py, computed independently in
// Python.
#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/dates/date_support.h"
#include "tests/functions/function_call.h"
#include "tests/wren/text_model.h"
#include "wreni11.h"

namespace {

// A value of a line, whose texts are in hexadecimal.
std::string Decoded(const std::string &field) {
  if (field[0] != 't') {
    return field;
  }
  std::string value = field.substr(0, 2);
  for (size_t at = 2; at < field.size(); at += 2) {
    value += static_cast<char>(std::stoi(field.substr(at, 2), nullptr, 16));
  }
  return value;
}

TEST(FunctionOracle, EveryFunctionAgrees) {
  const PlainSettings settings;
  std::map<std::string, int> counts;
  for (std::string line : LinesOf("python3 tests/functions/function_oracle.py")) {
    line.pop_back();  // the line feed
    std::istringstream fields(line);
    std::string page, name, field;
    std::getline(fields, page, '\t');
    std::getline(fields, name, '\t');
    std::vector<std::string> args;
    while (std::getline(fields, field, '\t')) args.push_back(Decoded(field));
    const std::string expected = args.back();
    args.pop_back();
    WRENSetCodePage(std::stoi(page));
    ASSERT_EQ(Canonical(expected), Call(name, args))
        << name << testing::PrintToString(args) << " in " << page << ": " << expected;
    ASSERT_FALSE(HasFailure()) << line;
    ++counts[name];
  }
  EXPECT_EQ(FunctionRows().size(), counts.size());
  for (const auto &[name, count] : counts) EXPECT_GE(count, 2000) << name;
}

}  // namespace
