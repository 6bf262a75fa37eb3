// An invalid formula as the rules of hints see it: its tokens, its error and the names around it.
#ifndef ORLI11_HOST_INVALID_FORMULA_H
#define ORLI11_HOST_INVALID_FORMULA_H

#include <orli11.h>

#include <string>
#include <string_view>
#include <vector>

#include "host/tokens.h"

// The names that a formula could have meant.
struct KnownNames {
  std::vector<std::string> columns, functions, formulas;
  std::vector<std::string> texts;  // the columns of type String
};

// The columns, functions and formulas of a context, and the names of others that are not yet
// defined in it.
KnownNames NamesOf(EC ec, const std::vector<std::string> &formulas);

// Refers to the text, error and names that it was made of.
struct InvalidFormula {
  const std::string &text;
  const FormulaError &error;
  const KnownNames &names;
  std::vector<Token> tokens;
  size_t at = 0;          // the token at the error, or their number if it is after the last
  std::string_view word;  // its text, as written

  // The token `step` places from the error; one without text if there is none.
  Token Near(int step) const;
  // The first token of that kind and text, or null. The text is compared in any case; empty: any
  // text.
  const Token *Find(TokenKind kind, std::string_view wanted = {}) const;
  // The column whose header is the word, in any case, as formulas write it; empty if none.
  std::string ColumnOfHeader(std::string_view header) const;
  // Whether a byte of the text is inside a quoted string or name.
  bool InQuotes(size_t place) const;
  // Whether a value is expected at the token.
  bool StartsOperand(size_t place) const;
};

InvalidFormula InvalidFormulaOf(const std::string &text, const FormulaError &error,
                                const KnownNames &names);

#endif
