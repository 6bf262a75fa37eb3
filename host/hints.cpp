#include "host/hints.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "host/display.h"
#include "host/nearest.h"
#include "host/tokens.h"

namespace {

/* A wrong formula as the rules see it. */
struct Case {
  const std::string &text;
  const FormulaError &error;
  const KnownNames &names;
  std::vector<Token> tokens;
  size_t at = 0;         /* the token at the error, or their number when it is behind the last */
  std::string_view word; /* its text, as written */
};

bool IsNameToken(const Token &token) {
  return token.kind == TOKEN_NAME || token.kind == TOKEN_QUOTED;
}

/* The token `step` places from the error; one without text when there is none. */
Token Near(const Case &wrong, int step) {
  const auto place = static_cast<size_t>(static_cast<int64_t>(wrong.at) + step);
  return place < wrong.tokens.size() ? wrong.tokens[place] : Token{TOKEN_OTHER, 0, {}};
}

/* The first token of that kind and text, or null. Text in any case; empty: any text. */
const Token *Find(const Case &wrong, TokenKind kind, std::string_view text = {}) {
  for (const Token &token : wrong.tokens) {
    if (token.kind == kind && (text.empty() || EqualNoCase(token.text, text))) {
      return &token;
    }
  }
  return nullptr;
}

bool Contains(const std::vector<std::string> &names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

/* A column whose header the word is, in whatever case, as formulas write it; empty when none. */
std::string ColumnOfHeader(const Case &wrong, std::string_view header) {
  for (const std::string &name : wrong.names.columns) {
    const bool quoted = name.size() > 2 && (name.front() == '"' || name.front() == '`');
    if (EqualNoCase(quoted ? name.substr(1, name.size() - 2) : name, header)) {
      return name;
    }
  }
  return {};
}

/* A letter, digit or quote beside a name makes it part of another one. */
bool IsWordByte(char byte) {
  return std::isalnum(static_cast<unsigned char>(byte)) != 0 || byte == '_' || byte == '"' ||
         byte == '`' || byte == '\'' || (byte & 0x80) != 0;
}

std::string DidYouMean(const std::string &name) {
  return name.empty() ? name : "did you mean `" + DisplayName(name) + "`?";
}

bool IsUnitWord(std::string_view word) {
  std::array<char, sizeof(ExprItem::name) + 1> unused;
  return word.size() < sizeof(ExprItem::name) &&
         ORLInputNameIsKeyword(unused.data(), std::string(word).c_str()) == 1;
}

/* ---- The rules, each a sentence or nothing --------------------------------------------------- */

std::string Unclosed(const Case &wrong) {
  const Token *open = Find(wrong, TOKEN_UNCLOSED);
  if (open == nullptr) {
    return {};
  }
  if (open->text.front() != '\'') {
    return "the name that begins here is not closed: a second " +
           std::string(1, open->text.front()) + " is missing";
  }
  return "the text that begins with ' is not closed; a quote in a text is written twice: "
         "'it''s'";
}

/* Quotes that word processors make of plain ones. */
std::string CurlyQuote(const Case &wrong) {
  for (const std::string_view quote : {"\xE2\x80\x98", "\xE2\x80\x99", "\xE2\x80\x9A",
                                       "\xE2\x80\x9C", "\xE2\x80\x9D", "\xE2\x80\x9E"}) {
    const auto offset = static_cast<size_t>(std::max(wrong.error.offset, 0));
    const size_t found = wrong.text.find(quote);
    if (found != std::string::npos && found <= offset + wrong.word.size()) {
      return std::string(quote) + " is not a plain quote: texts stand in ', names in \"";
    }
  }
  return {};
}

std::string Comparison(const Case &wrong) {
  constexpr std::string_view kCompare =
      "there are no comparisons: NumberIFF, StrIFF and DateIFF choose by a sign, as in "
      "NumberIFF(a - b, 1, 2, 3), which is 1 if a is less than b, 2 if they are equal, else 3";
  constexpr std::array<std::string_view, 7> kWords = {"IF",   "IIF",    "IFF",   "CASE",
                                                      "WHEN", "IFELSE", "CHOOSE"};
  for (const Token &token : wrong.tokens) {
    const bool sign = token.kind == TOKEN_OTHER && token.text.find_first_of("<=>!") == 0;
    const bool word = token.kind == TOKEN_NAME &&
                      std::any_of(kWords.begin(), kWords.end(), [&token](std::string_view entry) {
                        return EqualNoCase(entry, token.text);
                      });
    if (sign || (word && wrong.error.id != ORL_ERR_VAR) || (word && token.text == wrong.word)) {
      return std::string(kCompare);
    }
  }
  return {};
}

std::string Logic(const Case &wrong) {
  for (const std::string_view word : {"OR", "NOT", "XOR"}) {
    if (Find(wrong, TOKEN_NAME, word) != nullptr) {
      return std::string(word) +
             " is not in the language: conditions are made of NumberIFF, StrIFF "
             "and DateIFF";
    }
  }
  const auto ands = std::count_if(wrong.tokens.begin(), wrong.tokens.end(), [](const Token &token) {
    return token.kind == TOKEN_NAME && EqualNoCase(token.text, "AND");
  });
  const bool misplaced = wrong.error.id == ORL_ERR_SYNTAX || wrong.error.id == ORL_ERR_FUNC;
  return ands > 1 || (ands == 1 && misplaced)
             ? "AND joins the two ends of a range, once and outside of parentheses; conditions are "
               "made of NumberIFF"
             : "";
}

std::string In(const Case &wrong) {
  const Token *token = Find(wrong, TOKEN_NAME, "IN");
  return token == nullptr || wrong.error.id == ORL_ERR_VAR
             ? std::string()
             : "IN is not in the language: a set is written 'a', 'b' alone, as in "
               "--where \"name='a', 'b'\"; StrTranslate looks a text up in a list";
}

/* What other languages write, and what is written here. */
struct Foreign {
  std::string_view sign, hint;
};
constexpr Foreign kForeign[] = {
    {"&", "texts are joined by ||"},
    {"^", "write Power(a, b) for a to the power of b"},
    {"%", "write NumberMod(a, b) for the remainder of a division"},
    {"[", "names that are not plain stand in double quotes: \"wind speed\""},
    {"]", "names that are not plain stand in double quotes: \"wind speed\""},
    {";", "arguments are parted by commas"},
    {"?", "there are no comparisons: NumberIFF, StrIFF and DateIFF choose by the sign of a number"},
    {"|", "texts are joined by ||"},
    {"{", "dates are written plain: 2024-01-31"},
};

std::string ForeignSign(const Case &wrong) {
  for (const Token &token : wrong.tokens) {
    for (const Foreign &foreign : kForeign) {
      const bool sign = token.kind == TOKEN_OTHER || token.text == "%";
      if (sign && token.text == foreign.sign) {
        return std::string(foreign.hint);
      }
    }
  }
  for (size_t i = 0; i + 1 < wrong.tokens.size(); ++i) {
    const bool star = wrong.tokens[i + 1].text == "*";
    if (star && wrong.tokens[i].text == "*") {
      return "write Power(a, b) for a to the power of b";
    }
    if (star && wrong.tokens[i].text == "/") {
      return "there are no comments in formulas";
    }
  }
  const bool amount = wrong.word.size() > 1 && wrong.word[0] == '$' &&
                      std::isdigit(static_cast<unsigned char>(wrong.word[1])) != 0;
  return amount ? "amounts are written without a currency sign" : "";
}

/* 1e3, which reads as the number 1 and the name e3. */
std::string Exponent(const Case &wrong) {
  for (size_t i = 0; i + 1 < wrong.tokens.size(); ++i) {
    const Token &number = wrong.tokens[i];
    const Token &power = wrong.tokens[i + 1];
    const bool joined = number.kind == TOKEN_NUMBER && power.kind == TOKEN_NAME &&
                        number.offset + number.text.size() == power.offset;
    if (joined && std::tolower(static_cast<unsigned char>(power.text[0])) == 'e' &&
        power.text.find_first_not_of("0123456789", 1) == std::string_view::npos) {
      return "write the number out: 1000 for 1e3 (an exponent has one digit before a point, and a "
             "sign: 1.0e+3)";
    }
  }
  return {};
}

/* A sign before something that is not a number. */
std::string Sign(const Case &wrong) {
  for (size_t i = 0; i + 1 < wrong.tokens.size(); ++i) {
    const Token &sign = wrong.tokens[i];
    const Token &next = wrong.tokens[i + 1];
    const TokenKind before = i == 0 ? TOKEN_OPEN : wrong.tokens[i - 1].kind;
    const bool first = before == TOKEN_OPEN || before == TOKEN_COMMA || before == TOKEN_OPERATOR;
    if (!first || (sign.text != "-" && sign.text != "+")) {
      continue;
    }
    if (sign.text == "+" && (IsNameToken(next) || next.kind == TOKEN_NUMBER)) {
      return "there is no plus sign before a value: leave it out";
    }
    if (IsNameToken(next) || next.kind == TOKEN_OPEN) {
      const std::string operand = IsNameToken(next) ? std::string(next.text) : "(...)";
      return "only numbers take a sign: write `0 - " + DisplayName(operand) + "`";
    }
  }
  return {};
}

/* day + 1, where day is a column and a unit word. */
std::string UnitWord(const Case &wrong) {
  for (size_t i = 0; i < wrong.tokens.size(); ++i) {
    const Token &token = wrong.tokens[i];
    if (token.kind != TOKEN_NAME || !IsUnitWord(token.text)) {
      continue;
    }
    const bool first = i == 0 || wrong.tokens[i - 1].kind == TOKEN_OPEN ||
                       wrong.tokens[i - 1].kind == TOKEN_COMMA ||
                       wrong.tokens[i - 1].kind == TOKEN_OPERATOR;
    if (first) {
      const std::string column = ColumnOfHeader(wrong, token.text);
      return DisplayName(token.text) + " is a unit word of dates: write `" +
             DisplayName(column.empty() ? '"' + std::string(token.text) + '"' : column) +
             "` for a column of that name";
    }
  }
  return wrong.error.id == ORL_ERR_KEYWORD ? "a unit word moves a Date by a Number: date + 7 DAYS"
                                           : std::string();
}

/* wind speed, without the quotes that such a name needs. */
std::string NeedsQuotes(const Case &wrong) {
  for (const std::string &name : wrong.names.columns) {
    if (name.size() < 3 || (name.front() != '"' && name.front() != '`')) {
      continue;
    }
    const std::string header = name.substr(1, name.size() - 2);
    const size_t found = Lower(wrong.text).find(Lower(header));
    const auto offset = static_cast<size_t>(std::max(wrong.error.offset, 0));
    const size_t end = found + header.size();
    const bool whole = found != std::string::npos &&
                       (found == 0 || !IsWordByte(wrong.text[found - 1])) &&
                       (end >= wrong.text.size() || !IsWordByte(wrong.text[end]));
    if (whole && offset >= found && offset <= end) {
      return "write `" + DisplayName(name) + "`, with its quotes";
    }
  }
  return {};
}

/* "rain", in the quotes of names. */
std::string StringInNameQuotes(const Case &wrong) {
  const Token token = Near(wrong, 0);
  if (wrong.error.id != ORL_ERR_VAR || token.kind != TOKEN_QUOTED) {
    return {};
  }
  const std::string_view inside = token.text.substr(1, token.text.size() - 2);
  std::string column = ColumnOfHeader(wrong, inside);
  column = column.empty() ? Nearest(token.text, wrong.names.columns) : column;
  return column.empty() ? "a text stands in single quotes: '" + DisplayName(inside) + "'"
                        : DidYouMean(column);
}

/* Words that other languages have for values. */
std::string ForeignWord(const Case &wrong) {
  if (wrong.error.id != ORL_ERR_VAR && wrong.error.id != ORL_ERR_FUNC) {
    return {};
  }
  for (const std::string_view word : {"NOW", "TODAY", "@NOW", "CURDATE", "SYSDATE"}) {
    if (EqualNoCase(wrong.word, word)) {
      return "formulas have no clock: write the date, as in 2024-01-31";
    }
  }
  for (const std::string_view word : {"NULL", "NONE", "NIL", "NA"}) {
    if (EqualNoCase(wrong.word, word)) {
      return "there is no word for an empty value: StrToDate('') is an empty Date, NumberMod(0, 0) "
             "an empty Number, '' the empty text";
    }
  }
  for (const std::string_view word : {"TRUE", "FALSE"}) {
    if (EqualNoCase(wrong.word, word)) {
      return "there is no type for true and false: use 1 and 0";
    }
  }
  for (const std::string_view word : {"MIN", "MAX", "LEAST", "GREATEST"}) {
    if (EqualNoCase(wrong.word, word)) {
      return "the larger of two is NumberIFF(a - b, b, a, a), the smaller NumberIFF(a - b, a, a, "
             "b)";
    }
  }
  for (const std::string_view word : {"SUM", "AVG", "COUNT", "MEAN", "MEDIAN"}) {
    if (EqualNoCase(wrong.word, word)) {
      return "a formula sees one row; `orli report` computes figures of many";
    }
  }
  return {};
}

/* A formula without its parentheses, or a function. */
std::string NeedsCall(const Case &wrong) {
  if (wrong.error.id != ORL_ERR_VAR) {
    return {};
  }
  const std::string name(wrong.word);
  if (Contains(wrong.names.formulas, name)) {
    return "a formula is called with parentheses: write `" + name + "()`";
  }
  return Contains(wrong.names.functions, name)
             ? "a function has its arguments in parentheses: `" + name + "(...)`"
             : std::string();
}

/* A column or formula that is used like a function. */
std::string NoCall(const Case &wrong) {
  const std::string name(wrong.word);
  return wrong.error.id == ORL_ERR_FUNC && Contains(wrong.names.columns, name)
             ? "a column has no parentheses: write `" + name + "`"
             : std::string();
}

std::string NearName(const Case &wrong) {
  if (wrong.error.id == ORL_ERR_VAR) {
    std::string near = Nearest(wrong.word, wrong.names.columns);
    if (near.empty()) {
      near = Nearest(wrong.word, wrong.names.formulas);
      near += near.empty() ? "" : "()";
    }
    return near.empty() && Near(wrong, 0).kind == TOKEN_NAME
               ? "no column has this name; a text stands in single quotes: '" +
                     std::string(wrong.word) + "'"
               : DidYouMean(near);
  }
  if (wrong.error.id != ORL_ERR_FUNC) {
    return {};
  }
  std::vector<std::string> called = wrong.names.functions;
  called.insert(called.end(), wrong.names.formulas.begin(), wrong.names.formulas.end());
  return DidYouMean(Nearest(wrong.word, called));
}

/* How a value of one type becomes one of another. */
struct Conversion {
  int32_t id;
  std::string_view hint;
};
constexpr Conversion kConversions[] = {
    {ORL_ERR_TYPESTR, "NumberToStr(n, 2) and DateToStr(d) make texts of numbers and dates"},
    {ORL_ERR_OPERATORSTR, "texts are joined by ||; StrToNumber(s) makes a number of a text"},
    {ORL_ERR_OPERATORNUM,
     "only texts are joined by ||; NumberToStr(n, 2) makes a text of a number"},
    {ORL_ERR_OPERATORDATE,
     "a Date takes + and - alone: date + 7 DAYS, or date - date for the days between two"},
    {ORL_ERR_TYPENUM,
     "what follows a number is a number too: StrToNumber(s) makes one of a text; a date to be "
     "moved "
     "comes first, date + 7 DAYS"},
    {ORL_ERR_PARMNUM, "StrToNumber(s) makes a number of a text"},
    {ORL_ERR_PARMSTR, "NumberToStr(n, 2) and DateToStr(d) make texts of numbers and dates"},
    {ORL_ERR_PARMDATE, "StrToDate(s) makes a date of a text"},
    {ORL_ERR_EXPPARMS, "a formula takes no arguments: write `name()`"},
    {ORL_ERR_INVALIDDATE, "a date is written 2024-01-31, with a time 2024-01-31 21:30:15"},
    {ORL_ERR_IMBEDDEDRANGE, "a range or set stands alone; --where takes it: --where 'column=name'"},
};

std::string Converted(const Case &wrong) {
  for (const Conversion &conversion : kConversions) {
    if (conversion.id == wrong.error.id) {
      return std::string(conversion.hint);
    }
  }
  return {};
}

/* What the arguments of a call are. */
std::string Arguments(const Case &wrong) {
  const bool count = wrong.error.id == ORL_ERR_NUMPARMSHI || wrong.error.id == ORL_ERR_NUMPARMSLO;
  return count ? "`orli functions " + std::string(wrong.word) + "` tells the arguments"
               : std::string();
}

bool IsOperand(const Token &token) {
  return IsNameToken(token) || token.kind == TOKEN_NUMBER || token.kind == TOKEN_STRING;
}

/* What a text lacks: a parenthesis, an operator between two values, a value at its end. */
std::string Missing(const Case &wrong) {
  if (wrong.error.id != ORL_ERR_SYNTAX) {
    return {};
  }
  int depth = 0;
  for (const Token &token : wrong.tokens) {
    depth += token.kind == TOKEN_OPEN ? 1 : token.kind == TOKEN_CLOSE ? -1 : 0;
    if (depth < 0) {
      return "a ( is missing before this )";
    }
  }
  for (size_t i = 1; i < wrong.tokens.size(); ++i) {
    const Token &before = wrong.tokens[i - 1];
    const Token &token = wrong.tokens[i];
    if (IsOperand(token) && (IsOperand(before) || before.kind == TOKEN_CLOSE)) {
      return "an operator or a comma is missing before `" + DisplayName(token.text) + "`";
    }
  }
  if (depth > 0) {
    return "a ) is missing";
  }
  const TokenKind last = wrong.tokens.empty() ? TOKEN_OPERATOR : wrong.tokens.back().kind;
  return last == TOKEN_OPERATOR || last == TOKEN_COMMA ? "a value is missing at the end" : "";
}

/* The first rule that has something to say gives the hint. */
constexpr std::string (*kRules[])(const Case &wrong) = {
    Unclosed, CurlyQuote,  UnitWord,    NeedsQuotes,        Comparison, Logic,
    In,       Exponent,    ForeignSign, StringInNameQuotes, Sign,       NeedsCall,
    NoCall,   ForeignWord, NearName,    Arguments,          Converted,  Missing,
};

}  // namespace

KnownNames NamesOf(EC ec, const std::vector<std::string> &formulas) {
  KnownNames names;
  const OrlEnumItemProc add = [](EC /*ec*/, const char *name, void *user) {
    static_cast<std::vector<std::string> *>(user)->emplace_back(name);
  };
  ORLEnumExpItems(ec, ORL_INPUT, add, &names.columns);
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

std::string HintFor(const std::string &text, const FormulaError &error, const KnownNames &names) {
  Case wrong{text, error, names, Tokens(text), 0, {}};
  const auto offset = static_cast<size_t>(std::max(error.offset, 0));
  while (wrong.at < wrong.tokens.size() &&
         wrong.tokens[wrong.at].offset + wrong.tokens[wrong.at].text.size() <= offset) {
    ++wrong.at;
  }
  wrong.word = Near(wrong, 0).text;
  for (const auto rule : kRules) {
    std::string hint = rule(wrong);
    if (!hint.empty()) {
      return hint;
    }
  }
  return {};
}
