/* formulas.h - the named formulas that a user gives, defined in an order that works. */
#ifndef ORLI11_HOST_FORMULAS_H
#define ORLI11_HOST_FORMULAS_H

#include <orli11.h>

#include <string>
#include <string_view>
#include <vector>

struct Formula {
  std::string name, text;
  std::string title; /* the name without quotes around it, as the output shows it */
  HEXP exp = nullptr;
  int32_t type = -1;
  bool shown = true;         /* its values belong to the output */
  FormulaError problem = {}; /* why it is not defined */
};

/* A formula that is still to be defined. */
Formula FormulaOf(const std::string &name, const std::string &text);

/* Takes NAME=TEXT apart. The name may be in quotes, where a "=" of its own may stand. False with a
 * message. */
bool FormulaFromArgument(const std::string &argument, Formula &formula, std::string &error);

/* The name in a formula's text whose call is why it is not defined; empty for other problems. */
std::string_view UnknownCall(const Formula &formula);

/* Defines all formulas in the context: each may call the others, whatever their order. False with a
 * message of one or more lines that tells the first formula that is wrong and the place in it;
 * `wrong`, when given, receives its index unless it is a name that is wrong. */
bool FormulasDefine(EC ec, std::vector<Formula> &formulas, std::string &error,
                    size_t *wrong = nullptr);

/* The hint about a name that no formula has; empty when none is near. */
std::string FormulaHint(const std::vector<Formula> &formulas, const std::string &name);

/* "formula", "range" or "set"; only the first has values. */
const char *FormulaKind(EC ec, HEXP exp);

/* The message for an error in a text, below it the text with the place underlined, and a hint on a
 * line of its own where one is known. `formulas` are those that the context does not have yet. */
std::string ErrorWithPlace(EC ec, const std::string &text, const FormulaError &error,
                           const std::vector<Formula> &formulas = {});

/* Reads formulas from a file: a line NAME=TEXT each, which goes on in lines that begin with a
 * blank; empty lines and those that begin with # do not count. False with a message, place
 * included. */
bool FormulasRead(const std::string &path, std::vector<Formula> &formulas, std::string &error);

#endif
