#include "host/sql_text.h"

#include <algorithm>

#include "host/chars.h"
#include "host/tokens.h"

namespace {

constexpr std::string_view kSpaces = " \t\n";

// Moves bytes from the start of the text to the SQL.
void Take(std::string_view &text, size_t count, std::string &sql) {
  sql += text.substr(0, count);
  text.remove_prefix(std::min(count, text.size()));
}

// A column by its header; other names, of functions, are unchanged.
void TakeName(std::string_view &text, const Table &table, std::string &sql) {
  const size_t length = std::max<size_t>(NameLength(text), 1);
  const std::string_view name = text.substr(0, length);
  const auto column = std::find_if(table.columns.begin(), table.columns.end(),
                                   [name](const Column &entry) { return entry.name == name; });
  const size_t next = text.find_first_not_of(kSpaces, length);
  if (column != table.columns.end() && (next == std::string_view::npos || text[next] != '(')) {
    sql += std::string(kSqlTable) + "." + SqlName(column->header);
    text.remove_prefix(length);
  } else {
    Take(text, length, sql);
  }
}

// A number with its exponent, whose sign is not an operator.
void TakeNumber(std::string_view &text, std::string &sql) {
  size_t length = std::min(text.find_first_not_of("0123456789."), text.size());
  if (length + 2 < text.size() && (text[length] == 'E' || text[length] == 'e') &&
      (text[length + 1] == '+' || text[length + 1] == '-')) {
    length = std::min(text.find_first_not_of("0123456789", length + 2), text.size());
  }
  Take(text, length, sql);
}

// A text constant, or the date of an escape, whose fraction of a second has trailing zeros.
bool TakeConstant(std::string_view &text, std::string &sql, std::string &problem) {
  size_t end = 1;
  while (end + 1 < text.size() && (text[end] != '\'' || text[end + 1] == '\'')) {
    end += text[end] == '\'' ? 2 : 1;
  }
  std::string_view constant = text.substr(0, end);
  if (constant.find("\\'") != std::string_view::npos || constant.back() == '\\') {
    problem =
        "has a text with a backslash in front of a quote or at its end, where SQL may end the text "
        "elsewhere; write a quote as '' and a last backslash as SUBSTRING('\\ ', 1, 1)";
    return false;
  }
  text.remove_prefix(end);
  if (sql.ends_with("{ts ") && constant.find('.') != std::string_view::npos) {
    constant = constant.substr(0, constant.find_last_not_of('0') + 1);
    constant.remove_suffix(constant.back() == '.' ? 1 : 0);
  }
  sql += constant;
  Take(text, 1, sql);
  return true;
}

// The opening of an escape, with the word for its kind.
bool TakeEscape(std::string_view &text, std::string &sql, std::string &problem) {
  const size_t length = text.find(' ') + 1;
  if (text.substr(0, length) == "{t ") {
    problem = "has a time without a day, which databases do not take for a date";
    return false;
  }
  Take(text, length, sql);
  return true;
}

}  // namespace

std::string SqlName(std::string_view name) {
  std::string quoted = "\"";
  for (const char byte : name) {
    quoted.append(byte == '"' ? 2 : 1, byte);
  }
  return quoted + "\"";
}

bool SqlFromExtended(std::string_view extended, const Table &table, std::string &sql,
                     std::string &problem) {
  bool good = true;
  while (good && !extended.empty()) {
    const char byte = extended.front();
    if (byte == '\'') {
      good = TakeConstant(extended, sql, problem);
    } else if (byte == '{') {
      good = TakeEscape(extended, sql, problem);
    } else if (IsQuote(byte) || IsNameStart(byte)) {
      TakeName(extended, table, sql);
    } else if (byte == '.' || IsDigit(byte)) {
      TakeNumber(extended, sql);
    } else {
      sql += byte == '/' ? "* 1.0 " : byte == '-' && sql.ends_with('-') ? " " : "";
      Take(extended, 1, sql);
    }
  }
  return good;
}
