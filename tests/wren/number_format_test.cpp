// Numbers as text, back from text, and number pictures.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "closed/wren/country.h"
#include "closed/wren/number_format.h"
#include "text_model.h"
#include "wreni11.h"

namespace {

constexpr size_t kRoom = 100;

NumberValue Number(const char *text) {
  NumberValue value;
  WRENNumFromText(&value, text);
  return value;
}

// Countries whose ways differ from the built-in one; their locales need not be installed.
Country With(const char *decimal, const char *moneyDecimal, const char *thousands,
             const char *grouping, const char *sign, bool signFirst, bool space, bool parentheses) {
  Country country = CountryBuiltIn();
  const auto set = [](auto &target, const char *text) {
    std::snprintf(target, sizeof target, "%s", text);
  };
  set(country.decimalSeparator, decimal);
  set(country.currencyDecimalSeparator, moneyDecimal);
  set(country.thousandsSeparator, thousands);
  set(country.currencyThousandsSeparator, thousands);
  set(country.currencySign, sign);
  std::memcpy(country.grouping, grouping, sizeof country.grouping);
  std::memcpy(country.currencyGrouping, grouping, sizeof country.currencyGrouping);
  country.currencySignFirst = signFirst;
  country.currencySpace = space;
  country.negativeInParentheses = parentheses;
  return country;
}

// clang-format off
const Country kBuiltIn = CountryBuiltIn();
const Country kGerman = With(",", ",", ".", "\3\3\3\3", "EUR", false, true, false);
const Country kFrench = With(",", ",", "\240", "\3\3\3\3", "EUR", false, true, false);
const Country kNarrow = With(",", ",", "\xE2\x80\xAF", "\3\3\3\3", "EUR", false, true, false);
const Country kIndian = With(".", ".", ",", "\3\2\2\2", "Rs.", true, false, true);
const Country kSwiss = With(",", ".", "'", "\3\3\3\3", "CHF", true, true, false);
const Country kOneGroup = With(".", ".", ",", "\4\0\0\0", "$", true, false, true);
// clang-format on

// What a record gives by a country; "failed" when the result is 0. Checks the room of the output.
std::string Formatted(FormatRecord record, const Country &country) {
  std::string output(kRoom + 16, '!');
  record.output = output.data();
  const int32_t result = FormatNumberBy(&record, country);
  EXPECT_LT(strnlen(record.output, kRoom), kRoom);
  EXPECT_EQ(std::string(16, '!'), output.substr(kRoom));
  EXPECT_TRUE(result == 1 || output[0] == 0) << output;
  return result != 0 ? output.c_str() : "failed";
}

FormatRecord Record(int32_t mode, const char *number, const char *picture = nullptr) {
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = mode;
  record.useCountry = 1;
  record.flags = WREN_FMT_FLAG_NUMBER;
  record.number = Number(number);
  record.numberPicture = picture;
  return record;
}

const struct CountryRow {
  const Country &country;
  const char *number, *plain, *amount;
} kCountryRows[] = {
    {kBuiltIn, "1234.5", "1,234.5", "$1,234.50"},
    {kBuiltIn, "-1234.5", "-1,234.5", "($1,234.50)"},
    {kBuiltIn, "999.995", "999.995", "$1,000.00"},
    {kBuiltIn, "-0.125", "-0.125", "($0.13)"},
    {kBuiltIn, "-0.001", "-0.001", "$0.00"},
    {kBuiltIn, "123", "123", "$123.00"},
    {kGerman, "-1234567.5", "-1.234.567,5", "-1.234.567,50 EUR"},
    {kFrench, "1234.5", "1\240234,5", "1\240234,50 EUR"},
    {kIndian, "123456789", "12,34,56,789", "Rs.12,34,56,789.00"},
    {kSwiss, "-1234.5", "-1'234,5", "-CHF 1'234.50"},
    {kOneGroup, "123456789", "12345,6789", "$12345,6789.00"},
};

TEST(NumberFormat, ByCountry) {
  for (const CountryRow &row : kCountryRows) {
    EXPECT_EQ(row.plain, Formatted(Record(WREN_FMT_NUMBER, row.number), row.country));
    EXPECT_EQ(row.amount, Formatted(Record(WREN_FMT_CURRENCY, row.number), row.country));
  }
  ASSERT_EQ(1, WRENSetCountry("C"));
  char output[kRoom];
  FormatRecord record = Record(WREN_FMT_CURRENCY, "1234.5");
  record.output = output;
  EXPECT_EQ(1, WRENFmtNumber(&record));
  EXPECT_STREQ("$1,234.50", output);
  record.fixedDecimals = 1;
  EXPECT_EQ("1.235 EUR", Formatted(record, kGerman));
}

TEST(NumberFormat, ParsesWhatItFormats) {
  for (const CountryRow &row : kCountryRows) {
    for (const int32_t mode : {WREN_FMT_NUMBER, WREN_FMT_CURRENCY, WREN_FMT_PICTURE}) {
      for (const char *text : {row.plain, row.amount}) {
        FormatRecord record = Record(mode, "99");
        record.input = text;
        EXPECT_EQ(1, ParseNumberBy(&record, row.country)) << text;
        record.mode = text == row.plain ? WREN_FMT_NUMBER : WREN_FMT_CURRENCY;
        EXPECT_EQ(text, Formatted(record, row.country)) << "in mode " << mode;
      }
    }
  }
}

TEST(NumberFormat, ByTheFieldsOfTheRecord) {
  static const struct {
    const char *number;
    char thousands, decimal;
    int32_t fixedDecimals, decimals;
    const char *expected;
  } kRows[] = {
      {"1234.5", 0, '.', 1, 2, "1234.50"},
      {"-1234.5", '.', ',', 0, 0, "-1.234,5"},
      {"1234.5", 0, 0, 0, 0, "1234.5"},
      {"-0.004", 0, '.', 1, 2, "0.00"},
      {"1251", 0, '.', 1, -2, "1300"},
      {"0.05", 0, '.', 1, 98, "failed"},
      {"5", 0, '.', 1, INT32_MAX, "failed"},
      {"-1e98", 0, '.', 0, 0, "failed"},
      {"99999999999999999999999999e127", 0, '.', 1, -152, "failed"},
  };
  for (const auto &row : kRows) {
    for (const int32_t mode : {WREN_FMT_NUMBER, WREN_FMT_CURRENCY}) {
      FormatRecord record = Record(mode, row.number);
      record.useCountry = 0;
      record.thousandsSeparator = row.thousands;
      record.decimalSeparator = row.decimal;
      record.fixedDecimals = row.fixedDecimals;
      record.decimals = row.decimals;
      EXPECT_EQ(row.expected, Formatted(record, kGerman)) << row.number << " " << row.decimals;
    }
  }
  FormatRecord record = Record(WREN_FMT_PICTURE, "1234.5", "#,##0.00");
  record.useCountry = 0;
  record.thousandsSeparator = '_';
  record.decimalSeparator = ':';
  EXPECT_EQ("1_234:50", Formatted(record, kGerman));
}

TEST(NumberFormat, NullIsTheEmptyText) {
  for (const int32_t mode : {WREN_FMT_NUMBER, WREN_FMT_CURRENCY, WREN_FMT_PICTURE}) {
    FormatRecord record = Record(mode, "", "0.00;(0.00);0");
    EXPECT_EQ("", Formatted(record, kBuiltIn)) << mode;
    record.number = Number("5");
    record.number.length = 10;  // a date
    EXPECT_EQ("", Formatted(record, kBuiltIn)) << mode;
  }
  for (const int32_t mode : {0, 1, 3, 7, -1}) {
    EXPECT_EQ("failed", Formatted(Record(mode, "5"), kBuiltIn)) << mode;
  }
  EXPECT_EQ(0, WRENFmtNumber(nullptr) + WRENFmtParseNumber(nullptr));
  EXPECT_EQ(0, WRENFmtCheckNumberPicture(nullptr));
}

// Parses by a country and expects the number, or a refusal that changes nothing where it is null.
void ExpectParsed(const Country &country, const std::string &text, const char *number) {
  FormatRecord record = Record(WREN_FMT_NUMBER, "99");
  record.input = text.c_str();
  EXPECT_EQ(number != nullptr ? 1 : 0, ParseNumberBy(&record, country)) << text.substr(0, 40);
  const NumberValue expected = Number(number != nullptr ? number : "99");
  EXPECT_EQ(0, std::memcmp(&record.number, &expected, sizeof expected)) << text.substr(0, 40);
}

TEST(NumberFormat, Parse) {
  // clang-format off
  const struct {
    const Country &country;
    std::vector<std::pair<const char *, const char *>> texts;
  } kRows[] = {
      {kBuiltIn, {{" 1,234,567.50 ", "1234567.5"}, {".5", "0.5"}, {"5.", "5"}, {"0,005", "5"},
                  {"+5", "5"}, {"- 5", "-5"}, {"5 -", "-5"}, {"( $ 5.25 )", "-5.25"}, {"$-5", "-5"},
                  {"-$5", "-5"}, {"5$", "5"}, {"-0", "0"}}},
      {kGerman, {{"EUR 1.234,50-", "-1234.5"}}},
      {kFrench, {{"1 234 567,5", "1234567.5"}, {"5\240EUR", "5"}}},
      {kIndian, {{"Rs. 12,34,567.5", "1234567.5"}, {"1,234,567", nullptr}}},
      {kSwiss, {{"CHF 1'234.5", "1234.5"}, {"1'234.5", nullptr}}},
      {kOneGroup, {{"1,2345,6789", nullptr}}},
  };
  // clang-format on
  for (const auto &row : kRows) {
    for (const auto &[text, expected] : row.texts) ExpectParsed(row.country, text, expected);
  }
  std::string zeros = "0";
  for (int i = 0; i < 500000; ++i) zeros += ",000";
  ExpectParsed(kBuiltIn, zeros + ",123", "123");
  ExpectParsed(kBuiltIn, zeros + ",1234", nullptr);
  ExpectParsed(kBuiltIn, "1" + zeros.substr(1), nullptr);  // too large
  ExpectParsed(kBuiltIn, std::string(2000000, ' ').append("5"), "5");
  ExpectParsed(kBuiltIn, std::string(2000000, '3').replace(0, 1, "."),
               "0.33333333333333333333333333");
}

TEST(NumberFormat, ParseRefuses) {
  static const char *const kTexts[] = {
      "",        " ",        ".",      "-",      "$",    "()",   "abc",   "5 5",
      "5x",      "1,23",     "--5",    "-5-",    "5)",   ")5(",  "$5$",   "12,34,567",
      "1,23456", "1234,567", ",123",   "1,,234", "-(5)", "(-5)", "(5",    "5%",
      "1e5",     "1.234,5",  "1,234,", "1.2.3",  "5 (",  "\n5",  "5\240x"};
  for (const char *text : kTexts) ExpectParsed(kBuiltIn, text, nullptr);
}

// What the picture gives; the check of the picture and the format must agree.
std::string UnderPicture(const std::string &picture, const char *number,
                         const Country &country = kBuiltIn) {
  FormatRecord record = Record(WREN_FMT_PICTURE, number, picture.c_str());
  std::string text = Formatted(record, country);
  if (WRENFmtCheckNumberPicture(&record) == 0) {
    EXPECT_EQ("failed", text) << picture;
    return "bad";
  }
  return text;
}

TEST(NumberFormat, Pictures) {
  // clang-format off
  const struct {
    const char *picture;
    std::vector<std::pair<const char *, const char *>> numbers;
    const Country &country = kBuiltIn;
    int32_t page = 1252;
  } kRows[] = {
      {"0.00", {{"-0.001", "0.00"}}},
      {"#,##0.00", {{"1234567.891", "1,234,567.89"}}},
      {"#,##0.00", {{"1234567.891", "1.234.567,89"}}, kGerman},
      {"#,##0", {{"1234567.5", "12,34,568"}}, kIndian},
      {"0,000", {{"12", "0,012"}}},
      {"#", {{"0", ""}}},
      {"#.##", {{"0.5", ".5"}, {"5", "5"}}},
      {"0.0##", {{"1.25", "1.25"}, {"1", "1.0"}}},
      {"0.#0", {{"1.5", "1.50"}}},
      {"0#", {{"7", "07"}}},
      {".00", {{"1234.5", "1234.50"}}},
      {"(000) 000-0000", {{"5551234567", "(555) 123-4567"}}},
      {"##-##", {{"1", "-1"}, {"12345", "123-45"}}},
      {"0%", {{"0.125", "13%"}}},
      {"%0", {{"1e25", "%1000000000000000000000000000"}}},
      {"0.00 \"pcs; 0\"", {{"2", "2.00 pcs; 0"}}},
      {"'it''s' \\#0\\\\", {{"2", "its #2\\"}}},
      {"$#,##0.00", {{"-1234.5", "-$1,234.50"}}},
      {"$#,##0.00;($#,##0.00)", {{"-1234.5", "($1,234.50)"}, {"-0.004", "$0.00"}}},
      {"0;-0;\"none\"", {{"-0.4", "none"}, {"-0.5", "-1"}}},
      {"0;;", {{"-5", ""}, {"0", ""}}},
      {"0;\"minus\"", {{"-0.1", "minus"}}},
      {"0.00;0", {{"-1.5", "2"}}},
      {"0\xE9\x80", {{"5", "5\xE9\x80"}}},
      {"0 \xE2\x82\xAC", {{"5", "5 \xE2\x82\xAC"}}, kBuiltIn, 65001},
      // The second byte of a double character may look like a mark of the picture.
      {"0\x83\\", {{"5", "5\x83\\"}}, kBuiltIn, 932},
      {"\"\x95\\\"0", {{"5", "\x95\\5"}}, kBuiltIn, 932},
      {"0\x83", {{"5", "5\x83"}}, kBuiltIn, 932},
      {"\"\x83\"0", {{"5", "bad"}}, kBuiltIn, 932},
  };
  // clang-format on
  for (const auto &row : kRows) {
    const CodePageScope scope(row.page);
    for (const auto &[number, expected] : row.numbers) {
      EXPECT_EQ(expected, UnderPicture(row.picture, number, row.country))
          << row.picture << " of " << number;
    }
  }
}

TEST(NumberFormat, BadPictures) {
  static const char *const kPictures[] = {
      "",         "abc", "0a",   "1",     "\"0",  "'",        "0\\",   "0.0.0", "0.",      "0.;0",
      ",0",       "0,",  "0,.0", "0.0,",  "0.,0", "0%%",      ";0",    "-;0",   "0;0;0;0", "0;,0",
      "\"text\"", "%",   "0\t",  "0\x7F", "YYYY", "0;\"open", "0;0;x", "#,;0",  "0E+0"};
  for (const char *picture : kPictures) EXPECT_EQ("bad", UnderPicture(picture, "5")) << picture;
  FormatRecord record = Record(WREN_FMT_PICTURE, "5");
  EXPECT_EQ(0, WRENFmtCheckNumberPicture(&record)) << "no picture";
}

TEST(NumberFormat, PicturesUpToTheRoom) {
  const std::string zeros(99, '0');
  EXPECT_EQ(zeros, UnderPicture(zeros, "0"));
  EXPECT_EQ("failed", UnderPicture(zeros, "-1")) << "100 characters";
  EXPECT_EQ("bad", UnderPicture(zeros + "0", "1")) << "100 places";
  const std::string literal(98, '-');
  EXPECT_EQ("7" + literal, UnderPicture("0" + literal, "7"));
  EXPECT_EQ("failed", UnderPicture("0-" + literal, "7"));
  EXPECT_EQ("failed", UnderPicture("0\"" + std::string(3000000, 'x') + "\"", "7"));
}

TEST(NumberFormat, ParsesAnyBlankBetweenGroupsInUtf8) {
  const CodePageScope scope(65001);
  for (const char *text : {"1\342\200\257234,5", "1\302\240234,5", "1 234,5"}) {
    ExpectParsed(kNarrow, text, "1234.5");
  }
  EXPECT_EQ("1\342\200\257234,5", Formatted(Record(WREN_FMT_NUMBER, "1234.5"), kNarrow));
}

// Pictures and texts made of the characters that mean something, in all code pages: nothing is
// written beyond the output, and what is checked as good is written or too long.
TEST(NumberFormat, RandomPicturesAndTexts) {
  static const char kBytes[] = "0##0,,..;%\"'\\-() $5E\xE9\x83\xE2\x80\xAF\xA0";
  std::mt19937_64 random(11);
  const NumberValue zero = Number("0");
  int good = 0;
  for (int i = 0; i < 60000; ++i) {
    const CodePageScope scope(CODE_PAGES[i % 3]);
    std::string text;
    for (uint64_t n = random() % 12; n > 0; --n) text += kBytes[random() % (sizeof kBytes - 1)];
    const std::string shown = UnderPicture(text, i % 2 != 0 ? "-1234567.891" : "0.05", kGerman);
    ASSERT_NE("failed", shown) << Shown(text);
    good += shown == "bad" ? 0 : 1;
    FormatRecord record = Record(WREN_FMT_NUMBER, "99");
    record.input = text.c_str();
    if (ParseNumberBy(&record, kFrench) != 0) {
      NumberValue again;
      WRENNumAdd(&again, &record.number, &zero);
      ASSERT_EQ(0, std::memcmp(&again, &record.number, sizeof again)) << Shown(text);
    }
  }
  EXPECT_GT(good, 2000);
}

}  // namespace
