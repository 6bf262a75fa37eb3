#include "host/nearest.h"

#include <algorithm>
#include <cctype>
#include <numeric>

#include "host/display.h"

namespace {

// The edit distance of two words; swapping two adjacent letters counts as one change.
size_t Distance(const std::string &one, const std::string &other) {
  std::vector<size_t> before(other.size() + 1);
  std::vector<size_t> last(other.size() + 1);
  std::vector<size_t> row(other.size() + 1);
  std::iota(last.begin(), last.end(), size_t{0});
  for (size_t i = 1; i <= one.size(); ++i) {
    row[0] = i;
    for (size_t j = 1; j <= other.size(); ++j) {
      const size_t change = last[j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1);
      row[j] = std::min({change, last[j] + 1, row[j - 1] + 1});
      if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
        row[j] = std::min(row[j], before[j - 2] + 1);
      }
    }
    before.swap(last);
    last.swap(row);
  }
  return last[other.size()];
}

}  // namespace

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
  return lower;
}

std::string Nearest(std::string_view word, const std::vector<std::string> &names) {
  constexpr size_t kLongest = 64;
  const std::string wanted = Lower(word.substr(0, kLongest));
  size_t best = wanted.size() / 3 + 1;  // a short word may differ only in case
  std::string nearest;
  for (const std::string &name : names) {
    const size_t distance = Distance(wanted, Lower(name));
    if (distance < best) {
      best = distance;
      nearest = name;
    }
  }
  return nearest;
}

std::string NearestHint(std::string_view word, const std::vector<std::string> &names) {
  const std::string near = Nearest(word, names);
  return near.empty() ? near : "\nhint: did you mean `" + DisplayName(near) + "`?";
}
