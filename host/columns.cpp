#include "host/columns.h"

#include <array>
#include <string_view>

#include "host/column_names.h"
#include "host/display.h"
#include "host/field.h"
#include "host/formulas.h"
#include "host/nearest.h"
#include "host/tokens.h"
#include "host/values.h"

namespace {

constexpr size_t kLongestField = 40; /* of those that a reason shows */

/* A field that determines a type, and its position. */
struct Witness {
  size_t input = 0;
  int64_t line = 0; /* 0: there is none */
  std::string text;
};

/* What is known of the fields of a column so far, besides the Column itself. */
struct Finding {
  Witness number, date, other; /* the first of each kind */
  Witness code, exponent;      /* the first number of the shape of a code */
  Witness ordered;             /* the date that left the fewest `orders` possible */
  Witness refused;             /* with a required type: a field that is not of it */
  CodeShape shape = kCodeNone; /* of `code` */
  unsigned orders = kOrderAny; /* those that all numeric dates so far can be read in */
  bool point = false;          /* a number has a decimal point */
  bool offset = false;         /* a date has an offset */
  bool demanded = false;       /* the options name the type */
};

struct ScanState {
  const CsvFile *csv;
  const DataOptions *options;
  Table *table;
  Progress *progress;
  bool bounds;
  int64_t most; /* rows; -1: all */
  std::vector<Finding> findings;
};

void Note(Witness &witness, const CsvRow &row, const char *text) {
  if (witness.line == 0) {
    witness = {row.input, row.line, text};
  }
}

void Widen(Column &column, int16_t type, const NumberValue &value) {
  if (column.least.length == 0 || CompareValues(type, value, column.least) < 0) {
    column.least = value;
  }
  if (column.most.length == 0 || CompareValues(type, value, column.most) > 0) {
    column.most = value;
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
  if (orders != 0 && (finding.orders & orders) != finding.orders) {
    finding.orders &= orders;
    finding.ordered = {row.input, row.line, text};
  }
  finding.offset = finding.offset || HasOffset(text);
}

/* Whether a field adds nothing to what is known: most are written like those before them. When
 * values are needed, or decimals are written in another way, every field has to be read. */
bool IsLikeOthers(const ScanState &state, Finding &finding, const char *text) {
  int64_t number = 0;
  uint8_t decimals = 0;
  int32_t day = 0;
  if (state.bounds || state.options->rules.decimal != '\0') {
    return false;
  }
  if (finding.number.line != 0 && PlainDecimal(text, number, decimals)) {
    finding.point = finding.point || decimals != 0;
    return finding.code.line != 0 || CodeShapeOf(text) == kCodeNone;
  }
  return finding.date.line != 0 && state.options->rules.dateOrder < 0 && DayOfPlainDate(text, day);
}

/* A field of a column whose type is found from its fields. */
void FindType(const ScanState &state, Column &column, Finding &finding, const CsvRow &row,
              const char *text) {
  const FieldRules &rules = state.options->rules;
  NumberValue value;
  if (finding.other.line != 0) {
    return; /* a String, whatever follows */
  }
  if (IsLikeOthers(state, finding, text)) {
    return;
  }
  if (NumberFromField(rules, text, &value)) {
    TakeNumber(finding, row, text);
  } else if (DateFromField(rules, text, &value)) {
    TakeDate(finding, row, text);
  } else {
    Note(finding.other, row, text);
    return;
  }
  if (state.bounds && (finding.number.line == 0 || finding.date.line == 0)) {
    Widen(column, finding.number.line != 0 ? ORL_TYPE_NUMBER : ORL_TYPE_DATE, value);
  }
}

/* A field of a column whose type is required. */
void CheckType(const ScanState &state, Column &column, Finding &finding, const CsvRow &row,
               const char *text) {
  const FieldRules &rules = state.options->rules;
  NumberValue value;
  if (column.type == ORL_TYPE_STRING) {
    return;
  }
  const bool good = column.type == ORL_TYPE_NUMBER ? NumberFromField(rules, text, &value)
                                                   : DateFromField(rules, text, &value);
  if (!good) {
    Note(finding.refused, row, text);
  } else if (state.bounds) {
    Widen(column, column.type, value);
  }
}

std::string Shown(const std::string &text) {
  size_t width = 0;
  return "'" + DisplayLine(text, kLongestField, width) + "'";
}

bool TakeRow(const CsvRow &row, void *user, std::string &error) {
  ScanState &state = *static_cast<ScanState *>(user);
  if (state.table->rows == state.most) {
    return false;
  }
  if (!ColumnsFit(*state.csv, *state.table, row, error)) {
    return false;
  }
  if (state.table->notUtf8.empty() && !IsUtf8(row.bytes)) {
    state.table->notUtf8 = CsvPlace(*state.csv, row.input, row.line);
  }
  for (size_t i = 0; i < row.starts.size(); ++i) {
    Column &column = state.table->columns[i];
    Finding &finding = state.findings[i];
    const char *text = CsvField(row, i);
    if (FieldIsEmpty(state.options->rules, text)) {
      continue;
    }
    if (column.filled++ == 0) {
      column.example = text;
    }
    (finding.demanded ? CheckType : FindType)(state, column, finding, row, text);
    if (finding.refused.line != 0) {
      error = CsvPlace(*state.csv, row.input, row.line) + ": column " + DisplayName(column.name) +
              ": " + Shown(text) + " is not a " + TypeName(column.type);
      return false;
    }
  }
  ProgressStep(*state.progress, "finding types", ++state.table->rows, 0);
  return true;
}

/* "500,001" */
std::string Grouped(int64_t number) {
  std::string digits = std::to_string(number);
  for (size_t place = digits.size(); place > 3; place -= 3) {
    digits.insert(place - 3, ",");
  }
  return digits;
}

/* "line 500,001: 'oops'", with the file when there are several. */
std::string Told(const ScanState &state, const Witness &witness) {
  const bool several = state.csv->inputs.size() > 1;
  return (several ? state.csv->Path(witness.input) + " " : std::string()) + "line " +
         Grouped(witness.line) + ": " + Shown(witness.text);
}

/* The order in which three numbers are a date; null when there is none. */
const char *OrderOf(const FieldRules &rules, const std::string &text) {
  constexpr std::array<const char *, 3> kOrders = {"mdy", "dmy", "ymd"};
  FieldRules other = rules;
  NumberValue unused;
  for (const size_t order : {2U, 1U, 0U}) {
    other.dateOrder = static_cast<int32_t>(order);
    const bool yearFirst = YearIsFirst(text);
    if ((order == 2) == yearFirst && DateFromField(other, text.c_str(), &unused)) {
      return kOrders.at(order);
    }
  }
  return nullptr;
}

/* How the field that made the column a String could become a number or date. */
std::string OtherReason(const ScanState &state, Column &column, const Finding &finding) {
  const FieldRules &rules = state.options->rules;
  const std::string &text = finding.other.text;
  std::string reason = Told(state, finding.other);
  FieldRules other = rules;
  other.decimal = rules.decimal == ',' ? '\0' : ',';
  NumberValue unused;
  if (NumberFromField(other, text.c_str(), &unused)) {
    column.twoWays = finding.number.line != 0 && (rules.decimal == ',' || finding.point);
    return column.twoWays
               ? Told(state, finding.number) + " and " + reason + " have different decimal signs"
               : reason + " is a number with --decimal " + (other.decimal == ',' ? "," : ".");
  }
  const unsigned orders = DateOrdersOf(text);
  if (finding.ordered.line != 0 && orders != 0 && (orders & finding.orders) == 0) {
    column.twoWays = true;
    return Told(state, finding.ordered) + " and " + reason +
           " have day and month in different orders";
  }
  const char *order = OrderOf(rules, text);
  if (order == nullptr) {
    return reason;
  }
  /* The month is never first in dates with points. */
  const bool either =
      (orders & kOrderDmy) != 0 && (orders & kOrderMdy) != 0 && text.find('.') == std::string::npos;
  return reason + " is a date with --date-order " + (either ? "dmy or mdy" : order);
}

/* What is odd about the fields of a Date. */
std::string DateNote(const ScanState &state, const Finding &finding) {
  if (finding.offset) {
    return "times with an offset are converted to UTC";
  }
  const bool either = finding.ordered.line != 0 && (finding.orders & kOrderMdy) != 0 &&
                      (finding.orders & kOrderDmy) != 0;
  if (!either || state.options->rules.dateOrder >= 0) {
    return {};
  }
  return Told(state, finding.ordered) + " is read as " +
         (CountryDateOrder() == 1 ? "day, month, year; --date-order mdy has the month first"
                                  : "month, day, year; --date-order dmy has the day first");
}

/* Determines the type of a column after all its fields, and explains why it is a String. */
void Decide(const ScanState &state, Column &column, const Finding &finding) {
  constexpr const char *kShapes[] = {"", " has leading zeros", " has a plus sign", ""};
  if (finding.demanded) {
    return;
  }
  column.type = ORL_TYPE_STRING;
  if (finding.other.line != 0) {
    column.why = OtherReason(state, column, finding);
  } else if (finding.number.line != 0 && finding.date.line != 0) {
    column.why =
        Told(state, finding.number) + " is a number, " + Told(state, finding.date) + " is a date";
  } else if (finding.date.line != 0) {
    column.type = ORL_TYPE_DATE;
    column.why = DateNote(state, finding);
  } else if (finding.code.line != 0) {
    column.why = Told(state, finding.code) + kShapes[finding.shape];
  } else if (finding.exponent.line != 0 && !finding.point) {
    column.why = Told(state, finding.exponent) + " looks like a code";
  } else if (finding.number.line != 0) {
    column.type = ORL_TYPE_NUMBER;
  } else {
    column.why = "all fields are empty";
  }
  if (column.type == ORL_TYPE_STRING) {
    column.least = column.most = {};
  }
}

/* Applies the types of the options. */
bool Demand(ScanState &state, std::string &error) {
  for (const auto &[name, type] : state.options->types) {
    const size_t index = FindByName(state.table->columns, name);
    if (index == state.table->columns.size()) {
      error = state.csv->Path() + ": --type: there is no column " + DisplayName(name) +
              ColumnHint(state.table->columns, name);
      return false;
    }
    Column &column = state.table->columns[index];
    if (state.findings[index].demanded && column.type != type) {
      error = "--type: column " + DisplayName(name) + " is given two types";
      return false;
    }
    column.type = type;
    state.findings[index].demanded = true;
  }
  return true;
}

}  // namespace

void ColumnsName(const CsvFile &csv, EC ec, Table &table, std::vector<std::string> &notes) {
  const std::vector<std::string> names = NamesOfHeaders(ec, csv.header, notes);
  table.columns.resize(names.size());
  for (size_t i = 0; i < names.size(); ++i) {
    table.columns[i].header = csv.header[i];
    table.columns[i].name = names[i];
    if (!IsUtf8(csv.header[i])) {
      table.notUtf8 = csv.Path() + ": the header";
    }
  }
}

bool ColumnsScan(CsvFile &csv, const DataOptions &options, bool bounds, int64_t most, Table &table,
                 Progress &progress, std::string &error) {
  ScanState state{&csv, &options, &table, &progress, bounds, most, {}};
  state.findings.resize(table.columns.size());
  if (!Demand(state, error)) {
    return false;
  }
  const bool good = CsvRead(csv, TakeRow, &state, error);
  ProgressEnd(progress);
  for (size_t i = 0; good && i < table.columns.size(); ++i) {
    Decide(state, table.columns[i], state.findings[i]);
  }
  return good;
}

bool ColumnsFit(const CsvFile &csv, const Table &table, const CsvRow &row, std::string &error) {
  if (row.starts.size() == table.columns.size()) {
    return true;
  }
  error = CsvPlace(csv, row.input, row.line) + ": " + std::to_string(row.starts.size()) +
          (row.starts.size() == 1 ? " field" : " fields") + ", but the header has " +
          std::to_string(table.columns.size());
  const char other = csv.inputs[row.input].other;
  if (other != '\0') {
    error += std::string("\nhint: the header also has ") +
             (other == '\t' ? "tabs: try --delimiter tab" : "semicolons: try --delimiter ';'");
  }
  return false;
}

size_t FindByName(const std::vector<Column> &columns, const std::string &name) {
  for (auto member : {&Column::name, &Column::header}) {
    for (size_t i = 0; i < columns.size(); ++i) {
      if (columns[i].*member == name) {
        return i;
      }
    }
  }
  return columns.size();
}

std::string ColumnHint(const std::vector<Column> &columns, const std::string &name) {
  std::vector<std::string> names;
  names.reserve(columns.size());
  for (const Column &column : columns) {
    names.push_back(FormulaOf(column.name, "").title);
  }
  return NearestHint(Trimmed(name), names);
}

const char *TypeName(int32_t type) {
  switch (type) {
    case ORL_TYPE_NUMBER:
      return "Number";
    case ORL_TYPE_DATE:
      return "Date";
    case ORL_TYPE_STRING:
      return "String";
    default:
      return "other";
  }
}
