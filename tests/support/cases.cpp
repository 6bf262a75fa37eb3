#include "support/cases.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <utility>

#include "orli11.h"

namespace {

constexpr char kBlanks[] = " \t";
using Names = std::map<std::string, std::string>;

std::string Trimmed(const std::string &text) {
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

std::string WithNames(std::string text, const Names &names) {
  for (size_t at = 0; (at = text.find('$', at)) != std::string::npos; ++at) {
    size_t end = at + 1;
    while (end < text.size() && std::isalpha(static_cast<uint8_t>(text[end])) != 0) ++end;
    const auto found = names.find(text.substr(at + 1, end - at - 1));
    if (found != names.end()) text.replace(at, end - at, found->second);
  }
  return text;
}

std::string WithoutEscapes(const std::string &text) {
  static const std::pair<char, char> escapes[] = {{'s', ' '},  {'n', '\n'}, {'r', '\r'},
                                                  {'t', '\t'}, {'p', '|'},  {'\\', '\\'}};
  std::string bytes;
  for (size_t at = 0; at < text.size(); ++at) {
    const char next = text[at] == '\\' && at + 1 < text.size() ? text[at + 1] : '\0';
    const auto *const found = std::find_if(std::begin(escapes), std::end(escapes),
                                           [next](const auto &row) { return row.first == next; });
    if (next == 'x') {
      bytes += static_cast<char>(std::strtol(text.substr(at + 2, 2).c_str(), nullptr, 16));
      at += 3;
    } else if (found != std::end(escapes)) {
      bytes += found->second;
      ++at;
    } else {
      bytes += text[at];
    }
  }
  return bytes;
}

Case CaseOf(const std::string &text, const Names &names, const std::string &where) {
  const std::string line = text + " ";  // the last cell may be empty
  Case result = {{}, where + text};
  for (size_t at = 0; at != std::string::npos;) {
    const size_t bar = line.find(" | ", at);
    const std::string cell = line.substr(at, bar == std::string::npos ? bar : bar - at);
    result.cells.push_back(WithoutEscapes(WithNames(Trimmed(cell), names)));
    at = bar == std::string::npos ? bar : bar + 2;
  }
  return result;
}

}  // namespace

const std::string &Case::operator[](size_t cell) const {
  static const std::string none;
  return cell < cells.size() ? cells[cell] : none;
}

int32_t Case::Int(size_t cell) const {
  return static_cast<int32_t>(std::strtol((*this)[cell].c_str(), nullptr, 0));
}

std::vector<int32_t> Case::Ints(size_t cell) const {
  std::vector<int32_t> numbers;
  for (const std::string &part : PartsOf((*this)[cell], ';')) {
    numbers.push_back(static_cast<int32_t>(std::strtol(part.c_str(), nullptr, 0)));
  }
  return numbers;
}

uint16_t Case::Flags(size_t cell) const {
  static const std::map<char, int> letters = {
      {'R', ORL_FLAG_RANGES},     {'M', ORL_FLAG_MODIFIERS},         {'P', ORL_FLAG_PERCENT},
      {'C', ORL_FLAG_NO_CONCAT},  {'D', ORL_FLAG_DATE_MINUS_STRING}, {'U', ORL_FLAG_NO_DATE_UNITS},
      {'S', ORL_FLAG_STRING_PLUS}};
  int flags = 0;
  for (const char letter : (*this)[cell]) {
    if (letter != '-') flags |= letters.at(letter);
  }
  return static_cast<uint16_t>(flags);
}

std::vector<std::string> PartsOf(const std::string &cell, char separator) {
  std::vector<std::string> parts;
  for (size_t at = 0; !cell.empty() && at <= cell.size();) {
    const size_t end = std::min(cell.find(separator, at), cell.size());
    parts.push_back(Trimmed(cell.substr(at, end - at)));
    at = end + 1;
  }
  return parts;
}

std::vector<Case> CasesOf(const char *file, const char *section) {
  const std::string path = std::string("tests/") + file;
  std::ifstream stream(path);
  std::vector<Case> cases;
  Names names;
  bool here = false;
  int number = 1;
  for (std::string line; std::getline(stream, line); ++number) {
    const size_t defines = line.find(" := ");
    if (!line.empty() && line[0] == '[' && line.back() == ']') {
      here = line == "[" + std::string(section) + "]";
    } else if (!here || line.empty() || line[0] == '#') {
      continue;
    } else if (defines != std::string::npos && line.find(' ') == defines) {
      names[line.substr(0, defines)] = WithNames(Trimmed(line.substr(defines + 4)), names);
    } else {
      cases.push_back(CaseOf(line, names, path + ":" + std::to_string(number) + ": "));
    }
  }
  if (cases.empty()) {
    std::fprintf(stderr, "%s has no cases in [%s]\n", path.c_str(), section);
    std::abort();
  }
  return cases;
}
