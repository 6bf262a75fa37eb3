#include "host/color.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace {

constexpr char kRed[] = "\033[31m";
constexpr char kCyan[] = "\033[36m";
constexpr std::string_view kProgram = "orli:";
constexpr std::string_view kHint = "hint:";

std::string ColoredLine(std::string_view line) {
  for (const std::string_view mark : {kProgram, kHint}) {
    if (line.starts_with(mark)) {
      return (mark == kHint ? kCyan : kBold) + std::string(mark) + kNoColor +
             std::string(line.substr(mark.size()));
    }
  }
  const bool carets = line.find('^') != std::string_view::npos &&
                      line.find_first_not_of(" ^") == std::string_view::npos;
  return carets ? kRed + std::string(line) + kNoColor : std::string(line);
}

}  // namespace

bool ColorOn(FILE *stream) {
  const char *no = std::getenv("NO_COLOR");
  const char *terminal = std::getenv("TERM");
  return isatty(fileno(stream)) == 1 && (no == nullptr || *no == '\0') && terminal != nullptr &&
         std::string_view(terminal) != "dumb";
}

std::string Colored(FILE *stream, const std::string &message) {
  if (!ColorOn(stream)) {
    return message;
  }
  std::string colored;
  for (size_t begin = 0; begin < message.size();) {
    const size_t end = std::min(message.find('\n', begin), message.size());
    colored += ColoredLine(std::string_view(message).substr(begin, end - begin));
    colored += end < message.size() ? "\n" : "";
    begin = end + 1;
  }
  return colored;
}
