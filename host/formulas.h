// Named formulas from the user, defined in a suitable order.
#ifndef ORLI11_HOST_FORMULAS_H
#define ORLI11_HOST_FORMULAS_H

#include <orli11.h>

#include <string>
#include <string_view>
#include <vector>

struct Formula {
  std::string name, text;
  std::string title;  // the name without quotes around it, as the output shows it
  HEXP exp = nullptr;
  int32_t type = -1;
  bool shown = true;          // its values are part of the output
  FormulaError problem = {};  // why it is not defined
};

// A formula that is not defined yet.
Formula FormulaOf(const std::string &name, const std::string &text);

// Splits NAME=TEXT. The name may be in quotes and then contain a "=". False with a message.
bool FormulaFromArgument(const std::string &argument, Formula &formula, std::string &error);

// The name whose call prevents a formula from being defined; empty for other problems.
std::string_view UnknownCall(const Formula &formula);

// Defines all formulas in the context: each may call the others, whatever their order. False with a
// message of one or more lines about the first invalid formula and the position in it; `wrong`,
// when given, receives its index unless its name is invalid.
bool FormulasDefine(EC ec, std::vector<Formula> &formulas, std::string &error,
                    size_t *wrong = nullptr);

// The hint about a name that no formula has; empty when none is near.
std::string FormulaHint(const std::vector<Formula> &formulas, const std::string &name);

// The hint about a formula that should not be a String: where it is a column; empty otherwise.
std::string TextColumnHint(EC ec, const Formula &formula);

// "formula", "range" or "set"; only the first has values.
const char *FormulaKind(EC ec, HEXP exp);

// The message for an error in a text, below it the text with the error underlined, and a hint on a
// line of its own if there is one. `formulas` are those that the context does not have yet.
std::string ErrorWithPlace(EC ec, const std::string &text, const FormulaError &error,
                           const std::vector<Formula> &formulas = {});

// Reads formulas from a file: a line NAME=TEXT each, continued by lines that begin with a blank;
// empty lines and those that begin with # are ignored. False with a message, including the
// position.
bool FormulasRead(const std::string &path, std::vector<Formula> &formulas, std::string &error);

#endif
