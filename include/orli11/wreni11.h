/* wreni11.h - tool library: memory, text, code pages, exact decimal numbers, formats.
 *
 * Conventions
 * 1. Text is zero-terminated bytes in the active code page (WRENSetCodePage). A null text counts as
 *    the empty text wherever a text is only read. Positions and counts of characters start at 0; a
 *    character is one byte in 1252, one or two in 932, one to four in UTF-8.
 * 2. A result of "1 or 0" is int32_t: 1 for success or yes.
 * 3. A target must be large enough for the result with its terminator; unless stated otherwise
 *    target and source must not overlap.
 * 4. Blocks of WRENMemAlloc belong to the caller until WRENMemFree.
 * 5. Every routine may be called from any thread. WRENSetCodePage and WRENSetCountry change the
 *    whole process and belong to its set-up.
 * 6. A negative count or position yields the empty text, unless stated otherwise.
 */
#ifndef WRENI11_H
#define WRENI11_H

#include <stdint.h>

#if defined(__GNUC__)
#define WREN_API __attribute__((visibility("default")))
#else
#define WREN_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A number or a date: `length` bytes of payload, 0 for the null value. A number is an exact decimal
 * of up to 26 significant digits between 10^-128 and 10^153; a date holds the seven fields of
 * DateTimeParts, and counts as null where a number is expected. The payload is private to the
 * library; equal values have equal bytes. */
typedef struct {
  uint8_t length;
  uint8_t payload[12];
} NumberValue;

/* The parts of a date. `fraction` is in microseconds. */
typedef struct {
  int32_t month, day, year, hour, minute, second, fraction;
} DateTimeParts;

/* ---- Memory ---------------------------------------------------------------------------------- */

/* A block of `size` bytes, all zero; null when out of memory. Size 0 yields a valid block. */
WREN_API void *WRENMemAlloc(uint32_t size);
/* Resizes a block and returns its new address; new bytes are zero. On failure null, and the old
 * block is unchanged. A null block allocates a new one. */
WREN_API void *WRENMemRealloc(void *block, uint32_t size);
/* Frees a block; null is accepted. */
WREN_API void WRENMemFree(void *block);
/* The usable bytes of a block: the size that was last requested; 0 for null. */
WREN_API uint32_t WRENMemSize(const void *block);

/* ---- Text ------------------------------------------------------------------------------------ */

/* Bytes of the text, 0 for null. */
WREN_API int32_t WRENStrLen(const char *text);
/* Characters of the text, 0 for null. */
WREN_API int32_t WRENStrChars(const char *text);
/* The address n characters on, at most the terminator; null for null. */
WREN_API char *WRENStrAdvance(const char *text, int32_t n);
/* The first character that is the single byte `byte`, or null; never a trail byte. Does not find
 * the terminator. */
WREN_API char *WRENStrChr(const char *text, int32_t byte);
/* The address of the first byte that is not a blank (32); null for null. */
WREN_API char *WRENStrSkipBlanks(const char *text);
/* 1 when the first n characters of both texts are the same, exactly. */
WREN_API int32_t WRENStrHasPrefix(const char *text, const char *prefix, int32_t n);
/* 1 when the texts are equal but for case. */
WREN_API int32_t WRENStrEqualNoCase(const char *left, const char *right);
/* Strips blanks at both ends, in place. */
WREN_API void WRENStrFold(char *text);
/* Change case in place; the byte length is unchanged. */
WREN_API void WRENStrUpper(char *text);
WREN_API void WRENStrLower(char *text);
/* Takes the next token of `text`: skips bytes of `leading`, then copies up to a byte of `ending` or
 * the end. A run between two bytes `quote` is part of the token as a whole, quotes included. `zero`
 * and `zero2` are 0. Returns the bytes consumed, including delimiters before the token; above 0
 * unless the text is empty. `token` must be large enough for the whole text. */
WREN_API int32_t WRENStrTokenize(char *token, const char *text, const char *leading,
                                 const char *ending, int32_t zero, int32_t quote, int32_t zero2);
/* The first n characters (all when there are fewer). */
WREN_API void WRENStrCopyChars(char *target, const char *source, int32_t n);
WREN_API void WRENStrLeft(char *target, const char *source, int32_t n);
/* The last n characters. */
WREN_API void WRENStrRight(char *target, const char *source, int32_t n);
/* n characters from character `position` on. */
WREN_API void WRENStrMid(char *target, const char *source, int32_t position, int32_t n);
/* The source with the n characters from `position` on replaced by `replacement`; a negative
 * position or count counts as 0, a position after the end is the end. */
WREN_API void WRENStrReplace(char *target, const char *source, const char *replacement,
                             int32_t position, int32_t n);
/* Strip blanks at both ends, at the end; a capital at the start of each word and small letters
 * after it; the byte length is unchanged. A word is a run of letters and digits, an apostrophe or
 * middle dot between two of them included. Target and source may be the same. */
WREN_API void WRENStrTrim(char *target, const char *source);
WREN_API void WRENStrRTrim(char *target, const char *source);
WREN_API void WRENStrProper(char *target, const char *source);
/* Character position of the first occurrence of `pattern`, exact in case; -1 for none; 0 for an
 * empty pattern. */
WREN_API int32_t WRENStrScan(const char *text, const char *pattern);

/* ---- Code page ------------------------------------------------------------------------------- */

/* Sets the active code page of the process: 1252 (the default), 932 or 65001 (UTF-8). 1 when it was
 * set, 0 for any other number, which changes nothing. */
WREN_API int32_t WRENSetCodePage(int32_t codePage);
/* 1 in a double-byte code page (932), else 0. */
WREN_API int32_t WRENIsDoubleByte(void);
/* 1 when a character of more than one byte begins at the address. */
WREN_API int32_t WRENIsLeadByteAt(const char *text);
/* The names of the next two do not say what they test. 1 when the byte (0 to 255) is a lead byte of
 * the active double-byte code page. */
WREN_API int32_t WRENIsAlpha(int32_t byte);
/* 1 when the single byte (0 to 255) is a name character of the active code page: a letter, a digit,
 * in 932 a half-width katakana, in UTF-8 every byte from 128 up. */
WREN_API int32_t WRENIsDigit(int32_t byte);

/* ---- Numbers --------------------------------------------------------------------------------- */

/* result = left (operator) right, rounded half away from zero when there are not enough digits. A
 * null operand, a zero divisor or a result that is too large yields null; one that is too small
 * yields zero. `result` may be an operand. */
WREN_API void WRENNumAdd(NumberValue *result, const NumberValue *left, const NumberValue *right);
WREN_API void WRENNumSub(NumberValue *result, const NumberValue *left, const NumberValue *right);
WREN_API void WRENNumMul(NumberValue *result, const NumberValue *left, const NumberValue *right);
WREN_API void WRENNumDiv(NumberValue *result, const NumberValue *left, const NumberValue *right);
/* Changes the sign in place; null and zero are unchanged. */
WREN_API void WRENNumNegate(NumberValue *value);
WREN_API void WRENNumSetNull(NumberValue *value);
WREN_API void WRENNumSetZero(NumberValue *value);
/* The sign of left minus right: -1, 0 or 1. Null is below every number and equal to null. */
WREN_API int32_t WRENNumCompare(const NumberValue *left, const NumberValue *right);
/* 1 for the null value (and for a null pointer). */
WREN_API int32_t WRENNumIsNull(const NumberValue *value);
/* 1 for the number zero; 0 for null. */
WREN_API int32_t WRENNumIsZero(const NumberValue *value);
/* Rounds half away from zero to `decimals` digits after the point; a negative count rounds to
 * tens, hundreds and so on. */
WREN_API void WRENNumRound(NumberValue *result, const NumberValue *value, int32_t decimals);
/* Truncates in place, toward zero, to `decimals` digits after the point and at most `precision`
 * significant digits. */
WREN_API void WRENNumTruncate(NumberValue *value, int32_t precision, int32_t decimals);
/* Truncated toward zero; saturates at 32 bits; 0 for null. */
WREN_API int32_t WRENNumToInt(const NumberValue *value);
/* The nearest double; 0 for null. */
WREN_API void WRENNumToDouble(const NumberValue *value, double *out);
WREN_API void WRENNumFromInt(NumberValue *result, int32_t source);
WREN_API void WRENNumFromLong(NumberValue *result, int64_t source);
/* The shortest decimal that reads back as the same double; null for an infinity or NaN. */
WREN_API void WRENNumFromDouble(NumberValue *result, double source);
/* Plain decimal text: blanks, sign, digits, one point, exponent. Null when the text is anything
 * else; excess digits are rounded. */
WREN_API void WRENNumFromText(NumberValue *result, const char *source);
/* Writes a number as plain decimal text into `buffer`: a sign where it is negative, digits, a point
 * where a fraction follows, never an exponent; at most 154 bytes. WRENNumFromText reads the same
 * value back. The text is truncated to `size` bytes with its terminator; the result is the bytes of
 * the whole text without terminator, whatever was written. 0, and the empty text, for the null
 * value and for anything that is not a number, such as a date. The buffer may be null when `size`
 * is 0. */
WREN_API int32_t WRENNumToText(const NumberValue *value, int32_t size, char *buffer);

/* ---- Formats --------------------------------------------------------------------------------- */

/* The part of the country settings that pictures need. The texts belong to the library and remain
 * valid. */
typedef struct {
  int32_t dateOrder;      /* 0 month-day-year, 1 day-month-year, 2 year-month-day */
  int32_t clock24;        /* 1 when hours count to 24 */
  int32_t pivotYear;      /* two-digit years fall into pivotYear to pivotYear + 99 */
  const char *dayNames;   /* fourteen names, each after a ";": Sunday to Saturday, Sun to Sat */
  const char *monthNames; /* twenty-four: January to December, Jan to Dec */
  const char *markers;    /* two: before and after noon */
} LocaleBlock;

enum {
  WREN_FMT_DATE = 1,     /* a date */
  WREN_FMT_TIME = 2,     /* a time */
  WREN_FMT_DATETIME = 3, /* a date with or without a time */
  WREN_FMT_NUMBER = 4,   /* a plain number */
  WREN_FMT_CURRENCY = 5, /* an amount of money */
  WREN_FMT_PICTURE = 6,  /* a number under `numberPicture` */

  WREN_FMT_FLAG_RETRY = 1,  /* a second attempt at the same text; no effect on the result */
  WREN_FMT_FLAG_SHORT = 4,  /* reserved: never set, cleared before rewriting */
  WREN_FMT_FLAG_NUMBER = 32 /* set by every number operation */
};

/* The parameters of one format operation, on the caller's stack; cleared by WRENFmtInit. `output`
 * must hold 100 bytes: no operation writes more than 99 bytes and the terminator. */
typedef struct {
  int32_t mode;        /* WREN_FMT_DATE to WREN_FMT_PICTURE */
  const char *input;   /* text to parse */
  char *output;        /* receives the text */
  const char *picture; /* date picture, twice */
  const char *picture2;
  int32_t dateOrder; /* from the LocaleBlock, as are the next four */
  int32_t clock24;
  const char *dayNames;
  const char *monthNames;
  const char *markers;
  int32_t useCountry;        /* 1: by the country settings; 0: by the picture or the fields below */
  DateTimeParts parts;       /* result of a parse, input of a format */
  int32_t pivotYear;         /* from the LocaleBlock */
  const char *numberPicture; /* of WREN_FMT_PICTURE */
  char thousandsSeparator;   /* 0: none */
  char decimalSeparator;     /* before the decimals */
  int32_t fixedDecimals;     /* 1: use `decimals` */
  int32_t decimals;          /* digits after the point, when fixed */
  int32_t flags;             /* WREN_FMT_FLAG_... */
  NumberValue number;        /* result of a parse, input of a format */
} FormatRecord;

/* Country settings by the name of an installed locale ("de_DE.UTF-8"), "" for the environment's or
 * "C" for the built-in conventions of the United States. 1, or 0 for an unknown locale, which
 * changes nothing. By default the environment's are used. */
WREN_API int32_t WRENSetCountry(const char *localeName);
WREN_API void WRENFmtInit(FormatRecord *record);
WREN_API void WRENFmtLoadLocale(LocaleBlock *block);
/* Parses `input` in a date mode into `parts`; 1 when it is a valid date or time. */
WREN_API int32_t WRENFmtParseDate(FormatRecord *record);
/* Parses `input` as the country writes numbers into `number`; 1 or 0. */
WREN_API int32_t WRENFmtParseNumber(FormatRecord *record);
/* Write `output`; 0 on failure, with the empty text. */
WREN_API int32_t WRENFmtDate(FormatRecord *record);
WREN_API int32_t WRENFmtNumber(FormatRecord *record);
/* 1 when the picture is valid. */
WREN_API int32_t WRENFmtCheckNumberPicture(FormatRecord *record);
WREN_API int32_t WRENFmtCheckDatePicture(const char *picture);
/* The larger of `width` and the bytes of the widest text that the date picture can produce. */
WREN_API int32_t WRENFmtWidth(FormatRecord *record, int32_t width);

/* For a list control whose rows changed. Does nothing, as lists lay themselves out. */
WREN_API void WRENListBoxRefit(void *handle);

#ifdef __cplusplus
}
#endif

#endif
