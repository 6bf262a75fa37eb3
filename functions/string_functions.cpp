// The built-in string functions. Each is an OrlFunctionProc. Counts and positions are in characters
// of the active code page.
#include <algorithm>
#include <cstring>

#include "functions/arguments.h"
#include "functions/number_text.h"
#include "functions/result_block.h"
#include "functions/text_list.h"
#include "orli11.h"
#include "platform/text.h"

namespace {

// The bytes of the first n characters of the string, at most all of it.
int64_t SizeForChars(const char *text, int32_t n) {
  return int64_t{std::min(WRENStrLen(text), FUNCharBytes(n))} + 1;
}

// The block size for a string of the same length.
int64_t SizeForText(const char *text) {
  return int64_t{WRENStrLen(text)} + 1;
}

using CutOperation = void (*)(char *target, const char *source, int32_t n);
using CopyOperation = void (*)(char *target, const char *source);

// The steps below return false when there is no block for the result.

// The characters that `cut` takes from the string at index 0, as many as the count at index 1.
bool CutText(int32_t resultSize, void **result, void *const *args, CutOperation cut) {
  const char *text = TextArgument(args, 0);
  const int32_t n = CountArgument(args, 1);
  char *target = TextResult(result, resultSize, SizeForChars(text, n));
  if (target == nullptr) {
    return false;
  }
  cut(target, text, n);
  return true;
}

// What `copy` makes of the string at index 0; it is never longer.
bool CopyText(int32_t resultSize, void **result, void *const *args, CopyOperation copy) {
  const char *text = TextArgument(args, 0);
  char *target = TextResult(result, resultSize, SizeForText(text));
  if (target == nullptr) {
    return false;
  }
  copy(target, text);
  return true;
}

bool NumberOfText(int32_t resultSize, void **result, int32_t number) {
  NumberValue *target = NumberResult(result, resultSize);
  if (target == nullptr) {
    return false;
  }
  WRENNumFromInt(target, number);
  return true;
}

// The field of the list with this index, or the empty string.
bool CopyField(int32_t resultSize, void **result, const char *list, int64_t index) {
  const ListField field = ListFieldAt(list, index);
  char *target = TextResult(result, resultSize, field.bytes + 1);
  if (target == nullptr) {
    return false;
  }
  std::memcpy(target, field.text, static_cast<size_t>(field.bytes));
  target[field.bytes] = 0;
  return true;
}

}  // namespace

int32_t FUNStrLeft(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                   const char * /*name*/, void **args) {
  return CutText(resultSize, result, args, WRENStrLeft) ? 1 : 0;
}

int32_t FUNStrRight(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                    const char * /*name*/, void **args) {
  return CutText(resultSize, result, args, WRENStrRight) ? 1 : 0;
}

int32_t FUNStrMid(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result, const char * /*name*/,
                  void **args) {
  const char *text = TextArgument(args, 0);
  const int32_t n = CountArgument(args, 2);
  const int32_t position = std::min(CountArgument(args, 1), WRENStrLen(text));
  char *target = TextResult(result, resultSize, SizeForChars(text, n));
  if (target == nullptr) {
    return 0;
  }
  WRENStrMid(target, text, position, n);
  return 1;
}

int32_t FUNStrLength(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                     const char * /*name*/, void **args) {
  return NumberOfText(resultSize, result, WRENStrChars(TextArgument(args, 0))) ? 1 : 0;
}

int32_t FUNStrTrim(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                   const char * /*name*/, void **args) {
  return CopyText(resultSize, result, args, WRENStrTrim) ? 1 : 0;
}

int32_t FUNStrRTrim(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                    const char * /*name*/, void **args) {
  return CopyText(resultSize, result, args, WRENStrRTrim) ? 1 : 0;
}

int32_t FUNStrLTrim(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                    const char * /*name*/, void **args) {
  return CopyText(
             resultSize, result, args,
             [](char *target, const char *source) { lstrcpyA(target, WRENStrSkipBlanks(source)); })
             ? 1
             : 0;
}

int32_t FUNStrProper(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                     const char * /*name*/, void **args) {
  return CopyText(resultSize, result, args, WRENStrProper) ? 1 : 0;
}

int32_t FUNStrUpper(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                    const char * /*name*/, void **args) {
  return CopyText(resultSize, result, args,
                  [](char *target, const char *source) {
                    lstrcpyA(target, source);
                    WRENStrUpper(target);
                  })
             ? 1
             : 0;
}

int32_t FUNStrLower(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                    const char * /*name*/, void **args) {
  return CopyText(resultSize, result, args,
                  [](char *target, const char *source) {
                    lstrcpyA(target, source);
                    WRENStrLower(target);
                  })
             ? 1
             : 0;
}

int32_t FUNStrRepeat(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                     const char * /*name*/, void **args) {
  const char *text = TextArgument(args, 0);
  const int32_t n = std::max(CountArgument(args, 1), 0);
  const int32_t length = WRENStrLen(text);
  const int64_t bytes = int64_t{length} * n;
  char *target = TextResult(result, resultSize, bytes + 1);
  if (target == nullptr) {
    return 0;
  }
  // Each string is appended at the known end; searching for the end each time would take quadratic
  // time.
  for (int64_t end = 0; end < bytes; end += length) {
    std::memcpy(target + end, text, static_cast<size_t>(length));
  }
  target[bytes] = 0;
  return 1;
}

// Exactly n characters: cut, or filled with blanks on the right.
int32_t FUNStrPad(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result, const char * /*name*/,
                  void **args) {
  const int32_t n = std::max(CountArgument(args, 1), 0);
  char *target = TextResult(result, resultSize, int64_t{FUNCharBytes(n)} + 1);
  if (target == nullptr) {
    return 0;
  }
  WRENStrCopyChars(target, TextArgument(args, 0), n);
  // At most twice the size: half a character at the end of the string forms one with the blank
  // after it.
  for (int32_t missing = n - WRENStrChars(target); missing > 0;
       missing = n - WRENStrChars(target)) {
    char *end = target + WRENStrLen(target);
    std::memset(end, ' ', static_cast<size_t>(missing));
    end[missing] = 0;
  }
  return 1;
}

int32_t FUNStrSpaces(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                     const char * /*name*/, void **args) {
  const int32_t n = std::max(CountArgument(args, 0), 0);
  char *target = TextResult(result, resultSize, int64_t{n} + 1);
  if (target == nullptr) {
    return 0;
  }
  std::memset(target, ' ', static_cast<size_t>(n));
  target[n] = 0;
  return 1;
}

// By the platform's collation, in which case matters.
int32_t FUNStrCompare(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                      const char * /*name*/, void **args) {
  return NumberOfText(resultSize, result, lstrcmpA(TextArgument(args, 0), TextArgument(args, 1)))
             ? 1
             : 0;
}

int32_t FUNStrScan(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                   const char * /*name*/, void **args) {
  return NumberOfText(resultSize, result, WRENStrScan(TextArgument(args, 0), TextArgument(args, 1)))
             ? 1
             : 0;
}

// The first, second or third string for a selector below, equal to or above zero.
int32_t FUNStrIFF(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result, const char * /*name*/,
                  void **args) {
  return FUNStrVarResult(result, resultSize, TextArgument(args, SelectedArgument(args)));
}

int32_t FUNStrCase(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                   const char * /*name*/, void **args) {
  const int32_t index = CountArgument(args, 0);
  return CopyField(resultSize, result, index < 0 ? "" : TextArgument(args, 1), index) ? 1 : 0;
}

// The value whose index in the list of values is that of the string in the list of keys.
int32_t FUNStrTranslate(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                        const char * /*name*/, void **args) {
  const int64_t index = ListIndexOf(TextArgument(args, 1), TextArgument(args, 0));
  return CopyField(resultSize, result, index < 0 ? "" : TextArgument(args, 2), index) ? 1 : 0;
}

int32_t FUNStrReplace(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                      const char * /*name*/, void **args) {
  const char *text = TextArgument(args, 0);
  const char *replacement = TextArgument(args, 3);
  const int32_t textLength = WRENStrLen(text);
  const int32_t replacementLength = WRENStrLen(replacement);
  const int32_t position = std::clamp(CountArgument(args, 1), 0, textLength);
  // At most as many characters as the replacement has bytes: the limit is its length in bytes.
  const int32_t n = std::clamp(CountArgument(args, 2), 0, replacementLength);
  char *target = TextResult(result, resultSize, int64_t{textLength} + replacementLength + 1);
  if (target == nullptr) {
    return 0;
  }
  WRENStrReplace(target, text, replacement, position, n);
  return 1;
}

// Zero for a string that is not a number.
int32_t FUNStrToNumber(EC /*ec*/, HEXP /*exp*/, int32_t resultSize, void **result,
                       const char * /*name*/, void **args) {
  NumberValue *target = NumberResult(result, resultSize);
  if (target == nullptr) {
    return 0;
  }
  NumberFromText(target, TextArgument(args, 0));
  return 1;
}
