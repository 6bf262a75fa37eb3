// Country settings from the system's locales.
//
// A locale's settings are read once, when the locale is chosen, into a CountrySet: the settings in
// the three code pages. A set is complete before it is published and never changes again, so
// readers need no lock. Old sets are kept, since readers may hold pointers into them; choosing the
// same settings again reuses the old set.
#include "closed/wren/country.h"

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstring>
#include <mutex>
#include <new>

#include "closed/wren/codepage.h"
#include "wreni11.h"

namespace {

constexpr Country kUnitedStates = {
    .dateOrder = DateOrder::MonthDayYear,
    .dateSeparator = "/",
    .timeSeparator = ":",
    .clock24 = false,
    .pivotYear = 1950,
    .markers = {"AM", "PM"},
    .dayNames = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday",
                 "Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"},
    .monthNames = {"January",   "February", "March",    "April",    "May", "June", "July", "August",
                   "September", "October",  "November", "December", "Jan", "Feb",  "Mar",  "Apr",
                   "May",       "Jun",      "Jul",      "Aug",      "Sep", "Oct",  "Nov",  "Dec"},
    .decimalSeparator = ".",
    .thousandsSeparator = ",",
    .grouping = {3, 3, 3, 3},
    .currencySign = "$",
    .currencyCode = "USD",
    .currencyDecimalSeparator = ".",
    .currencyThousandsSeparator = ",",
    .currencyGrouping = {3, 3, 3, 3},
    .currencyDecimals = 2,
    .currencySignFirst = true,
    .currencySpace = false,
    .negativeInParentheses = true,
    .nameTexts = {";Sunday;Monday;Tuesday;Wednesday;Thursday;Friday;Saturday"
                  ";Sun;Mon;Tue;Wed;Thu;Fri;Sat",
                  ";January;February;March;April;May;June;July;August;September;October;November"
                  ";December;Jan;Feb;Mar;Apr;May;Jun;Jul;Aug;Sep;Oct;Nov;Dec",
                  ";AM;PM"},
};

// ---- Conversion ----

constexpr const char *kBlanks = " \t";

struct Converter {
  bool same;  // bytes are copied unchanged
  iconv_t handle;
  bool works;

  Converter(const char *to, const char *from)
      : same(strcmp(to, from) == 0),
        handle(same ? nullptr : iconv_open(to, from)),
        works(same || reinterpret_cast<intptr_t>(handle) != -1) {}
  ~Converter() {
    if (works && !same) {
      iconv_close(handle);
    }
  }
  Converter(const Converter &) = delete;
  Converter &operator=(const Converter &) = delete;
};

bool IsAscii(const char *text) {
  while (*text > 0) {
    ++text;
  }
  return *text == 0;
}

// Converts `text`, without blanks at its ends, into the `size` bytes at `target` and fills the rest
// with zeros. False, with an empty target, when the text does not fit or cannot be converted.
bool ConvertText(const Converter &converter, char *target, size_t size, const char *text) {
  memset(target, 0, size);
  text += strspn(text, kBlanks);
  size_t length = strlen(text);
  while (length > 0 && strchr(kBlanks, text[length - 1]) != nullptr) {
    --length;
  }
  if (IsAscii(text) || converter.same) {
    if (length >= size) {
      return false;
    }
    std::copy_n(text, length, target);
    return true;
  }
  if (!converter.works) {
    return false;
  }
  char *in = const_cast<char *>(text);  // iconv only reads
  char *out = target;
  size_t left = size - 1;
  // A result above 0 counts characters that were replaced by others.
  const bool done = iconv(converter.handle, &in, &length, &out, &left) == 0 && length == 0;
  iconv(converter.handle, nullptr, nullptr, nullptr, nullptr);
  if (!done) {
    memset(target, 0, size);
  }
  return done;
}

// Converts a group of names, all or none, so that languages are not mixed; the target is unchanged
// when a name cannot be converted. A ";" would split a name in the LocaleBlock.
template <size_t Count, size_t Size>
void ConvertNames(const Converter &converter, char (&target)[Count][Size],
                  const char *const (&texts)[Count]) {
  char names[Count][Size];
  for (size_t i = 0; i < Count; ++i) {
    if (!ConvertText(converter, names[i], Size, texts[i]) || names[i][0] == 0 ||
        strchr(names[i], ';') != nullptr) {
      return;
    }
  }
  memcpy(target, names, sizeof names);
}

template <size_t Count, size_t Size>
void JoinNames(char *target, const char (&names)[Count][Size]) {
  static_assert(Count * Size < sizeof Country::nameTexts[0]);
  memset(target, 0, sizeof Country::nameTexts[0]);
  for (size_t i = 0; i < Count; ++i) {
    *target++ = ';';
    const size_t length = strlen(names[i]);
    memcpy(target, names[i], length);
    target += length;
  }
}

template <size_t Size>
void SetSeparator(char (&target)[Size], char mark) {
  memset(target, 0, Size);
  target[0] = mark;
}

// A thousands separator that the code page does not have becomes a blank, as nearly all of these
// are kinds of thin blanks. A decimal separator becomes a full stop, since digits separated by a
// blank read as two numbers; a thousands separator that is a full stop then becomes a comma.
template <size_t Size>
void ConvertSeparators(const Converter &converter, char (&decimal)[Size], char (&thousands)[Size],
                       const char *decimalText, const char *thousandsText) {
  if (strcmp(thousandsText, " ") == 0 || !ConvertText(converter, thousands, Size, thousandsText)) {
    SetSeparator(thousands, ' ');
  }
  if (ConvertText(converter, decimal, Size, decimalText) && decimal[0] != 0) {
    return;
  }
  SetSeparator(decimal, '.');
  if (strcmp(thousands, decimal) == 0) {
    SetSeparator(thousands, ',');
  }
}

// ---- Reading a locale ----

struct LocaleHandle {
  locale_t locale;

  LocaleHandle(int mask, const char *name) : locale(newlocale(mask, name, nullptr)) {}
  ~LocaleHandle() {
    if (locale != nullptr) {
      freelocale(locale);
    }
  }
  LocaleHandle(const LocaleHandle &) = delete;
  LocaleHandle &operator=(const LocaleHandle &) = delete;

  const char *Text(nl_item item) const { return nl_langinfo_l(item, locale); }
  int Number(nl_item item) const { return static_cast<signed char>(*nl_langinfo_l(item, locale)); }
};

bool IsBuiltInName(const char *name) {
  return strcmp(name, "C") == 0 || strcmp(name, "POSIX") == 0 || strncmp(name, "C.", 2) == 0;
}

// The meanings of the letters of a locale's date or time format, in order of appearance.
struct FormatLetters {
  char letters[32];
  char separator;  // the first of `separators` after the first letter; 0: none
};

FormatLetters ReadFormat(const char *format, const char *separators) {
  FormatLetters result = {};
  size_t count = 0;
  for (; *format != 0; ++format) {
    if (*format != '%') {
      if (count > 0 && result.separator == 0 && strchr(separators, *format) != nullptr) {
        result.separator = *format;
      }
      continue;
    }
    format += 1 + strspn(format + 1, "-_0^#+EO123456789");  // flags, width, alternative forms
    // Composite letters are formats of their own.
    const char *plain = *format == 'D'   ? "mdy"
                        : *format == 'F' ? "Ymd"
                        : *format == 'T' ? "HMS"
                        : *format == 'R' ? "HM"
                        : *format == 'r' ? "IMSp"
                                         : nullptr;
    const char single[2] = {*format, 0};
    if (result.separator == 0 && plain != nullptr) {
      const char inner = *format == 'D' ? '/' : *format == 'F' ? '-' : ':';
      result.separator = strchr(separators, inner) != nullptr ? inner : '\0';
    }
    for (const char *p = plain != nullptr ? plain : single; *p != 0; ++p) {
      if (count + 1 < sizeof result.letters) {
        result.letters[count++] = *p;
      }
    }
    if (*format == 0) {
      break;
    }
  }
  return result;
}

DateOrder OrderOf(const FormatLetters &format) {
  const size_t first = strcspn(format.letters, "mbBhdeYyGgC");
  switch (format.letters[first]) {
    case 'd':
    case 'e':
      return DateOrder::DayMonthYear;
    case 'Y':
    case 'y':
    case 'G':
    case 'g':
    case 'C':
      return DateOrder::YearMonthDay;
    default:
      return DateOrder::MonthDayYear;
  }
}

constexpr nl_item kDayItems[14] = {DAY_1,   DAY_2,   DAY_3,   DAY_4,   DAY_5,   DAY_6,   DAY_7,
                                   ABDAY_1, ABDAY_2, ABDAY_3, ABDAY_4, ABDAY_5, ABDAY_6, ABDAY_7};
constexpr nl_item kMonthItems[24] = {MON_1,   MON_2,   MON_3,   MON_4,    MON_5,    MON_6,
                                     MON_7,   MON_8,   MON_9,   MON_10,   MON_11,   MON_12,
                                     ABMON_1, ABMON_2, ABMON_3, ABMON_4,  ABMON_5,  ABMON_6,
                                     ABMON_7, ABMON_8, ABMON_9, ABMON_10, ABMON_11, ABMON_12};
constexpr nl_item kMarkerItems[2] = {AM_STR, PM_STR};

template <size_t Count, size_t Size>
void ReadNames(const LocaleHandle &locale, const Converter &converter, char (&target)[Count][Size],
               const nl_item (&items)[Count]) {
  const char *texts[Count];
  for (size_t i = 0; i < Count; ++i) {
    texts[i] = locale.Text(items[i]);
  }
  ConvertNames(converter, target, texts);
}

void ReadDates(const LocaleHandle &locale, Country &country) {
  const FormatLetters date = ReadFormat(locale.Text(D_FMT), "-./");
  const FormatLetters time = ReadFormat(locale.Text(T_FMT), ":.");
  country.dateOrder = OrderOf(date);
  country.dateSeparator[0] = date.separator != 0 ? date.separator : '/';
  country.timeSeparator[0] = time.separator != 0 ? time.separator : ':';
  country.clock24 = strpbrk(time.letters, "Ilp") == nullptr;
  const Converter converter("UTF-8", locale.Text(_NL_TIME_CODESET));
  ReadNames(locale, converter, country.dayNames, kDayItems);
  ReadNames(locale, converter, country.monthNames, kMonthItems);
  ReadNames(locale, converter, country.markers, kMarkerItems);
}

// Reads the sizes of groups. Without groups there is no separator.
void ReadGrouping(const char *sizes, uint8_t (&grouping)[4], char (&separator)[8]) {
  uint8_t size = 0;
  bool more = true;
  for (uint8_t &target : grouping) {
    if (more && *sizes != 0) {
      // The largest and the negative number both mean that no group follows.
      more = *sizes > 0 && *sizes < CHAR_MAX;
      size = more ? static_cast<uint8_t>(*sizes++) : 0;
    }
    target = size;
  }
  if (grouping[0] == 0) {
    memset(separator, 0, sizeof separator);
  }
}

void ReadNumbers(const LocaleHandle &locale, Country &country) {
  const Converter converter("UTF-8", locale.Text(_NL_NUMERIC_CODESET));
  ConvertSeparators(converter, country.decimalSeparator, country.thousandsSeparator,
                    locale.Text(RADIXCHAR), locale.Text(THOUSEP));
  ReadGrouping(locale.Text(__GROUPING), country.grouping, country.thousandsSeparator);
}

void ReadMoney(const LocaleHandle &locale, Country &country) {
  const Converter converter("UTF-8", locale.Text(_NL_MONETARY_CODESET));
  if (!ConvertText(converter, country.currencyCode, sizeof country.currencyCode,
                   locale.Text(__INT_CURR_SYMBOL))) {
    memset(country.currencyCode, 0, sizeof country.currencyCode);
  }
  if (!ConvertText(converter, country.currencySign, sizeof country.currencySign,
                   locale.Text(__CURRENCY_SYMBOL)) ||
      country.currencySign[0] == 0) {
    memset(country.currencySign, 0, sizeof country.currencySign);
    memcpy(country.currencySign, country.currencyCode, sizeof country.currencyCode);
  }
  if (*locale.Text(__MON_DECIMAL_POINT) != 0) {
    ConvertSeparators(converter, country.currencyDecimalSeparator,
                      country.currencyThousandsSeparator, locale.Text(__MON_DECIMAL_POINT),
                      locale.Text(__MON_THOUSANDS_SEP));
    ReadGrouping(locale.Text(__MON_GROUPING), country.currencyGrouping,
                 country.currencyThousandsSeparator);
  }
  const int decimals = locale.Number(__FRAC_DIGITS);
  country.currencyDecimals = decimals >= 0 && decimals < SCHAR_MAX ? decimals : 2;
  country.currencySignFirst = locale.Number(__P_CS_PRECEDES) != 0;
  country.currencySpace = locale.Number(__P_SEP_BY_SPACE) == 1;
  country.negativeInParentheses = locale.Number(__N_SIGN_POSN) == 0;
}

struct Category {
  int mask;
  nl_item name;
  void (*read)(const LocaleHandle &, Country &);
};

constexpr Category kCategories[] = {
    {LC_TIME_MASK, _NL_LOCALE_NAME(LC_TIME), ReadDates},
    {LC_NUMERIC_MASK, _NL_LOCALE_NAME(LC_NUMERIC), ReadNumbers},
    {LC_MONETARY_MASK, _NL_LOCALE_NAME(LC_MONETARY), ReadMoney},
};

// Reads the settings of a locale, in UTF-8. A category set to the C locale keeps the built-in
// settings, and so does one whose locale the environment chose ("") but is not installed.
bool ReadLocale(const char *name, Country &country) {
  country = kUnitedStates;
  for (const Category &category : kCategories) {
    const LocaleHandle locale(category.mask, name);
    if (locale.locale == nullptr) {
      if (*name != 0) {
        return false;
      }
    } else if (!IsBuiltInName(locale.Text(category.name))) {
      category.read(locale, country);
    }
  }
  return true;
}

// ---- Sets ----

struct CountrySet {
  Country source;         // in UTF-8
  Country inCodePage[3];  // 1252, 932, UTF-8
  CountrySet *older;
};

template <size_t Count, size_t Size>
void ConvertGroup(const Converter &converter, char (&target)[Count][Size],
                  const char (&source)[Count][Size], const char (&fallback)[Count][Size]) {
  const char *texts[Count];
  for (size_t i = 0; i < Count; ++i) {
    texts[i] = source[i];
  }
  memcpy(target, fallback, sizeof target);
  ConvertNames(converter, target, texts);
}

void ConvertCountry(const Country &source, const char *charset, Country &target) {
  const Converter converter(charset, "UTF-8");
  target = source;
  ConvertGroup(converter, target.dayNames, source.dayNames, kUnitedStates.dayNames);
  ConvertGroup(converter, target.monthNames, source.monthNames, kUnitedStates.monthNames);
  ConvertGroup(converter, target.markers, source.markers, kUnitedStates.markers);
  JoinNames(target.nameTexts[0], target.dayNames);
  JoinNames(target.nameTexts[1], target.monthNames);
  JoinNames(target.nameTexts[2], target.markers);
  ConvertSeparators(converter, target.decimalSeparator, target.thousandsSeparator,
                    source.decimalSeparator, source.thousandsSeparator);
  ConvertSeparators(converter, target.currencyDecimalSeparator, target.currencyThousandsSeparator,
                    source.currencyDecimalSeparator, source.currencyThousandsSeparator);
  if (!ConvertText(converter, target.currencySign, sizeof target.currencySign,
                   source.currencySign)) {
    memcpy(target.currencySign, source.currencyCode, sizeof source.currencyCode);
  }
}

void FillSet(CountrySet &set, const Country &source) {
  set.source = source;
  ConvertCountry(source, "CP1252", set.inCodePage[0]);
  ConvertCountry(source, "CP932", set.inCodePage[1]);
  ConvertCountry(source, "UTF-8", set.inCodePage[2]);
}

std::mutex changing;                         // guards the creation of sets
std::atomic<CountrySet *> newest = nullptr;  // all sets created so far
CountrySet firstSet;                         // needs no allocation, so the first choice cannot fail
std::atomic<CountrySet *> current = nullptr;

// The set of these settings, created when there is none yet; null when out of memory. The caller
// holds `changing`.
CountrySet *SetOf(const Country &source) {
  for (CountrySet *set = newest.load(std::memory_order_relaxed); set != nullptr; set = set->older) {
    if (set->source == source) {
      return set;
    }
  }
  CountrySet *set = &firstSet;
  if (newest.load(std::memory_order_relaxed) != nullptr) {
    void *block = WRENMemAlloc(sizeof(CountrySet));
    if (block == nullptr) {
      return nullptr;
    }
    set = new (block) CountrySet;
  }
  FillSet(*set, source);
  set->older = newest.load(std::memory_order_relaxed);
  newest.store(set, std::memory_order_release);
  return set;
}

// Publishes the set of a locale. False, with nothing changed, when there is no such locale or when
// out of memory.
bool Choose(const char *localeName) {
  Country country;
  if (!ReadLocale(localeName, country)) {
    return false;
  }
  CountrySet *set = SetOf(country);
  if (set == nullptr) {
    return false;
  }
  current.store(set, std::memory_order_release);
  return true;
}

// Chooses the environment's settings unless settings have been chosen in the meantime.
const CountrySet &FirstChoice() {
  const std::lock_guard<std::mutex> lock(changing);
  if (current.load(std::memory_order_acquire) == nullptr) {
    Choose("");
  }
  return *current.load(std::memory_order_acquire);
}

const Country &InActiveCodePage(const CountrySet &set) {
  switch (CodePageNow()) {
    case CodePage::Japanese:
      return set.inCodePage[1];
    case CodePage::Utf8:
      return set.inCodePage[2];
    case CodePage::Western:
      break;
  }
  return set.inCodePage[0];
}

}  // namespace

const Country &CountryBuiltIn() {
  return kUnitedStates;
}

const Country &CountryNow() {
  const CountrySet *chosen = current.load(std::memory_order_acquire);
  return InActiveCodePage(chosen != nullptr ? *chosen : FirstChoice());
}

const char *NamesInActiveCodePage(const char *names) {
  for (const CountrySet *set = newest.load(std::memory_order_acquire); set != nullptr;
       set = set->older) {
    for (const Country &country : set->inCodePage) {
      for (size_t list = 0; list < std::size(country.nameTexts); ++list) {
        if (names == country.nameTexts[list]) {
          return InActiveCodePage(*set).nameTexts[list];
        }
      }
    }
  }
  return names;
}

int32_t WRENSetCountry(const char *localeName) {
  const std::lock_guard<std::mutex> lock(changing);
  return Choose(localeName != nullptr ? localeName : "") ? 1 : 0;
}
