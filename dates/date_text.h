// Conversions between a date and its text.
#ifndef ORLI11_DATES_DATE_TEXT_H
#define ORLI11_DATES_DATE_TEXT_H

#include <cstdint>

#include "wreni11.h"

// Date text is built in buffers of this size: 99 bytes and the terminator.
constexpr int32_t kDateTextSize = 100;

// Date, date with time, and time: each has a picture and a template, in this order.
constexpr int32_t kDateForms = 3;

// Form codes of DateRewriteText.
enum : int32_t { kNoDateForm = 0, kDateForm = 8, kTimeForm = 9, kDateTimeForm = 10 };

// Reads a date or time by the country settings. False, with `target` unchanged, when it is none.
bool DateFromText(NumberValue *target, const char *text);

// Rewrites a date text under the picture that belongs to its form; `buffer` has kDateTextSize
// bytes. Returns the form code; the buffer is empty when the picture is null.
int32_t DateRewriteText(const char *text, char *buffer, const char *picture1, const char *picture2,
                        const char *picture3);

// Write a date into `buffer` of kDateTextSize bytes; empty for a null date. False, with the buffer
// empty, when the picture is invalid or the text too long.
bool DateToTextPicture(const NumberValue *date, const char *picture, char *buffer);
bool DateToTextDefault(const NumberValue *date, char *buffer);

// The bytes of the widest text that a date can take under the pictures and, with
// ORL_CONVERT_EXTENDED_TEXT, the longest template. Pictures and templates may be null.
int32_t DatePictureWidth(uint16_t convertFlags, const char *const pictures[kDateForms],
                         const char *const templates[kDateForms]);

#endif
