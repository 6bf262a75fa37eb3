#include "host/hints.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "host/display.h"
#include "host/foreign_words.h"
#include "host/nearest.h"
#include "host/tokens.h"

namespace {

// An invalid formula as the rules see it.
struct Case {
  const std::string &text;
  const FormulaError &error;
  const KnownNames &names;
  std::vector<Token> tokens;
  size_t at = 0;          // the token at the error, or their number when it is after the last
  std::string_view word;  // its text, as written
};

bool IsNameToken(const Token &token) {
  return token.kind == kTokenName || token.kind == kTokenQuoted;
}

// The token `step` places from the error; one without text when there is none.
Token Near(const Case &wrong, int step) {
  const auto place = static_cast<size_t>(static_cast<int64_t>(wrong.at) + step);
  return place < wrong.tokens.size() ? wrong.tokens[place] : Token{kTokenOther, 0, {}};
}

// The first token of that kind and text, or null. The text is compared in any case; empty: any
// text.
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

// The column whose header is the word, in any case, as formulas write it; empty when none.
std::string ColumnOfHeader(const Case &wrong, std::string_view header) {
  for (const std::string &name : wrong.names.columns) {
    const bool quoted = name.size() > 2 && (name.front() == '"' || name.front() == '`');
    if (EqualNoCase(quoted ? name.substr(1, name.size() - 2) : name, header)) {
      return name;
    }
  }
  return {};
}

// Whether a byte of the text is inside a quoted string or name.
bool InQuotes(const Case &wrong, size_t at) {
  return std::any_of(wrong.tokens.begin(), wrong.tokens.end(), [at](const Token &token) {
    return (token.kind == kTokenString || token.kind == kTokenQuoted) && at >= token.offset &&
           at < token.offset + token.text.size();
  });
}

// A letter, digit or quote next to a name makes it part of another one.
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

// Whether a value is expected at the token.
bool StartsOperand(const Case &wrong, size_t place) {
  const TokenKind before = place == 0 ? kTokenOpen : wrong.tokens[place - 1].kind;
  return before == kTokenOpen || before == kTokenComma || before == kTokenOperator;
}

std::string Unclosed(const Case &wrong) {
  const Token *open = Find(wrong, kTokenUnclosed);
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

// A character that looks like one of the language, or means one elsewhere. Characters in the name
// of a column are fine.
std::string ForeignCharacter(const Case &wrong) {
  const size_t end = static_cast<size_t>(std::max(wrong.error.offset, 0)) + wrong.word.size();
  size_t length = 1;
  for (size_t at = 0; at < wrong.text.size() && at <= end; at += length) {
    const std::string_view rest = std::string_view(wrong.text).substr(at);
    const std::string_view hint = HintForCharacter(rest, length);
    const std::string_view character = rest.substr(0, length);
    const bool named =
        !hint.empty() && std::any_of(wrong.names.columns.begin(), wrong.names.columns.end(),
                                     [character](const std::string &name) {
                                       return name.find(character) != std::string::npos;
                                     });
    if (!hint.empty() && !named && !InQuotes(wrong, at)) {
      return std::string(hint);
    }
  }
  return {};
}

std::string Comparison(const Case &wrong) {
  constexpr std::array<std::string_view, 7> kChoiceWords = {"IF",   "IIF",    "IFF",   "CASE",
                                                            "WHEN", "IFELSE", "CHOOSE"};
  if (!wrong.tokens.empty() && wrong.tokens[0].text == "=") {
    return "a formula has no = in front";
  }
  for (const Token &token : wrong.tokens) {
    const bool sign = token.kind == kTokenOther && token.text.find_first_of("<=>!") == 0;
    const bool word =
        token.kind == kTokenName &&
        std::any_of(kChoiceWords.begin(), kChoiceWords.end(),
                    [&token](std::string_view entry) { return EqualNoCase(entry, token.text); });
    if (sign || (word && wrong.error.id != ORL_ERR_VAR) || (word && token.text == wrong.word)) {
      return std::string(kNoComparisons);
    }
  }
  return {};
}

std::string Logic(const Case &wrong) {
  for (const std::string_view word : {"OR", "NOT", "XOR"}) {
    if (Find(wrong, kTokenName, word) != nullptr) {
      return std::string(word) +
             " is not in the language: conditions are made of NumberIFF, StrIFF "
             "and DateIFF";
    }
  }
  const auto ands = std::count_if(wrong.tokens.begin(), wrong.tokens.end(), [](const Token &token) {
    return token.kind == kTokenName && EqualNoCase(token.text, "AND");
  });
  const bool misplaced = wrong.error.id == ORL_ERR_SYNTAX || wrong.error.id == ORL_ERR_FUNC;
  return ands > 1 || (ands == 1 && misplaced)
             ? "AND joins the two ends of a range, once and outside of parentheses; conditions are "
               "made of NumberIFF"
             : "";
}

std::string In(const Case &wrong) {
  const Token *token = Find(wrong, kTokenName, "IN");
  return token == nullptr || wrong.error.id == ORL_ERR_VAR
             ? std::string()
             : "IN is not in the language: a set is written 'a', 'b' alone, as in "
               "--where \"name='a', 'b'\"; StrTranslate looks a text up in a list";
}

std::string ForeignSign(const Case &wrong) {
  for (size_t i = 0; i + 1 < wrong.tokens.size(); ++i) {
    const std::string pair =
        std::string(wrong.tokens[i].text) + std::string(wrong.tokens[i + 1].text);
    if (pair == "&&") {
      return std::string(HintForSign(pair));
    }
    if (pair == "**") {
      return std::string(HintForSign("^"));
    }
    if (pair == "/*" || pair == "//") {
      return std::string(kNoComments);
    }
  }
  for (const Token &token : wrong.tokens) {
    const bool sign = token.kind == kTokenOther || token.text == "%";
    const std::string_view hint = sign ? HintForSign(token.text) : std::string_view();
    if (!hint.empty()) {
      return std::string(hint);
    }
  }
  const bool amount = wrong.word.size() > 1 && wrong.word[0] == '$' &&
                      std::isdigit(static_cast<unsigned char>(wrong.word[1])) != 0;
  return amount ? "amounts are written without a currency sign" : "";
}

// 1e3, which is read as the number 1 and the name e3.
std::string Exponent(const Case &wrong) {
  for (size_t i = 0; i + 1 < wrong.tokens.size(); ++i) {
    const Token &number = wrong.tokens[i];
    const Token &power = wrong.tokens[i + 1];
    const bool joined = number.kind == kTokenNumber && power.kind == kTokenName &&
                        number.offset + number.text.size() == power.offset;
    if (joined && std::tolower(static_cast<unsigned char>(power.text[0])) == 'e' &&
        power.text.find_first_not_of("0123456789", 1) == std::string_view::npos) {
      return "write the number out: 1000 for 1e3 (an exponent has one digit before a point, and a "
             "sign: 1.0e+3)";
    }
  }
  return {};
}

// A sign before something that is not a number.
std::string Sign(const Case &wrong) {
  for (size_t i = 0; i + 1 < wrong.tokens.size(); ++i) {
    const Token &sign = wrong.tokens[i];
    const Token &next = wrong.tokens[i + 1];
    if (!StartsOperand(wrong, i) || (sign.text != "-" && sign.text != "+")) {
      continue;
    }
    if (sign.text == "+" && (IsNameToken(next) || next.kind == kTokenNumber)) {
      return "there is no plus sign before a value: leave it out";
    }
    if (IsNameToken(next) || next.kind == kTokenOpen) {
      const std::string operand = IsNameToken(next) ? std::string(next.text) : "(...)";
      return "only numbers take a sign: write `0 - " + DisplayName(operand) + "`";
    }
  }
  return {};
}

// day + 1, where day is a column and a unit word.
std::string UnitWord(const Case &wrong) {
  for (size_t i = 0; i < wrong.tokens.size(); ++i) {
    const Token &token = wrong.tokens[i];
    if (token.kind != kTokenName || !IsUnitWord(token.text)) {
      continue;
    }
    const bool called = i + 1 < wrong.tokens.size() && wrong.tokens[i + 1].kind == kTokenOpen;
    if (StartsOperand(wrong, i) && !called) {
      const std::string column = ColumnOfHeader(wrong, token.text);
      return DisplayName(token.text) + " is a unit word of dates: write `" +
             DisplayName(column.empty() ? '"' + std::string(token.text) + '"' : column) +
             "` for a column of that name";
    }
  }
  const bool misplaced = wrong.error.id == ORL_ERR_SYNTAX && IsUnitWord(wrong.word);
  if (wrong.error.id == ORL_ERR_KEYWORD && wrong.text.find_first_of("*/") != std::string::npos) {
    return "a product or quotient before a unit needs parentheses: date + (2 * 3) DAYS";
  }
  const bool moves = misplaced || wrong.error.id == ORL_ERR_KEYWORD;
  return moves ? "a unit word moves a Date by a Number: date + 7 DAYS" : std::string();
}

// wind speed, without the quotes that such a name needs.
std::string NeedsQuotes(const Case &wrong) {
  if (wrong.error.id == ORL_ERR_FUNC) {
    return {};
  }
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

// "rain", in the quotes of names.
std::string StringInNameQuotes(const Case &wrong) {
  const Token token = Near(wrong, 0);
  if (wrong.error.id != ORL_ERR_VAR || token.kind != kTokenQuoted) {
    return {};
  }
  const std::string_view inside = token.text.substr(1, token.text.size() - 2);
  std::string column = ColumnOfHeader(wrong, inside);
  column = column.empty() ? Nearest(token.text, wrong.names.columns) : column;
  return column.empty() ? "a text is written in single quotes: '" + DisplayName(inside) + "'"
                        : DidYouMean(column);
}

// Words of other languages, unless a function differs in case alone.
std::string ForeignWord(const Case &wrong) {
  const auto isWord = [&wrong](const std::string &name) { return EqualNoCase(name, wrong.word); };
  if (wrong.error.id == ORL_ERR_VAR) {
    return std::string(HintForWord(wrong.word, kWordValue));
  }
  if (wrong.error.id == ORL_ERR_FUNC) {
    const bool ours =
        std::any_of(wrong.names.functions.begin(), wrong.names.functions.end(), isWord);
    return ours ? std::string() : std::string(HintForWord(wrong.word, kWordCalled));
  }
  for (size_t i = 1; i < wrong.tokens.size() && wrong.error.id == ORL_ERR_SYNTAX; ++i) {
    const bool between = wrong.tokens[i].kind == kTokenName && !StartsOperand(wrong, i);
    const std::string_view hint =
        between ? HintForWord(wrong.tokens[i].text, kWordBetween) : std::string_view();
    if (!hint.empty()) {
      return std::string(hint);
    }
  }
  return {};
}

// A formula without its parentheses, or a function.
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

// A column or formula that is used like a function.
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
    return near.empty() && Near(wrong, 0).kind == kTokenName
               ? "no column has this name; a text is written in single quotes: '" +
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

// What to write for the value of a wrong type: a column without its quotes, or a conversion. A
// String column may only have become one by a few odd fields.
std::string Converted(const Case &wrong) {
  const std::string hint(HintForError(wrong.error.id));
  const bool atOperator = wrong.error.id == ORL_ERR_OPERATORSTR;
  const bool isText = atOperator || wrong.error.id == ORL_ERR_TYPENUM ||
                      wrong.error.id == ORL_ERR_TYPENUMDATE || wrong.error.id == ORL_ERR_PARMNUM ||
                      wrong.error.id == ORL_ERR_PARMDATE;
  const Token token = Near(wrong, atOperator ? -1 : 0);
  if (isText && token.kind == kTokenString) {
    const std::string column = ColumnOfHeader(wrong, Unquoted(token.text));
    return column.empty() ? hint
                          : "a column has no single quotes: write `" + DisplayName(column) + "`";
  }
  return isText && Contains(wrong.names.texts, std::string(token.text))
             ? "`" + DisplayName(token.text) + "` is a String, and `orli items` shows why; " + hint
             : hint;
}

// The arguments of a call.
std::string Arguments(const Case &wrong) {
  const bool count = wrong.error.id == ORL_ERR_NUMPARMSHI || wrong.error.id == ORL_ERR_NUMPARMSLO;
  return count ? "`orli functions " + std::string(wrong.word) + "` shows the arguments"
               : std::string();
}

bool IsOperand(const Token &token) {
  return IsNameToken(token) || token.kind == kTokenNumber || token.kind == kTokenString;
}

// A word after a number that moves a date, in the place of a unit.
std::string NoUnit(const Case &wrong) {
  for (size_t i = 2; i < wrong.tokens.size() && wrong.error.id == ORL_ERR_SYNTAX; ++i) {
    const Token &number = wrong.tokens[i - 1];
    const Token &word = wrong.tokens[i];
    const std::string_view sign = wrong.tokens[i - 2].text;
    const bool apart = number.offset + number.text.size() < word.offset;
    if (number.kind == kTokenNumber && word.kind == kTokenName && apart &&
        (sign == "+" || sign == "-") && !IsUnitWord(word.text) &&
        !Contains(wrong.names.columns, std::string(word.text))) {
      return "`" + DisplayName(word.text) +
             "` is not a unit: dates move by DAY, MONTH, YEAR, HOUR, MINUTE and SECOND";
    }
  }
  return {};
}

// 10-5-2 where a number is wanted: it is a date.
std::string NumbersAsDate(const Case &wrong) {
  const auto offset = static_cast<size_t>(std::max(wrong.error.offset, 0));
  const auto length = static_cast<size_t>(std::max(wrong.error.length, 0));
  const std::string_view span =
      std::string_view(wrong.text).substr(std::min(offset, wrong.text.size()), length);
  const bool isDate =
      Near(wrong, 0).kind == kTokenNumber && std::count_if(span.begin(), span.end(), [](char byte) {
                                               return byte == '-' || byte == '/' || byte == '.';
                                             }) == 2;
  const bool wanted = wrong.error.id == ORL_ERR_TYPENUM || wrong.error.id == ORL_ERR_PARMNUM;
  return isDate && wanted
             ? "`" + std::string(span) + "` is a date: write blanks around the signs to compute"
             : std::string();
}

// 2 MONTHS 3 DAYS, which the scanner takes for a date.
std::string SeveralUnits(const Case &wrong) {
  const auto units = std::count_if(
      wrong.tokens.begin(), wrong.tokens.end(),
      [](const Token &token) { return token.kind == kTokenName && IsUnitWord(token.text); });
  return wrong.error.id == ORL_ERR_INVALIDDATE && units > 0
             ? "each unit has a sign of its own: date + 2 MONTHS + 3 DAYS"
             : "";
}

// What is missing in a text: a parenthesis, an operator between two values, a value at its end.
std::string Missing(const Case &wrong) {
  if (wrong.error.id != ORL_ERR_SYNTAX) {
    return {};
  }
  int depth = 0;
  for (const Token &token : wrong.tokens) {
    depth += token.kind == kTokenOpen ? 1 : token.kind == kTokenClose ? -1 : 0;
    if (depth < 0) {
      return "a ( is missing before this )";
    }
  }
  for (size_t i = 1; i < wrong.tokens.size(); ++i) {
    const Token &before = wrong.tokens[i - 1];
    const Token &token = wrong.tokens[i];
    const bool unit = i > 1 && token.kind == kTokenName && IsUnitWord(token.text);
    if (IsOperand(token) && !unit && (IsOperand(before) || before.kind == kTokenClose)) {
      return "an operator or a comma is missing before `" + DisplayName(token.text) + "`";
    }
  }
  for (size_t i = 0; i < wrong.tokens.size(); ++i) {
    const Token &token = wrong.tokens[i];
    const bool call = token.kind == kTokenClose && i > 1 && IsNameToken(wrong.tokens[i - 2]);
    const bool wanted = token.kind == kTokenOperator || token.kind == kTokenComma ||
                        (token.kind == kTokenClose && !call);
    if (wanted && StartsOperand(wrong, i)) {
      return "a value is missing before `" + DisplayName(token.text) + "`";
    }
  }
  if (depth > 0) {
    return "a ) is missing";
  }
  const TokenKind last = wrong.tokens.empty() ? kTokenOperator : wrong.tokens.back().kind;
  return last == kTokenOperator || last == kTokenComma ? "a value is missing at the end" : "";
}

// The first rule that applies provides the hint.
constexpr std::string (*kRules[])(const Case &wrong) = {
    Unclosed, ForeignCharacter, UnitWord,           NeedsQuotes,  Comparison, Logic,  In,
    Exponent, ForeignSign,      StringInNameQuotes, Sign,         NeedsCall,  NoCall, ForeignWord,
    NearName, Arguments,        NumbersAsDate,      SeveralUnits, Converted,  NoUnit, Missing,
};

}  // namespace

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
