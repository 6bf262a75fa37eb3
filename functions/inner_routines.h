// The built-in functions that the evaluator calls on values, without blocks. Each computes what the
// routine of the same name computes.
#ifndef ORLI11_FUNCTIONS_INNER_ROUTINES_H
#define ORLI11_FUNCTIONS_INNER_ROUTINES_H

#include "functions/built_in.h"

void InnerDateDay(InnerCall &call);
void InnerDateHour(InnerCall &call);
void InnerDateMinute(InnerCall &call);
void InnerDateMonth(InnerCall &call);
void InnerDateQuarter(InnerCall &call);
void InnerDateSecond(InnerCall &call);
void InnerDateYear(InnerCall &call);
void InnerNumberAbsolute(InnerCall &call);
void InnerNumberIff(InnerCall &call);
void InnerNumberMod(InnerCall &call);
void InnerNumberRound(InnerCall &call);
void InnerNumberTruncate(InnerCall &call);
void InnerStrIff(InnerCall &call);
void InnerStrLTrim(InnerCall &call);
void InnerStrLeft(InnerCall &call);
void InnerStrLength(InnerCall &call);
void InnerStrLower(InnerCall &call);
void InnerStrMid(InnerCall &call);
void InnerStrRTrim(InnerCall &call);
void InnerStrRight(InnerCall &call);
void InnerStrTrim(InnerCall &call);
void InnerStrUpper(InnerCall &call);

// ---- Arguments: one without a value counts as null, or as the empty text ----

inline const Value *ArgumentOf(const InnerCall &call, uint32_t place, ValueForm form) {
  return place < call.count && call.args[place].form == form ? &call.args[place] : nullptr;
}

inline TextSpan TextOf(const InnerCall &call, uint32_t place) {
  const Value *value = ArgumentOf(call, place, ValueForm::Text);
  return value == nullptr ? TextSpan{call.texts.used, 0} : SpanOf(*value);
}

// Whether the argument holds a number; bytes that are not one count as null.
inline bool NumberOf(const InnerCall &call, uint32_t place, Decimal *d) {
  const bool given = place < call.count && IsNumber(call.args[place]);
  *d = given ? NumberOf(call.args[place]) : Decimal{};
  return given;
}

// A count or position: null is 0, a fraction is cut, what 32 bits cannot hold saturates.
inline int32_t CountOf(const InnerCall &call, uint32_t place) {
  if (place >= call.count || !IsNumber(call.args[place])) {
    return 0;
  }
  const Value &value = call.args[place];
  const auto small = static_cast<int32_t>(value.narrow);
  const bool isSmall =
      value.form == ValueForm::Narrow && value.exponent == 0 && small == value.narrow;
  return isSmall ? small : DecimalToInt(NumberOf(value));
}

// The place of the argument that the sign of the selector at place 0 picks.
inline uint32_t SelectedPlace(const InnerCall &call) {
  Decimal d;
  const bool given = NumberOf(call, 0, &d);
  if (!given && call.count > 0 && call.args[0].form == ValueForm::Packed &&
      call.args[0].packed.length != 0) {
    return 1;  // not a number: below every number
  }
  return d.coefficient < 0 ? 1 : d.coefficient > 0 ? 3 : 2;
}

#endif
