#include "tests/functions/function_call.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <sstream>

#include "functions/registry.h"
#include "resources/string_ids.h"
#include "resources/string_table.h"
#include "tests/dates/date_support.h"

const std::vector<BuiltInFunction> &FunctionRows() {
  static const std::vector<BuiltInFunction> rows = [] {
    std::vector<BuiltInFunction> made;
    for (uint32_t id = kStringFirstFunction; id <= kStringLastFunction; ++id) {
      std::istringstream fields(StringText(id));
      std::string name, type, count, types;
      std::getline(fields, name, ',');
      std::getline(fields, type, ',');
      std::getline(fields, count, ',');
      for (; !type.empty(); std::getline(fields, type, ',')) {
        types += "ndt"[std::stoi(type)];
        type.clear();
      }
      EXPECT_EQ(types.size(), std::stoul(count) + 1) << name;
      const auto routine = reinterpret_cast<OrlFunctionProc>(RoutineByName(name.c_str()));
      made.push_back({name.substr(3), routine, types});
    }
    return made;
  }();
  return rows;
}

const BuiltInFunction &FunctionRowOf(const std::string &name) {
  return *std::find_if(FunctionRows().begin(), FunctionRows().end(),
                       [&](const BuiltInFunction &row) { return row.name == name; });
}

std::unique_ptr<char[]> ExactCopy(const std::string &bytes) {
  auto copy = std::make_unique<char[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), copy.get());
  return copy;
}

std::string BytesOf(const std::string &value) {
  if (value[0] == 't') {
    return value.substr(2) + '\0';
  }
  NumberValue number = {};
  if (value[0] == 'd') {
    number = Stored(value.substr(2));
  } else {
    WRENNumFromText(&number, value.c_str() + 2);
  }
  return {reinterpret_cast<const char *>(&number), sizeof number};
}

namespace {

std::string ValueText(char type, const void *block) {
  if (type == 't') {
    return std::string("t:") + static_cast<const char *>(block);
  }
  NumberValue value;
  memcpy(&value, block, sizeof value);
  if (type == 'd') {
    return "d:" + Iso(value);
  }
  double number = 0;
  WRENNumToDouble(&value, &number);
  std::ostringstream text;
  text << "n:" << number << std::hex;
  for (const uint8_t byte : value.payload) {
    text << (&byte == value.payload ? " bytes " : " ") << int{byte};
  }
  return value.length == 0 ? "n:null" : text.str();
}

}  // namespace

std::string Canonical(const std::string &value) {
  return value == "refused" ? value : ValueText(value[0], BytesOf(value).c_str());
}

std::string Call(const std::string &name, const std::vector<std::string> &args) {
  const BuiltInFunction &row = FunctionRowOf(name);
  std::vector<std::unique_ptr<char[]>> owned;
  std::vector<void *> entries;
  for (const std::string &arg : args) {
    owned.push_back(arg == "-" ? nullptr : ExactCopy(BytesOf(arg)));
    entries.push_back(owned.back().get());
  }
  const int32_t size = row.types[0] == 't' ? 50 : 13;
  void *block = WRENMemAlloc(static_cast<uint32_t>(size));
  memset(block, 0xEE, static_cast<size_t>(size));  // what was there must not show through
  const int32_t done = row.routine(nullptr, nullptr, size, &block, row.name.c_str(),
                                   args.empty() ? nullptr : entries.data());
  EXPECT_TRUE(done == 1 || WRENMemSize(block) == static_cast<uint32_t>(size));
  EXPECT_TRUE(done == 0 || row.types[0] != 't' || memchr(block, 0, WRENMemSize(block)) != nullptr);
  std::string result = done == 0 ? "refused" : ValueText(row.types[0], block);
  WRENMemFree(block);
  return result;
}
