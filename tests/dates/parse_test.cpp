// Texts to dates and times.
#include <gtest/gtest.h>
#include <strings.h>

#include <array>
#include <cctype>
#include <chrono>
#include <climits>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "support/cases.h"
#include "tests/dates/date_support.h"

namespace {

// ---- A model that looks at the form of a text: the kinds of its pieces in a row

// clang-format off
constexpr const char *kMonths[] = {"January", "february", "MARCH", "April", "may", "June", "July",
                                   "august", "september", "october", "november", "december"};
// clang-format on

struct Piece {
  char kind;  // n: a number, w: a word, _: blanks, else the byte itself
  std::string text;
};
using Pieces = std::vector<Piece>;

Pieces PiecesOf(const std::string &text) {
  Pieces pieces;
  for (const char byte : text) {
    const int code = static_cast<uint8_t>(byte);
    const char kind = isdigit(code) != 0   ? 'n'
                      : isalpha(code) != 0 ? 'w'
                      : isspace(code) != 0 ? '_'
                                           : byte;
    const bool goesOn = !pieces.empty() && pieces.back().kind == kind && strchr("nw_", kind);
    if (!goesOn) pieces.push_back({kind, ""});
    pieces.back().text += byte;
  }
  if (!pieces.empty() && pieces.back().kind == '_') pieces.pop_back();
  if (!pieces.empty() && pieces.front().kind == '_') pieces.erase(pieces.begin());
  return pieces;
}

int32_t NumberOf(const std::string &digits) {
  return digits.size() > 8 ? 99999999 : std::stoi("0" + digits);
}

// The month of a word or a number; 0 for any other word.
int32_t MonthOf(const Piece &piece) {
  for (int32_t i = 0; i < 12; ++i) {
    const std::string &word = piece.text;
    if (word.size() > 2 && strncasecmp(kMonths[i], word.c_str(), word.size()) == 0) {
      return i + 1;
    }
  }
  return piece.kind == 'n' ? NumberOf(piece.text) : 0;
}

bool IsDate(DateTimeParts &p, const Piece &year, const Piece &month, const Piece &day) {
  p.year = NumberOf(year.text);
  p.year += year.text.size() > 2 ? 0 : p.year < 50 ? 2000 : 1900;
  p.month = MonthOf(month);
  p.day = NumberOf(day.text);
  return p.year > 0 && p.year < 10000 && p.day < 32 &&
         (std::chrono::year{p.year} / p.month / p.day).ok();
}

bool IsTime(Pieces pieces, DateTimeParts &p) {
  std::string marker;
  if (!pieces.empty() && pieces.back().kind == 'w') {
    marker = std::string(1, static_cast<char>(tolower(pieces.back().text[0])));
    if (strcasecmp(pieces.back().text.c_str(), (marker + "m").c_str()) != 0) return false;
    pieces.pop_back();
    if (!pieces.empty() && pieces.back().kind == '_') pieces.pop_back();
  }
  static const std::set<std::string> unmarked = {"n:n", "n:n:n", "n:n:n.n", "n:n:n:n"};
  static const std::set<std::string> marked = {"n", "n.n", "n.n.n", "n.n.n.n", "n.n.n:n"};
  std::string form;
  for (const Piece &piece : pieces) form += piece.kind;
  if (!unmarked.contains(form) && (marker.empty() || !marked.contains(form))) return false;
  pieces.resize(7, {'n', ""});
  p.hour = NumberOf(pieces[0].text);
  p.minute = NumberOf(pieces[2].text);
  p.second = NumberOf(pieces[4].text);
  p.fraction = NumberOf((pieces[6].text + "000000").substr(0, 6));
  if (!marker.empty()) {
    if ((marker != "a" && marker != "p") || p.hour > 12) return false;
    p.hour = p.hour % 12 + (marker == "p" ? 12 : 0);
  }
  return p.hour < 24 && p.minute < 60 && p.second < 60;
}

// The forms of dates: equal separators, or blanks, where a point may end a day or an abbreviated
// month.
std::set<std::string> DateForms() {
  std::set<std::string> forms;
  for (const char separator : {'-', '.', '/', ':', '\\'}) {
    forms.insert({'n', separator, 'n', separator, 'n'});
    forms.insert({'n', separator, 'w', separator, 'n'});
  }
  for (const std::string tail : {"_n", ",n", ",_n"}) {
    for (const std::string first : {"n_w", "n._w", "n_w.", "n._w.", "w_n", "w._n"}) {
      forms.insert(first + tail);
    }
  }
  return forms;
}

std::string Model(int32_t mode, const std::string &text, int32_t order) {
  static const std::set<std::string> forms = DateForms();
  Pieces rest = PiecesOf(text);
  DateTimeParts p = Parts(1900, 1, 1);
  const bool isTime = IsTime(rest, p);
  if (mode == WREN_FMT_TIME) return isTime ? Iso(p) : "no";
  p = {};
  Pieces fields;
  std::string form;
  while (!forms.contains(form)) {
    if (rest.empty()) return "no";
    form += rest.front().kind;
    if (strchr("nw", rest.front().kind) != nullptr) fields.push_back(rest.front());
    rest.erase(rest.begin());
  }
  const bool numeric = form.find('w') == std::string::npos;
  // The places of year, month and day.
  std::array<size_t, 3> at = {2, 1, 0};
  if (form[0] == 'w' || (numeric && order != 1)) at = {2, 0, 1};
  const bool yearFirst =
      fields[0].text.size() > 2 || (numeric && order == 2 && fields[2].text.size() < 3);
  if (form[0] == 'n' && yearFirst) at = {0, 1, 2};
  if (numeric && form[1] == ':' && isTime) return "no";
  if (!IsDate(p, fields[at[0]], fields[at[1]], fields[at[2]])) return "no";
  if (rest.empty()) return Iso(p);
  const bool joined = rest.front().kind == '_' || rest.front().text == "T";
  rest.erase(rest.begin());
  return mode == WREN_FMT_DATETIME && joined && IsTime(rest, p) ? Iso(p) : "no";
}

// Random texts, most of them nearly dates or times, in all modes, orders and code pages.
TEST(ParseDate, AgreesWithTheModel) {
  const PlainSettings settings;
  std::mt19937 random(20120131);
  using Words = std::vector<std::string>;
  const auto any = [&](const Words &words) { return words[random() % words.size()]; };
  // clang-format off
  const Words numbers = {"1", "2", "4", "10", "12", "1", "2", "4", "10", "12", "1999", "2012", "13", "23", "24", "29", "30", "31", "01",
                         "0", "00", "49", "50", "59", "60", "99", "2000", "1900", "987", "0099", "0000", "9999", "10000", "99999999999"};
  const Words separators = {"-", ".", "/", ":", "\\", " ", ",", ", ", "\t\n ", ". "};
  const Words joints = {" ", " ", "  ", "-", ".", "/", ":", "\\", "T", ","};
  const Words timeSeparators = {":", ":", ":", "."};
  const Words ends = {"", "", "", " pm", "AM", "\taM ", " p", " ", "."};
  const Words odd = {" ", ",", "T", "x", "/", ":", "am", "-", "+", "0", "\x01", "\x81", "\xE3\x81\x82", "\xFF"};
  // clang-format on
  int taken = 0;
  for (int i = 0; i < 150000; ++i) {
    WRENSetCodePage(i % 3 == 0 ? 1252 : i % 3 == 1 ? 932 : 65001);
    const auto shape = random() % 4;  // 0: a time alone, 1: a date alone
    std::string text;
    if (shape > 0) {
      const std::string separator = any(separators);
      const size_t named = random() % 4;  // the place of the month's name, if it is there
      for (size_t k = 0; k < 3; ++k) {
        text += k == named ? std::string(kMonths[random() % 12]).substr(0, 2 + random() % 8)
                           : any(numbers);
        text += k == 2 ? "" : random() % 8 == 0 ? any(separators) : separator;
      }
    }
    if (shape != 1) {
      text += shape == 0 ? any(numbers) : any(joints) + any(numbers);
      for (auto k = random() % 4; k > 0; --k) {
        text += any(timeSeparators) + any(numbers);
      }
      text += any(ends);
    }
    if (random() % 4 == 0) {
      text.replace(random() % (text.size() + 1), random() % 2, any(odd));
    }
    const int32_t mode = random() % 4 == 0 ? 1 + i % 2 : shape == 0 ? 2 : shape == 1 ? 1 : 3;
    const auto order = static_cast<int32_t>(random() % 3);
    const std::string result = Read(mode, text, order);
    ASSERT_EQ(result, Model(mode, text, order)) << mode << ", order " << order << ": " << text;
    taken += result != "no" ? 1 : 0;
  }
  EXPECT_GT(taken, 5000);
}

// The meaning of the forms, for both the parser and its model, and long texts.
TEST(ParseDate, Forms) {
  const PlainSettings settings;
  const std::string blanks(3000000, ' ');
  const std::string zeros(3000000, '0');
  const std::string letters(3000000, 'a');
  for (const Case &row : CasesOf("dates/date_cases.txt", "forms")) {
    EXPECT_EQ(Read(row.Int(0), row[2], row.Int(1)), row[3]) << row.where;
  }
  const struct {
    int32_t mode;
    std::string text, result;
  } rows[] = {
      {1, blanks + "Jan" + blanks + "12," + blanks + "1999" + blanks, "1999-01-12 00:00:00"},
      {1, "1/" + zeros + "2/1999", "no"},
      {1, "1/2/" + zeros, "no"},
      {3, "1/2/" + std::string(3000000, '9'), "no"},
      {1, "1 " + letters + " 1999", "no"},
      {2, "10:30:15." + zeros, "1900-01-01 10:30:15"},
      {2, "10:30" + blanks + letters, "no"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(Read(row.mode, row.text, 0), row.result) << row.text.substr(0, 40);
  }
  for (const int32_t mode : {-1, 0, 4, 6, INT32_MAX}) {
    EXPECT_EQ(Read(mode, "1/2/2012"), "no") << "mode " << mode;
  }
  EXPECT_EQ(WRENFmtParseDate(nullptr), 0);
  FormatRecord record = Record(WREN_FMT_DATE);
  EXPECT_EQ(WRENFmtParseDate(&record), 0) << "without an input";
}

}  // namespace
