// POSIX regular expressions, which compile faster than those of the C++ library.
#ifndef ORLI11_TESTS_SUPPORT_PATTERN_H
#define ORLI11_TESTS_SUPPORT_PATTERN_H

#include <regex.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

class Pattern {
 public:
  // An extended regular expression.
  explicit Pattern(const char *expression) {
    if (regcomp(&compiled_, expression, REG_EXTENDED) != 0) throw std::logic_error(expression);
  }
  ~Pattern() { regfree(&compiled_); }
  Pattern(const Pattern &) = delete;
  Pattern &operator=(const Pattern &) = delete;

  // The leftmost longest match, then its groups; empty without one.
  std::vector<std::string_view> Find(const std::string &text) const {
    std::vector<regmatch_t> places(compiled_.re_nsub + 1);
    std::vector<std::string_view> parts;
    if (regexec(&compiled_, text.c_str(), places.size(), places.data(), 0) != 0) return parts;
    for (const regmatch_t &place : places) {
      const auto from = static_cast<size_t>(place.rm_so < 0 ? 0 : place.rm_so);
      const auto size = static_cast<size_t>(place.rm_eo - place.rm_so);
      parts.push_back(std::string_view(text).substr(from, size));
    }
    return parts;
  }

 private:
  regex_t compiled_;
};

#endif
