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
#include "support/cases.h"
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

// Creates a locale of each name, without the categories that take long to create and are not
// tested. "points" is Pashto, whose separators are in no code page but UTF-8, with a full stop
// between the thousands of plain numbers.
constexpr const char *kMakeLocales = R"( || exit 1
for name in de_DE ja_JP fr_FR fi_FI en_GB pt_PT hi_IN points; do
  for c in IDENTIFICATION CTYPE COLLATE TIME NUMERIC MONETARY MESSAGES PAPER NAME ADDRESS TELEPHONE \
      MEASUREMENT; do
    case $c-$name in
      COLLATE-*) text='copy "POSIX"' ;;
      NUMERIC-points) text='decimal_point "<U066B>"\nthousands_sep "."\ngrouping 3;3' ;;
      *-points) text='copy "ps_AF"' ;;
      *) text='copy "'$name'"' ;;
    esac
    printf "LC_$c\n$text\nEND LC_$c\n"
  done >$name.source
  localedef -c -f UTF-8 -i ./$name.source ./$name.UTF-8 || [ $? = 1 ] || exit 1
done >log 2>&1
)";

// A directory with the locales, the system's only place for locales until it is cleared away.
struct LocaleEnvironment : testing::Environment {
  char directory[30] = "/tmp/orli-locales-XXXXXX";

  void SetUp() override {
    ASSERT_NE(mkdtemp(directory), nullptr);
    const std::string command = std::string("cd ") + directory + kMakeLocales;
    haveLocales = system(command.c_str()) == 0;
    setenv("LOCPATH", directory, 1);
  }
  void TearDown() override {
    unsetenv("LOCPATH");
    std::filesystem::remove_all(directory);
  }
};
const auto *const kEnvironment = testing::AddGlobalTestEnvironment(new LocaleEnvironment);

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

// Names are in the active code page; a language that does not fit into it is replaced by English.
TEST_F(CountryOfLocale, SettingsAndNames) {
  for (const Case &row : CasesOf("dates/date_cases.txt", "countries")) {
    SCOPED_TRACE(row.where);
    ASSERT_EQ(WRENSetCountry(row[0].c_str()), 1);
    WRENSetCodePage(row.Int(1));
    const Country &country = CountryNow();
    std::string numbers = std::string(country.decimalSeparator) + country.thousandsSeparator;
    numbers.append(country.currencyDecimalSeparator).append(country.currencyThousandsSeparator);
    for (const int32_t number :
         {int32_t{country.grouping[0]}, int32_t{country.currencySignFirst},
          country.currencyDecimals, int32_t{country.negativeInParentheses}}) {
      numbers += std::to_string(number);
    }
    EXPECT_EQ(numbers, row[3]);
    const FormatRecord names = Record(WREN_FMT_DATETIME, 0);
    std::string joined(NameOfList(names.monthNames, 2));
    joined.append(" ").append(NameOfList(names.dayNames, 0)).append(" ");
    joined.append(NameOfList(names.markers, 0)).append(" ").append(country.currencySign);
    EXPECT_EQ(joined, row[4]);
    EXPECT_EQ(Write(Record(WREN_FMT_DATETIME), Parts(1999, 12, 31, 21, 30, 15)), row[2]);
    EXPECT_EQ(Read(WREN_FMT_DATETIME, row[2]), "1999-12-31 21:30:15");
  }
}

TEST_F(CountryOfLocale, MonthsOfTheLanguageAreRead) {
  for (const Case &row : CasesOf("dates/date_cases.txt", "months")) {
    SCOPED_TRACE(row.where);
    ASSERT_EQ(WRENSetCountry(row[0].c_str()), 1);
    EXPECT_EQ(Read(WREN_FMT_DATETIME, row[1]), row[2]);
  }
}

// A LocaleBlock is loaded once and may outlive a change of the code page.
TEST_F(CountryOfLocale, LoadedNamesFollowTheCodePage) {
  ASSERT_EQ(WRENSetCountry("de_DE.UTF-8"), 1);
  FormatRecord record = Record(WREN_FMT_DATE, 1);
  record.picture = "d. MMMM yyyy";
  ASSERT_EQ(WRENSetCountry("C"), 1);
  const struct {
    int32_t codePage;
    const char *text;
  } rows[] = {{1252, "5. M\xE4rz 2012"}, {932, "5. March 2012"}, {65001, "5. M\xC3\xA4rz 2012"}};
  for (const auto &[codePage, text] : rows) {
    WRENSetCodePage(codePage);
    EXPECT_EQ(Write(record, Parts(2012, 3, 5)), text);
    record.input = text;
    record.parts = {};
    EXPECT_EQ(WRENFmtParseDate(&record), 1) << text;
    EXPECT_EQ(Iso(record.parts), "2012-03-05 00:00:00") << text;
  }
}

// Amounts are grouped by the settings of money, also where plain numbers are not.
TEST_F(CountryOfLocale, MoneyHasGroupsOfItsOwn) {
  const struct {
    const char *locale, *plain, *amount;
  } rows[] = {
      {"pt_PT.UTF-8", "1234567,5", "1.234.567,50 \xE2\x82\xAC"},
      {"hi_IN.UTF-8", "1,234,567.5",
       "\xE2\x82\xB9"
       "12,34,567.50"},
  };
  for (const auto &row : rows) {
    ASSERT_EQ(WRENSetCountry(row.locale), 1);
    for (const int32_t mode : {WREN_FMT_NUMBER, WREN_FMT_CURRENCY}) {
      char text[kDateTextCapacity];
      FormatRecord record = Record(mode);
      WRENNumFromText(&record.number, "1234567.5");
      record.output = text;
      EXPECT_EQ(WRENFmtNumber(&record), 1) << row.locale;
      EXPECT_STREQ(text, mode == WREN_FMT_NUMBER ? row.plain : row.amount);
      WRENNumSetNull(&record.number);
      record.mode = WREN_FMT_NUMBER;
      record.input = text;
      EXPECT_EQ(WRENFmtParseNumber(&record), 1) << text;
      double number = 0;
      WRENNumToDouble(&record.number, &number);
      EXPECT_EQ(number, 1234567.5) << text;
    }
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
    for (size_t i = 0; i < 4; ++i) {
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
TEST_F(CountryOfLocale, LoadedCountriesAreNotChanged) {
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
  for (int i = 0; i < 200; ++i) {
    WRENSetCountry(i % 2 == 0 ? "C" : "de_DE.UTF-8");
  }
  stop = true;
  reader.join();
  EXPECT_EQ(mixed, 0);
  EXPECT_TRUE(german == copy);
  EXPECT_EQ(&CountryNow(), &german);
}

}  // namespace
