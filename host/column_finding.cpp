#include "host/column_finding.h"

#include <string_view>

#include "host/values.h"

namespace {

void Note(Witness &witness, const CsvRow &row, const char *text) {
  if (witness.line == 0) {
    witness = {row.input, row.line, text};
  }
}

void Note(Witness &witness, const Witness &other) {
  if (witness.line == 0) {
    witness = other;
  }
}

void Widen(Finding &finding, int16_t type, const NumberValue &value) {
  if (finding.least.length == 0 || CompareValues(type, value, finding.least) < 0) {
    finding.least = value;
  }
  if (finding.most.length == 0 || CompareValues(type, value, finding.most) > 0) {
    finding.most = value;
  }
}

void Narrow(Finding &finding, unsigned orders, const Witness &witness) {
  if ((finding.orders & orders) != finding.orders) {
    finding.orders &= orders;
    finding.ordered.push_back({orders, witness});
  }
}

void TakeNumber(Finding &finding, const CsvRow &row, const char *text) {
  Note(finding.number, row, text);
  finding.point = finding.point || std::string_view(text).find('.') != std::string_view::npos;
  if (finding.code.line != 0) {
    return;
  }
  const CodeShape shape = CodeShapeOf(text);
  if (shape == kCodeExponent) {
    Note(finding.exponent, row, text);
  } else if (shape != kCodeNone) {
    Note(finding.code, row, text);
    finding.shape = shape;
  }
}

void TakeDate(Finding &finding, const CsvRow &row, const char *text) {
  Note(finding.date, row, text);
  const unsigned orders = DateOrdersOf(text);
  if (orders != 0) {
    Narrow(finding, orders, {row.input, row.line, text});
  }
  finding.offset = finding.offset || HasOffset(text);
}

// Whether a field adds nothing to what is known: most are written like those before them. When
// values are needed, or decimals are written in another way, every field has to be read.
bool IsLikeOthers(const FindingRules &rules, Finding &finding, const char *text) {
  int64_t number = 0;
  uint8_t decimals = 0;
  int32_t day = 0;
  if (rules.bounds || rules.fields->decimal != '\0') {
    return false;
  }
  if (finding.number.line != 0 && PlainDecimal(text, number, decimals)) {
    finding.point = finding.point || decimals != 0;
    return finding.code.line != 0 || !HasLeadingZero(text);
  }
  return finding.date.line != 0 && rules.fields->dateOrder < 0 && DayOfPlainDate(text, day);
}

// A field of a column whose type is found from its fields.
void FindType(const FindingRules &rules, Finding &finding, const CsvRow &row, const char *text) {
  NumberValue value;
  if (NumberFromField(*rules.fields, text, &value)) {
    TakeNumber(finding, row, text);
  } else if (DateFromField(*rules.fields, text, &value)) {
    TakeDate(finding, row, text);
  } else {
    Note(finding.other, row, text);
    return;
  }
  if (rules.bounds && (finding.number.line == 0 || finding.date.line == 0)) {
    Widen(finding, finding.number.line != 0 ? ORL_TYPE_NUMBER : ORL_TYPE_DATE, value);
  }
}

// A field of a column whose type is required; false when it is not of that type.
bool CheckType(const FindingRules &rules, Finding &finding, const char *text) {
  NumberValue value;
  if (rules.type == ORL_TYPE_STRING) {
    return true;
  }
  const bool good = rules.type == ORL_TYPE_NUMBER ? NumberFromField(*rules.fields, text, &value)
                                                  : DateFromField(*rules.fields, text, &value);
  if (good && rules.bounds) {
    Widen(finding, rules.type, value);
  }
  return good;
}

}  // namespace

size_t FindingAdd(const FindingRules &rules, const CsvBlock &block, size_t column,
                  Finding &finding) {
  for (size_t row = 0; row < block.Count(); ++row) {
    const char *text = block.Field(row, column);
    if (FieldIsEmpty(*rules.fields, text)) {
      continue;
    }
    if (finding.filled++ == 0) {
      finding.example = text;
    }
    if (rules.required && !CheckType(rules, finding, text)) {
      return row;
    }
    if (!rules.required && finding.other.line == 0 && !IsLikeOthers(rules, finding, text)) {
      FindType(rules, finding, block.Row(row), text);
    }
  }
  return block.Count();
}

void FindingMerge(const FindingRules &rules, const Finding &next, Finding &all) {
  if (all.filled == 0) {
    all.example = next.example;
  }
  all.filled += next.filled;
  if (all.other.line != 0) {
    return;  // a String, whatever follows
  }
  Note(all.number, next.number);
  Note(all.date, next.date);
  all.other = next.other;
  all.point = all.point || next.point;
  all.offset = all.offset || next.offset;
  if (all.code.line == 0) {
    Note(all.exponent, next.exponent);
    all.code = next.code;
    all.shape = next.shape;
  }
  for (const OrderedDate &date : next.ordered) {
    Narrow(all, date.orders, date.witness);
  }
  const bool mixed = all.number.line != 0 && all.date.line != 0;
  if (rules.bounds && !mixed && next.least.length != 0) {
    int16_t type = rules.type;
    if (all.number.line != 0) {
      type = ORL_TYPE_NUMBER;
    } else if (all.date.line != 0) {
      type = ORL_TYPE_DATE;
    }
    Widen(all, type, next.least);
    Widen(all, type, next.most);
  }
}
