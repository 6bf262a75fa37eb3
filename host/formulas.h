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

/* "formula", "range" or "set"; only the first has values. */
const char *FormulaKind(EC ec, HEXP exp);

/* The words for an error in a text, and below them the text with the place underlined. */
std::string ErrorWithPlace(const std::string &text, const FormulaError &error);

#endif
