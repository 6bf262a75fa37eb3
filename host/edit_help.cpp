#include "host/edit_help.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "host/function_texts.h"

namespace {

constexpr std::string_view kFunctionsPage =
#include "host/functions_page.inc"
    ;
constexpr std::string_view kEditorPage =
#include "host/editor_page.inc"
    ;

// The lines of a text, without their ends.
template <class Take>
void EachLine(std::string_view text, Take take) {
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    take(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

// A line with its links as plain text, as a window cannot follow them.
std::string WithoutLinks(std::string_view line) {
  std::string plain;
  for (size_t i = 0; i < line.size(); ++i) {
    const size_t middle = line[i] == '[' ? line.find("](", i) : std::string_view::npos;
    const size_t end = middle == std::string_view::npos ? middle : line.find(')', middle);
    if (end == std::string_view::npos) {
      plain += line[i];
    } else {
      plain += line.substr(i + 1, middle - i - 1);
      i = end;
    }
  }
  return plain;
}

// A section of a page, from its heading to the next of the same level, without pictures.
std::string SectionOf(std::string_view page, std::string_view heading) {
  std::string section;
  bool inside = false;
  EachLine(page, [&](std::string_view line) {
    if (line.substr(0, 3) == "## ") {
      inside = line.substr(3) == heading;
    }
    if (inside && line.substr(0, 2) != "![") {
      section += WithoutLinks(line) + "\n";
    }
  });
  return section;
}

// Text escaped for Markdown.
std::string Escaped(std::string_view text) {
  constexpr std::string_view kSigns = "\\`*_{}[]<>#|~";
  std::string escaped;
  for (const char byte : text) {
    escaped += kSigns.find(byte) == std::string_view::npos ? "" : "\\";
    escaped += byte;
  }
  return escaped;
}

HelpPage PageOfFunction(const FunctionText &function) {
  const std::string signature = function.signature;
  HelpPage page = {signature.substr(0, signature.find('(')),
                   "## " + Escaped(signature) + "\n\n" + Escaped(function.description) + "\n\n"};
  EachLine(function.rest, [&page](std::string_view line) {
    const bool isExample = line.substr(0, 4) == "    ";
    page.text += (isExample ? std::string(line) : Escaped(line)) + "\n";
  });
  return page;
}

// The entry in the list of messages that begins with the same word as the message.
HelpPage PageOfMessage(const std::string &message) {
  const std::string word = message.substr(0, message.find_first_of(": "));
  HelpPage page = {"Error messages", ""};
  const std::string head = "- `" + word + "`: ";
  bool inside = false;
  EachLine(kFunctionsPage, [&](std::string_view line) {
    if (line.substr(0, head.size()) == head) {
      inside = true;
      page.text = "## " + Escaped(message) + "\n\n";
      line.remove_prefix(head.size());
    } else {
      inside = inside && line.substr(0, 2) == "  ";
    }
    page.text += inside ? std::string(line) + "\n" : std::string();
  });
  if (page.text.empty()) {
    page.text = SectionOf(kFunctionsPage, "Messages");
  }
  return page;
}

// The descriptions of controls in the page of the editor.
struct ControlRow {
  int32_t first, last;  // ids
  const char *heading;
};
constexpr ControlRow kControls[] = {
    {ORL_EDITOR_VALUES, ORL_EDITOR_VALUES, "Values of the data"},
    {ORL_EDITOR_FORMULA_MODE, ORL_EDITOR_SET_MODE, "Ranges and sets"},
    {ORL_EDITOR_FORMULAS, ORL_EDITOR_SHOW_TEXT, "The formulas that are there"},
    {ORL_EDITOR_NAME, ORL_EDITOR_NAME, "The formulas that are there"},
    {ORL_EDITOR_TEXT, ORL_EDITOR_CLEAR, "Building a formula"},
};

HelpPage PageOfControl(int32_t control) {
  for (const ControlRow &row : kControls) {
    if (control >= row.first && control <= row.last) {
      return {row.heading, SectionOf(kEditorPage, row.heading)};
    }
  }
  return {"Keys", SectionOf(kEditorPage, "By keyboard alone")};
}

}  // namespace

HelpPage HelpPageFor(const OrlHelp &help) {
  const std::string message = help.message == nullptr ? "" : help.message;
  const FunctionText *function = help.key == nullptr ? nullptr : FindFunctionText(help.key);
  if (function != nullptr) {
    return PageOfFunction(*function);
  }
  return help.key != nullptr ? PageOfMessage(message) : PageOfControl(help.control);
}

int32_t DescribeFunction(const char *name, char *buffer, int32_t size) {
  const FunctionText *function = FindFunctionText(name);
  if (function == nullptr || size <= 0) {
    return 0;
  }
  std::snprintf(buffer, static_cast<size_t>(size), "%s\n%s", function->signature,
                function->description);
  return 1;
}
