#include "host/foreign_words.h"

#include <orli11.h>

#include "host/tokens.h"

namespace {

constexpr std::string_view kJoin = "texts are joined by ||";
constexpr std::string_view kPower = "write Power(a, b) for a to the power of b";
constexpr std::string_view kQuotedNames =
    "names that are not plain are written in double quotes: \"wind speed\"";
constexpr std::string_view kPlainQuotes = "texts are written in plain quotes, ', and names in \"";
constexpr std::string_view kPlainMinus = "write the plain minus sign, -";
constexpr std::string_view kPlainBlank = "a special blank is there; write a plain one";
constexpr std::string_view kNumberText =
    "NumberToStr(n, 2) makes a text of a number, DateToStrPicture(d, 'd.M.yyyy') of a date";
constexpr std::string_view kEmpty =
    "the text of an empty value has no length: StrIFF(StrLength(NumberToStr(n, 0)), '', 'empty', "
    "'filled')";

struct SignHint {
  std::string_view sign, hint;
};

constexpr SignHint kSigns[] = {
    {"&", kJoin},
    {"|", kJoin},
    {"^", kPower},
    {"%", "write NumberMod(a, b) for the remainder of a division"},
    {"[", kQuotedNames},
    {"]", kQuotedNames},
    {";", "arguments are separated by commas"},
    {"?", "there are no comparisons: NumberIFF, StrIFF and DateIFF choose by the sign of a number"},
    {"{", "there are no braces: a date is written 2024-01-31, a name \"wind speed\""},
    {"&&", "there is no AND of conditions: those of NumberIFF, as 1 and 0, are multiplied"},
};

constexpr SignHint kCharacters[] = {
    {"‘", kPlainQuotes},
    {"’", kPlainQuotes},
    {"‚", kPlainQuotes},
    {"“", kPlainQuotes},
    {"”", kPlainQuotes},
    {"„", kPlainQuotes},
    {"«", kPlainQuotes},
    {"»", kPlainQuotes},
    {"×", "write * for a product"},
    {"·", "write * for a product"},
    {"÷", "write / for a quotient"},
    {"−", kPlainMinus},
    {"–", kPlainMinus},
    {"—", kPlainMinus},
    {"≤", kNoComparisons},
    {"≥", kNoComparisons},
    {"≠", kNoComparisons},
    {"²", kPower},
    {"³", kPower},
    {"√", "write Power(a, 0.5) for a square root"},
    {"\xC2\xA0", kPlainBlank},      // no-break space
    {"\xE2\x80\xAF", kPlainBlank},  // narrow no-break space
    {"\xE2\x80\x8B", kPlainBlank},  // zero width space
    {"\xEF\xBB\xBF", kPlainBlank},  // byte-order mark
};

// Words of one meaning, with blanks between them.
struct ForeignWords {
  unsigned places;  // WORD_... bits
  std::string_view words, hint;
};

constexpr ForeignWords kWords[] = {
    {kWordAlone, "now today @now curdate sysdate getdate current_date current_timestamp",
     "formulas have no clock: write the date, as in 2024-01-31"},
    {kWordAlone, "null none nil na",
     "there is no word for an empty value: StrToDate('') is an empty Date, NumberMod(0, 0) an "
     "empty Number, '' the empty text"},
    {kWordAlone, "true false", "there is no type for true and false: use 1 and 0"},
    {kWordAlone, "min max least greatest",
     "the larger of two is NumberIFF(a - b, b, a, a), the smaller NumberIFF(a - b, a, a, b)"},
    {kWordAlone, "sum avg count mean median",
     "a formula sees one row; `orli report` computes figures of many"},
    {kWordAlone, "pi", "write the number: 3.14159265358979"},
    {kWordCalled, "len strlen", "StrLength(s) is the length of a text"},
    {kWordCalled, "lower tolower", "StrLower(s) makes small letters"},
    {kWordCalled, "upper toupper", "StrUpper(s) makes capitals"},
    {kWordCalled, "trim strip", "StrTrim(s) takes the blanks at both ends away"},
    {kWordCalled, "concat concatenate strconcat join", kJoin},
    {kWordCalled, "mid substr slice", "StrMid(s, position, count) counts positions from 0"},
    {kWordCalled, "instr find indexof strpos charindex search",
     "StrScan(s, part) finds a part of a text, from 0, and is -1 without one"},
    {kWordCalled, "replace substitute",
     "StrScan finds a part of a text; StrLeft and StrMid take what is beside it"},
    {kWordCalled, "proper initcap", "StrProper(s) makes capitals of first letters"},
    {kWordCalled, "rept", "StrRepeat(s, count) repeats a text"},
    {kWordCalled, "int trunc fix", "NumberTruncate(n, 0) cuts the fraction of a number"},
    {kWordCalled, "ceil", "CEILING(n) is the next whole number"},
    {kWordCalled, "pow", kPower},
    {kWordCalled, "sqrt", "write Power(a, 0.5) for a square root"},
    {kWordCalled, "datediff datedif days", "date - date is the days between two"},
    {kWordCalled, "dateadd adddays edate", "+ moves a date: date + 7 DAYS, date - 1 MONTH"},
    {kWordCalled, "eomonth last_day", "DateMonthEnd(d) is the last day of a month"},
    {kWordCalled, "day", "DateDay(d) is the day of a date"},
    {kWordCalled, "text format str tostring to_char", kNumberText},
    {kWordCalled, "value val tonumber to_number", "StrToNumber(s) makes a number of a text"},
    {kWordCalled, "todate to_date datevalue date",
     "StrToDate(s) makes a date of a text, DateConstruct(year, month, day, 0, 0, 0) of numbers"},
    {kWordCalled, "isnull ifnull nvl coalesce isblank isempty", kEmpty},
    {kWordCalled, "switch decode lookup vlookup",
     "StrTranslate(s, 'a,b', 'x,y') looks a text up in a list, StrCase(n, 'x,y') a number"},
    {kWordBetween, "is", kEmpty},
    {kWordBetween, "as",
     "a value is converted by a function: NumberToStr, DateToStr, StrToNumber, StrToDate"},
    {kWordBetween, "like contains",
     "StrScan(s, part) finds a part of a text, and is -1 without one"},
    {kWordBetween, "div", "write / for a quotient"},
    {kWordBetween, "mod", "write NumberMod(a, b) for the remainder of a division"},
    {kWordBetween, "week weeks quarter quarters",
     "dates move by DAY, MONTH, YEAR, HOUR, MINUTE and SECOND: a week is 7 DAYS, a quarter 3 "
     "MONTHS"},
    {kWordBetween, "#", kNoComments},
};

// How to convert a value of one type to another.
struct Conversion {
  int32_t id;
  std::string_view hint;
};
constexpr Conversion kConversions[] = {
    {ORL_ERR_TYPESTR, "NumberToStr(n, 2) and DateToStr(d) make texts of numbers and dates"},
    {ORL_ERR_OPERATORSTR, "texts are joined by ||; StrToNumber(s) makes a number of a text"},
    {ORL_ERR_OPERATORNUM,
     "only texts are joined by ||; NumberToStr(n, 2) makes a text of a number"},
    {ORL_ERR_OPERATORDATE,
     "a Date takes + and - alone: date + 7 DAYS, or date - date for the days between two"},
    {ORL_ERR_TYPENUM,
     "a Number is needed here: StrToNumber(s) makes one of a text; a Date is moved by a Number, "
     "date + 7 DAYS"},
    {ORL_ERR_TYPENUMDATE,
     "a date is written without quotes, 2024-01-31; StrToDate(s) makes one of a text"},
    {ORL_ERR_PARMNUM, "StrToNumber(s) makes a number of a text"},
    {ORL_ERR_PARMSTR, "NumberToStr(n, 2) and DateToStr(d) make texts of numbers and dates"},
    {ORL_ERR_PARMDATE, "StrToDate(s) makes a date of a text"},
    {ORL_ERR_EXPPARMS, "a formula takes no arguments: write `name()`"},
    {ORL_ERR_INVALIDDATE, "a date is written 2024-01-31, with a time 2024-01-31 21:30:15"},
    {ORL_ERR_BETWEEN, "both ends of a range have one type"},
    {ORL_ERR_RANGETYPE, "all members of a set have one type"},
    {ORL_ERR_IMBEDDEDRANGE,
     "a range or set is written alone; --where takes it: --where 'column=name'"},
};

bool HasWord(std::string_view words, std::string_view wanted) {
  while (!words.empty()) {
    const std::string_view word = words.substr(0, words.find(' '));
    if (EqualNoCase(word, wanted)) {
      return true;
    }
    words.remove_prefix(word.size() == words.size() ? word.size() : word.size() + 1);
  }
  return false;
}

}  // namespace

std::string_view HintForWord(std::string_view word, WordPlace place) {
  for (const ForeignWords &entry : kWords) {
    if ((entry.places & static_cast<unsigned>(place)) != 0 && HasWord(entry.words, word)) {
      return entry.hint;
    }
  }
  return {};
}

std::string_view HintForSign(std::string_view sign) {
  for (const SignHint &foreign : kSigns) {
    if (foreign.sign == sign) {
      return foreign.hint;
    }
  }
  return {};
}

std::string_view HintForCharacter(std::string_view text, size_t &length) {
  for (const SignHint &foreign : kCharacters) {
    if (text.starts_with(foreign.sign)) {
      length = foreign.sign.size();
      return foreign.hint;
    }
  }
  length = 1;
  return {};
}

std::string_view HintForError(int32_t id) {
  for (const Conversion &conversion : kConversions) {
    if (conversion.id == id) {
      return conversion.hint;
    }
  }
  return {};
}
