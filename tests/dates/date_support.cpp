#include "tests/dates/date_support.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

PlainSettings::PlainSettings() {
  WRENSetCountry("C");
  WRENSetCodePage(1252);
}
PlainSettings::~PlainSettings() {
  WRENSetCountry("C");
  WRENSetCodePage(1252);
}

std::string Iso(const DateTimeParts &p) {
  char text[120];
  int length = snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", p.year, p.month, p.day,
                        p.hour, p.minute, p.second);
  if (p.fraction != 0) {
    length += snprintf(text + length, 40, ".%06d", p.fraction);
  }
  return std::string(text, static_cast<size_t>(length));
}

std::string Iso(const NumberValue &date) {
  if (date.length == 0) {
    return "null";
  }
  DateTimeParts parts = {};
  PAVNNumberToDate(date.payload, date.length, &parts);
  return Iso(parts);
}

DateTimeParts Parts(int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute,
                    int32_t second, int32_t fraction) {
  return {month, day, year, hour, minute, second, fraction};
}

NumberValue Stored(const std::string &iso) {
  DateTimeParts p = {};
  sscanf(iso.c_str(), "%d-%d-%d %d:%d:%d.%6d", &p.year, &p.month, &p.day, &p.hour, &p.minute,
         &p.second, &p.fraction);
  NumberValue value = {};
  value.length = static_cast<uint8_t>(PAVNDateToNumber(value.payload, &p));
  return value;
}

NumberValue Number(int32_t value) {
  NumberValue number;
  WRENNumFromInt(&number, value);
  return number;
}

std::chrono::sys_seconds RandomMoment(std::mt19937_64 &random) {
  return kFirst + std::chrono::seconds{random() % static_cast<uint64_t>((kEnd - kFirst).count())};
}

DateTimeParts Parts(std::chrono::sys_seconds moment) {
  const auto day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day date{day};
  const auto time = static_cast<int32_t>((moment - day).count());
  return Parts(int{date.year()}, static_cast<int32_t>(unsigned{date.month()}),
               static_cast<int32_t>(unsigned{date.day()}), time / 3600, time / 60 % 60, time % 60);
}

FormatRecord Record(int32_t mode, int32_t order) {
  FormatRecord record;
  WRENFmtInit(&record);
  LocaleBlock locale;
  WRENFmtLoadLocale(&locale);
  record.mode = mode;
  record.useCountry = order == kOrderOfCountry ? 1 : 0;
  record.dateOrder = order;
  record.pivotYear = locale.pivotYear;
  record.dayNames = locale.dayNames;
  record.monthNames = locale.monthNames;
  record.markers = locale.markers;
  return record;
}

std::string Read(int32_t mode, const std::string &text, int32_t order) {
  FormatRecord record = Record(mode, order);
  record.input = text.c_str();
  record.parts = Parts(7, 7, 7);
  if (WRENFmtParseDate(&record) != 0) {
    return Iso(record.parts);
  }
  EXPECT_EQ(Iso(record.parts), "0007-07-07 00:00:00")
      << "a refused text changed the parts: " << text;
  return "no";
}

std::string Write(FormatRecord record, const DateTimeParts &parts) {
  char text[101];
  memset(text, 'x', sizeof text);
  record.output = text;
  record.parts = parts;
  const bool good = WRENFmtDate(&record) != 0;
  EXPECT_EQ(text[100], 'x') << "the output passed its 100 bytes";
  return good ? text : std::string("no") + text;
}
