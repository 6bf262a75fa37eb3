#include "resources/string_table.h"

#include <algorithm>
#include <iterator>

#include "orli11.h"
#include "resources/string_ids.h"

namespace {

// clang-format off
constexpr StringRow kRows[] = {
    // Messages of the language, and the title of the box that shows them.
    {ORL_ERR_TYPENUM, "ERR_TYPENUM: Input item, constant, or function must be Number data type."},
    {ORL_ERR_PARM, "ERR_PARM: Parameter must be an input item."},
    {ORL_ERR_VAR, "ERR_VAR: Unknown input item."},
    {ORL_ERR_FUNC, "ERR_FUNC: Unknown function."},
    {kStringErrorCaption, "Formula Information"},
    {ORL_ERR_NUMPARMSHI, "ERR_NUMPARMSHI: Too many parameters for this function."},
    {ORL_ERR_GENERAL, "ERR_GENERAL: Error while parsing formula."},
    {ORL_ERR_NAME, "ERR_NAME: Invalid Formula Name."},
    {ORL_ERR_INPUT, "ERR_INPUT: Invalid Input item Name."},
    {ORL_ERR_SYNTAX, "ERR_SYNTAX: Incomplete or invalid formula"},
    {ORL_ERR_UNKNOWNCHAR, "ERR_UNKNOWNCHAR: This character is not allowed here."},
    {ORL_ERR_OPERATORNUM, "ERR_OPERATORNUM: This Operator does not work with Numbers."},
    {ORL_ERR_MAXTOKEN, "ERR_MAXTOKEN: Text exceeds maximum length."},
    {ORL_ERR_OPERATORSTR, "ERR_OPERATORSTR: This Operator does not work with Strings."},
    {ORL_ERR_OPERATORDATE, "ERR_OPERATORDATE: This Operator does not work with Dates."},
    {ORL_ERR_TYPESTR, "ERR_TYPESTR: Literal or function must be String data type."},
    {ORL_ERR_TYPEDATE, "ERR_TYPEDATE: Input item or function must be of a Date data type."},
    {ORL_ERR_NUMPARMSLO, "ERR_NUMPARMSLO: Not enough Parameters for this function."},
    {ORL_ERR_PARMNUM, "ERR_PARMNUM: Parameter must be Number input item, literal or function."},
    {ORL_ERR_PARMSTR, "ERR_PARMSTR : Parameter must be String input item, literal or function."},
    {ORL_ERR_PARMDATE, "ERR_PARMDATE: Parameter must be Date input item or function."},
    {ORL_ERR_MEMORY, "ERR_MEMORY: Not enough resources to evaluate formula."},
    {ORL_ERR_TOCOMPLEX, "ERR_TOCOMPLEX: This Formula too complex to evaluate."},
    {ORL_ERR_INVALIDDATE, "ERR_INVALIDDATE: Invalid Date constant."},
    {ORL_ERR_EXPPARMS, "ERR_EXPPARMS: Named Formulas can not have parameters."},
    {ORL_ERR_RECURSIVE, "ERR_RECURSIVE: Formula referrences parent Formula, recursion not supported."},
    {ORL_ERR_DUPNAME, "ERR_DUPNAME: Duplicate Formula Name."},
    {ORL_ERR_EXPDATATYPE, "ERR_EXPDATATYPE: Formula return DataType can not be changed."},
    {ORL_ERR_TYPENUMDATE, "ERR_TYPENUMDATE: Input item or function must be of a Date or Number data type."},
    {ORL_ERR_KEYWORD, "ERR_KEYWORD: Misplaced Key Word."},
    {ORL_ERR_MISKEYWORD, "ERR_MISKEYWORD: Missing DISTINCT Key Word."},
    {ORL_ERR_MEMLOW, "ERR_MEMLOW: Error creating dialog box, memory critically low."},
    {ORL_ERR_OPERATORKEYWORD, "ERR_OPERATORKEYWORD: This Operator does not work with Keywords."},
    {ORL_ERR_PARMKEYWORD, "ERR_PARMKEYWORD: Parameter must be a valid keyword."},
    {ORL_ERR_RANGETYPE, "ERR_RANGETYPE: Range data type conflict."},
    {ORL_ERR_BETWEEN, "ERR_BETWEEN: Data types must match."},
    {ORL_ERR_IMBEDDEDRANGE, "ERR_IMBEDDEDRANGE: Can not use a range formula in another formula."},
    {ORL_ERR_SUBCLASS, "ERR_SUBCLASS: Parameter variable must be of expected type."},

    // The editor.
    {kStringNewFormulaRow, "[ New Formula ]"},
    {kStringSaveQuestion, "Changes have been made, save before continuing?"},
    {kStringSaveFormulaCaption, "Formula Save"},
    {kStringDeleteQuestion, "Are you sure you want to delete selected "},
    {kStringDeleteDenied, "Delete Permission Denied."},
    {kStringDeleteFormulaCaption, "Formula Delete"},
    {kStringFormulaEditorTitle, "Formula Editor"},
    {kStringFormulaStem, "Formula"},
    {kStringExpressionWord, "Expression"},
    {kStringNewRangeRow, "[ New Range ]"},
    {kStringNewSetRow, "[ New Set ]"},
    {kStringRangeEditorTitle, "Range Editor"},
    {kStringSetEditorTitle, "Set Editor"},
    {kStringRangeWord, "Range"},
    {kStringSetWord, "Set"},
    {kStringFormulaWord, "Formula"},
    {kStringFormulaTextTitle, "Formula Text"},
    {kStringRangeTextTitle, "Range Text"},
    {kStringSetTextTitle, "Set Text"},
    {kStringRangeInFormulaMode, "Text evaluates as a Range instead of a Formula, save anyway?"},
    {kStringSetInFormulaMode, "Text evaluates as a Set instead of a Formula, save anyway?"},
    {kStringFormulaInRangeMode, "Text evaluates as a Formula instead of a Range, save anyway?"},
    {kStringSetInRangeMode, "Text evaluates as a Set instead of a Range, save anyway?"},
    {kStringFormulaInSetMode, "Text evaluates as a Formula instead of a Set, save anyway?"},
    {kStringRangeInSetMode, "Text evaluates as a Range instead of a Set, save anyway?"},
    {kStringWarningWord, " Warning"},

    // Data types, as the signature of a function shows them.
    {kStringNumberLabel, "Number"},
    {kStringDateLabel, "DateTime"},
    {kStringStringLabel, "String"},
    {kStringAnyLabel, "Any"},
    {kStringKeywordLabel, "Keyword"},

    {kStringFormulaStatus, "To build a Formula: Select Data Items, Formulas and Functions by double-clicking, or type "
          "directly into the Formula editor. A Formula can be one or more items combined with "
          "operators."},
    {kStringRangeStatus, "To build a Range: Replace the 'Expression' keywords on both sides of the 'AND' keyword by "
          "double-clicking Values, Data Items, Formulas and Functions, or type into the Range Editor "
          "directly."},
    {kStringSetStatus, "To build a Set: Replace the 'Expression' keywords between the commas by double-clicking "
          "Values, Data Items, Formulas and Functions, or type into the Set Editor directly."},
    {kStringSelectFormula, "&Select Formula"},
    {kStringSelectRange, "&Select Range"},
    {kStringSelectSet, "&Select Set"},
    {kStringShowFormulaText, "S&how Formula Text..."},
    {kStringShowRangeText, "S&how Range Text..."},
    {kStringShowSetText, "S&how Set Text..."},
    {kStringSaveRangeCaption, "Range Save"},
    {kStringSaveSetCaption, "Set Save"},
    {kStringDeleteRangeCaption, "Range Delete"},
    {kStringDeleteSetCaption, "Set Delete"},
    {kStringOpenValues, "Data Item &Values Dialog..."},
    {kStringListValues, "List Data Item &Values"},

    // The function table: routine, data type of the result, count of parameters, their data types
    // (0 Number, 1 Date, 2 String). The order is the order in which a context lists them.
    {20000, "FUNDateAddDay,1,2,1,0"},
    {20001, "FUNDateYear,0,1,1"},
    {20002, "FUNDateMonth,0,1,1"},
    {20003, "FUNDateDay,0,1,1"},
    {20004, "FUNDateHour,0,1,1"},
    {20005, "FUNDateMinute,0,1,1"},
    {20006, "FUNDateSecond,0,1,1"},
    {20007, "FUNDateMonthBegin,1,1,1"},
    {20008, "FUNDateMonthEnd,1,1,1"},
    {20009, "FUNDateToStr,2,1,1"},
    {20010, "FUNDateConstruct,1,6,0,0,0,0,0,0"},
    {20011, "FUNStrMid,2,3,2,0,0"},
    {20012, "FUNStrRight,2,2,2,0"},
    {20013, "FUNStrLeft,2,2,2,0"},
    {20014, "FUNStrLength,0,1,2"},
    {20015, "FUNStrRTrim,2,1,2"},
    {20016, "FUNStrLTrim,2,1,2"},
    {20017, "FUNStrRepeat,2,2,2,0"},
    {20018, "FUNStrPad,2,2,2,0"},
    {20019, "FUNStrCompare,0,2,2,2"},
    {20020, "FUNStrIFF,2,4,0,2,2,2"},
    {20021, "FUNStrCase,2,2,0,2"},
    {20022, "FUNStrProper,2,1,2"},
    {20023, "FUNStrReplace,2,4,2,0,0,2"},
    {20024, "FUNStrScan,0,2,2,2"},
    {20025, "FUNStrSpaces,2,1,0"},
    {20026, "FUNStrToDate,1,1,2"},
    {20027, "FUNStrToNumber,0,1,2"},
    {20028, "FUNStrUpper,2,1,2"},
    {20029, "FUNNumberAbsolute,0,1,0"},
    {20030, "FUNNumberMod,0,2,0,0"},
    {20031, "FUNNumberToStr,2,2,0,0"},
    {20032, "FUNNumberToCurrency,2,1,0"},
    {20033, "FUNNumberCountryFmt,2,1,0"},
    {20034, "FUNNumberRound,0,2,0,0"},
    {20035, "FUNNumberTruncate,0,2,0,0"},
    {20036, "FUNStrLower,2,1,2"},
    {20037, "FUNNumberIFF,0,4,0,0,0,0"},
    {20038, "FUNDateIFF,1,4,0,1,1,1"},
    {20039, "FUNDateToStrPicture,2,2,1,2"},
    {20040, "FUNNumberToStrPicture,2,2,0,2"},
    {20041, "FUNStrTrim,2,1,2"},
    {20042, "FUNStrTranslate,2,3,2,2,2"},
    {20043, "FUNPower,0,2,0,0"},
    {20044, "FUNWeekDay,0,1,1"},
    {20045, "FUNDateQuarter,0,1,1"},
};
// clang-format on

constexpr bool IdsAscend() {
  for (size_t index = 1; index < std::size(kRows); ++index) {
    if (kRows[index - 1].id >= kRows[index].id) {
      return false;
    }
  }
  return true;
}
static_assert(IdsAscend(), "StringText searches by halves");

}  // namespace

std::span<const StringRow> StringTable() {
  return kRows;
}

const char *StringText(uint32_t id) {
  const StringRow *row =
      std::lower_bound(std::begin(kRows), std::end(kRows), id,
                       [](const StringRow &left, uint32_t wanted) { return left.id < wanted; });
  return row != std::end(kRows) && row->id == id ? row->text : nullptr;
}
