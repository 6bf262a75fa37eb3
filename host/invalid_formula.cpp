#include "host/invalid_formula.h"

#include <algorithm>

KnownNames NamesOf(EC ec, const std::vector<std::string> &formulas) {
  KnownNames names;
  const OrlEnumItemProc add = [](EC /*ec*/, const char *name, void *user) {
    static_cast<std::vector<std::string> *>(user)->emplace_back(name);
  };
  ORLEnumExpItems(ec, ORL_INPUT, add, &names.columns);
  for (const std::string &name : names.columns) {
    ExprItem row = {};
    if (ORLGetExpressionItem(ec, ORL_INPUT, name.c_str(), &row, 0) == 1 &&
        row.dataType == ORL_TYPE_STRING) {
      names.texts.push_back(name);
    }
  }
  ORLEnumExpItems(ec, ORL_FUNCTION, add, &names.functions);
  names.formulas = formulas;
  for (int32_t i = 0; i < ORLGetExpressionCount(ec); ++i) {
    HEXP exp = ORLHEXPFromOrdinal(ec, i);
    std::string name(static_cast<size_t>(ORLGetExpressionNameLength(ec, exp)) + 1, '\0');
    name.resize(static_cast<size_t>(
        ORLGetExpressionName(ec, exp, static_cast<int32_t>(name.size()), name.data())));
    names.formulas.push_back(name);
  }
  return names;
}

InvalidFormula InvalidFormulaOf(const std::string &text, const FormulaError &error,
                                const KnownNames &names) {
  InvalidFormula wrong{text, error, names, Tokens(text), 0, {}};
  const auto offset = static_cast<size_t>(std::max(error.offset, 0));
  while (wrong.at < wrong.tokens.size() &&
         wrong.tokens[wrong.at].offset + wrong.tokens[wrong.at].text.size() <= offset) {
    ++wrong.at;
  }
  wrong.word = wrong.Near(0).text;
  return wrong;
}

Token InvalidFormula::Near(int step) const {
  const auto place = static_cast<size_t>(static_cast<int64_t>(at) + step);
  return place < tokens.size() ? tokens[place] : Token{kTokenOther, 0, {}};
}

const Token *InvalidFormula::Find(TokenKind kind, std::string_view wanted) const {
  for (const Token &token : tokens) {
    if (token.kind == kind && (wanted.empty() || EqualNoCase(token.text, wanted))) {
      return &token;
    }
  }
  return nullptr;
}

std::string InvalidFormula::ColumnOfHeader(std::string_view header) const {
  for (const std::string &name : names.columns) {
    const bool quoted = name.size() > 2 && (name.front() == '"' || name.front() == '`');
    if (EqualNoCase(quoted ? name.substr(1, name.size() - 2) : name, header)) {
      return name;
    }
  }
  return {};
}

bool InvalidFormula::InQuotes(size_t place) const {
  return std::any_of(tokens.begin(), tokens.end(), [place](const Token &token) {
    return (token.kind == kTokenString || token.kind == kTokenQuoted) && place >= token.offset &&
           place < token.offset + token.text.size();
  });
}

bool InvalidFormula::StartsOperand(size_t place) const {
  const TokenKind before = place == 0 ? kTokenOpen : tokens[place - 1].kind;
  return before == kTokenOpen || before == kTokenComma || before == kTokenOperator;
}
