#include "resources/string_table.h"

#include <algorithm>
#include <iterator>

namespace {

// clang-format off
constexpr StringRow kRows[] = {
    // Messages of the language, by the ids of FormulaError; 104 is a caption of the error box.
    {100, "ERR_TYPENUM: Input item, constant, or function must be Number data type."},
    {101, "ERR_PARM: Parameter must be an input item."},
    {102, "ERR_VAR: Unknown input item."},
    {103, "ERR_FUNC: Unknown function."},
    {104, "Formula Information"},
    {105, "ERR_NUMPARMSHI: Too many parameters for this function."},
    {106, "ERR_GENERAL: Error while parsing formula."},
    {107, "ERR_NAME: Invalid Formula Name."},
    {108, "ERR_INPUT: Invalid Input item Name."},
    {109, "ERR_SYNTAX: Incomplete or invalid formula"},
    {110, "ERR_UNKNOWNCHAR: This character is not allowed here."},
    {111, "ERR_OPERATORNUM: This Operator does not work with Numbers."},
    {112, "ERR_MAXTOKEN: Text exceeds maximum length."},
    {113, "ERR_OPERATORSTR: This Operator does not work with Strings."},
    {114, "ERR_OPERATORDATE: This Operator does not work with Dates."},
    {115, "ERR_TYPESTR: Literal or function must be String data type."},
    {116, "ERR_TYPEDATE: Input item or function must be of a Date data type."},
    {117, "ERR_NUMPARMSLO: Not enough Parameters for this function."},
    {118, "ERR_PARMNUM: Parameter must be Number input item, literal or function."},
    {119, "ERR_PARMSTR : Parameter must be String input item, literal or function."},
    {120, "ERR_PARMDATE: Parameter must be Date input item or function."},
    {121, "ERR_MEMORY: Not enough resources to evaluate formula."},
    {122, "ERR_TOCOMPLEX: This Formula too complex to evaluate."},
    {123, "ERR_INVALIDDATE: Invalid Date constant."},
    {124, "ERR_EXPPARMS: Named Formulas can not have parameters."},
    {125, "ERR_RECURSIVE: Formula referrences parent Formula, recursion not supported."},
    {126, "ERR_DUPNAME: Duplicate Formula Name."},
    {127, "ERR_EXPDATATYPE: Formula return DataType can not be changed."},
    {128, "ERR_TYPENUMDATE: Input item or function must be of a Date or Number data type."},
    {129, "ERR_KEYWORD: Misplaced Key Word."},
    {130, "ERR_MISKEYWORD: Missing DISTINCT Key Word."},
    {131, "ERR_MEMLOW: Error creating dialog box, memory critically low."},
    {132, "ERR_OPERATORKEYWORD: This Operator does not work with Keywords."},
    {133, "ERR_PARMKEYWORD: Parameter must be a valid keyword."},
    {134, "ERR_RANGETYPE: Range data type conflict."},
    {135, "ERR_BETWEEN: Data types must match."},
    {136, "ERR_IMBEDDEDRANGE: Can not use a range formula in another formula."},
    {137, "ERR_SUBCLASS: Parameter variable must be of expected type."},

    // The editor.
    {201, "[ New Formula ]"},
    {202, "Changes have been made, save before continuing?"},
    {203, "Formula Save"},  // of a range and a set: 241, 242
    {204, "Are you sure you want to delete selected "},  // 216, 214 or 215 follows
    {205, "Delete Permission Denied."},
    {206, "Formula Delete"},  // 243, 244
    {207, "Formula Editor"},  // 212, 213
    {208, "Formula"},         // stem of generated names; 214, 215
    {209, "Expression"},
    {210, "[ New Range ]"},
    {211, "[ New Set ]"},
    {212, "Range Editor"},
    {213, "Set Editor"},
    {214, "Range"},
    {215, "Set"},
    {216, "Formula"},
    {217, "Formula Text"},
    {218, "Range Text"},
    {219, "Set Text"},
    {220, "Text evaluates as a Range instead of a Formula, save anyway?"},
    {221, "Text evaluates as a Set instead of a Formula, save anyway?"},
    {222, "Text evaluates as a Formula instead of a Range, save anyway?"},
    {223, "Text evaluates as a Set instead of a Range, save anyway?"},
    {224, "Text evaluates as a Formula instead of a Set, save anyway?"},
    {225, "Text evaluates as a Range instead of a Set, save anyway?"},
    {226, " Warning"},  // behind 207, 212 or 213

    // Data types, as the signature of a function shows them.
    {227, "Number"},
    {228, "DateTime"},
    {229, "String"},
    {230, "Any"},
    {231, "Keyword"},

    {232, "To build a Formula: Select Data Items, Formulas and Functions by double-clicking, or type "
          "directly into the Formula editor. A Formula can be one or more items combined with "
          "operators."},
    {233, "To build a Range: Replace the 'Expression' keywords on both sides of the 'AND' keyword by "
          "double-clicking Values, Data Items, Formulas and Functions, or type into the Range Editor "
          "directly."},
    {234, "To build a Set: Replace the 'Expression' keywords between the commas by double-clicking "
          "Values, Data Items, Formulas and Functions, or type into the Set Editor directly."},
    {235, "&Select Formula"},
    {236, "&Select Range"},
    {237, "&Select Set"},
    {238, "S&how Formula Text..."},
    {239, "S&how Range Text..."},
    {240, "S&how Set Text..."},
    {241, "Range Save"},
    {242, "Set Save"},
    {243, "Range Delete"},
    {244, "Set Delete"},
    {245, "Data Item &Values Dialog..."},
    {246, "List Data Item &Values"},

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
