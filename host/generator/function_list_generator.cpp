// Generates the list that `orli functions` prints from the pages of the functions: heading, first
// line and the rest of each. Run by the build with the file to write, the page of the built-in
// functions and that of those for databases; a page that is not of this form ends the build with
// the offending line.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

const std::string kMark = "### ";

// The width that fits 80 columns after the indent of the program's output.
constexpr size_t kMostColumns = 76;

[[noreturn]] void GiveUp(const char *file, size_t line, const char *message) {
  std::fprintf(stderr, "%s:%zu: error: %s\n", file, line, message);
  std::exit(1);
}

std::vector<std::string> LinesOf(const char *file) {
  std::ifstream stream(file);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  if (lines.empty()) {
    GiveUp(file, 1, "the page cannot be read or is empty");
  }
  return lines;
}

// Removes a text from the start of the rest.
bool Take(std::string_view &rest, std::string_view text) {
  const bool there = rest.starts_with(text);
  rest.remove_prefix(there ? text.size() : 0);
  return there;
}

bool IsNameByte(char byte) {
  return std::isalnum(static_cast<unsigned char>(byte)) != 0 || byte == '_';
}

// Removes a word whose first letter is one of these.
bool TakeWord(std::string_view &rest, char first, char last) {
  const bool good = !rest.empty() && rest.front() >= first && rest.front() <= last;
  while (!rest.empty() && IsNameByte(rest.front())) {
    rest.remove_prefix(1);
  }
  return good;
}

bool TakeType(std::string_view &rest) {
  return Take(rest, "Number") || Take(rest, "Date") || Take(rest, "String");
}

// Name(argument: Type, ...): Type
bool IsSignature(std::string_view rest) {
  bool good = TakeWord(rest, 'A', 'Z') && Take(rest, "(");
  for (bool more = good && !rest.starts_with(')'); more; more = good && Take(rest, ", ")) {
    good = TakeWord(rest, 'a', 'z') && Take(rest, ": ") && TakeType(rest);
  }
  return good && Take(rest, "): ") && TakeType(rest) && rest.empty();
}

// The error of a line in the place of a description, or null.
const char *FaultOf(const std::string &description) {
  if (description.empty() || description.front() == '#' || description.front() == '|') {
    return "the heading of a function must be followed by a blank line and a line of description";
  }
  if (description.back() != '.') {
    return "the description of a function is one line that ends with a full stop";
  }
  for (const char byte : description) {
    // Then each byte is one column.
    if (byte < ' ' || byte > '~') {
      return "the description of a function is plain ASCII";
    }
  }
  return description.size() > kMostColumns ? "the description of a function is too long" : nullptr;
}

std::string Quoted(const std::string &text) {
  std::string quoted = "\"";
  for (const char byte : text) {
    if (byte == '\n') {
      quoted += "\\n\"\n   \"";
      continue;
    }
    if (byte == '"' || byte == '\\') {
      quoted += '\\';
    }
    quoted += byte;
  }
  return quoted + "\"";
}

// A line without Markdown: [text](place) is text, `code` is code, \| is |.
std::string Plain(std::string_view line) {
  std::string plain;
  for (size_t i = 0; i < line.size(); ++i) {
    const size_t middle = line.find("](", i);
    if (line[i] == '[' && middle != std::string_view::npos) {
      plain += line.substr(i + 1, middle - i - 1);
      i = line.find(')', middle);
    } else if (line[i] == '\\' && i + 1 < line.size() && line[i + 1] == '|') {
      plain += line[++i];
    } else if (line[i] != '`' && !line.substr(i).starts_with("**")) {
      plain += line[i];
    } else {
      i += line[i] == '*' ? 1 : 0;
    }
  }
  return plain;
}

// The two cells of a row of examples.
struct Example {
  std::string formula, result;
};

bool IsExample(const std::string &line, Example &example) {
  const size_t middle = line.find("` | `");
  if (!line.starts_with("| `") || middle == std::string::npos) {
    return false;
  }
  example = {Plain(line.substr(3, middle - 3)),
             Plain(line.substr(middle + 5, line.rfind('`') - middle - 5))};
  return true;
}

// The text after the description of a function, up to the next heading.
std::string RestOf(const std::vector<std::string> &lines, size_t first) {
  std::string rest;
  std::vector<Example> examples;
  for (size_t i = first; i < lines.size() && !lines[i].starts_with("#"); ++i) {
    Example example;
    if (IsExample(lines[i], example)) {
      examples.push_back(example);
    } else if (!lines[i].starts_with("|")) {
      rest += Plain(lines[i]) + "\n";
    }
  }
  rest.erase(rest.find_last_not_of('\n') + 1);
  rest += rest.empty() ? "" : "\n\n";
  for (const Example &example : examples) {
    rest += "    " + example.formula + "  gives  " + example.result + "\n";
  }
  return rest;
}

// The rows of the list for each function of the page: signature, description, the rest, whether it
// is for databases.
std::string ListOf(const char *page, bool databases) {
  const std::vector<std::string> lines = LinesOf(page);
  const auto lineAt = [&lines](size_t i) { return i < lines.size() ? lines[i] : std::string(); };
  std::set<std::string> names;
  std::string list;
  for (size_t i = 0; i < lines.size(); ++i) {
    if (!lines[i].starts_with(kMark)) {
      continue;
    }
    const std::string signature = lines[i].substr(kMark.size());
    if (!IsSignature(signature)) {
      GiveUp(page, i + 1, "the heading is not of the form Name(argument: Type, ...): Type");
    }
    if (!names.insert(signature.substr(0, signature.find('('))).second) {
      GiveUp(page, i + 1, "the page has this function twice");
    }
    const std::string description = lineAt(i + 1).empty() ? lineAt(i + 2) : std::string();
    const char *fault = FaultOf(description);
    if (fault != nullptr || !lineAt(i + 3).empty()) {
      GiveUp(page, i + 1, fault != nullptr ? fault : "the description takes more than one line");
    }
    list += "  {" + Quoted(signature) + ",\n   " + Quoted(description) + ",\n   " +
            Quoted(RestOf(lines, i + 4)) + ",\n   " + (databases ? "true" : "false") + "},\n";
  }
  if (names.empty()) {
    GiveUp(page, lines.size(), "the page has no function");
  }
  return list;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 4) {
    GiveUp("function_list_generator", 0,
           "usage: function_list_generator OUTPUT PAGE DATABASE-PAGE");
  }
  try {
    const std::string list = ListOf(argv[2], false) + ListOf(argv[3], true);
    std::ofstream output(argv[1]);
    output << list << std::flush;
    if (!output.good()) {
      GiveUp(argv[1], 1, "the list cannot be written");
    }
  } catch (const std::exception &error) {
    GiveUp(argv[2], 1, error.what());
  }
  return 0;
}
