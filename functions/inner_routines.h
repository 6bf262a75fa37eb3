// The built-in functions that the evaluator calls on values, without blocks. Each computes what the
// routine of the same name computes.
#ifndef ORLI11_FUNCTIONS_INNER_ROUTINES_H
#define ORLI11_FUNCTIONS_INNER_ROUTINES_H

#include "functions/built_in.h"

void InnerDateDay(InnerCall call);
void InnerDateHour(InnerCall call);
void InnerDateMinute(InnerCall call);
void InnerDateMonth(InnerCall call);
void InnerDateMonthBegin(InnerCall call);
void InnerDateMonthEnd(InnerCall call);
void InnerDateQuarter(InnerCall call);
void InnerDateSecond(InnerCall call);
void InnerDateYear(InnerCall call);
void InnerNumberAbsolute(InnerCall call);
void InnerNumberIff(InnerCall call);
void InnerNumberMod(InnerCall call);
void InnerNumberRound(InnerCall call);
void InnerNumberTruncate(InnerCall call);
void InnerStrIff(InnerCall call);
void InnerStrLTrim(InnerCall call);
void InnerStrLeft(InnerCall call);
void InnerStrLength(InnerCall call);
void InnerStrLower(InnerCall call);
void InnerStrMid(InnerCall call);
void InnerStrRTrim(InnerCall call);
void InnerStrReplace(InnerCall call);
void InnerStrRight(InnerCall call);
void InnerStrToNumber(InnerCall call);
void InnerStrTrim(InnerCall call);
void InnerStrUpper(InnerCall call);
void InnerWeekDay(InnerCall call);

// ---- Arguments: one without a value counts as null, or as the empty string ----

inline const Value *ArgumentOf(InnerCall call, uint32_t place, ValueForm form) {
  return place < call.Count() && call.Arguments()[place].form == form ? &call.Arguments()[place]
                                                                      : nullptr;
}

inline TextSpan TextOf(InnerCall call, uint32_t place) {
  const Value *value = ArgumentOf(call, place, ValueForm::Text);
  return value == nullptr ? TextSpan{call.texts.used, 0} : SpanOf(*value);
}

// Whether the argument holds a number; bytes that are not one count as null.
inline bool NumberOf(InnerCall call, uint32_t place, Decimal *d) {
  const bool given = place < call.Count() && IsNumber(call.Arguments()[place]);
  *d = given ? NumberOf(call.Arguments()[place]) : Decimal{};
  return given;
}

// A count or position: null is 0, a fraction is truncated, values beyond 32 bits saturate.
inline int32_t CountOf(InnerCall call, uint32_t place) {
  return place < call.Count() ? IntegerOf(call.Arguments()[place]) : 0;
}

// The index of the argument selected by the sign of the selector at index 0.
inline uint32_t SelectedPlace(InnerCall call) {
  Decimal d;
  const bool given = NumberOf(call, 0, &d);
  if (!given && call.Count() > 0 && call.Arguments()[0].form == ValueForm::Packed &&
      call.Arguments()[0].packed.length != 0) {
    return 1;  // not a number: below every number
  }
  return d.coefficient < 0 ? 1 : d.coefficient > 0 ? 3 : 2;
}

#endif
