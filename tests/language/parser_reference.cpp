#include "language/parser_reference.h"

#include <cctype>

#include "orli11.h"

namespace {

struct Span {
  int offset, length;
};

struct Node {
  std::string label, extra, children;  // extra: what stands in the brackets behind the span
  int type;
  Span span;
  bool item;  // an input item or keyword, whose name is the label
};

struct Failure {
  int id;
  Span span;
};

struct Reader {
  const ReferenceContext *context;
  const std::vector<std::string> *tokens;
  std::vector<int> offsets;
  size_t next;   // index of the token that Peek shows
  bool scanned;  // whether that token has been looked at
  Span last;     // of the last token scanned, which words like AND leave alone
  int unit, modifier;
};

const std::map<std::string, int> kUnits = {{"DAY", 1},   {"MONTH", 2},    {"YEAR", 4},
                                           {"HOURS", 8}, {"minutes", 16}, {"Second", 32}};

bool Has(const Reader &reader, int flag) {
  return (reader.context->flags & flag) != 0;
}

// The class of a token: "item", "number", "string", "call", "unit", "modifier", "bad", "" at the
// end, or the token itself.
std::string ClassOf(const Reader &reader, const std::string &token) {
  if (kUnits.count(token) != 0) return Has(reader, ORL_FLAG_NO_DATE_UNITS) ? "item" : "unit";
  if (token == "DISTINCT" || token == "ALL") {
    return Has(reader, ORL_FLAG_MODIFIERS) ? "modifier" : "item";
  }
  if (token == "%" && !Has(reader, ORL_FLAG_PERCENT)) return "bad";
  if (token == ";" || token == "|") return "bad";
  if (token == "AND" || token.empty()) return token;
  if (token[0] == '.') return "number";
  if (token[0] == '\'') return "string";
  if (isalpha(static_cast<unsigned char>(token[0])) == 0) return token;
  return token.back() == '(' ? "call" : "item";
}

std::string Token(const Reader &reader) {
  return reader.next < reader.tokens->size() ? (*reader.tokens)[reader.next] : "";
}

// Looks at the next token, which is when the scanner would read it.
std::string Peek(Reader &reader) {
  const std::string token = Token(reader);
  std::string kind = ClassOf(reader, token);
  if (reader.scanned) return kind;
  reader.scanned = true;
  if (!kind.empty() && kind != "AND") {
    reader.last = {reader.offsets[reader.next], static_cast<int>(token.size())};
  }
  if (kind == "unit") reader.unit = kUnits.at(token);
  if (kind == "modifier") reader.modifier = token == "DISTINCT" ? 1 : 2;
  return kind;
}

Span Take(Reader &reader) {
  Peek(reader);
  const Span span = {reader.offsets[reader.next], static_cast<int>(Token(reader).size())};
  ++reader.next;
  reader.scanned = false;
  return span;
}

std::string Print(const Node &node) {
  return node.label + "[" + std::to_string(node.type) + " " + std::to_string(node.span.offset) +
         "+" + std::to_string(node.span.length) + node.extra + "]" + node.children;
}

std::string PrintList(const std::vector<Node> &nodes) {
  std::string list;
  for (const Node &node : nodes) list += (list.empty() ? "" : " ") + Print(node);
  return "(" + list + ")";
}

[[noreturn]] void Fail(int id, Span span) {
  throw Failure{id, span};
}
[[noreturn]] void SyntaxError() {
  Fail(109, {-1, -1});
}

bool Callback(const Reader &reader, const std::string &op, int type) {
  return reader.context->callbacks.count({op, type}) != 0;
}

bool Allowed(const Reader &reader, const std::string &op, int type) {
  if (type > 255) return false;
  if (op == "%") return type == 0;
  if (type == 1) return (op == "+" || op == "-") && !Has(reader, ORL_FLAG_NO_DATE_UNITS);
  if (type == 0 && op != "||") return true;
  if (type == 2 && op == "||") return !Has(reader, ORL_FLAG_NO_CONCAT);
  if (type == 2 && op == "+" && Has(reader, ORL_FLAG_STRING_PLUS)) return true;
  return type <= 3 && Callback(reader, op, type);
}

// The type of an allowed operation without its unit word.
int ResultType(const Reader &reader, const std::string &op, const Node &left, const Node &right) {
  if (left.type != 1) {
    if (right.type == left.type) return left.type;
    Fail(left.type == 0 ? 100 : left.type == 2 ? 115 : 0, right.span);
  }
  if (right.type == 0) return 1;
  if (op == "+") Fail(100, right.span);
  if (right.type == 1 || (right.type == 2 && Has(reader, ORL_FLAG_DATE_MINUS_STRING))) return 0;
  Fail(128, right.span);
}

// Where the rules know no place, 129 is reported at `unitPlace` and all else at `otherwise`.
Node Build(Reader &reader, const std::string &op, const Node &left, const Node &right,
           Span unitPlace, Span otherwise) {
  if (!Allowed(reader, op, left.type)) {
    Fail(left.type == 0 ? 111 : left.type == 1 ? 114 : left.type == 2 ? 113 : 132, otherwise);
  }
  Node node = {};
  node.type = ResultType(reader, op, left, right);
  if (reader.unit != 0 && !(left.type == 1 && right.type == 0)) Fail(129, unitPlace);
  node.label = op + (reader.unit != 0 ? ":" + std::to_string(reader.unit) : "");
  reader.unit = 0;
  node.span = reader.last;
  node.children = PrintList({left, right});
  return node;
}

Node Expression(Reader &reader);

// The type of a call with a list or with none; throws for arguments that do not fit the function.
int FittingType(const Reader &reader, const ReferenceFunction &function,
                const std::vector<Node> &arguments, Span name) {
  const int count = static_cast<int>(arguments.size());
  const int declared = static_cast<int>(function.parameters.size());
  const int first = function.firstOptional;
  if (count == 0) {
    if (declared > 0 && !(first == 0 && function.optionalCount != 0)) Fail(117, name);
    return function.type;
  }
  if (count < declared && (first == 0 || first > count || function.optionalCount == 0)) {
    Fail(117, name);
  }
  if (count > declared && first == 0) Fail(105, name);
  if (count != declared && function.optionalCount != 0 && first + function.optionalCount < count) {
    Fail(105, name);
  }
  for (int i = 0; i < count; ++i) {
    const Node &argument = arguments[static_cast<size_t>(i)];
    const int row = i < declared ? i : declared - 1;  // the groups here have one row
    const int wanted = function.parameters[static_cast<size_t>(row)];
    if (wanted != 4 && wanted != 5 && argument.type != wanted) {
      Fail(wanted == 0 ? 118 : wanted == 1 ? 120 : wanted == 2 ? 119 : 133, argument.span);
    }
    if (!function.byName) continue;
    if (!argument.item) {
      const bool passes =
          (function.flags & 4) != 0 || ((function.flags & 8) != 0 && (reader.modifier & 1) == 0);
      if (!passes) Fail(101, argument.span);
      continue;
    }
    const auto found = reader.context->subClasses.find(argument.label);
    if (function.subClass != 0 && found != reader.context->subClasses.end() &&
        found->second != function.subClass) {
      Fail(137, argument.span);
    }
  }
  return function.type;
}

// form: 0 plain, 2 star, 4 modifier; `word` is the star or modifier.
Node Call(Reader &reader, const std::string &name, Span span, Span word, int form,
          const std::vector<Node> &arguments) {
  Node node = {};
  node.span = span;
  node.label = name;
  const auto found = reader.context->functions.find(name);
  if (found == reader.context->functions.end()) {
    const auto formula = reader.context->formulas.find(name);
    if (formula == reader.context->formulas.end()) Fail(103, span);
    if (formula->second < 0) Fail(136, span);
    if (form != 0 || !arguments.empty()) Fail(124, span);
    node.label += "!";
    node.type = formula->second;
    return node;
  }
  const ReferenceFunction &function = found->second;
  const Span wordOrName = form == 4 ? word : span;
  if (form == 4 && (function.flags & 19) == 0) Fail(129, word);
  if ((function.flags & 16) != 0 && (form == 0 || (form == 4 && reader.modifier == 2))) {
    Fail(130, wordOrName);
  }
  if (form == 2 && (function.parameters.empty() || function.parameters[0] != 5)) Fail(109, word);
  node.type = form == 2 ? function.type : FittingType(reader, function, arguments, span);
  if (form == 4) reader.modifier = 0;
  return node;
}

Node CallAfterName(Reader &reader) {
  const std::string text = Token(reader);
  const Span span = Take(reader);
  Span word = {};
  int form = 0;
  std::vector<Node> arguments;
  if (Peek(reader) == "*") {
    form = 2;
    word = Take(reader);
  } else {
    if (Peek(reader) == "modifier") {
      form = 4;
      word = Take(reader);
    }
    if (Peek(reader) != ")") arguments.push_back(Expression(reader));
    while (!arguments.empty() && Peek(reader) == ",") {
      Take(reader);
      arguments.push_back(Expression(reader));
    }
  }
  if (Peek(reader) != ")") SyntaxError();
  const int close = Take(reader).offset;
  Node node = Call(reader, text.substr(0, text.size() - 1), span, word, form, arguments);
  if (form != 0) node.extra = " form" + std::to_string(form);
  node.extra += "^" + std::to_string(close);
  if (node.label.back() != '!') node.children = PrintList(arguments);
  return node;
}

Node Operand(Reader &reader) {
  const std::string kind = Peek(reader);
  const std::string text = Token(reader);
  Node node = {};
  if (kind == "call") return CallAfterName(reader);
  if (kind == "(") {
    Take(reader);
    node = Expression(reader);
    if (Peek(reader) != ")") SyntaxError();
    Take(reader);
    return node;
  }
  if (kind == "-") {
    Take(reader);
    if (Peek(reader) != "number") SyntaxError();
    node.label = "-0" + Token(reader);
    node.span = Take(reader);
    return node;
  }
  if (kind != "number" && kind != "string" && kind != "item" && kind != "bad") SyntaxError();
  node.span = Take(reader);
  node.label = kind == "number" ? "0" + text : text;
  if (kind == "bad") Fail(110, node.span);
  if (kind == "string") node.type = 2;
  if (kind == "item") {
    const auto found = reader.context->items.find(text);
    if (found == reader.context->items.end()) Fail(102, node.span);
    node.type = found->second;
    node.item = true;
  }
  return node;
}

// Levels: 1 + and -, 2 * and /, 3 %, 4 ||. `given`: the leftmost operand, when it is read already.
Node Level(Reader &reader, int level, const Node *given = nullptr) {
  static const std::set<std::string> operators[] = {{}, {"+", "-"}, {"*", "/"}, {"%"}, {"||"}};
  if (level > 4) return given != nullptr ? *given : Operand(reader);
  Node left = Level(reader, level + 1, given);
  while (operators[level].count(Peek(reader)) != 0) {
    const std::string op = Token(reader);
    const Span place = Take(reader);
    Peek(reader);
    const Span rightStart = reader.last;
    const Node right = Level(reader, level + 1);
    if (level == 1 && Peek(reader) == "unit") {
      const Span unit = Take(reader);
      const Node moved = Build(reader, op, left, right, unit, rightStart);
      left = Level(reader, 2, &moved);  // a unit word closes its operation: any operator may follow
    } else {
      left = Build(reader, op, left, right, place, place);
    }
  }
  return left;
}

Node Expression(Reader &reader) {
  return Level(reader, 1);
}

Node Whole(Reader &reader) {
  Node first = Expression(reader);
  const std::string next = Peek(reader);
  if (next.empty()) {
    if (first.type > 255) Fail(129, {0, 1000});
    return first;
  }
  if (next != "," && next != "AND") SyntaxError();
  std::vector<Node> members = {first};
  while (Peek(reader) == next && !(next == "AND" && members.size() == 2)) {
    Take(reader);
    members.push_back(Expression(reader));
  }
  if (!Has(reader, ORL_FLAG_RANGES)) Fail(109, {0, 0});
  for (const Node &member : members) {
    if (member.type == first.type) continue;
    Fail(next == "AND" ? 135 : member.type < 255 ? 134 : 129, member.span);
  }
  if (!Peek(reader).empty()) SyntaxError();
  Node node = {};
  node.label = next == "AND" ? "RANGE" : "SET";
  node.type = first.type;
  node.children = PrintList(members);
  return node;
}

}  // namespace

std::string JoinTokens(const std::vector<std::string> &tokens) {
  std::string text;
  for (const std::string &token : tokens) text += (text.empty() ? "" : "\t") + token;
  return text;
}

std::string ReferenceParse(const ReferenceContext &context,
                           const std::vector<std::string> &tokens) {
  Reader reader = {&context, &tokens, {}, 0, false, {}, 0, 0};
  int offset = 0;
  for (const std::string &token : tokens) {
    reader.offsets.push_back(offset);
    offset += static_cast<int>(token.size()) + 1;
  }
  try {
    return Print(Whole(reader));
  } catch (const Failure &failure) {
    if (failure.span.length < 0) return "109";
    return std::to_string(failure.id) + "@" + std::to_string(failure.span.offset) + "+" +
           std::to_string(failure.span.length);
  }
}
