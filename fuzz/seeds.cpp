// fuzz_seeds FOLDER PAGE FORMULAS - writes the seeds of the fuzz targets: blocks of random contexts
// in all versions, the formulas of the page of functions and of a file with one in each line, and
// the words of the language.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "fuzz/subject.h"
#include "persistence/block_format.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> formulas;  // those of formulas.txt, and of the page

std::mt19937 randomBits(1);  // the same seeds on every machine

size_t Below(size_t count) {
  return randomBits() % count;
}

void WriteFile(const fs::path &folder, size_t number, const std::string &settings,
               const std::string &bytes) {
  fs::create_directories(folder);
  std::ofstream(folder / std::to_string(number), std::ios::binary) << settings << bytes;
}

// A context of a few items and formulas that refer to each other, also to later ones.
Subject RandomSubject() {
  Subject subject = FunctionSubject(ORL_FLAG_RANGES | ORL_FLAG_MODIFIERS, true);
  EC ec = subject.get();
  const char *const names[] = {"Amount", "Tax", "Days", "Text", "Start", "\"a, b\"", "Null"};
  for (size_t i = Below(5); i > 0; --i) {
    ExprItem item = {};
    item.kind = ORL_INPUT;
    item.dataType = static_cast<int16_t>(Below(4));
    item.routineName = Below(4) != 0 ? "GetValue" : nullptr;
    std::snprintf(item.name, sizeof item.name, "%s", names[Below(std::size(names))]);
    ORLAddExpressionItem(ec, &item);
  }
  for (size_t i = Below(3); i > 0; --i) {
    ORLSetOperatorCallback(ec, static_cast<int16_t>(Below(5)), static_cast<int16_t>(Below(4)),
                           "Operate");
  }
  const size_t count = 1 + Below(6);
  FormulaError error = {};
  uint16_t type = 0;
  for (size_t i = 0; i < count; ++i) {
    ORLParseString(ec, "1", ("F" + std::to_string(i)).c_str(), &error, &type);
  }
  for (size_t tries = 4 * count; tries > 0; --tries) {
    const std::string name = "F" + std::to_string(Below(count));
    const std::string other = "F" + std::to_string(Below(count)) + "() + 1";
    const std::string &text = Below(2) != 0 ? other : formulas[Below(formulas.size())];
    ORLParseFormula(ec, ORLHEXPFromName(ec, name.c_str()), text.c_str(), name.c_str(), &error,
                    &type);
  }
  return subject;
}

// The block in version 0 or 1: its input rows are shorter, the rest is as it was.
std::string InOldVersion(const std::string &block, int version) {
  size_t at = 1;
  for (int i = 0; i < 20; ++i) {
    at = block.find('\0', at) + 1;
  }
  std::string old = version == kVersion0 ? block.substr(1, at - 1) : '\1' + block.substr(1, at - 1);
  if (at == block.size() || static_cast<uint8_t>(block[at]) != ORL_BLOCK_TAG_INPUTS) {
    return old + block.substr(at);
  }
  uint16_t count = 0;
  std::memcpy(&count, &block[at + 2], sizeof count);
  old += block.substr(at, ORL_BLOCK_HEADER_SIZE);
  at += ORL_BLOCK_HEADER_SIZE;
  for (int i = 0; i < count; ++i) {
    OrlStoredInput row;
    std::memcpy(&row, &block[at], sizeof row);
    StoredOldInput stored = {row.kind, row.dataType, {}, {}, 0, 0, 0, row.itemFlags};
    std::memcpy(stored.name, row.name, sizeof stored.name);
    old.append(reinterpret_cast<const char *>(&stored),
               version == kVersion0 ? kOldestInputSize : sizeof stored);
    const size_t end = block.find('\0', at + sizeof row) + 1;
    old += block.substr(at + sizeof row, end - at - sizeof row);
    at = end;
  }
  return old + block.substr(at);
}

// Takes the examples in the tables of a page: | `formula` | ...
void TakeExamples(const char *page) {
  std::ifstream stream(page);
  for (std::string line; std::getline(stream, line);) {
    const size_t end = line.find("` |", 3);
    if (line.starts_with("| `") && end != std::string::npos) {
      formulas.push_back(line.substr(3, end - 3));
      for (size_t bar; (bar = formulas.back().find("\\|")) != std::string::npos;) {
        formulas.back().erase(bar, 1);
      }
    }
  }
}

void WriteWords(const fs::path &file) {
  std::ofstream words(file);
  const auto write = [](EC, const char *name, void *user) {
    if (std::strpbrk(name, "\"\\") == nullptr) {
      *static_cast<std::ofstream *>(user) << '"' << name << "\"\n";
    }
  };
  const Subject subject = ItemSubject(0);
  for (const int32_t kind : {ORL_FUNCTION, ORL_INPUT, ORL_KEYWORD}) {
    ORLEnumExpItems(subject.get(), kind, write, &words);
  }
  for (const char *word : {" DAYS", " MONTHS", " YEARS", " HOURS", " MINUTES", " SECONDS", " AND ",
                           "DISTINCT ", "ALL ", "||", "Net()", "2012-01-31", "31 Jan 2012"}) {
    write(nullptr, word, &words);
  }
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: fuzz_seeds FOLDER PAGE FORMULAS\n");
    return 2;
  }
  const fs::path folder = argv[1];
  std::ifstream stream(argv[3]);
  for (std::string line; std::getline(stream, line);) {
    formulas.push_back(line);
  }
  formulas.emplace_back("\x83\x7C + 'a");  // a character of two bytes
  for (size_t i = 0; i < 200; ++i) {
    const Subject subject = RandomSubject();
    const std::string block = WriteBlock(subject.get());
    const int version = static_cast<int>(i % 4);
    const size_t use = Below(4) * kLookup | (i % 8 == 7 ? kNoFormulas : 0) |
                       (version == kVersion2 ? kPatchVersion | int{kVersion2} : 0);
    const std::string settings = {static_cast<char>(Below(4)), static_cast<char>(use)};
    WriteFile(folder / "block_reader", i, settings,
              version < 2 ? InOldVersion(block, version) : block);
  }
  TakeExamples(argv[2]);
  for (size_t i = 0; i < formulas.size(); ++i) {
    const std::string settings = {static_cast<char>(Below(4)),
                                  static_cast<char>(ORL_FLAG_RANGES | ORL_FLAG_MODIFIERS)};
    WriteFile(folder / "formula", i, settings, formulas[i]);
  }
  WriteWords(folder / "formula.dict");
  return 0;
}
