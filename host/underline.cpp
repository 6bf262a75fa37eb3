#include "host/underline.h"

#include <algorithm>

#include "host/display.h"

namespace {

constexpr std::string_view kIndent = "  ";
constexpr size_t kTabStop = 4;

// The bytes to mark; none when begin is not below end.
struct Span {
  size_t begin = 0, end = 0;
};

// A line of the text and its marks, built side by side.
struct LinePair {
  std::string shown, marks;
  bool marked = false;
};

Span SpanIn(std::string_view text, int32_t offset, int32_t length) {
  Span span;
  if (length <= 0 && offset <= 0) {
    return span;
  }
  span.begin = std::min(static_cast<size_t>(std::max(offset, 0)), text.size());
  span.end = span.begin + static_cast<size_t>(std::max(length, 1));
  if (span.end > text.size() + 1) {
    span.end = std::max(text.size(), span.begin + 1);
  }
  return span;
}

void AddMarks(LinePair &line, size_t width, bool marked) {
  line.marked = line.marked || marked;
  if (width == 0 && marked && !line.marks.empty()) {
    line.marks.back() = '^';  // an accent combines with the character before it
    return;
  }
  line.marks.append(width == 0 && marked ? 1 : width, marked ? '^' : ' ');
}

void Flush(LinePair &line, std::string &result) {
  result.append(kIndent).append(line.shown).append("\n");
  if (line.marked) {
    line.marks.erase(line.marks.find_last_of('^') + 1);
    result.append(kIndent).append(line.marks).append("\n");
  }
  line = LinePair();
}

}  // namespace

std::string Underline(std::string_view text, int32_t offset, int32_t length) {
  const Span span = SpanIn(text, offset, length);
  std::string result;
  LinePair line;
  size_t column = 0;
  for (size_t i = 0; i < text.size();) {
    const DisplayCharacter next = DisplayNext(text.substr(i));
    const bool marked = i < span.end && i + next.bytes > span.begin;
    if (text[i] == '\n') {
      AddMarks(line, marked ? 1 : 0, marked);
      Flush(line, result);
      column = 0;
    } else {
      const bool tab = text[i] == '\t';
      const size_t width = tab ? kTabStop - column % kTabStop : next.width;
      line.shown += tab ? std::string(width, ' ') : next.shown;
      AddMarks(line, width, marked);
      column += width;
    }
    i += next.bytes;
  }
  if (span.end > text.size()) {
    AddMarks(line, 1, true);
  }
  Flush(line, result);
  return result;
}
