// Shared by the tests of dates.
#ifndef ORLI11_TESTS_DATES_DATE_SUPPORT_H
#define ORLI11_TESTS_DATES_DATE_SUPPORT_H

#include <chrono>
#include <random>
#include <string>

#include "pavni11.h"

// The C locale's conventions and code page 1252, restored at the end of the scope.
struct PlainSettings {
  PlainSettings();
  ~PlainSettings();
  PlainSettings(const PlainSettings &) = delete;
  PlainSettings &operator=(const PlainSettings &) = delete;
};

// "2012-01-31 10:30:15.250000", without the fraction when it is zero.
std::string Iso(const DateTimeParts &parts);
// The same for a stored date; "null" for a null one.
std::string Iso(const NumberValue &date);

DateTimeParts Parts(int32_t year, int32_t month, int32_t day, int32_t hour = 0, int32_t minute = 0,
                    int32_t second = 0, int32_t fraction = 0);
// A stored date by its text as Iso() writes it, or without the time; "null" for the null date.
NumberValue Stored(const std::string &iso);
NumberValue Number(int32_t value);

// The standard library's calendar: any moment of ours, and the parts of a moment.
constexpr std::chrono::sys_seconds kFirst = std::chrono::sys_days{std::chrono::year{1} / 1 / 1};
constexpr std::chrono::sys_seconds kEnd = std::chrono::sys_days{std::chrono::year{10000} / 1 / 1};
std::chrono::sys_seconds RandomMoment(std::mt19937_64 &random);
DateTimeParts Parts(std::chrono::sys_seconds moment);

// A record that uses the names of the locale in the given order, or the country settings.
constexpr int32_t kOrderOfCountry = -1;
FormatRecord Record(int32_t mode, int32_t order = kOrderOfCountry);
// The result of parsing the text in a mode: Iso() of the parts, "no" when it is rejected.
std::string Read(int32_t mode, const std::string &text, int32_t order = kOrderOfCountry);
// The text of a date by the record; "no" and the output when it is rejected.
std::string Write(FormatRecord record, const DateTimeParts &parts);

#endif
