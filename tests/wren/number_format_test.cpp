// Numbers as text, back from text, and number pictures.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "closed/wren/country.h"
#include "closed/wren/number_format.h"
#include "wreni11.h"

namespace {

constexpr size_t kRoom = 100;

NumberValue Number(const char *text) {
  NumberValue value;
  WRENNumFromText(&value, text);
  return value;
}

template <size_t Room>
void Set(char (&target)[Room], const char *text) {
  std::snprintf(target, Room, "%s", text);
}

// Countries whose ways differ from the built-in one; their locales need not be installed.
Country With(const char *decimal, const char *thousands, const char *sign, bool signFirst) {
  Country country = CountryBuiltIn();
  Set(country.decimalSeparator, decimal);
  Set(country.currencyDecimalSeparator, decimal);
  Set(country.thousandsSeparator, thousands);
  Set(country.currencyThousandsSeparator, thousands);
  Set(country.currencySign, sign);
  country.currencySignFirst = signFirst;
  country.currencySpace = !signFirst;
  country.negativeInParentheses = signFirst;
  return country;
}

Country German() {
  return With(",", ".", "EUR", false);
}

Country French() {
  return With(",", "\240", "EUR", false);
}

Country Indian() {
  Country country = With(".", ",", "Rs.", true);
  std::memcpy(country.grouping, "\3\2\2\2", sizeof country.grouping);
  return country;
}

Country Swiss() {  // amounts with a point, plain numbers with a comma
  Country country = With(",", "'", "CHF", true);
  Set(country.currencyDecimalSeparator, ".");
  country.currencySpace = true;
  country.negativeInParentheses = false;
  return country;
}

Country OneGroup() {  // a single group of four, then none
  Country country = CountryBuiltIn();
  std::memcpy(country.grouping, "\4\0\0\0", sizeof country.grouping);
  return country;
}

using CountryMaker = Country (*)();

Country BuiltIn() {
  return CountryBuiltIn();
}

// What a record gives by a country; "failed" when the result is 0. Checks the room of the output.
std::string Formatted(FormatRecord record, const Country &country) {
  char output[kRoom + 16];
  std::memset(output, '!', sizeof output);
  record.output = output;
  const int32_t result = FormatNumberBy(&record, country);
  EXPECT_LT(strnlen(output, kRoom), kRoom);
  for (size_t i = kRoom; i < sizeof output; ++i) EXPECT_EQ(output[i], '!') << i;
  if (result == 0) {
    EXPECT_STREQ(output, "");
  }
  return result != 0 ? output : "failed";
}

FormatRecord CountryRecord(int32_t mode, const char *number) {
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = mode;
  record.useCountry = 1;
  record.flags = WREN_FMT_FLAG_NUMBER;
  record.number = Number(number);
  return record;
}

class NumberFormat : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(WRENSetCountry("C"), 1); }
  void TearDown() override { WRENSetCodePage(1252); }
};

const struct CountryRow {
  CountryMaker country;
  const char *number;
  const char *plain;
  const char *amount;
} kCountryRows[] = {
    {BuiltIn, "1234.5", "1,234.5", "$1,234.50"},
    {BuiltIn, "-1234.5", "-1,234.5", "($1,234.50)"},
    {BuiltIn, "0", "0", "$0.00"},
    {BuiltIn, "999.995", "999.995", "$1,000.00"},
    {BuiltIn, "-0.125", "-0.125", "($0.13)"},
    {BuiltIn, "-0.001", "-0.001", "$0.00"},
    {BuiltIn, "123", "123", "$123.00"},
    {BuiltIn, "1234567890123", "1,234,567,890,123", "$1,234,567,890,123.00"},
    {German, "-1234567.5", "-1.234.567,5", "-1.234.567,50 EUR"},
    {French, "1234.5", "1\240234,5", "1\240234,50 EUR"},
    {Indian, "123456789", "12,34,56,789", "Rs.12,34,56,789.00"},
    {Swiss, "-1234.5", "-1'234,5", "-CHF 1'234.50"},
    {OneGroup, "123456789", "12345,6789", "$12345,6789.00"},
};

TEST_F(NumberFormat, ByCountry) {
  for (const CountryRow &row : kCountryRows) {
    SCOPED_TRACE(row.plain);
    const Country country = row.country();
    EXPECT_EQ(Formatted(CountryRecord(WREN_FMT_NUMBER, row.number), country), row.plain);
    EXPECT_EQ(Formatted(CountryRecord(WREN_FMT_CURRENCY, row.number), country), row.amount);
  }
  char output[kRoom];
  FormatRecord record = CountryRecord(WREN_FMT_CURRENCY, "1234.5");
  record.output = output;
  EXPECT_EQ(WRENFmtNumber(&record), 1);
  EXPECT_STREQ(output, "$1,234.50");
  record.fixedDecimals = 1;
  record.decimals = 0;
  EXPECT_EQ(Formatted(record, German()), "1.235 EUR");
}

TEST_F(NumberFormat, ParsesWhatItFormats) {
  for (const CountryRow &row : kCountryRows) {
    const Country country = row.country();
    for (const int32_t mode : {WREN_FMT_NUMBER, WREN_FMT_CURRENCY, WREN_FMT_PICTURE}) {
      for (const char *text : {row.plain, row.amount}) {
        SCOPED_TRACE(text);
        FormatRecord record = CountryRecord(mode, "99");
        record.input = text;
        ASSERT_EQ(ParseNumberBy(&record, country), 1);
        FormatRecord back = record;
        back.mode = text == row.plain ? WREN_FMT_NUMBER : WREN_FMT_CURRENCY;
        EXPECT_EQ(Formatted(back, country), text);
      }
    }
  }
}

TEST_F(NumberFormat, ByTheFieldsOfTheRecord) {
  static const struct {
    const char *number;
    char thousands;
    char decimal;
    int32_t fixedDecimals;
    int32_t decimals;
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
      SCOPED_TRACE(std::string(row.number) + " decimals " + std::to_string(row.decimals));
      FormatRecord record = CountryRecord(mode, row.number);
      record.useCountry = 0;
      record.thousandsSeparator = row.thousands;
      record.decimalSeparator = row.decimal;
      record.fixedDecimals = row.fixedDecimals;
      record.decimals = row.decimals;
      EXPECT_EQ(Formatted(record, German()), row.expected);
    }
  }
}

TEST_F(NumberFormat, NullIsTheEmptyText) {
  for (const int32_t mode : {WREN_FMT_NUMBER, WREN_FMT_CURRENCY, WREN_FMT_PICTURE}) {
    FormatRecord record = CountryRecord(mode, "");
    record.numberPicture = "0.00;(0.00);0";
    EXPECT_EQ(Formatted(record, BuiltIn()), "") << mode;
    record.number = Number("5");
    record.number.length = 10;  // a date
    EXPECT_EQ(Formatted(record, BuiltIn()), "") << mode;
  }
  for (const int32_t mode : {0, 1, 3, 7, -1}) {
    EXPECT_EQ(Formatted(CountryRecord(mode, "5"), BuiltIn()), "failed") << mode;
  }
  EXPECT_EQ(WRENFmtNumber(nullptr), 0);
  EXPECT_EQ(WRENFmtParseNumber(nullptr), 0);
  EXPECT_EQ(WRENFmtCheckNumberPicture(nullptr), 0);
}

// Parses by a country and expects the number, or a refusal that changes nothing where it is null.
void ExpectParsed(const Country &country, const char *text, const char *number) {
  SCOPED_TRACE(std::string(text).substr(0, 40));
  FormatRecord record = CountryRecord(WREN_FMT_NUMBER, "99");
  record.input = text;
  EXPECT_EQ(ParseNumberBy(&record, country), number != nullptr ? 1 : 0);
  const NumberValue expected = Number(number != nullptr ? number : "99");
  EXPECT_EQ(std::memcmp(&record.number, &expected, sizeof expected), 0);
}

TEST_F(NumberFormat, Parse) {
  static const struct {
    CountryMaker country;
    const char *text;
    const char *expected;
  } kRows[] = {{BuiltIn, " 1,234,567.50 ", "1234567.5"},
               {BuiltIn, ".5", "0.5"},
               {BuiltIn, "5.", "5"},
               {BuiltIn, "0,005", "5"},
               {BuiltIn, "+5", "5"},
               {BuiltIn, "- 5", "-5"},
               {BuiltIn, "5 -", "-5"},
               {BuiltIn, "( $ 5.25 )", "-5.25"},
               {BuiltIn, "$-5", "-5"},
               {BuiltIn, "-$5", "-5"},
               {BuiltIn, "5$", "5"},
               {BuiltIn, "-0", "0"},
               {German, "EUR 1.234,50-", "-1234.5"},
               {German, "1234,5EUR", "1234.5"},
               {French, "1 234 567,5", "1234567.5"},
               {French, "5\240EUR", "5"},
               {Indian, "Rs. 12,34,567.5", "1234567.5"},
               {Swiss, "1'234,5", "1234.5"},
               {Swiss, "CHF 1'234.5", "1234.5"},
               {Swiss, "1'234.5", nullptr},
               {Indian, "1,234,567", nullptr},
               {OneGroup, "1,2345,6789", nullptr}};
  for (const auto &row : kRows) ExpectParsed(row.country(), row.text, row.expected);
}

TEST_F(NumberFormat, ParseRefuses) {
  static const char *const kTexts[] = {
      "",        " ",        ".",      "-",      "$",    "()",   "abc", "5 5",
      "5x",      "1,23",     "--5",    "-5-",    "5)",   ")5(",  "$5$", "12,34,567",
      "1,23456", "1234,567", ",123",   "1,,234", "-(5)", "(-5)", "(5",  "5%",
      "1e5",     "1.234,5",  "1,234,", "1.2.3",  "5 (",  "$",    "\n5", "5\240x"};
  for (const char *text : kTexts) ExpectParsed(BuiltIn(), text, nullptr);
}

TEST_F(NumberFormat, ParseTakesAnyLength) {
  std::string zeros = "0";
  for (int i = 0; i < 500000; ++i) zeros += ",000";
  ExpectParsed(BuiltIn(), (zeros + ",123").c_str(), "123");
  ExpectParsed(BuiltIn(), (zeros + ",1234").c_str(), nullptr);
  ExpectParsed(BuiltIn(), ("1" + zeros.substr(1)).c_str(), nullptr);  // too large
  ExpectParsed(BuiltIn(), (std::string(2000000, '0') + "5").c_str(), "5");
  ExpectParsed(BuiltIn(), (std::string(2000000, ' ') + "5").c_str(), "5");
  ExpectParsed(BuiltIn(), ("." + std::string(2000000, '3')).c_str(),
               "0.33333333333333333333333333");
}

std::string UnderPicture(const char *picture, const char *number, const Country &country) {
  FormatRecord record = CountryRecord(WREN_FMT_PICTURE, number);
  record.numberPicture = picture;
  std::string text = Formatted(record, country);
  if (WRENFmtCheckNumberPicture(&record) == 0) {
    EXPECT_EQ(text, "failed") << picture;
  }
  return text;
}

TEST_F(NumberFormat, Pictures) {
  static const struct {
    const char *picture;
    const char *number;
    const char *expected;
  } kRows[] = {
      {"0", "1234.5", "1235"},
      {"0.00", "1234.5", "1234.50"},
      {"0.00", "-0.001", "0.00"},
      {"#,##0.00", "1234567.891", "1,234,567.89"},
      {"#,##0", "12", "12"},
      {"0,000", "12", "0,012"},
      {"#", "0", ""},
      {"#.##", "0.5", ".5"},
      {"#.##", "5", "5"},
      {"0.0##", "1.25", "1.25"},
      {"0.0##", "1", "1.0"},
      {"0.#0", "1.5", "1.50"},
      {"0#", "7", "07"},
      {".00", "1234.5", "1234.50"},
      {".00", "0.5", ".50"},
      {"00000", "123", "00123"},
      {"(000) 000-0000", "5551234567", "(555) 123-4567"},
      {"##-##", "1", "-1"},
      {"##-##", "12345", "123-45"},
      {"0%", "0.125", "13%"},
      {"0.0%", "0.125", "12.5%"},
      {"%0", "1e25", "%1000000000000000000000000000"},
      {"0.00 \"pcs; 0\"", "2", "2.00 pcs; 0"},
      {"'it''s' 0", "2", "its 2"},
      {"\\#0\\\\", "2", "#2\\"},
      {"$#,##0.00", "-1234.5", "-$1,234.50"},
      {"$#,##0.00;($#,##0.00)", "-1234.5", "($1,234.50)"},
      {"$#,##0.00;($#,##0.00)", "1234.5", "$1,234.50"},
      {"$#,##0.00;($#,##0.00)", "-0.004", "$0.00"},
      {"0;-0;\"none\"", "0", "none"},
      {"0;-0;\"none\"", "-0.4", "none"},
      {"0;-0;\"none\"", "-0.5", "-1"},
      {"0;;", "-5", ""},
      {"0;;", "0", ""},
      {"0;\"minus\"", "-0.1", "minus"},
      {"0.00;0", "-1.5", "2"},
      {"0\xE9\x80", "5", "5\xE9\x80"},
  };
  for (const auto &row : kRows) {
    EXPECT_EQ(UnderPicture(row.picture, row.number, BuiltIn()), row.expected)
        << row.picture << " of " << row.number;
  }
  EXPECT_EQ(UnderPicture("#,##0.00", "1234567.891", German()), "1.234.567,89");
  EXPECT_EQ(UnderPicture("#,##0", "1234567", Indian()), "12,34,567");
  FormatRecord record = CountryRecord(WREN_FMT_PICTURE, "1234.5");
  record.numberPicture = "#,##0.00";
  record.useCountry = 0;
  record.thousandsSeparator = '_';
  record.decimalSeparator = ':';
  EXPECT_EQ(Formatted(record, German()), "1_234:50");
}

TEST_F(NumberFormat, BadPictures) {
  static const char *const kPictures[] = {
      "",         "abc", "0a",   "1",     "\"0",  "'",        "0\\",   "0.0.0", "0.",      "0.;0",
      ",0",       "0,",  "0,.0", "0.0,",  "0.,0", "0%%",      ";0",    "-;0",   "0;0;0;0", "0;,0",
      "\"text\"", "%",   "0\t",  "0\x7F", "YYYY", "0;\"open", "0;0;x", "#,;0",  "0E+0"};
  for (const char *picture : kPictures) {
    EXPECT_EQ(UnderPicture(picture, "5", BuiltIn()), "failed") << picture;
    FormatRecord record = CountryRecord(WREN_FMT_PICTURE, "5");
    record.numberPicture = picture;
    EXPECT_EQ(WRENFmtCheckNumberPicture(&record), 0) << picture;
  }
  FormatRecord record = CountryRecord(WREN_FMT_PICTURE, "5");
  EXPECT_EQ(WRENFmtCheckNumberPicture(&record), 0) << "no picture";
}

TEST_F(NumberFormat, PicturesUpToTheRoom) {
  const std::string zeros(99, '0');
  EXPECT_EQ(UnderPicture(zeros.c_str(), "0", BuiltIn()), zeros);
  EXPECT_EQ(UnderPicture(zeros.c_str(), "-1", BuiltIn()), "failed") << "100 characters";
  EXPECT_EQ(UnderPicture((zeros + "0").c_str(), "1", BuiltIn()), "failed") << "100 places";
  const std::string literal = "0" + std::string(98, '-');
  EXPECT_EQ(UnderPicture(literal.c_str(), "7", BuiltIn()), "7" + std::string(98, '-'));
  EXPECT_EQ(UnderPicture((literal + "-").c_str(), "7", BuiltIn()), "failed");
  const std::string megabytes = "0\"" + std::string(3000000, 'x') + "\"";
  EXPECT_EQ(UnderPicture(megabytes.c_str(), "7", BuiltIn()), "failed");
}

// The second byte of a double character may look like a mark of the picture.
TEST_F(NumberFormat, PicturesInOtherCodePages) {
  ASSERT_EQ(WRENSetCodePage(932), 1);
  EXPECT_EQ(UnderPicture("0\x83\x5C", "5", BuiltIn()), "5\x83\x5C");
  EXPECT_EQ(UnderPicture("\"\x95\x5C\"0", "5", BuiltIn()),
            "\x95\x5C"
            "5");
  EXPECT_EQ(UnderPicture("0\x83", "5", BuiltIn()), "5\x83") << "a lead byte at the end";
  EXPECT_EQ(UnderPicture("\"\x83\"0", "5", BuiltIn()), "failed") << "no quote but a second byte";
  ASSERT_EQ(WRENSetCodePage(65001), 1);
  EXPECT_EQ(UnderPicture("0 \xE2\x82\xAC", "5", BuiltIn()), "5 \xE2\x82\xAC");
  FormatRecord record = CountryRecord(WREN_FMT_NUMBER, "0");
  Country country = German();
  Set(country.thousandsSeparator, "\xE2\x80\xAF");
  for (const char *text : {"1\342\200\257234,5", "1\302\240234,5", "1 234,5"}) {
    record.input = text;
    EXPECT_EQ(ParseNumberBy(&record, country), 1) << text;
    EXPECT_EQ(Formatted(record, country), "1\342\200\257234,5");
  }
}

// Pictures and texts made of the characters that mean something, in all code pages: nothing is
// written beyond the output, and what is checked as good is written or too long.
TEST_F(NumberFormat, RandomPicturesAndTexts) {
  static const char kBytes[] = "0##0,,..;%\"'\\-() $5E\xE9\x83\xE2\x80\xAF\xA0";
  std::mt19937_64 random(11);
  int good = 0;
  for (int i = 0; i < 60000; ++i) {
    const int32_t pages[] = {1252, 932, 65001};
    WRENSetCodePage(pages[i % 3]);
    std::string text;
    for (uint64_t n = random() % 12; n > 0; --n) text += kBytes[random() % (sizeof kBytes - 1)];
    SCOPED_TRACE(text);
    FormatRecord record = CountryRecord(WREN_FMT_PICTURE, i % 2 != 0 ? "-1234567.891" : "0.05");
    record.numberPicture = text.c_str();
    const int32_t checked = WRENFmtCheckNumberPicture(&record);
    good += checked;
    ASSERT_EQ(Formatted(record, German()) != "failed", checked == 1);
    record.input = text.c_str();
    if (ParseNumberBy(&record, French()) != 0) {
      NumberValue again;
      const NumberValue zero = Number("0");
      WRENNumAdd(&again, &record.number, &zero);
      ASSERT_EQ(std::memcmp(&again, &record.number, sizeof again), 0);
    }
  }
  EXPECT_GT(good, 2000);
}

}  // namespace
