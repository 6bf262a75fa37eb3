// Formats dates. A picture is read element by element, by the rows of kLetters, and each element
// writes its field; for the country settings a picture is built from them.
#include "closed/wren/date_format.h"

#include <cassert>
#include <cstring>

#include "closed/wren/codepage.h"
#include "closed/wren/country.h"
#include "closed/wren/gregorian.h"

namespace {

// ---- Reading a picture ----

enum class Field : uint8_t {
  End,
  Bad,
  Literal,        // `text` unchanged
  Year,           // 2 or 4 digits
  Month,          // 1, 2: number; 3, 4: name
  MonthOrMinute,  // only until NextElement has seen its neighbours
  Day,            // 1, 2: number; 3, 4: name of the weekday
  Hour24,
  Hour,  // to 12 when the picture has a marker, else to 24
  Minute,
  Second,
  Fraction,  // 1 to 6 digits
  Marker     // `text` is one of kMarkers
};

struct Element {
  Field field;
  int32_t count;  // letters
  std::string_view text;
};

struct Letter {
  char letter;
  Field field;
  uint8_t counts;  // bit n: n letters are a field
};

constexpr Letter kLetters[] = {
    {'y', Field::Year, 0b0010100},     {'Y', Field::Year, 0b0010100},
    {'M', Field::Month, 0b0011110},    {'m', Field::MonthOrMinute, 0b0011110},
    {'d', Field::Day, 0b0011110},      {'D', Field::Day, 0b0011110},
    {'H', Field::Hour24, 0b0000110},   {'h', Field::Hour, 0b0000110},
    {'s', Field::Second, 0b0000110},   {'S', Field::Second, 0b0000110},
    {'f', Field::Fraction, 0b1111110}, {'F', Field::Fraction, 0b1111110},
};

constexpr std::string_view kMarkers[] = {"AM/PM", "am/pm", "A/P", "a/p"};

bool IsLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// A quoted literal at `at`. A doubled quote, which means one, is read as the end of this literal,
// which includes it, and the start of the next.
Element ReadQuoted(const char *&at, CodePage page) {
  const char quote = *at;
  const char *first = ++at;
  while (*at != quote) {
    const size_t bytes = CharBytes(at, page);
    if (bytes == 0) {
      return {Field::Bad, 0, {}};
    }
    at += bytes;
  }
  const char *end = at++;
  if (*at == quote) {
    ++end;
  }
  return {Field::Literal, 0, {first, static_cast<size_t>(end - first)}};
}

Element ReadLetters(const char *&at) {
  for (const std::string_view marker : kMarkers) {
    if (strncmp(at, marker.data(), marker.size()) == 0) {
      at += marker.size();
      return {Field::Marker, 0, marker};
    }
  }
  for (const Letter &row : kLetters) {
    if (row.letter == *at) {
      const char *first = at;
      int32_t count = 0;
      while (*at == row.letter && count < 7) {
        ++at;
        ++count;
      }
      const Field field = (row.counts >> count & 1) != 0 ? row.field : Field::Bad;
      return {field, count, {first, static_cast<size_t>(count)}};
    }
  }
  return {Field::Bad, 0, {}};
}

// Reads the element at `at` and moves past it.
Element ReadElement(const char *&at, CodePage page) {
  if (*at == 0) {
    return {Field::End, 0, {}};
  }
  if (*at == '\'' || *at == '"') {
    return ReadQuoted(at, page);
  }
  if (IsLetter(*at)) {
    return ReadLetters(at);
  }
  if (*at == '\\') {
    ++at;
  }
  const char *first = at;
  const size_t bytes = CharBytes(at, page);
  at += bytes;
  return {bytes != 0 ? Field::Literal : Field::Bad, 0, {first, bytes}};
}

struct PictureWalk {
  const char *at;
  CodePage page;
  Field previous;  // the last field that was not a marker
};

bool IsBetweenFields(Field field) {
  return field == Field::Literal || field == Field::Marker;
}

// The next element. A small m is the minute directly after an hour or directly before a second,
// and the month elsewhere; literals between fields do not count.
Element NextElement(PictureWalk &walk) {
  Element element = ReadElement(walk.at, walk.page);
  if (element.field == Field::MonthOrMinute) {
    bool minute = walk.previous == Field::Hour || walk.previous == Field::Hour24;
    if (!minute) {
      const char *following = walk.at;
      Element next = ReadElement(following, walk.page);
      while (IsBetweenFields(next.field)) {
        next = ReadElement(following, walk.page);
      }
      minute = next.field == Field::Second;
    }
    element.field = minute && element.count <= 2 ? Field::Minute : Field::Month;
  }
  if (!IsBetweenFields(element.field)) {
    walk.previous = element.field;
  }
  return element;
}

struct PictureFacts {
  bool good;
  bool hasMarker;
};

// A picture is good when it has no bad element and at least one field.
PictureFacts ReadPicture(const char *picture) {
  PictureFacts facts = {false, false};
  PictureWalk walk = {picture, CodePageNow(), Field::End};
  bool hasField = false;
  for (;;) {
    switch (NextElement(walk).field) {
      case Field::End:
        facts.good = hasField;
        return facts;
      case Field::Bad:
        return facts;
      case Field::Literal:
        break;
      case Field::Marker:
        facts.hasMarker = true;
        hasField = true;
        break;
      default:
        hasField = true;
        break;
    }
  }
}

// ---- Writing ----

struct DateWriter {
  char *text;
  size_t used;
  bool full;  // the text would be too long; nothing more is written

  const DateTimeParts &parts;
  const char *dayNames;
  const char *monthNames;
  const char *markers;
  bool clock12;
};

void Append(DateWriter &writer, std::string_view text) {
  if (writer.full || text.size() >= kDateTextCapacity - writer.used) {
    writer.full = true;
    return;
  }
  text.copy(writer.text + writer.used, text.size());
  writer.used += text.size();
}

// Writes the last `most` digits of a number, with leading zeros up to `least` digits.
void AppendNumber(DateWriter &writer, int32_t value, int32_t least, int32_t most = 10) {
  char digits[10];
  int32_t at = 10;
  int32_t count = 0;
  while ((value != 0 || count < least) && count < most) {
    digits[--at] = static_cast<char>('0' + value % 10);
    value /= 10;
    ++count;
  }
  Append(writer, {digits + at, static_cast<size_t>(count)});
}

void AppendWeekday(DateWriter &writer, bool whole) {
  const DateTimeParts &parts = writer.parts;
  const int64_t dayNumber = kDayNumberOfYear0 + DaysSinceYear0(parts.month, parts.day, parts.year);
  const auto sundayIs0 = static_cast<int32_t>((dayNumber + 1) % 7);
  Append(writer, NameOfList(writer.dayNames, whole ? sundayIs0 : 7 + sundayIs0));
}

void AppendHour(DateWriter &writer, int32_t count, bool clock12) {
  const int32_t hour = writer.parts.hour;
  const int32_t shown = !clock12 ? hour : hour % 12 == 0 ? 12 : hour % 12;
  AppendNumber(writer, shown, count);
}

// The marker of the half of the day: "AM/PM" as the country has it, "am/pm" in small letters, and
// for a one-letter marker its first character, or A and P where these are the same.
void AppendMarker(DateWriter &writer, std::string_view form) {
  const bool small = form[0] == 'a';
  std::string_view names[2] = {NameOfList(writer.markers, 0), NameOfList(writer.markers, 1)};
  if (form.size() == 3) {
    const CodePage page = CodePageNow();
    for (std::string_view &name : names) {
      name = name.substr(0, name.empty() ? 0 : CharBytes(name.data(), page));
    }
    if (names[0] == names[1]) {
      names[0] = "A";
      names[1] = "P";
    }
  }
  const size_t start = writer.used;
  Append(writer, names[writer.parts.hour < 12 ? 0 : 1]);
  if (small && !writer.full) {
    writer.text[writer.used] = 0;
    WRENStrLower(writer.text + start);
  }
}

void AppendElement(DateWriter &writer, const Element &element) {
  const DateTimeParts &parts = writer.parts;
  switch (element.field) {
    case Field::Literal:
      Append(writer, element.text);
      break;
    case Field::Year:
      AppendNumber(writer, parts.year, element.count, element.count);
      break;
    case Field::Month:
      if (element.count <= 2) {
        AppendNumber(writer, parts.month, element.count);
      } else {
        const int32_t first = element.count == 4 ? 0 : 12;
        Append(writer, NameOfList(writer.monthNames, first + parts.month - 1));
      }
      break;
    case Field::Day:
      if (element.count <= 2) {
        AppendNumber(writer, parts.day, element.count);
      } else {
        AppendWeekday(writer, element.count == 4);
      }
      break;
    case Field::Hour24:
      AppendHour(writer, element.count, false);
      break;
    case Field::Hour:
      AppendHour(writer, element.count, writer.clock12);
      break;
    case Field::Minute:
      AppendNumber(writer, parts.minute, element.count);
      break;
    case Field::Second:
      AppendNumber(writer, parts.second, element.count);
      break;
    case Field::Fraction: {
      int32_t fraction = parts.fraction;
      for (int32_t i = element.count; i < 6; ++i) {
        fraction /= 10;
      }
      AppendNumber(writer, fraction, element.count);
      break;
    }
    case Field::Marker:
      AppendMarker(writer, element.text);
      break;
    default:
      break;
  }
}

// The longest picture of a country is "dd.MM.yyyy hh.mm.ss.ffffff AM/PM".
constexpr size_t kCountryPictureSize = 40;

void AppendText(char *picture, const char *text) {
  // The pictures built here are far shorter than that.
  strncat(picture, text, kCountryPictureSize - strlen(picture) - 1);
}

// The picture of a date or time as the country writes it. A date with time shows its time unless it
// is midnight; fractions of a second have no trailing zeros.
void MakeCountryPicture(char *picture, const FormatRecord &record, const Country &country) {
  constexpr const char *kOrders[3][3] = {
      {"MM", "dd", "yyyy"}, {"dd", "MM", "yyyy"}, {"yyyy", "MM", "dd"}};
  const DateTimeParts &parts = record.parts;
  picture[0] = 0;
  if (record.mode != WREN_FMT_TIME) {
    const auto &order = kOrders[static_cast<int32_t>(country.dateOrder)];
    for (int32_t i = 0; i < 3; ++i) {
      AppendText(picture, i > 0 ? country.dateSeparator : "");
      AppendText(picture, order[i]);
    }
  }
  const bool midnight =
      parts.hour == 0 && parts.minute == 0 && parts.second == 0 && parts.fraction == 0;
  if (record.mode == WREN_FMT_DATE || (record.mode == WREN_FMT_DATETIME && midnight)) {
    return;
  }
  AppendText(picture, record.mode == WREN_FMT_DATETIME ? " " : "");
  AppendText(picture, country.clock24 ? "HH" : "hh");
  AppendText(picture, country.timeSeparator);
  AppendText(picture, "mm");
  AppendText(picture, country.timeSeparator);
  AppendText(picture, "ss");
  if (parts.fraction != 0) {
    int32_t digits = 6;
    for (int32_t rest = parts.fraction; rest % 10 == 0; rest /= 10) {
      --digits;
    }
    AppendText(picture, ".");
    AppendText(picture, &"ffffff"[6 - digits]);
  }
  AppendText(picture, country.clock24 ? "" : " AM/PM");
}

bool IsDateMode(int32_t mode) {
  return IsIn(mode, WREN_FMT_DATE, WREN_FMT_DATETIME);
}

}  // namespace

std::string_view NameOfList(const char *list, int32_t index) {
  if (list == nullptr) {
    return {};
  }
  for (; index >= 0; --index) {
    list = strchr(list, ';');
    if (list == nullptr) {
      return {};
    }
    ++list;
  }
  return {list, strcspn(list, ";")};
}

DateTextResult WriteDateText(const FormatRecord &record) {
  assert(record.output != nullptr);
  record.output[0] = 0;
  FormatRecord shown = record;
  if (shown.mode == WREN_FMT_TIME && !IsDateReal(shown.parts)) {
    shown.parts.month = kDayOfTimes.month;
    shown.parts.day = kDayOfTimes.day;
    shown.parts.year = kDayOfTimes.year;
  }
  if (!IsDateMode(shown.mode) || !IsDateReal(shown.parts) || !IsTimeReal(shown.parts)) {
    return DateTextResult::Refused;
  }
  const Country &country = CountryNow();
  char ofCountry[kCountryPictureSize];
  const char *picture = record.picture != nullptr ? record.picture : record.picture2;
  const bool useCountry = record.useCountry != 0;
  if (useCountry) {
    MakeCountryPicture(ofCountry, shown, country);
    picture = ofCountry;
  }
  const PictureFacts facts = picture != nullptr ? ReadPicture(picture) : PictureFacts{};
  if (!facts.good) {
    return DateTextResult::Refused;
  }
  const auto names = [&](const char *own, int32_t which) {
    return !useCountry && own != nullptr ? NamesInActiveCodePage(own) : country.nameTexts[which];
  };
  DateWriter writer = {.text = record.output,
                       .used = 0,
                       .full = false,
                       .parts = shown.parts,
                       .dayNames = names(record.dayNames, 0),
                       .monthNames = names(record.monthNames, 1),
                       .markers = names(record.markers, 2),
                       .clock12 = facts.hasMarker};
  PictureWalk walk = {picture, CodePageNow(), Field::End};
  for (Element element = NextElement(walk); element.field != Field::End && !writer.full;
       element = NextElement(walk)) {
    AppendElement(writer, element);
  }
  record.output[writer.full ? 0 : writer.used] = 0;
  return writer.full ? DateTextResult::TooLong : DateTextResult::Written;
}

int32_t WRENFmtDate(FormatRecord *record) {
  if (record == nullptr || record->output == nullptr) {
    return 0;
  }
  return WriteDateText(*record) == DateTextResult::Written ? 1 : 0;
}

int32_t WRENFmtCheckDatePicture(const char *picture) {
  return picture != nullptr && ReadPicture(picture).good ? 1 : 0;
}
