#include "host/column_names.h"

#include <algorithm>
#include <map>
#include <set>

#include "host/display.h"
#include "host/tokens.h"

namespace {

constexpr size_t kLongestName = sizeof(ExprItem::name) - 1;

// A word of the language cannot be the name of a column without quotes.
bool IsPlainName(EC ec, const std::string &header) {
  return ORLValidName(ec, header.c_str(), nullptr) == 1 && !IsUnitWord(header);
}

// The start of a text, truncated between characters.
std::string CutTo(const std::string &text, size_t bytes) {
  if (text.size() <= bytes) {
    return text;
  }
  while (bytes != 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0U) == 0x80U) {
    --bytes;
  }
  return text.substr(0, bytes);
}

// The names assigned so far, and those that headers have already.
struct Naming {
  EC ec;
  std::set<std::string> natural;
  std::map<std::string, size_t> given;  // the column of each
};

// The base with a suffix, truncated so that formulas can write it; a number makes it unique.
std::string UniqueName(const Naming &naming, const std::string &base) {
  for (size_t number = 1;; ++number) {
    const std::string ending = number == 1 ? "" : "_" + std::to_string(number);
    std::string name;
    for (size_t bytes = kLongestName - ending.size(); name.empty() && bytes != 0; --bytes) {
      name = WrittenName(naming.ec, CutTo(base, bytes) + ending);
    }
    const bool taken = naming.given.count(name) != 0 || naming.natural.count(name) != 0;
    if (!name.empty() && !taken) {
      return name;
    }
  }
}

// The reason why a header is not the name of its column.
std::string Reason(const Naming &naming, const std::string &header, const std::string &written) {
  const auto taken = naming.given.find(written);
  return written.empty() || taken == naming.given.end()
             ? NameProblem(header)
             : "has the name of column " + std::to_string(taken->second + 1);
}

}  // namespace

std::string WrittenName(EC ec, const std::string &header) {
  if (header.empty() || header.size() > kLongestName) {
    return {};
  }
  if (IsPlainName(ec, header)) {
    return header;
  }
  const char quote = header.find('"') != std::string::npos ? '`' : '"';
  const std::string name = quote + header + quote;
  // Backticks do not help every name with a double quote.
  const bool good = name.size() <= kLongestName && ORLValidName(ec, name.c_str(), nullptr) == 1;
  return good ? name : std::string();
}

std::string NameProblem(const std::string &header) {
  if (header.empty()) {
    return "has no name";
  }
  if (header.size() > kLongestName) {
    return "has a name of " + std::to_string(header.size()) + " bytes; names have at most 64";
  }
  if (header.size() + 2 > kLongestName && header.find('"') == std::string::npos) {
    return "has a name that needs quotes and is then " + std::to_string(header.size() + 2) +
           " bytes long; names have at most 64";
  }
  return "has a name that no formula can write: " + DisplayName(header);
}

std::vector<std::string> NamesOfHeaders(EC ec, const std::vector<std::string> &headers,
                                        std::vector<std::string> &notes) {
  Naming naming{ec, {}, {}};
  std::vector<std::string> written;
  for (const std::string &header : headers) {
    written.push_back(WrittenName(ec, header));
    naming.natural.insert(written.back());
  }
  std::vector<std::string> names;
  for (size_t i = 0; i < headers.size(); ++i) {
    std::string name = written[i];
    if (name.empty() || naming.given.count(name) != 0) {
      std::string base = headers[i].empty() ? "column" + std::to_string(i + 1) : headers[i];
      std::replace(base.begin(), base.end(), '"', '\'');
      std::replace(base.begin(), base.end(), '`', '\'');
      name = UniqueName(naming, base);
      notes.push_back("column " + std::to_string(i + 1) + " " +
                      Reason(naming, headers[i], written[i]) + "; it is called " +
                      DisplayName(name));
    }
    naming.given.emplace(name, i);
    names.push_back(name);
  }
  return names;
}

std::vector<std::string> NamesOfList(const std::string &list) {
  std::vector<std::string> names(1);
  char quote = '\0';
  for (const char byte : list) {
    if (quote == '\0' && byte == ',') {
      names.emplace_back();
      continue;
    }
    if (byte == '"' || byte == '`') {
      quote = quote == '\0' ? byte : quote == byte ? '\0' : quote;
    }
    names.back() += byte;
  }
  return names;
}
