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

#include "tests/dates/date_support.h"

namespace {

// ---- A model that takes a text apart word by word

// clang-format off
constexpr const char *kMonths[] = {"January", "february", "MARCH", "April", "may", "June", "July",
                                   "august", "september", "october", "november", "december"};
// clang-format on

int32_t NumberOf(const std::string &digits) {
  return digits.size() > 8 ? 99999999 : std::stoi("0" + digits);
}

// The month of a word or a number; 0 for a word that is none.
int32_t MonthOf(const std::string &word) {
  for (int32_t i = 0; i < 12; i++) {
    if (word.size() > 2 && strncasecmp(kMonths[i], word.c_str(), word.size()) == 0) {
      return i + 1;
    }
  }
  return isdigit(word[0]) != 0 ? NumberOf(word) : 0;
}

bool IsDate(DateTimeParts &p, const std::string &year, const std::string &month,
            const std::string &day) {
  p.year = NumberOf(year);
  p.year += year.size() > 2 ? 0 : p.year < 50 ? 2000 : 1900;
  p.month = MonthOf(month);
  p.day = NumberOf(day);
  return p.year > 0 && p.year < 10000 && p.day < 32 &&
         (std::chrono::year{p.year} / p.month / p.day).ok();
}

// Takes the bytes of a kind off the front of a text.
std::string Take(std::string &rest, int (*isKind)(int)) {
  size_t length = 0;
  while (length < rest.size() && isKind(static_cast<uint8_t>(rest[length])) != 0) length++;
  std::string taken = rest.substr(0, length);
  rest.erase(0, length);
  return taken;
}

// Takes the first byte if it is one of these, else gives 0.
char TakeOne(std::string &rest, const char *marks) {
  const char mark = rest.empty() || strchr(marks, rest[0]) == nullptr ? '\0' : rest[0];
  rest.erase(0, mark != 0 ? 1 : 0);
  return mark;
}

bool ReadTime(std::string rest, DateTimeParts &p, bool hourIsEnough) {
  std::string fields[4];  // hour, minute, second, fraction
  size_t count = 0;
  do {
    fields[count] = Take(rest, isdigit);
    if (fields[count++].empty()) return false;
  } while (count < 4 && TakeOne(rest, ":.") != 0);
  Take(rest, isspace);
  const char marker = TakeOne(rest, "aApP");
  if (marker != 0 && TakeOne(rest, "mM") == 0) return false;
  Take(rest, isspace);
  if (!rest.empty() || (count == 1 && marker == 0 && !hourIsEnough)) return false;
  p.hour = NumberOf(fields[0]);
  p.minute = NumberOf(fields[1]);
  p.second = NumberOf(fields[2]);
  p.fraction = NumberOf((fields[3] + "000000").substr(0, 6));
  if (marker != 0) {
    if (p.hour > 12) return false;
    p.hour = p.hour % 12 + (tolower(marker) == 'p' ? 12 : 0);
  }
  return p.hour < 24 && p.minute < 60 && p.second < 60;
}

struct DateText {
  std::string words[3];
  std::string
      form;    // as "n-w-n": numbers and names with a separator, blanks (_) or a comma between
  bool colon;  // one of the separators is a colon
  std::string rest;
};

DateText DateTextOf(const std::string &text) {
  DateText date = {};
  date.rest = text;
  Take(date.rest, isspace);
  for (size_t i = 0; i < 3; i++) {
    if (i > 0) {
      const bool blank = !Take(date.rest, isspace).empty();
      const char mark = blank ? '_' : TakeOne(date.rest, "-./:\\,");
      if (mark == ',') Take(date.rest, isspace);
      date.colon = date.colon || mark == ':';
      date.form += mark == 0 ? '?' : mark == '_' || mark == ',' ? mark : '-';
    }
    date.words[i] = Take(date.rest, isalpha);
    date.form += date.words[i].empty() ? 'n' : 'w';
    if (date.words[i].empty()) date.words[i] = Take(date.rest, isdigit);
    if (date.words[i].empty()) date.form += '?';
  }
  return date;
}

std::string Model(int32_t mode, const std::string &text, int32_t order) {
  static const std::set<std::string> forms = {"n-n-n", "n-w-n", "n_w_n", "n_w,n", "w_n_n", "w_n,n"};
  DateTimeParts p = Parts(1900, 1, 1);
  std::string time = text;
  Take(time, isspace);
  const bool isTime = ReadTime(time, p, false);
  if (mode == WREN_FMT_TIME) {
    return isTime ? Iso(p) : "no";
  }
  p = {};
  DateText date = DateTextOf(text);
  if (!forms.contains(date.form)) {
    return "no";
  }
  const bool numeric = date.form == "n-n-n";
  // Where year, month and day stand.
  std::array<size_t, 3> at = {2, 1, 0};
  if (date.form[0] == 'w' || (numeric && order != 1)) {
    at = {2, 0, 1};
  }
  if (date.form[0] == 'n' &&
      (date.words[0].size() > 2 || (numeric && order == 2 && date.words[2].size() < 3))) {
    at = {0, 1, 2};
  }
  bool good = IsDate(p, date.words[at[0]], date.words[at[1]], date.words[at[2]]) &&
              !(numeric && date.colon && isTime);
  const bool blank = !Take(date.rest, isspace).empty();
  if (!date.rest.empty()) {
    good = good && mode == WREN_FMT_DATETIME && (blank || TakeOne(date.rest, "-./:\\Tt") != 0) &&
           ReadTime(date.rest, p, true);
  }
  return good ? Iso(p) : "no";
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
  const Words separators = {"-", ".", "/", ":", "\\", " ", ",", ", ", "\t\n "};
  const Words joints = {" ", " ", "  ", "-", ".", "/", ":", "\\", "T", ","};
  const Words timeSeparators = {":", ":", ":", "."};
  const Words ends = {"", "", "", " pm", "AM", "\taM ", " p", " ", "."};
  const Words odd = {" ", ",", "T", "x", "/", ":", "am", "-", "+", "0", "\x01", "\x81", "\xE3\x81\x82", "\xFF"};
  // clang-format on
  int taken = 0;
  for (int i = 0; i < 150000; i++) {
    WRENSetCodePage(i % 3 == 0 ? 1252 : i % 3 == 1 ? 932 : 65001);
    const auto shape = random() % 4;  // 0: a time alone, 1: a date alone
    std::string text;
    if (shape > 0) {
      const std::string separator = any(separators);
      const size_t named = random() % 4;  // where the month's name stands, if it does
      for (size_t k = 0; k < 3; k++) {
        text += k == named ? std::string(kMonths[random() % 12]).substr(0, 2 + random() % 8)
                           : any(numbers);
        text += k == 2 ? "" : random() % 4 == 0 ? any(separators) : separator;
      }
    }
    if (shape != 1) {
      text += shape == 0 ? any(numbers) : any(joints) + any(numbers);
      for (auto k = random() % 4; k > 0; k--) {
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

// What the forms mean in plain words, for both the reading and its model, and long texts.
TEST(ParseDate, Forms) {
  const PlainSettings settings;
  const std::string blanks(3000000, ' ');
  const std::string zeros(3000000, '0');
  const std::string letters(3000000, 'a');
  const struct {
    int32_t mode, order;
    std::string text, result;
  } rows[] = {
      {3, 0, "03-04-12", "2012-03-04 00:00:00"},
      {3, 1, "03-04-12", "2012-04-03 00:00:00"},
      {3, 2, "03-04-12", "2003-04-12 00:00:00"},
      {1, 2, "12/31/1999", "1999-12-31 00:00:00"},
      {3, 1, "2012-01-31 10:30:15", "2012-01-31 10:30:15"},
      {1, 0, "1/1/49", "2049-01-01 00:00:00"},
      {1, 0, "1/1/50", "1950-01-01 00:00:00"},
      {3, 1, "12-Jan-99 12 PM", "1999-01-12 12:00:00"},
      {1, 0, "Septe 1, 2012", "2012-09-01 00:00:00"},
      {3, 0, "12:31:1999", "1999-12-31 00:00:00"},
      {3, 0, "10:30:15", "no"},
      {1, 0, "2/29/1900", "no"},
      {1, 0, "1 2 3", "no"},
      {3, 0, "2012-01", "no"},
      {3, 0, "Jan", "no"},
      {3, 0, " ", "no"},
      {2, 0, "", "no"},
      {2, 0, "10:30:15.1234567", "1900-01-01 10:30:15.123456"},
      {2, 0, "12 am", "1900-01-01 00:00:00"},
      {1, 0, blanks + "Jan" + blanks + "12," + blanks + "1999" + blanks, "1999-01-12 00:00:00"},
      {1, 0, "1/" + zeros + "2/1999", "no"},
      {1, 0, "1/000000002/1999", "1999-01-02 00:00:00"},
      {1, 0, "1/2/" + zeros, "no"},
      {3, 0, "1/2/" + std::string(3000000, '9'), "no"},
      {1, 0, "1 " + letters + " 1999", "no"},
      {2, 0, "10:30:15." + zeros, "1900-01-01 10:30:15"},
      {2, 0, "10:30" + blanks + letters, "no"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(Read(row.mode, row.text, row.order), row.result) << row.text.substr(0, 40);
  }
  for (const int32_t mode : {-1, 0, 4, 6, INT32_MAX}) {
    EXPECT_EQ(Read(mode, "1/2/2012"), "no") << "mode " << mode;
  }
  EXPECT_EQ(WRENFmtParseDate(nullptr), 0);
  FormatRecord record = Record(WREN_FMT_DATE);
  EXPECT_EQ(WRENFmtParseDate(&record), 0) << "without an input";
}

}  // namespace
