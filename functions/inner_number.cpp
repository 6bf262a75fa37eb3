// Functions on numbers and dates in unpacked values.
#include <functional>

#include "functions/arguments.h"
#include "functions/date_parts.h"
#include "functions/date_value.h"
#include "functions/inner_routines.h"

namespace {

// A copy of the argument; null without one. Copied in the pieces in which it was stored.
void PassOn(InnerCall call, uint32_t place) {
  const Value *value = place < call.Count() ? &call.Arguments()[place] : nullptr;
  if (value == nullptr || !IsNumberForm(value->form)) {
    SetNull(call.Result());
  } else if (value->form == ValueForm::Narrow) {
    SetNarrow(call.Result(), NarrowOf(*value));
  } else if (value->form == ValueForm::Wide) {
    SetNumber(call.Result(), NumberOf(*value));
  } else {
    Value *result = call.Result();
    result->packed.low = value->packed.low;
    result->packed.head = value->packed.head;
    result->packed.length = value->packed.length;
    result->form = ValueForm::Packed;
  }
}

// The argument rounded by `round`; a null one stays null.
template <class Round>
void RoundWith(InnerCall call, Round round) {
  Decimal d;
  if (NumberOf(call, 0, &d) && round(&d, d)) {
    SetNumber(call.Result(), d);
  } else {
    SetNull(call.Result());
  }
}

// The parts of the first argument; false when it is missing or null.
bool DateArgument(InnerCall call, DateTimeParts *parts) {
  if (call.Count() == 0 || !IsNumberForm(call.Arguments()[0].form) ||
      IsNullNumber(call.Arguments()[0])) {
    return false;
  }
  DateOf(call.Arguments()[0], parts);
  return true;
}

// The part of a date that `number` is, or what it computes from the parts; null for a null date.
template <auto number>
void NumberOfDate(InnerCall call) {
  DateTimeParts parts;
  if (!DateArgument(call, &parts)) {
    SetNull(call.Result());
    return;
  }
  SetNarrow(call.Result(), {std::invoke(number, parts), 0});
}

// The month's first or last day at midnight; null for a null date.
void DayOfMonth(InnerCall call, MonthDay day) {
  DateTimeParts parts;
  if (!DateArgument(call, &parts)) {
    SetNull(call.Result());
    return;
  }
  SetDate(call.Result(), AtMonthDay(parts, day));
}

}  // namespace

void InnerNumberAbsolute(InnerCall call) {
  Decimal d;
  if (NumberOf(call, 0, &d)) {
    SetNumber(call.Result(), {d.coefficient < 0 ? -d.coefficient : d.coefficient, d.exponent});
  } else {
    // Bytes that are not a number count as below zero, and cannot be negated.
    SetNull(call.Result());
  }
}

void InnerNumberRound(InnerCall call) {
  const int32_t decimals = CountOf(call, 1);
  RoundWith(call,
            [=](Decimal *result, const Decimal &d) { return DecimalRoundTo(result, d, decimals); });
}

void InnerNumberTruncate(InnerCall call) {
  const int32_t decimals = CountOf(call, 1);
  RoundWith(call, [=](Decimal *result, const Decimal &d) {
    return DecimalTruncateTo(result, d, kAllDigits, decimals);
  });
}

void InnerNumberMod(InnerCall call) {
  const bool null = call.Count() < 2 || call.Arguments()[0].form == ValueForm::None ||
                    call.Arguments()[1].form == ValueForm::None ||
                    IsNullNumber(call.Arguments()[0]) || IsNullNumber(call.Arguments()[1]);
  const int64_t left = CountOf(call, 0);
  const int64_t right = CountOf(call, 1);
  if (null || right == 0) {
    SetNull(call.Result());
  } else {
    SetNumber(call.Result(), {left % right, 0});
  }
}

void InnerNumberIff(InnerCall call) {
  PassOn(call, SelectedPlace(call));
}

void InnerDateYear(InnerCall call) {
  NumberOfDate<&DateTimeParts::year>(call);
}
void InnerDateMonth(InnerCall call) {
  NumberOfDate<&DateTimeParts::month>(call);
}
void InnerDateDay(InnerCall call) {
  NumberOfDate<&DateTimeParts::day>(call);
}
void InnerDateHour(InnerCall call) {
  NumberOfDate<&DateTimeParts::hour>(call);
}
void InnerDateMinute(InnerCall call) {
  NumberOfDate<&DateTimeParts::minute>(call);
}
void InnerDateSecond(InnerCall call) {
  NumberOfDate<&DateTimeParts::second>(call);
}
void InnerDateQuarter(InnerCall call) {
  NumberOfDate<QuarterOf>(call);
}
void InnerWeekDay(InnerCall call) {
  NumberOfDate<WeekDayOf>(call);
}
void InnerDateMonthBegin(InnerCall call) {
  DayOfMonth(call, MonthDay::First);
}
void InnerDateMonthEnd(InnerCall call) {
  DayOfMonth(call, MonthDay::Last);
}
