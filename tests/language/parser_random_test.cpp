// Random sentences, sound and damaged, and random strings of tokens: the engine and a reference
// parser must agree on the tree with all its types and spans, or on the error. The reference is a
// recursive descent over tokens that are in the text with one tab between them, with the type
// rules written out once more.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include "engine/expressions.h"
#include "support/context.h"
#include "support/tree_text.h"

namespace {

struct Language {
  uint16_t flags;
  struct Item {
    int16_t type;
    uint16_t subClass;
  };
  std::map<std::string, Item> items;  // input items, and keywords with types above 255
  std::map<std::string, FunctionRow> functions;
  std::set<std::pair<int, int>> callbacks;  // places in kCallbackOperators, types
};

constexpr const char *kCallbackOperators = "+-/*|";

struct Span {
  int offset = 0, length = 0;
};

struct Node {
  std::string label, extra, children;  // extra: what is in the brackets after the span
  int type = 0;
  Span span;
  bool item = false;  // an input item or keyword, whose name is the label
};
using Nodes = std::vector<Node>;

std::string Print(Span span) {
  return std::to_string(span.offset) + "+" + std::to_string(span.length);
}

[[noreturn]] void Fail(int id, Span span) {
  throw std::to_string(id) + "@" + Print(span);
}

std::string Print(const Node &node) {
  return node.label + "[" + std::to_string(node.type) + " " + Print(node.span) + node.extra + "]" +
         node.children;
}

std::string PrintList(const Nodes &nodes) {
  std::string list;
  for (const Node &node : nodes) list += (list.empty() ? "" : " ") + Print(node);
  return "(" + list + ")";
}

// Messages by type: Number, Date, String, others.
constexpr int kNoOperator[] = {111, 114, 113, 132}, kOtherOperand[] = {100, 0, 115, 135};
constexpr int kOtherArgument[] = {118, 120, 119, 133};
int ByType(const int *messages, int type) {
  return messages[std::min(type, 3)];
}

const std::map<std::string, int> kUnits = {{"DAY", 1},   {"MONTH", 2},    {"YEAR", 4},
                                           {"HOURS", 8}, {"minutes", 16}, {"Second", 32}};

struct Parser {
  const Language &language;
  const std::string &text;
  size_t at = 0;         // of the token that Peek shows
  bool scanned = false;  // whether that token has been looked at
  Span last = {};        // of the last token scanned, which words like AND leave alone
  int unit = 0, modifier = 0;

  bool Has(int flag) const { return (language.flags & flag) != 0; }

  std::string Token() const {
    return at < text.size() ? text.substr(at, text.find('\t', at) - at) : "";
  }
  Span Place() const { return {static_cast<int>(at), static_cast<int>(Token().size())}; }

  // "item", "number", "string", "call", "unit", "modifier", "bad", "" at the end, or the token.
  std::string ClassOf(const std::string &token) const {
    if (token == "AND" || token.empty()) return token;
    if (kUnits.count(token) != 0 && !Has(ORL_FLAG_NO_DATE_UNITS)) return "unit";
    if ((token == "DISTINCT" || token == "ALL") && Has(ORL_FLAG_MODIFIERS)) return "modifier";
    if (token == ";" || token == "|" || (token == "%" && !Has(ORL_FLAG_PERCENT))) return "bad";
    if (token[0] == '.') return "number";
    if (token[0] == '\'') return "string";
    if (isalpha(static_cast<unsigned char>(token[0])) == 0) return token;
    return token.back() == '(' ? "call" : "item";
  }

  // Looks at the next token, which is when the scanner would read it.
  std::string Peek() {
    const std::string token = Token();
    std::string kind = ClassOf(token);
    if (scanned) return kind;
    scanned = true;
    if (!kind.empty() && kind != "AND") last = Place();
    if (kind == "unit") unit = kUnits.at(token);
    if (kind == "modifier") modifier = token == "DISTINCT" ? 1 : 2;
    return kind;
  }

  Span Take() {
    Peek();
    const Span span = Place();
    at += static_cast<size_t>(span.length) + 1;
    scanned = false;
    return span;
  }

  Span Take(const std::string &kind) {
    if (Peek() != kind) throw std::string("109");
    return Take();
  }

  Node Expression() { return Level(1); }

  bool Allowed(char op, int type) const {
    if (type > 255) return false;
    if (op == '%') return type == 0;
    if (type == 1) return (op == '+' || op == '-') && !Has(ORL_FLAG_NO_DATE_UNITS);
    if (type == 0 && op != '|') return true;
    if (type == 2 && op == '|') return !Has(ORL_FLAG_NO_CONCAT);
    if (type == 2 && op == '+' && Has(ORL_FLAG_STRING_PLUS)) return true;
    const auto code = std::strchr(kCallbackOperators, op) - kCallbackOperators;
    return language.callbacks.count({static_cast<int>(code), type}) != 0;
  }

  // The type of an allowed operation without its unit word.
  int ResultType(char op, int left, const Node &right) const {
    if (left != 1 && right.type != left) Fail(ByType(kOtherOperand, left), right.span);
    if (left != 1) return left;
    if (right.type == 0) return 1;
    if (op == '+') Fail(100, right.span);
    const bool difference = right.type == 1 || (right.type == 2 && Has(ORL_FLAG_DATE_MINUS_STRING));
    return difference ? 0 : (Fail(128, right.span), 0);
  }

  // Where the rules know no place, 129 is reported at `unitPlace` and all else at `otherwise`.
  Node Build(const std::string &op, const Node &left, const Node &right, Span unitPlace,
             Span otherwise) {
    if (!Allowed(op[0], left.type)) Fail(ByType(kNoOperator, left.type), otherwise);
    Node node = {op, "", PrintList({left, right}), ResultType(op[0], left.type, right), last};
    if (unit == 0) return node;
    if (left.type != 1 || right.type != 0) Fail(129, unitPlace);
    node.label += ":" + std::to_string(unit);
    unit = 0;
    return node;
  }

  // Fails for arguments that do not fit the function. Groups of parameters here have one row.
  void CheckArguments(const FunctionRow &function, const Nodes &arguments, Span name) const {
    const size_t count = arguments.size(), declared = function.parameters.size();
    const size_t first = function.firstOptional, optional = function.optionalCount;
    if (count == 0 && declared > 0 && (first > 0 || optional == 0)) Fail(117, name);
    if (count == 0) return;
    if (count < declared && (first == 0 || first > count || optional == 0)) Fail(117, name);
    if (count > declared && first == 0) Fail(105, name);
    if (count != declared && optional != 0 && first + optional < count) Fail(105, name);
    for (size_t i = 0; i < count; ++i) {
      const Node &argument = arguments[i];
      const size_t row = first != 0 && i > first ? first : i;
      if (row >= declared) continue;
      const ParamRecord &wanted = function.parameters[row];
      if (wanted.dataType != 5 && argument.type != wanted.dataType) {
        Fail(ByType(kOtherArgument, wanted.dataType), argument.span);
      }
      if (wanted.mode != 1) continue;
      const bool passes =
          (function.itemFlags & 4) != 0 || ((function.itemFlags & 8) != 0 && (modifier & 1) == 0);
      if (!argument.item && !passes) Fail(101, argument.span);
      if (!argument.item || wanted.subClass == 0) continue;
      const Language::Item &item = language.items.at(argument.label);
      if (item.type <= 255 && item.subClass != wanted.subClass) Fail(137, argument.span);
    }
  }

  // form: 0 plain, 2 star, 4 modifier; `word` is the star or modifier.
  Node Call() {
    Node node;
    node.label = Token().substr(0, Token().size() - 1);
    node.span = Take();
    const int form = Peek() == "*" ? 2 : Peek() == "modifier" ? 4 : 0;
    const Span word = form != 0 ? Take() : Span{};
    Nodes arguments;
    if (form != 2 && Peek() != ")") arguments.push_back(Expression());
    while (!arguments.empty() && Peek() == ",") arguments.push_back((Take(), Expression()));
    if (form != 0) node.extra = " form" + std::to_string(form);
    node.extra += "^" + std::to_string(Take(")").offset);
    const auto found = language.functions.find(node.label);
    if (found == language.functions.end()) {
      // The formulas: N, a Number, and R, a range where the flags allow one.
      if (node.label == "R" && Has(ORL_FLAG_RANGES)) Fail(136, node.span);
      if (node.label != "N") Fail(103, node.span);
      if (form != 0 || !arguments.empty()) Fail(124, node.span);
      node.label += "!";
      return node;
    }
    const FunctionRow &function = found->second;
    const bool needsDistinct = (function.itemFlags & 16) != 0;
    if (form == 4 && (function.itemFlags & 19) == 0) Fail(129, word);
    if (form == 4 && needsDistinct && modifier == 2) Fail(130, word);
    if (form == 0 && needsDistinct) Fail(130, node.span);
    const bool starFits = !function.parameters.empty() && function.parameters[0].dataType == 5;
    if (form == 2 && !starFits) Fail(109, word);
    if (form != 2) CheckArguments(function, arguments, node.span);
    node.type = function.type;
    node.children = PrintList(arguments);
    if (form == 4) modifier = 0;
    return node;
  }

  Node Operand() {
    std::string kind = Peek();
    if (kind == "call") return Call();
    Node node;
    if (kind == "(") return Take(), node = Expression(), Take(")"), node;
    if (kind == "-") {
      Take();
      node.label = "-";
      kind = "number";
    } else if (kind != "number" && kind != "string" && kind != "bad" && kind != "item") {
      Take("an operand");
    }
    node.label += (kind == "number" ? "0" : "") + Token();
    node.type = kind == "string" ? 2 : 0;
    node.item = kind == "item";
    node.span = Take(kind);
    if (kind == "bad") Fail(110, node.span);
    if (!node.item) return node;
    const auto found = language.items.find(node.label);
    if (found == language.items.end()) Fail(102, node.span);
    node.type = found->second.type;
    return node;
  }

  // Levels: 1 + and -, 2 * and /, 3 %, 4 ||. `given`: the leftmost operand, if it is read already.
  Node Level(int level, const Node *given = nullptr) {
    static const std::set<std::string> operators[] = {{}, {"+", "-"}, {"*", "/"}, {"%"}, {"||"}};
    if (level > 4) return given != nullptr ? *given : Operand();
    Node left = Level(level + 1, given);
    while (operators[level].count(Peek()) != 0) {
      const std::string op = Token();
      const Span place = Take();
      Peek();
      const Span rightStart = last;
      const Node right = Level(level + 1);
      if (level == 1 && Peek() == "unit") {
        // A unit word closes its operation: any operator may follow.
        const Node moved = Build(op, left, right, Take(), rightStart);
        left = Level(2, &moved);
      } else {
        left = Build(op, left, right, place, place);
      }
    }
    return left;
  }

  Node Whole() {
    Node first = Expression();
    const std::string next = Peek();
    if (next.empty() && first.type > 255) Fail(129, {0, 1000});
    if (next.empty()) return first;
    const bool range = next == "AND";
    Nodes members = {first};
    if (!range && next != ",") Take("");
    do members.push_back((Take(), Expression()));
    while (Peek() == next && !range);
    if (!Has(ORL_FLAG_RANGES)) Fail(109, {0, 0});
    for (const Node &member : members) {
      if (member.type == first.type) continue;
      Fail(range ? 135 : member.type < 255 ? 134 : 129, member.span);
    }
    Take("");
    return {range ? "RANGE" : "SET", "", PrintList(members), first.type, {}};
  }
};

// The tree in the form of TreeText, or "id@offset+length"; a syntax error is "109" alone.
std::string ReferenceParse(const Language &language, const std::string &text) {
  try {
    return Print(Parser{language, text}.Whole());
  } catch (const std::string &failure) {
    return failure;
  }
}

using Tokens = std::vector<std::string>;
using Random = std::mt19937;

const std::string &Pick(Random &random, const Tokens &choices) {
  return choices[random() % choices.size()];
}

// What a Number, a Date and a String may be, without deeper parts and with them. Most sentences
// pass the type rules.
struct Forms {
  Tokens leaves, others;
};
// clang-format off
const std::map<std::string, Forms> kForms = {
    {"<n>", {{"a", "b", ".5", ".25", "z( )", "pi( )", "N( )"},
             {"( <n> )", "- .125", "<n> + <n>", "<n> - <n>", "<n> * <n>", "<n> / <n>", "<n> % <n>", "<n> * <n>",
              "g( <n> )", "t( <n> , <s> )", "t( <n> , <s> , <s> , <s> )", "o( <n> , <d> )", "o( <n> , <d> , <n> )",
              "p( <n> )", "p( DISTINCT <n> )", "q( DISTINCT a )", "q( DISTINCT b )", "r( * )", "r( <n> )",
              "u( a )", "u( <n> )", "v( <n> , <s> , <d> )", "w( k )", "w( K )", "z( <n> )",
              "o( <n> , <d> , <n> , <n> )", "p( DISTINCT u( a ) )", "p( DISTINCT u( <n> ) )"}}},
    {"<d>", {{"d", "e"}, {"( <d> )", "<d> + <n>", "<d> - <n>", "<d> + <n> DAY", "<d> - <n> HOURS",
                          "<d> + <n> MONTH", "<d> - <n> minutes"}}},
    {"<s>", {{"s", "'x'"}, {"( <s> )", "<s> || <s>", "<s> || <s>"}}},
};
const Tokens kAlphabet = {
    "a", "b", "c", "d", "e", "s", "m", "k", "K", "x", ".5", "'x'", "+", "-", "*", "/", "%", "||", "(", ")", ",",
    "AND", "DAY", "Second", "YEAR", "DISTINCT", "ALL", "z(", "g(", "t(", "o(", "p(", "q(", "r(", "u(", "v(", "w(", "N(",
    "R(", "y(", ";", "|", "<", "pi("};
// clang-format on

void Append(Random &random, const std::string &symbol, int depth, Tokens &out) {
  const auto forms = kForms.find(symbol);
  if (forms == kForms.end()) return out.push_back(symbol);
  const bool leaf = depth <= 0 || random() % 2 == 0;
  std::istringstream form(Pick(random, leaf ? forms->second.leaves : forms->second.others));
  for (std::string part; form >> part;) Append(random, part, depth - 1, out);
}

Tokens Sentence(Random &random) {
  Tokens tokens;
  const std::string type = Pick(random, {"<n>", "<d>", "<s>"});
  Append(random, type, 5, tokens);
  const std::string joint = Pick(random, {"", "", "AND", ","});
  for (int i = 0; !joint.empty() && i < (joint == "," ? 2 : 1); ++i) {
    tokens.push_back(joint);
    Append(random, type, 4, tokens);
  }
  return tokens;
}

// A sentence with one token replaced, dropped or put in.
Tokens DamagedSentence(Random &random) {
  Tokens tokens = Sentence(random);
  const auto place = tokens.begin() + static_cast<int>(random() % tokens.size());
  const auto damage = random() % 3;
  if (damage == 0) *place = Pick(random, kAlphabet);
  if (damage == 1) tokens.erase(place);
  if (damage == 2) tokens.insert(place, Pick(random, kAlphabet));
  return tokens;
}

Tokens Soup(Random &random) {
  Tokens tokens(1 + random() % 7);
  for (std::string &token : tokens) token = Pick(random, kAlphabet);
  return tokens;
}

// A random language, for the reference and the engine: feature flags and operator callbacks. A
// routine that is not found is not a callback.
OwnedContext RandomContext(Random &random, Language &language) {
  const OrlLookupProc lookup = [](const char *name) {
    return std::strcmp(name, "known") == 0 ? Address(&HostValue) : nullptr;
  };
  language = {static_cast<uint16_t>(random() & 254), {}, {}, {}};
  if (random() % 2 == 0) language.flags |= ORL_FLAG_RANGES | ORL_FLAG_MODIFIERS;
  OwnedContext context(ORLCreateEC(nullptr, lookup, nullptr, language.flags));
  EC ec = context.get();
  language.items = {{"a", {0, 1}}, {"b", {0, 1}}, {"c", {0, 2}},   {"d", {1, 0}},  {"e", {1, 0}},
                    {"s", {2, 0}}, {"m", {3, 0}}, {"k", {300, 0}}, {"K", {301, 0}}};
  for (const auto &[name, item] : language.items) {
    item.type > 255 ? AddKeyword(ec, name.c_str(), item.type, 0, 1)
                    : AddInput(ec, name.c_str(), item.type, item.subClass);
  }
  const std::vector<FunctionRow> functions = {
      {"z", 0, {}, 0, 0, 0, nullptr},
      {"pi", 0, {}, 0, 0, 0, nullptr},
      {"g", 0, {{0, 0, 0}}, 0, 0, 8 | 4, nullptr},
      {"t", 0, {{0, 0, 0}, {0, 2, 0}}, 1, 0, 0, nullptr},
      {"o", 0, {{0, 0, 0}, {0, 1, 0}, {0, 0, 0}}, 2, 1, 0, nullptr},
      {"p", 0, {{0, 0, 0}}, 0, 1, 1, nullptr},
      {"q", 0, {{1, 0, 1}}, 0, 0, 16, nullptr},
      {"r", 0, {{1, 5, 0}}, 0, 0, 8 | 2, nullptr},
      {"u", 0, {{1, 0, 1}}, 0, 0, 8, nullptr},
      {"v", 0, {{0, 0, 0}}, 1, 2, 0, nullptr},  // takes more than its parameters declare
      {"w", 0, {{1, 300, 1}}, 0, 1, 4 | 1, nullptr},
  };
  for (const FunctionRow &row : functions) {
    language.functions[row.name] = row;
    AddFunction(ec, row);
  }
  EXPECT_EQ(Outcome(Parse(ec, ".5", "N")), "type 0");
  Parse(ec, "a AND b", "R");
  for (int16_t i = 0; i < 20; ++i) {
    const auto code = static_cast<int16_t>(i / 4), type = static_cast<int16_t>(i % 4);
    EXPECT_EQ(ORLSetOperatorCallback(ec, code, type, "unknown"), 1);
    if (random() % 4 != 0) continue;
    language.callbacks.insert({code, type});
    EXPECT_EQ(ORLSetOperatorCallback(ec, code, type, "known"), 1);
  }
  return context;
}

// Every node's parent and siblings must agree with its place.
void ExpectLinked(const ExprNode *root) {
  EXPECT_EQ(NodeParent(root), nullptr);
  for (const ExprNode *node = root; node != nullptr; node = ExprNodeNext(root, node)) {
    uint32_t count = 0;
    for (ExprNode *child = FirstChild(node); child != nullptr; child = NextSibling(child)) {
      EXPECT_EQ(NodeParent(child), node);
      EXPECT_EQ(ChildAt(node, count), child);
      EXPECT_EQ(IsFirstChild(child), count == 0);
      ++count;
    }
    EXPECT_EQ(ChildCount(node), count);
    EXPECT_EQ(ChildAt(node, count), nullptr);
    if (!HasOperands(NodeKindOf(node))) continue;
    EXPECT_EQ(LeftOperand(node), FirstChild(node));
    EXPECT_EQ(RightOperand(node), NextSibling(LeftOperand(node)));
  }
}

// Compares on `rounds` texts in each of 200 random languages; returns how many were accepted.
int Compare(uint32_t seed, int rounds, Tokens (*make)(Random &)) {
  Random random(seed);
  Language language;
  OwnedContext context;
  int accepted = 0;
  for (int i = 0; i < 200 * rounds && !testing::Test::HasFailure(); ++i) {
    if (i % rounds == 0) context = RandomContext(random, language);
    std::string text;
    for (const std::string &token : make(random)) text += (text.empty() ? "" : "\t") + token;
    const std::string expected = ReferenceParse(language, text);
    const Parsed parsed = Parse(context.get(), text);
    std::string outcome = Outcome(parsed);
    if (parsed.exp != nullptr) {
      ++accepted;
      outcome = TreeText(parsed.exp->tree);
      ExpectLinked(parsed.exp->tree);
      EXPECT_EQ(ORLDestroyEXP(context.get(), parsed.exp), 1);
    } else if (expected == "109") {
      outcome.resize(3);  // the place of most syntax errors is not compared
    }
    EXPECT_EQ(outcome, expected) << "flags " << language.flags << ", text: " << text;
  }
  return accepted;
}

TEST(ParserAgainstReference, Agrees) {
  EXPECT_GT(Compare(1, 60, &Sentence), 2000);
  EXPECT_GT(Compare(2, 60, &DamagedSentence), 300);
  EXPECT_GT(Compare(3, 150, &Soup), 200);
}

}  // namespace
