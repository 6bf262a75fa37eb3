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

#include "tests/dates/date_support.h"

// The C library forgets to free a search path of its own whenever a locale is opened while LOCPATH
// is set, which only this test does.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer asks for this name.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions();
const char *__lsan_default_suppressions() {  // NOLINT(bugprone-reserved-identifier)
  return "leak:__argz_add_sep\n";
}

namespace {

const char *const kLocales[] = {"de_DE", "ja_JP", "fr_FR", "fi_FI", "en_GB"};

// A directory with the locales, which is the system's only place for locales as long as it exists.
struct MadeLocales {
  std::filesystem::path directory;
  bool complete = false;

  MadeLocales() {
    char name[] = "/tmp/orli-locales-XXXXXX";
    if (mkdtemp(name) == nullptr) {
      return;
    }
    directory = name;
    complete = true;
    for (const std::string locale : kLocales) {
      std::string command = "localedef -f UTF-8 -i ";
      command.append(locale).append(" ").append(directory.string()).append("/").append(locale);
      command.append(".UTF-8 >/dev/null 2>&1");
      complete = complete && system(command.c_str()) == 0;
    }
    setenv("LOCPATH", name, 1);
  }
  ~MadeLocales() {
    unsetenv("LOCPATH");
    std::filesystem::remove_all(directory);
  }
  MadeLocales(const MadeLocales &) = delete;
  MadeLocales &operator=(const MadeLocales &) = delete;
};

MadeLocales *made = nullptr;

// An environment for the locales, made once and cleared away at the end.
struct LocaleEnvironment : testing::Environment {
  void SetUp() override { made = new MadeLocales; }
  void TearDown() override {
    delete made;
    made = nullptr;
  }
};
const auto *const environment = testing::AddGlobalTestEnvironment(new LocaleEnvironment);

#define NEEDS_LOCALES()                                                               \
  if (made == nullptr || !made->complete) {                                           \
    GTEST_SKIP() << "localedef or its sources are missing (Debian package: locales)"; \
  }

std::string Name(const char *list, int index) {
  std::string rest = list;
  for (; index >= 0; index--) {
    rest = rest.substr(rest.find(';') + 1);
  }
  return rest.substr(0, rest.find(';'));
}

std::string DefaultText(const DateTimeParts &parts) {
  FormatRecord record;
  WRENFmtInit(&record);
  char text[100];
  record.mode = WREN_FMT_DATETIME;
  record.useCountry = 1;
  record.output = text;
  record.parts = parts;
  return WRENFmtDate(&record) != 0 ? text : "no";
}

std::string Read(int32_t mode, const std::string &text) {
  FormatRecord record;
  WRENFmtInit(&record);
  record.mode = mode;
  record.useCountry = 1;
  record.input = text.c_str();
  return WRENFmtParseDate(&record) != 0 ? Iso(record.parts) : "no";
}

TEST(Country, BuiltInConventions) {
  const PlainSettings settings;
  for (const char *name : {"C", "POSIX", "C.UTF-8"}) {
    SCOPED_TRACE(name);
    if (WRENSetCountry(name) == 0) {
      // Some systems keep C.UTF-8 among the files that LOCPATH hides.
      EXPECT_STREQ(name, "C.UTF-8");
      continue;
    }
    for (const int32_t codePage : {1252, 932, 65001}) {
      WRENSetCodePage(codePage);
      EXPECT_TRUE(CountryNow() == CountryBuiltIn()) << codePage;
    }
  }
  LocaleBlock block;
  WRENFmtLoadLocale(&block);
  EXPECT_EQ(block.dateOrder, 0);
  EXPECT_EQ(block.clock24, 0);
  EXPECT_EQ(block.pivotYear, 1950);
  EXPECT_EQ(Name(block.dayNames, 0) + Name(block.dayNames, 13), "SundaySat");
  EXPECT_EQ(Name(block.monthNames, 11) + Name(block.monthNames, 12), "DecemberJan");
  EXPECT_STREQ(block.markers, ";AM;PM");
  WRENFmtLoadLocale(nullptr);
  WRENFmtInit(nullptr);
  WRENListBoxRefit(nullptr);
}

TEST(Country, UnknownLocalesChangeNothing) {
  const PlainSettings settings;
  const Country *before = &CountryNow();
  const std::string names[] = {"xx_YY.UTF-8",    "../../etc", "/etc/passwd",
                               "de_DE.nonsense", "\xFF;=",    std::string(100000, 'a')};
  for (const std::string &name : names) {
    EXPECT_EQ(WRENSetCountry(name.c_str()), 0) << name.substr(0, 40);
    EXPECT_EQ(&CountryNow(), before) << name.substr(0, 40);
  }
}

TEST(Country, SettingsOfLocales) {
  NEEDS_LOCALES();
  const PlainSettings settings;
  WRENSetCodePage(65001);
  const struct {
    const char *locale;
    DateOrder order;
    bool clock24;
    const char *text;  // of 31 December 1999, 21:30:15
    const char *decimal, *thousands;
    bool signFirst;
    int32_t decimals;
  } rows[] = {
      {"de_DE.UTF-8", DateOrder::DayMonthYear, true, "31.12.1999 21:30:15", ",", ".", false, 2},
      {"ja_JP.UTF-8", DateOrder::YearMonthDay, true, "1999/12/31 21:30:15", ".", ",", true, 0},
      {"fi_FI.UTF-8", DateOrder::DayMonthYear, true, "31.12.1999 21.30.15", ",", "\xE2\x80\xAF",
       false, 2},
      {"en_GB.UTF-8", DateOrder::DayMonthYear, true, "31/12/1999 21:30:15", ".", ",", true, 2},
  };
  const DateTimeParts parts = Parts(1999, 12, 31, 21, 30, 15);
  for (const auto &row : rows) {
    SCOPED_TRACE(row.locale);
    ASSERT_EQ(WRENSetCountry(row.locale), 1);
    const Country &country = CountryNow();
    EXPECT_EQ(country.dateOrder, row.order);
    EXPECT_EQ(country.clock24, row.clock24);
    EXPECT_STREQ(country.decimalSeparator, row.decimal);
    EXPECT_STREQ(country.thousandsSeparator, row.thousands);
    EXPECT_EQ(country.grouping[0], 3);
    EXPECT_EQ(country.currencySignFirst, row.signFirst);
    EXPECT_EQ(country.currencyDecimals, row.decimals);
    EXPECT_FALSE(country.negativeInParentheses);
    EXPECT_EQ(DefaultText(parts), row.text);
    EXPECT_EQ(Read(WREN_FMT_DATETIME, row.text), Iso(parts));
  }
}

// Names come in the active code page; a language that does not fit into it gives way to English.
TEST(Country, NamesFollowTheCodePage) {
  NEEDS_LOCALES();
  const PlainSettings settings;
  const struct {
    const char *locale;
    int32_t codePage;
    const char *march, *sunday, *beforeNoon, *currency;
  } rows[] = {
      {"de_DE.UTF-8", 1252, "M\xE4rz", "Sonntag", "AM", "\x80"},
      {"de_DE.UTF-8", 65001, "M\xC3\xA4rz", "Sonntag", "AM", "\xE2\x82\xAC"},
      {"de_DE.UTF-8", 932, "March", "Sonntag", "AM", "EUR"},
      {"ja_JP.UTF-8", 1252, "March", "Sunday", "AM", "JPY"},
      {"ja_JP.UTF-8", 932, "3\x8C\x8E", "\x93\xFA\x97\x6A\x93\xFA", "\x8C\xDF\x91\x4F", "\x81\x8F"},
      {"fr_FR.UTF-8", 1252, "mars", "dimanche", "AM", "\x80"},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(std::string(row.locale) + " in " + std::to_string(row.codePage));
    ASSERT_EQ(WRENSetCountry(row.locale), 1);
    ASSERT_EQ(WRENSetCodePage(row.codePage), 1);
    LocaleBlock block;
    WRENFmtLoadLocale(&block);
    EXPECT_EQ(Name(block.monthNames, 2), row.march);
    EXPECT_EQ(Name(block.dayNames, 0), row.sunday);
    EXPECT_EQ(Name(block.markers, 0), row.beforeNoon);
    EXPECT_STREQ(CountryNow().currencySign, row.currency);
  }
}

TEST(Country, MonthsOfTheLanguageAreRead) {
  NEEDS_LOCALES();
  const PlainSettings settings;
  const struct {
    const char *locale, *text, *date;
  } rows[] = {
      {"de_DE.UTF-8", "5 M\xC3\xA4rz 2012", "2012-03-05 00:00:00"},
      {"de_DE.UTF-8", "5 M\xC3\x84RZ 2012", "2012-03-05 00:00:00"},
      {"de_DE.UTF-8", "5 Dez 2012", "2012-12-05 00:00:00"},
      {"de_DE.UTF-8", "5 Dec 2012", "2012-12-05 00:00:00"},
      {"de_DE.UTF-8", "5 Dezem 2012", "2012-12-05 00:00:00"},
      {"de_DE.UTF-8", "5 Oktober 2012", "2012-10-05 00:00:00"},
      {"fr_FR.UTF-8", "5 f\xC3\xA9vrier 2012", "2012-02-05 00:00:00"},
      {"fr_FR.UTF-8", "5 f\xC3\xA9vr 2012", "2012-02-05 00:00:00"},
      {"fr_FR.UTF-8", "5 juil 2012", "2012-07-05 00:00:00"},
      {"fr_FR.UTF-8", "5 jui 2012", "no"},
      {"fr_FR.UTF-8", "5/6/2012", "2012-06-05 00:00:00"},
  };
  WRENSetCodePage(65001);
  for (const auto &row : rows) {
    SCOPED_TRACE(std::string(row.locale) + ": " + row.text);
    ASSERT_EQ(WRENSetCountry(row.locale), 1);
    EXPECT_EQ(Read(WREN_FMT_DATE, row.text), row.date);
  }
  WRENSetCountry("ja_JP.UTF-8");
  EXPECT_EQ(Read(WREN_FMT_TIME, "10:30 \xE5\x8D\x88\xE5\xBE\x8C"), "1900-01-01 22:30:00");
}

TEST(Country, EnvironmentChoosesByCategory) {
  NEEDS_LOCALES();
  const PlainSettings settings;
  const struct {
    const char *all, *time, *numeric, *lang;
    DateOrder order;
    const char *decimal;
  } rows[] = {
      {"", "", "", "", DateOrder::MonthDayYear, "."},
      {"", "", "", "de_DE.UTF-8", DateOrder::DayMonthYear, ","},
      {"", "ja_JP.UTF-8", "", "de_DE.UTF-8", DateOrder::YearMonthDay, ","},
      {"", "C", "de_DE.UTF-8", "fr_FR.UTF-8", DateOrder::MonthDayYear, ","},
      {"ja_JP.UTF-8", "de_DE.UTF-8", "de_DE.UTF-8", "de_DE.UTF-8", DateOrder::YearMonthDay, "."},
      {"", "xx_YY.UTF-8", "", "de_DE.UTF-8", DateOrder::MonthDayYear, ","},
  };
  for (const auto &row : rows) {
    setenv("LC_ALL", row.all, 1);
    setenv("LC_TIME", row.time, 1);
    setenv("LC_NUMERIC", row.numeric, 1);
    setenv("LANG", row.lang, 1);
    SCOPED_TRACE(std::string(row.all) + "|" + row.time + "|" + row.numeric + "|" + row.lang);
    EXPECT_EQ(WRENSetCountry(""), 1);
    EXPECT_EQ(CountryNow().dateOrder, row.order);
    EXPECT_STREQ(CountryNow().decimalSeparator, row.decimal);
  }
  for (const char *name : {"LC_ALL", "LC_TIME", "LC_NUMERIC", "LANG"}) {
    unsetenv(name);
  }
}

// A record in use stays as it is while the country changes, and the same settings are kept once.
TEST(Country, RecordsStay) {
  NEEDS_LOCALES();
  const PlainSettings settings;
  ASSERT_EQ(WRENSetCountry("de_DE.UTF-8"), 1);
  const Country &german = CountryNow();
  const Country copy = german;
  std::atomic<bool> stop = false;
  std::atomic<int> mixed = 0;
  const auto read = [&] {
    while (!stop) {
      const Country &now = CountryNow();
      const bool isGerman = strcmp(now.dateSeparator, ".") == 0;
      const bool hasGermanNames = strcmp(now.monthNames[9], "Oktober") == 0;
      mixed += isGerman == hasGermanNames ? 0 : 1;
    }
  };
  std::thread first(read);
  std::thread second(read);
  for (int i = 0; i < 200; i++) {
    WRENSetCountry(i % 2 == 0 ? "C" : "de_DE.UTF-8");
  }
  stop = true;
  first.join();
  second.join();
  EXPECT_EQ(mixed, 0);
  EXPECT_TRUE(german == copy);
  EXPECT_EQ(&CountryNow(), &german);
}

}  // namespace
