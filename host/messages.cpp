#include "host/messages.h"

#include <orli11.h>

namespace {

struct Message {
  int32_t id;
  const char *text;
};

/* The engine gives ids; its words are for its own dialogs, and these are the same. */
constexpr Message kMessages[] = {
    {ORL_ERR_TYPENUM, "ERR_TYPENUM: Input item, constant, or function must be Number data type."},
    {ORL_ERR_PARM, "ERR_PARM: Parameter must be an input item."},
    {ORL_ERR_VAR, "ERR_VAR: Unknown input item."},
    {ORL_ERR_FUNC, "ERR_FUNC: Unknown function."},
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
    {ORL_ERR_RECURSIVE,
     "ERR_RECURSIVE: Formula referrences parent Formula, recursion not supported."},
    {ORL_ERR_DUPNAME, "ERR_DUPNAME: Duplicate Formula Name."},
    {ORL_ERR_EXPDATATYPE, "ERR_EXPDATATYPE: Formula return DataType can not be changed."},
    {ORL_ERR_TYPENUMDATE,
     "ERR_TYPENUMDATE: Input item or function must be of a Date or Number data type."},
    {ORL_ERR_KEYWORD, "ERR_KEYWORD: Misplaced Key Word."},
    {ORL_ERR_MISKEYWORD, "ERR_MISKEYWORD: Missing DISTINCT Key Word."},
    {ORL_ERR_MEMLOW, "ERR_MEMLOW: Error creating dialog box, memory critically low."},
    {ORL_ERR_OPERATORKEYWORD, "ERR_OPERATORKEYWORD: This Operator does not work with Keywords."},
    {ORL_ERR_PARMKEYWORD, "ERR_PARMKEYWORD: Parameter must be a valid keyword."},
    {ORL_ERR_RANGETYPE, "ERR_RANGETYPE: Range data type conflict."},
    {ORL_ERR_BETWEEN, "ERR_BETWEEN: Data types must match."},
    {ORL_ERR_IMBEDDEDRANGE, "ERR_IMBEDDEDRANGE: Can not use a range formula in another formula."},
    {ORL_ERR_SUBCLASS, "ERR_SUBCLASS: Parameter variable must be of expected type."},
};

}  // namespace

const char *MessageText(int32_t id) {
  for (const Message &message : kMessages) {
    if (message.id == id) {
      return message.text;
    }
  }
  return "The formula is not valid.";
}
