// Numbers as text, back from text, and number pictures.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "closed/wren/country.h"
#include "closed/wren/number_format.h"
#include "support/cases.h"
#include "text_model.h"
#include "wreni11.h"

namespace {

constexpr size_t kOutputSize = 100;

NumberValue Number(const char *text) {
  NumberValue value;
  WRENNumFromText(&value, text);
  return value;
}

// Countries whose conventions differ from the built-in one; their locales need not be installed.
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
const std::map<std::string, Country> kCountries = {
    {"builtin", CountryBuiltIn()},
    {"german", With(",", ",", ".", "\3\3\3\3", "EUR", false, true, false)},
    {"french", With(",", ",", "\240", "\3\3\3\3", "EUR", false, true, false)},
    {"narrow", With(",", ",", "\xE2\x80\xAF", "\3\3\3\3", "EUR", false, true, false)},
    {"indian", With(".", ".", ",", "\3\2\2\2", "Rs.", true, false, true)},
    {"swiss", With(",", ".", "'", "\3\3\3\3", "CHF", true, true, false)},
    {"onegroup", With(".", ".", ",", "\4\0\0\0", "$", true, false, true)},
};
// clang-format on
const Country &kBuiltIn = kCountries.at("builtin"), &kGerman = kCountries.at("german"),
              &kFrench = kCountries.at("french"), &kNarrow = kCountries.at("narrow");

std::vector<Case> Cases(const char *section) {
  return CasesOf("wren/number_cases.txt", section);
}

// The output of a record for a country; "failed" when the result is 0. Checks the bounds of the
// output.
std::string Formatted(FormatRecord record, const Country &country) {
  std::string output(kOutputSize + 16, '!');
  record.output = output.data();
  const int32_t result = FormatNumberBy(&record, country);
  EXPECT_LT(strnlen(record.output, kOutputSize), kOutputSize);
  EXPECT_EQ(std::string(16, '!'), output.substr(kOutputSize));
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

TEST(NumberFormat, ByCountry) {
  for (const Case &row : Cases("countries")) {
    const Country &country = kCountries.at(row[0]);
    const char *number = row[1].c_str();
    EXPECT_EQ(row[2], Formatted(Record(WREN_FMT_NUMBER, number), country)) << row.where;
    EXPECT_EQ(row[3], Formatted(Record(WREN_FMT_CURRENCY, number), country)) << row.where;
  }
  ASSERT_EQ(1, WRENSetCountry("C"));
  char output[kOutputSize];
  FormatRecord record = Record(WREN_FMT_CURRENCY, "1234.5");
  record.output = output;
  EXPECT_EQ(1, WRENFmtNumber(&record));
  EXPECT_STREQ("$1,234.50", output);
  record.fixedDecimals = 1;
  EXPECT_EQ("1.235 EUR", Formatted(record, kGerman));
}

TEST(NumberFormat, ParsesWhatItFormats) {
  for (const Case &row : Cases("countries")) {
    const Country &country = kCountries.at(row[0]);
    for (const int32_t mode : {WREN_FMT_NUMBER, WREN_FMT_CURRENCY, WREN_FMT_PICTURE}) {
      for (const size_t cell : {size_t{2}, size_t{3}}) {
        FormatRecord record = Record(mode, "99");
        record.input = row[cell].c_str();
        EXPECT_EQ(1, ParseNumberBy(&record, country)) << row.where;
        record.mode = cell == 2 ? WREN_FMT_NUMBER : WREN_FMT_CURRENCY;
        EXPECT_EQ(row[cell], Formatted(record, country)) << row.where << " in mode " << mode;
      }
    }
  }
}

TEST(NumberFormat, ByTheFieldsOfTheRecord) {
  for (const Case &row : Cases("fields")) {
    for (const int32_t mode : {WREN_FMT_NUMBER, WREN_FMT_CURRENCY}) {
      FormatRecord record = Record(mode, row[0].c_str());
      record.useCountry = 0;
      record.thousandsSeparator = row[1][0];
      record.decimalSeparator = row[2][0];
      record.fixedDecimals = row.Int(3);
      record.decimals = row.Int(4);
      EXPECT_EQ(row[5], Formatted(record, kGerman)) << row.where;
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
  for (const Case &row : Cases("parse")) {
    SCOPED_TRACE(row.where);
    ExpectParsed(kCountries.at(row[0]), row[1], row[2] == "none" ? nullptr : row[2].c_str());
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

// The output of the picture; the check of the picture and the format must agree.
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
  for (const Case &row : Cases("pictures")) {
    const CodePageScope scope(row.Int(0));
    EXPECT_EQ(row[4], UnderPicture(row[2], row[3].c_str(), kCountries.at(row[1]))) << row.where;
  }
}

TEST(NumberFormat, BadPictures) {
  for (const Case &row : Cases("bad")) EXPECT_EQ("bad", UnderPicture(row[0], "5")) << row.where;
  FormatRecord record = Record(WREN_FMT_PICTURE, "5");
  EXPECT_EQ(0, WRENFmtCheckNumberPicture(&record)) << "no picture";
}

TEST(NumberFormat, PicturesUpToTheLongestText) {
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
// written beyond the output, and a picture that is valid is written or too long.
TEST(NumberFormat, RandomPicturesAndTexts) {
  static const char kBytes[] = "0##0,,..;%\"'\\-() $5E\xE9\x83\xE2\x80\xAF\xA0";
  std::mt19937_64 random(11);
  const NumberValue zero = Number("0");
  int good = 0;
  for (int i = 0; i < 60000; ++i) {
    const CodePageScope scope(kCodePages[i % 3]);
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
