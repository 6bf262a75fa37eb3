// The country settings of locales. The locales are made for the test from the system's sources;
// where these are missing the tests are skipped.
#include "closed/wren/country.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "closed/wren/date_format.h"
#include "tests/dates/date_support.h"

// The C library forgets to free a search path of its own whenever a locale is opened while LOCPATH
// is set, which only this test does.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer asks for this name.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions();
const char *__lsan_default_suppressions() {  // NOLINT(bugprone-reserved-identifier)
  return "leak:__argz_add_sep\n";
}

namespace {

bool haveLocales = false;

// A directory with the locales, the system's only place for locales until it is cleared away.
struct LocaleEnvironment : testing::Environment {
  char directory[30] = "/tmp/orli-locales-XXXXXX";

  void SetUp() override {
    ASSERT_NE(mkdtemp(directory), nullptr);
    const std::string command =
        std::string("cd ") + directory + " && for l in de_DE ja_JP fr_FR fi_FI en_GB; do" +
        " localedef -f UTF-8 -i $l ./$l.UTF-8 || exit 1; done >/dev/null 2>&1";
    haveLocales = system(command.c_str()) == 0;
    setenv("LOCPATH", directory, 1);
  }
  void TearDown() override {
    unsetenv("LOCPATH");
    std::filesystem::remove_all(directory);
  }
};
const auto *const environment = testing::AddGlobalTestEnvironment(new LocaleEnvironment);

struct CountryOfLocale : testing::Test {
  const PlainSettings settings;

  void SetUp() override {
    if (!haveLocales) {
      GTEST_SKIP() << "localedef or its sources are missing (Debian package: locales)";
    }
    WRENSetCodePage(65001);
  }
};

TEST(Country, BuiltInConventions) {
  const PlainSettings settings;
  for (const char *name : {"POSIX", "C"}) {
    ASSERT_EQ(WRENSetCountry(name), 1) << name;
    for (const int32_t codePage : {65001, 932, 1252}) {
      WRENSetCodePage(codePage);
      EXPECT_TRUE(CountryNow() == CountryBuiltIn()) << name << " in " << codePage;
    }
  }
  LocaleBlock block;
  WRENFmtLoadLocale(&block);
  EXPECT_EQ(block.dateOrder + block.clock24, 0);
  EXPECT_EQ(block.pivotYear, 1950);
  WRENFmtLoadLocale(nullptr);
  WRENFmtInit(nullptr);
  WRENListBoxRefit(nullptr);
  const std::string names[] = {"xx_YY.UTF-8",    "../../etc", "/etc/passwd",
                               "de_DE.nonsense", "\xFF;=",    std::string(100000, 'a')};
  for (const std::string &name : names) {
    EXPECT_EQ(WRENSetCountry(name.c_str()), 0) << name.substr(0, 40);
    EXPECT_TRUE(CountryNow() == CountryBuiltIn()) << name.substr(0, 40);
  }
}

TEST_F(CountryOfLocale, Settings) {
  const struct {
    const char *locale;
    DateOrder order;
    const char *text;  // of 31 December 1999, 21:30:15
    const char *decimal, *thousands;
    bool signFirst;
    int32_t decimals;
  } rows[] = {
      // clang-format off
      {"de_DE.UTF-8", DateOrder::DayMonthYear, "31.12.1999 21:30:15", ",", ".", false, 2},
      {"ja_JP.UTF-8", DateOrder::YearMonthDay, "1999/12/31 21:30:15", ".", ",", true, 0},
      {"fi_FI.UTF-8", DateOrder::DayMonthYear, "31.12.1999 21.30.15", ",", "\xE2\x80\xAF", false, 2},
      {"en_GB.UTF-8", DateOrder::DayMonthYear, "31/12/1999 21:30:15", ".", ",", true, 2},
      // clang-format on
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.locale);
    ASSERT_EQ(WRENSetCountry(row.locale), 1);
    const Country &country = CountryNow();
    EXPECT_EQ(country.dateOrder, row.order);
    EXPECT_TRUE(country.clock24);
    EXPECT_STREQ(country.decimalSeparator, row.decimal);
    EXPECT_STREQ(country.thousandsSeparator, row.thousands);
    EXPECT_EQ(country.grouping[0], 3);
    EXPECT_EQ(country.currencySignFirst, row.signFirst);
    EXPECT_EQ(country.currencyDecimals, row.decimals);
    EXPECT_FALSE(country.negativeInParentheses);
    char text[kDateTextRoom];
    FormatRecord record = Record(WREN_FMT_DATETIME);
    record.output = text;
    record.parts = Parts(1999, 12, 31, 21, 30, 15);
    EXPECT_EQ(WRENFmtDate(&record), 1);
    EXPECT_STREQ(text, row.text);
    EXPECT_EQ(Read(WREN_FMT_DATETIME, text), "1999-12-31 21:30:15");
  }
}

// Names come in the active code page; a language that does not fit into it gives way to English.
TEST_F(CountryOfLocale, NamesFollowTheCodePage) {
  const struct {
    const char *locale;
    int32_t codePage;
    const char *march, *sunday, *beforeNoon, *currency;
  } rows[] = {
      // clang-format off
      {"de_DE.UTF-8", 1252, "M\xE4rz", "Sonntag", "AM", "\x80"},
      {"de_DE.UTF-8", 65001, "M\xC3\xA4rz", "Sonntag", "AM", "\xE2\x82\xAC"},
      {"de_DE.UTF-8", 932, "March", "Sonntag", "AM", "EUR"},
      {"ja_JP.UTF-8", 1252, "March", "Sunday", "AM", "JPY"},
      {"ja_JP.UTF-8", 932, "3\x8C\x8E", "\x93\xFA\x97\x6A\x93\xFA", "\x8C\xDF\x91\x4F", "\x81\x8F"},
      {"fr_FR.UTF-8", 1252, "mars", "dimanche", "AM", "\x80"},
      // clang-format on
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(std::string(row.locale) + " in " + std::to_string(row.codePage));
    ASSERT_EQ(WRENSetCountry(row.locale), 1);
    WRENSetCodePage(row.codePage);
    LocaleBlock block;
    WRENFmtLoadLocale(&block);
    EXPECT_EQ(NameOfList(block.monthNames, 2), row.march);
    EXPECT_EQ(NameOfList(block.dayNames, 0), row.sunday);
    EXPECT_EQ(NameOfList(block.markers, 0), row.beforeNoon);
    EXPECT_STREQ(CountryNow().currencySign, row.currency);
  }
}

TEST_F(CountryOfLocale, MonthsOfTheLanguageAreRead) {
  const struct {
    const char *locale, *text, *date;
  } rows[] = {
      {"de_DE.UTF-8", "5 M\xC3\xA4rz 2012", "2012-03-05 00:00:00"},
      {"de_DE.UTF-8", "5 M\xC3\x84RZ 2012", "2012-03-05 00:00:00"},
      {"de_DE.UTF-8", "5 Dez 2012", "2012-12-05 00:00:00"},
      {"de_DE.UTF-8", "5 Dec 2012", "2012-12-05 00:00:00"},
      {"de_DE.UTF-8", "5 Dezem 2012", "2012-12-05 00:00:00"},
      {"fr_FR.UTF-8", "5 f\xC3\xA9vr 2012", "2012-02-05 00:00:00"},
      {"fr_FR.UTF-8", "5 juil 2012", "2012-07-05 00:00:00"},
      {"fr_FR.UTF-8", "5 jui 2012", "no"},
      {"fr_FR.UTF-8", "5/6/2012 14:00", "2012-06-05 14:00:00"},
      {"ja_JP.UTF-8", "12/6/5 10:30 \xE5\x8D\x88\xE5\xBE\x8C", "2012-06-05 22:30:00"},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(std::string(row.locale) + ": " + row.text);
    ASSERT_EQ(WRENSetCountry(row.locale), 1);
    EXPECT_EQ(Read(WREN_FMT_DATETIME, row.text), row.date);
  }
}

TEST_F(CountryOfLocale, EnvironmentChoosesByCategory) {
  const char *const names[] = {"LC_ALL", "LC_TIME", "LC_NUMERIC", "LANG"};
  const struct {
    const char *values[4];
    DateOrder order;
    const char *decimal;
  } rows[] = {
      {{"", "", "", ""}, DateOrder::MonthDayYear, "."},
      {{"", "", "", "de_DE.UTF-8"}, DateOrder::DayMonthYear, ","},
      {{"", "C", "de_DE.UTF-8", "fr_FR.UTF-8"}, DateOrder::MonthDayYear, ","},
      {{"ja_JP.UTF-8", "de_DE.UTF-8", "", "de_DE.UTF-8"}, DateOrder::YearMonthDay, "."},
      {{"", "xx_YY.UTF-8", "", "de_DE.UTF-8"}, DateOrder::MonthDayYear, ","},
  };
  for (const auto &row : rows) {
    for (size_t i = 0; i < 4; i++) {
      setenv(names[i], row.values[i], 1);
    }
    EXPECT_EQ(WRENSetCountry(""), 1);
    EXPECT_EQ(CountryNow().dateOrder, row.order) << testing::PrintToString(row.values);
    EXPECT_STREQ(CountryNow().decimalSeparator, row.decimal) << testing::PrintToString(row.values);
  }
  for (const char *name : names) {
    unsetenv(name);
  }
}

// A record in use stays as it is while the country changes, and the same settings are kept once.
TEST_F(CountryOfLocale, RecordsStay) {
  ASSERT_EQ(WRENSetCountry("de_DE.UTF-8"), 1);
  const Country &german = CountryNow();
  const Country copy = german;
  std::atomic<bool> stop = false;
  std::atomic<int> mixed = 0;
  std::thread reader([&] {
    while (!stop) {
      const Country &now = CountryNow();
      mixed += (now.dateSeparator[0] == '.') == (strcmp(now.monthNames[9], "Oktober") == 0) ? 0 : 1;
    }
  });
  for (int i = 0; i < 200; i++) {
    WRENSetCountry(i % 2 == 0 ? "C" : "de_DE.UTF-8");
  }
  stop = true;
  reader.join();
  EXPECT_EQ(mixed, 0);
  EXPECT_TRUE(german == copy);
  EXPECT_EQ(&CountryNow(), &german);
}

}  // namespace
