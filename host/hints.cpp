#include "host/hints.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "host/display.h"
#include "host/foreign_words.h"
#include "host/invalid_formula.h"
#include "host/nearest.h"
#include "host/tokens.h"

namespace {

bool IsNameToken(const Token &token) {
  return token.kind == kTokenName || token.kind == kTokenQuoted;
}

bool Contains(const std::vector<std::string> &names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// A letter, digit or quote next to a name makes it part of another one.
bool IsWordByte(char byte) {
  return std::isalnum(static_cast<unsigned char>(byte)) != 0 || byte == '_' || byte == '"' ||
         byte == '`' || byte == '\'' || (byte & 0x80) != 0;
}

std::string DidYouMean(const std::string &name) {
  return name.empty() ? name : "did you mean `" + DisplayName(name) + "`?";
}

std::string Unclosed(const InvalidFormula &wrong) {
  const Token *open = wrong.Find(kTokenUnclosed);
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
std::string ForeignCharacter(const InvalidFormula &wrong) {
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
    if (!hint.empty() && !named && !wrong.InQuotes(at)) {
      return std::string(hint);
    }
  }
  return {};
}

std::string Comparison(const InvalidFormula &wrong) {
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

std::string Logic(const InvalidFormula &wrong) {
  for (const std::string_view word : {"OR", "NOT", "XOR"}) {
    if (wrong.Find(kTokenName, word) != nullptr) {
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

std::string In(const InvalidFormula &wrong) {
  const Token *token = wrong.Find(kTokenName, "IN");
  return token == nullptr || wrong.error.id == ORL_ERR_VAR
             ? std::string()
             : "IN is not in the language: a set is written 'a', 'b' alone, as in "
               "--where \"name='a', 'b'\"; StrTranslate looks a text up in a list";
}

std::string ForeignSign(const InvalidFormula &wrong) {
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
std::string Exponent(const InvalidFormula &wrong) {
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
std::string Sign(const InvalidFormula &wrong) {
  for (size_t i = 0; i + 1 < wrong.tokens.size(); ++i) {
    const Token &sign = wrong.tokens[i];
    const Token &next = wrong.tokens[i + 1];
    if (!wrong.StartsOperand(i) || (sign.text != "-" && sign.text != "+")) {
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
std::string UnitWord(const InvalidFormula &wrong) {
  for (size_t i = 0; i < wrong.tokens.size(); ++i) {
    const Token &token = wrong.tokens[i];
    if (token.kind != kTokenName || !IsUnitWord(token.text)) {
      continue;
    }
    const bool called = i + 1 < wrong.tokens.size() && wrong.tokens[i + 1].kind == kTokenOpen;
    if (wrong.StartsOperand(i) && !called) {
      const std::string column = wrong.ColumnOfHeader(token.text);
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
std::string NeedsQuotes(const InvalidFormula &wrong) {
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
std::string StringInNameQuotes(const InvalidFormula &wrong) {
  const Token token = wrong.Near(0);
  if (wrong.error.id != ORL_ERR_VAR || token.kind != kTokenQuoted) {
    return {};
  }
  const std::string_view inside = token.text.substr(1, token.text.size() - 2);
  std::string column = wrong.ColumnOfHeader(inside);
  column = column.empty() ? Nearest(token.text, wrong.names.columns) : column;
  return column.empty() ? "a text is written in single quotes: '" + DisplayName(inside) + "'"
                        : DidYouMean(column);
}

// Words of other languages, unless a function differs in case alone.
std::string ForeignWord(const InvalidFormula &wrong) {
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
    const bool between = wrong.tokens[i].kind == kTokenName && !wrong.StartsOperand(i);
    const std::string_view hint =
        between ? HintForWord(wrong.tokens[i].text, kWordBetween) : std::string_view();
    if (!hint.empty()) {
      return std::string(hint);
    }
  }
  return {};
}

// A formula without its parentheses, or a function.
std::string NeedsCall(const InvalidFormula &wrong) {
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
std::string NoCall(const InvalidFormula &wrong) {
  const std::string name(wrong.word);
  return wrong.error.id == ORL_ERR_FUNC && Contains(wrong.names.columns, name)
             ? "a column has no parentheses: write `" + name + "`"
             : std::string();
}

std::string NearName(const InvalidFormula &wrong) {
  if (wrong.error.id == ORL_ERR_VAR) {
    std::string near = Nearest(wrong.word, wrong.names.columns);
    if (near.empty()) {
      near = Nearest(wrong.word, wrong.names.formulas);
      near += near.empty() ? "" : "()";
    }
    return near.empty() && wrong.Near(0).kind == kTokenName
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
std::string Converted(const InvalidFormula &wrong) {
  const std::string hint(HintForError(wrong.error.id));
  const bool atOperator = wrong.error.id == ORL_ERR_OPERATORSTR;
  const bool isText = atOperator || wrong.error.id == ORL_ERR_TYPENUM ||
                      wrong.error.id == ORL_ERR_TYPENUMDATE || wrong.error.id == ORL_ERR_PARMNUM ||
                      wrong.error.id == ORL_ERR_PARMDATE;
  const Token token = wrong.Near(atOperator ? -1 : 0);
  if (isText && token.kind == kTokenString) {
    const std::string column = wrong.ColumnOfHeader(Unquoted(token.text));
    return column.empty() ? hint
                          : "a column has no single quotes: write `" + DisplayName(column) + "`";
  }
  return isText && Contains(wrong.names.texts, std::string(token.text))
             ? "`" + DisplayName(token.text) + "` is a String, and `orli items` shows why; " + hint
             : hint;
}

// The arguments of a call.
std::string Arguments(const InvalidFormula &wrong) {
  const bool count = wrong.error.id == ORL_ERR_NUMPARMSHI || wrong.error.id == ORL_ERR_NUMPARMSLO;
  return count ? "`orli functions " + std::string(wrong.word) + "` shows the arguments"
               : std::string();
}

bool IsOperand(const Token &token) {
  return IsNameToken(token) || token.kind == kTokenNumber || token.kind == kTokenString;
}

// A word after a number that moves a date, in the place of a unit.
std::string NoUnit(const InvalidFormula &wrong) {
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
std::string NumbersAsDate(const InvalidFormula &wrong) {
  const auto offset = static_cast<size_t>(std::max(wrong.error.offset, 0));
  const auto length = static_cast<size_t>(std::max(wrong.error.length, 0));
  const std::string_view span =
      std::string_view(wrong.text).substr(std::min(offset, wrong.text.size()), length);
  const bool isDate =
      wrong.Near(0).kind == kTokenNumber && std::count_if(span.begin(), span.end(), [](char byte) {
                                              return byte == '-' || byte == '/' || byte == '.';
                                            }) == 2;
  const bool wanted = wrong.error.id == ORL_ERR_TYPENUM || wrong.error.id == ORL_ERR_PARMNUM;
  return isDate && wanted
             ? "`" + std::string(span) + "` is a date: write blanks around the signs to compute"
             : std::string();
}

// 2 MONTHS 3 DAYS, which the scanner takes for a date.
std::string SeveralUnits(const InvalidFormula &wrong) {
  const auto units = std::count_if(
      wrong.tokens.begin(), wrong.tokens.end(),
      [](const Token &token) { return token.kind == kTokenName && IsUnitWord(token.text); });
  return wrong.error.id == ORL_ERR_INVALIDDATE && units > 0
             ? "each unit has a sign of its own: date + 2 MONTHS + 3 DAYS"
             : "";
}

// What is missing in a text: a parenthesis, an operator between two values, a value at its end.
std::string Missing(const InvalidFormula &wrong) {
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
    if (wanted && wrong.StartsOperand(i)) {
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
constexpr std::string (*kRules[])(const InvalidFormula &wrong) = {
    Unclosed, ForeignCharacter, UnitWord,           NeedsQuotes,  Comparison, Logic,  In,
    Exponent, ForeignSign,      StringInNameQuotes, Sign,         NeedsCall,  NoCall, ForeignWord,
    NearName, Arguments,        NumbersAsDate,      SeveralUnits, Converted,  NoUnit, Missing,
};

}  // namespace

std::string HintFor(const std::string &text, const FormulaError &error, const KnownNames &names) {
  const InvalidFormula wrong = InvalidFormulaOf(text, error, names);
  for (const auto rule : kRules) {
    std::string hint = rule(wrong);
    if (!hint.empty()) {
      return hint;
    }
  }
  return {};
}
