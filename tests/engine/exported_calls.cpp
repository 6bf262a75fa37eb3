#include "tests/engine/exported_calls.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

#include "orli11.h"
#include "pavni11.h"
#include "platform/windows.h"
#include "tests/functions/function_call.h"

namespace {

std::vector<std::string> ExportedNames() {
  std::vector<std::string> names;
  for (const char *library : {"ORLI11", "WRENI11", "PAVNI11"}) {
    std::ifstream list("cmake/exports/" + std::string(library) + ".txt");
    for (std::string name; std::getline(list, name);) {
      if (!name.empty() && std::isalpha(name[0]) != 0) names.push_back(name);
    }
  }
  return names;
}

}  // namespace

const std::vector<std::string> &Names() {
  static const std::vector<std::string> names = ExportedNames();
  return names;
}

bool *Called() {
  static bool *const called = SharedWithChildren<bool>(Names().size());
  return called;
}

namespace {

void *Symbol(const std::string &name) {
  static void *const libraries[] = {dlopen(ORLI11_FILE, RTLD_NOW | RTLD_LOCAL),
                                    dlopen(WRENI11_FILE, RTLD_NOW | RTLD_LOCAL),
                                    dlopen(PAVNI11_FILE, RTLD_NOW | RTLD_LOCAL)};
  for (size_t i = 0; i < Names().size(); ++i) {
    if (Names()[i] == name) Called()[i] = true;
  }
  void *found = nullptr;
  for (void *library : libraries) {
    if (library != nullptr && found == nullptr) found = dlsym(library, name.c_str());
  }
  return found;
}

// The routine of the loaded library, not the one linked into this program.
#define LOADED(name) reinterpret_cast<decltype(&::name)>(SymbolAt(#name))

void *SymbolAt(const char *name) {
  const int64_t limit =
      std::exchange(allocationsAllowed, -1);  // the lookup is not part of the call
  void *symbol = Symbol(name);
  allocationsAllowed = limit;
  return symbol;
}

int32_t GiveFive(EC, HEXP, int32_t, void **value, const char *) {
  LOADED(WRENNumFromInt)(static_cast<NumberValue *>(*value), 5);
  return 1;
}

// The data of the calls: prepared before any of them, with memory.
struct Prepared {
  EC ec;
  HEXP one, two;
  char block[8192];
  int32_t blockSize;
  char text[256], longText[200];
  NumberValue number, date;
  void *heap, *value;
  FormatRecord format;
};
Prepared at;

ExprItem Row(int16_t kind, const char *name) {
  ExprItem item = {};
  item.kind = kind;
  std::strcpy(item.name, name);
  item.routineName = "Five";
  item.routine = reinterpret_cast<void *>(&GiveFive);
  return item;
}

HEXP Formula(const char *text, const char *name) {
  uint16_t type = 0;
  return LOADED(ORLParseString)(at.ec, text, name, nullptr, &type);
}

int64_t Whether(const void *pointer) {
  return pointer != nullptr ? 1 : 0;
}

// A parse entry as a number: 1, or the message below zero.
template <class Parse>
int64_t ParseResult(Parse parse) {
  FormulaError error = {};
  uint16_t type = 0;
  return parse(&error, &type) != nullptr ? 1 : -error.id;
}

int64_t LoadBlock() {
  EC ec = LOADED(ORLCreateEC)(
      nullptr, [](const char *) { return reinterpret_cast<void *>(&GiveFive); }, nullptr,
      ORL_FLAG_RANGES);
  const auto ignore = [](EC, const char *, const FormulaError *) {};
  return ec == nullptr ? 0 : LOADED(ORLSetECContents)(ec, at.blockSize, at.block, 1, ignore);
}

// Routines that need no memory: all of these may be called without any.
void CallTextRoutines() {
  char text[100] = "some text";
  char token[100];
  const char *const blanks = " ";
  LOADED(WRENStrChars)(text);
  LOADED(WRENStrLen)(LOADED(WRENStrAdvance)(text, 2));
  LOADED(WRENStrChr)(text, 't');
  LOADED(WRENStrSkipBlanks)(text);
  LOADED(WRENStrHasPrefix)(text, "some", 4);
  LOADED(WRENStrEqualNoCase)(text, "SOME TEXT");
  LOADED(WRENStrFold)(text);
  LOADED(WRENStrUpper)(text);
  LOADED(WRENStrLower)(text);
  LOADED(WRENStrTokenize)(token, text, blanks, blanks, 0, 34, 0);
  LOADED(WRENStrCopyChars)(token, text, 3);
  LOADED(WRENStrLeft)(token, text, 3);
  LOADED(WRENStrRight)(token, text, 3);
  LOADED(WRENStrMid)(token, text, 1, 3);
  LOADED(WRENStrReplace)(token, text, "new", 0, 4);
  LOADED(WRENStrTrim)(token, text);
  LOADED(WRENStrRTrim)(token, text);
  LOADED(WRENStrProper)(token, text);
  LOADED(WRENStrScan)(text, "text");
  LOADED(WRENIsLeadByteAt)(text);
  LOADED(WRENIsAlpha)('a');
  LOADED(WRENIsDigit)('1');
  LOADED(WRENIsDoubleByte)();
  LOADED(WRENSetCodePage)(1252);
  LOADED(WRENListBoxRefit)(nullptr);
  LOADED(WRENMemSize)(at.heap);
  LOADED(ORLMemSize)(at.heap);
}

void CallNumberRoutines() {
  NumberValue value = at.number;
  double real = 0;
  LOADED(WRENNumAdd)(&value, &value, &at.number);
  LOADED(WRENNumSub)(&value, &value, &at.number);
  LOADED(WRENNumMul)(&value, &value, &at.number);
  LOADED(WRENNumDiv)(&value, &value, &at.number);
  LOADED(WRENNumNegate)(&value);
  LOADED(WRENNumSetNull)(&value);
  LOADED(WRENNumSetZero)(&value);
  LOADED(WRENNumCompare)(&value, &at.number);
  LOADED(WRENNumIsNull)(&value);
  LOADED(WRENNumIsZero)(&value);
  LOADED(WRENNumRound)(&value, &at.number, 1);
  LOADED(WRENNumTruncate)(&value, 9, 2);
  LOADED(WRENNumToInt)(&value);
  LOADED(WRENNumToDouble)(&value, &real);
  LOADED(WRENNumFromInt)(&value, 7);
  LOADED(WRENNumFromLong)(&value, 7);
  LOADED(WRENNumFromDouble)(&value, 1.5);
  LOADED(WRENNumFromText)(&value, "1.5");
  char text[8];
  LOADED(WRENNumToText)(&value, sizeof text, text);
  DateTimeParts parts = {1, 31, 2012, 0, 0, 0, 0};
  value.length = static_cast<uint8_t>(LOADED(PAVNDateToNumber)(value.payload, &parts));
  LOADED(PAVNNumberToDate)(value.payload, value.length, &parts);
  LOADED(PAVNDaysToDate)(LOADED(PAVNDateToDays)(&parts), &parts);
}

// Each of the format routines; the first of them on a thread loads the country settings.
int64_t CallFormatRoutines() {
  char output[200] = "";
  FormatRecord record;
  LOADED(WRENFmtInit)(&record);
  record.mode = WREN_FMT_DATE;
  record.input = "1/31/2012";
  record.output = output;
  record.useCountry = 1;
  const bool dated = LOADED(WRENFmtParseDate)(&record) != 0 && LOADED(WRENFmtDate)(&record) != 0;
  record.mode = WREN_FMT_CURRENCY;
  record.input = "12.50";
  LOADED(WRENFmtWidth)(&record, 5);
  LOADED(WRENFmtCheckDatePicture)("yyyy");
  const bool priced =
      LOADED(WRENFmtParseNumber)(&record) != 0 && LOADED(WRENFmtNumber)(&record) != 0;
  record.numberPicture = "0.0";
  return dated && priced && LOADED(WRENFmtCheckNumberPicture)(&record) != 0 ? 1 : 0;
}

void AskAboutContext() {
  EC ec = at.ec;
  LOADED(ORLSetUserLong)(ec, LOADED(ORLGetUserLong)(ec));
  LOADED(ORLSetHelpPath)(ec, "path", 1);
  LOADED(ORLSetListValuesCallback)(ec, nullptr);
  LOADED(ORLSetDelPermissionCallback)(ec, nullptr);
  LOADED(ORLEnumExpItems)
  (
      ec, ORL_INPUT, [](EC, const char *, void *) {}, nullptr);
  LOADED(ORLEnumExpressions)(ec, [](EC, HEXP, int32_t) { return 1; });
  LOADED(ORLLoadComboBox)(ec, ORL_INPUT, nullptr);
  LOADED(ORLGetExpressionCount)(ec);
  LOADED(ORLIsItemUsedInComplex)(ec, "Amount");
  LOADED(ORLIsNamedFormulaUsed)(ec, "One");
  LOADED(ORLIsItemAggregate)(ec, ORL_INPUT, "Amount");
  ExprItem row;
  LOADED(ORLGetExpressionItem)(ec, ORL_INPUT, "Amount", &row, 0);
  LOADED(ORLGetECBlockSize)(ec, 1);
  LOADED(FUNModuleHandle)();
  LOADED(ORLVersion)();
  LOADED(ORLErrorText)(ORL_ERR_VAR, sizeof at.text, at.text);
  LOADED(WEP)(0);
  LOADED(ORLGetWindowSystem)();
  LOADED(ORLWindowSystemProblem)();
  LOADED(ORLSetWindowSystem)(nullptr);
}

void AskAboutExpression() {
  EC ec = at.ec;
  HEXP exp = LOADED(ORLHEXPFromName)(ec, "Two");
  EXPECT_EQ(exp, LOADED(ORLHEXPFromOrdinal)(ec, LOADED(ORLGetExpressionOrdinal)(ec, exp)));
  LOADED(ORLGetExpressionText)(ec, exp, LOADED(ORLGetExpressionTextLength)(ec, exp), at.text);
  LOADED(ORLGetExpressionName)(ec, exp, LOADED(ORLGetExpressionNameLength)(ec, exp), at.text);
  LOADED(ORLIsExpNameGenerated)(ec, exp);
  LOADED(ORLIsExpNameUnique)(ec, exp, "Two");
  LOADED(ORLIsExpRange)(ec, exp, 1);
  LOADED(ORLIsExpressionSimple)(ec, exp);
  LOADED(ORLIsExpressionSimpleInput)(ec, exp);
  LOADED(ORLGetSimpleInputSubClass)(ec, exp);
  LOADED(ORLGetExpressionDataType)(ec, exp);
  LOADED(ORLIsAggregateUsed)(ec, exp);
  LOADED(ORLIsItemUsed)(ec, exp, ORL_INPUT, "Amount");
  LOADED(ORLIsFunctionVariableUsed)(ec, exp, "Sum", "Amount");
  LOADED(ORLGetExtendedText)(ec, exp, LOADED(ORLGetExtendedTextLength)(ec, exp, 1), at.text, 1);
  LOADED(ORLInputNameIsKeyword)(at.text, "Days");
}

const std::pair<const char *, Routine> kCalls[] = {
    {"text routines", [] { return CallTextRoutines(), 1; }},
    {"number routines", [] { return CallNumberRoutines(), 1; }},
    {"format routines", &CallFormatRoutines},
    {"questions about a context", [] { return AskAboutContext(), 1; }},
    {"questions about an expression", [] { return AskAboutExpression(), 1; }},
    {"FUNWinIniChange", [] { return LOADED(FUNWinIniChange)(), 1; }},
    {"ORLMemAlloc", [] { return Whether(LOADED(ORLMemAlloc)(100)); }},
    {"ORLMemRealloc", [] { return Whether(LOADED(ORLMemRealloc)(at.heap, 1000)); }},
    {"ORLMemFree", [] { return LOADED(ORLMemFree)(at.heap), 1; }},
    {"WRENMemAlloc", [] { return Whether(LOADED(WRENMemAlloc)(100)); }},
    {"WRENMemRealloc", [] { return Whether(LOADED(WRENMemRealloc)(at.heap, 1000)); }},
    {"WRENMemFree", [] { return LOADED(WRENMemFree)(at.heap), 1; }},
    {"ORLCreateEC", [] { return Whether(LOADED(ORLCreateEC)(nullptr, nullptr, nullptr, 0)); }},
    {"ORLDestroyEC", [] { return LOADED(ORLDestroyEC)(at.ec); }},
    {"ORLCopyEC", [] { return Whether(LOADED(ORLCopyEC)(at.ec)); }},
    {"ORLSetDateConvert", [] { return LOADED(ORLSetDateConvert)(at.ec, "%s", "%s", "%s", 2), 1; }},
    {"ORLSetDatePicture", [] { return LOADED(ORLSetDatePicture)(at.ec, "yyyy", "MM", "dd"); }},
    {"ORLDeleteAllECVars", [] { return LOADED(ORLDeleteAllECVars)(at.ec); }},
    {"ORLAddExpressionItem",
     [] {
       const ExprItem item = Row(ORL_KEYWORD, "Added");
       return LOADED(ORLAddExpressionItem)(at.ec, &item);
     }},
    {"ORLDelExpItemNoCheck",
     [] { return LOADED(ORLDelExpItemNoCheck)(at.ec, ORL_INPUT, "Spare"); }},
    {"ORLDeleteExpItem",
     [] {
       return LOADED(ORLDeleteExpItem)(at.ec, ORL_INPUT, "Amount", [](EC ec, HEXP exp, ExprItem *) {
         return LOADED(ORLDestroyEXP)(ec, exp);
       });
     }},
    {"ORLCloneExpression",
     [] {
       uint16_t type = 0;
       return Whether(LOADED(ORLCloneExpression)(at.ec, at.two, "New", &type));
     }},
    {"ORLDestroyEXP", [] { return LOADED(ORLDestroyEXP)(at.ec, at.two); }},
    {"ORLValidName",
     [] {
       FormulaError error = {};
       return LOADED(ORLValidName)(nullptr, "Fine", &error);
     }},
    {"ORLParseString",
     [] {
       return ParseResult([](FormulaError *error, uint16_t *type) {
         return LOADED(ORLParseString)(at.ec, "Two() + 2012-01-31, 3", nullptr, error, type);
       });
     }},
    {"ORLParseFormula",
     [] {
       return ParseResult([](FormulaError *error, uint16_t *type) {
         return LOADED(ORLParseFormula)(at.ec, at.two, "One() + 2", "Three", error, type);
       });
     }},
    {"ORLParseFormulas",
     [] {
       return ParseResult([](FormulaError *error, uint16_t * /*type*/) {
         const OrlFormulaText texts[] = {{"Later() + 1", "First"}, {"Two()", "Later"}};
         const int32_t done = LOADED(ORLParseFormulas)(at.ec, 2, texts, nullptr, error);
         return done == 1 ? at.two : nullptr;
       });
     }},
    {"ORLEvaluateExpression",
     [] { return LOADED(ORLEvaluateExpression)(at.ec, at.two, 13, at.text); }},
    {"ORLEvaluateExpressionExt",
     [] { return LOADED(ORLEvaluateExpressionExt)(at.ec, at.two, nullptr, &at.value); }},
    {"ORLEvaluateRows",
     [] {
       uint8_t numbers[2 * sizeof(NumberValue)];
       OrlRowResults results = {ORL_COLUMN_NUMBER, 0, numbers, nullptr, nullptr};
       const int64_t rows = LOADED(ORLEvaluateRows)(at.ec, at.two, 2, 0, nullptr, &results);
       return static_cast<int32_t>(rows + 1);
     }},
    {"ORLSetOperatorCallback", [] { return LOADED(ORLSetOperatorCallback)(at.ec, 0, 2, "Five"); }},
    {"ORLRenameExpressionItem",
     [] { return LOADED(ORLRenameExpressionItem)(at.ec, ORL_INPUT, "Amount", "Renamed"); }},
    {"FUNDefineFunctions", [] { return LOADED(FUNDefineFunctions)(at.ec); }},
    {"FUNStrVarResult", [] { return LOADED(FUNStrVarResult)(&at.value, 50, at.longText); }},
    {"ORLGetECBlock", [] { return LOADED(ORLGetECBlock)(at.ec, at.blockSize, at.block); }},
    {"ORLSetECContents", &LoadBlock},
    {"ORLBuildExpression",
     [] { return Whether(LOADED(ORLBuildExpression)(nullptr, at.ec, at.two, 0)); }},
    {"ORLBuildExpressionOfType",
     [] {
       return Whether(LOADED(ORLBuildExpressionOfType)(nullptr, at.ec, at.two, 0, 1, "Amount"));
     }},
    {"ORLErrorDisplay",
     [] {
       const FormulaError error = {ORL_ERR_VAR, 0, 1};
       return LOADED(ORLErrorDisplay)(nullptr, "a text", &error);
     }},
    {"WRENSetCountry", [] { return LOADED(WRENSetCountry)("C"); }},
    {"WRENFmtLoadLocale",
     [] {
       LocaleBlock block = {};
       return LOADED(WRENFmtLoadLocale)(&block), 1;
     }},
};

// A call of a function routine with a value for each of its parameters.
int64_t CallFunction(const BuiltInFunction &row, OrlFunctionProc routine) {
  void *arguments[10] = {};
  for (size_t i = 1; i < row.types.size(); ++i) {
    arguments[i - 1] = row.types[i] == 'n'   ? static_cast<void *>(&at.number)
                       : row.types[i] == 'd' ? static_cast<void *>(&at.date)
                                             : at.text;
  }
  const int32_t size = row.types[0] == 't' ? 50 : 13;
  return routine(at.ec, at.two, size, &at.value, row.name.c_str(), arguments);
}

// A message to the editor's windows, none of which is open.
int64_t CallWindowProcedure(const std::string &name) {
  for (const uint32_t message : {ORL_WM_INITDIALOG, ORL_WM_COMMAND, ORL_WM_DESTROY}) {
    reinterpret_cast<decltype(&OrlDlgProc)>(SymbolAt(name.c_str()))(nullptr, message, 0, 0);
  }
  return 1;
}

}  // namespace

void Prepare() {
  at.ec = LOADED(ORLCreateEC)(
      nullptr, [](const char *) { return reinterpret_cast<void *>(&GiveFive); }, nullptr,
      ORL_FLAG_RANGES);
  for (const char *name : {"Amount", "Spare"}) {
    const ExprItem item = Row(ORL_INPUT, name);
    ASSERT_EQ(LOADED(ORLAddExpressionItem)(at.ec, &item), 1);
  }
  at.one = Formula("Amount * 2", "One");
  at.two = Formula("One() || 'text'", "Two");
  at.two = Formula("One() + 1", "Two");
  ASSERT_NE(at.two, nullptr);
  at.blockSize = LOADED(ORLGetECBlockSize)(at.ec, 1);
  ASSERT_EQ(LOADED(ORLGetECBlock)(at.ec, at.blockSize, at.block), at.blockSize);
  LOADED(WRENNumFromInt)(&at.number, 3);
  const DateTimeParts parts = {1, 31, 2012, 0, 0, 0, 0};
  at.date.length = static_cast<uint8_t>(LOADED(PAVNDateToNumber)(at.date.payload, &parts));
  at.heap = LOADED(ORLMemAlloc)(20);
  at.value = LOADED(ORLMemAlloc)(50);
  std::strcpy(at.text, "a text");
  std::memset(at.longText, 'x', sizeof at.longText - 1);
  LOADED(WRENFmtInit)(&at.format);
}

std::vector<std::pair<std::string, Routine>> AllCalls() {
  std::vector<std::pair<std::string, Routine>> all(std::begin(kCalls), std::end(kCalls));
  for (const BuiltInFunction &row : FunctionRows()) {
    auto *routine = reinterpret_cast<OrlFunctionProc>(SymbolAt(("FUN" + row.name).c_str()));
    all.emplace_back(row.name, [&row, routine] { return CallFunction(row, routine); });
  }
  for (const std::string &name : Names()) {
    if (name.size() > 4 && name.compare(name.size() - 4, 4, "Proc") == 0) {
      all.emplace_back(name, [&name] { return CallWindowProcedure(name); });
    }
  }
  return all;
}
