// Random sentences, sound and damaged, and random strings of tokens: the engine and the reference
// parser must agree on the tree with all its types and spans, or on the error.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "engine/expressions.h"
#include "language/parser_reference.h"
#include "support/context.h"
#include "support/tree_text.h"

namespace {

using Tokens = std::vector<std::string>;
using Random = std::mt19937;

int Below(Random &random, size_t bound) {
  return static_cast<int>(random() % bound);
}

const std::string &Pick(Random &random, const Tokens &choices) {
  return choices[static_cast<size_t>(Below(random, choices.size()))];
}

const Tokens kItems[] = {{"a", "b", ".5", ".25", "z(", "pi("}, {"d", "e"}, {"s", "'x'"}};

void AppendSentence(Random &random, int type, int depth, Tokens &out);

// A call that gives a Number.
void AppendCall(Random &random, int depth, Tokens &out) {
  const std::string name = Pick(random, {"g(", "t(", "o(", "p(", "q(", "r(", "N("});
  out.push_back(name);
  if (name == "q(" || (name == "p(" && Below(random, 2) == 0)) out.push_back("DISTINCT");
  if (name == "r(" && Below(random, 2) == 0) {
    out.push_back("*");
  } else if (name == "q(") {
    out.push_back(Pick(random, {"a", "a", "b"}));
  } else if (name != "N(") {
    AppendSentence(random, 0, depth - 1, out);
  }
  const int more = name == "t(" ? 1 + Below(random, 3) : name == "o(" ? 1 + Below(random, 2) : 0;
  for (int i = 0; i < more; ++i) {
    out.push_back(",");
    AppendSentence(random, name == "t(" ? 2 : 1 - i, depth - 1, out);
  }
  out.push_back(")");
}

// A sentence of type Number, Date or String: mostly one that passes the type rules.
void AppendSentence(Random &random, int type, int depth, Tokens &out) {
  const int form = depth <= 0 ? 0 : Below(random, 8);
  if (form == 0 || (type != 0 && form == 7)) {
    out.push_back(Pick(random, kItems[type]));
    if (out.back().back() == '(') out.push_back(")");
  } else if (form == 1) {
    out.push_back("(");
    AppendSentence(random, type, depth - 1, out);
    out.push_back(")");
  } else if (form == 7) {
    AppendCall(random, depth, out);
  } else if (type == 0 && form == 2) {
    out.push_back("-");
    out.push_back(".125");
  } else if (type == 1) {
    AppendSentence(random, 1, depth - 1, out);
    out.push_back(Pick(random, {"+", "-"}));
    AppendSentence(random, 0, depth - 2, out);
    if (Below(random, 2) == 0) out.push_back(Pick(random, {"DAY", "MONTH", "HOURS", "minutes"}));
  } else {
    AppendSentence(random, type, depth - 1, out);
    out.push_back(type == 2 ? "||" : Pick(random, {"+", "-", "*", "/", "%", "+", "*"}));
    AppendSentence(random, type, depth - 1, out);
  }
}

const Tokens kAlphabet = {"a",  "b",   "c",   "d",      "e",        "s",   "m",  "k",  "K",  "x",
                          ".5", "'x'", "+",   "-",      "*",        "/",   "%",  "||", "(",  ")",
                          ",",  "AND", "DAY", "Second", "DISTINCT", "ALL", "z(", "g(", "t(", "o(",
                          "p(", "q(",  "r(",  "N(",     "R(",       "y(",  ";",  "|",  "<",  "pi("};

ReferenceContext Language(uint16_t flags) {
  ReferenceContext language = {};
  language.flags = flags;
  language.items = {{"a", 0}, {"b", 0}, {"c", 0},   {"d", 1},  {"e", 1},
                    {"s", 2}, {"m", 3}, {"k", 300}, {"K", 301}};
  language.subClasses = {{"a", 1}, {"b", 1}, {"c", 2}, {"d", 0}, {"e", 0}, {"s", 0}, {"m", 0}};
  language.functions = {
      {"z", {0, {}, 0, 0, 0, false, 0}},     {"g", {0, {0}, 0, 0, 8 | 4, false, 0}},
      {"t", {0, {0, 2}, 1, 0, 0, false, 0}}, {"o", {0, {0, 1, 0}, 2, 1, 0, false, 0}},
      {"p", {0, {0}, 0, 1, 1, false, 0}},    {"q", {0, {0}, 0, 0, 16, true, 1}},
      {"r", {0, {5}, 0, 0, 8 | 2, true, 0}}, {"pi", {0, {}, 0, 0, 0, false, 0}},
  };
  language.formulas = {{"N", 0}, {"R", -1}};
  return language;
}

// The engine's context for the same language.
OwnedContext EngineContext(const ReferenceContext &language) {
  OwnedContext context(ORLCreateEC(
      nullptr, [](const char *) { return Address(&HostValue); }, nullptr, language.flags));
  EC ec = context.get();
  for (const auto &[name, type] : language.items) {
    const auto subClass = language.subClasses.find(name);
    if (subClass == language.subClasses.end()) {
      AddKeyword(ec, name.c_str(), static_cast<int16_t>(type), 0, 1);
    } else {
      AddInput(ec, name.c_str(), static_cast<int16_t>(type),
               static_cast<uint16_t>(subClass->second));
    }
  }
  for (const auto &[name, function] : language.functions) {
    FunctionRow row = {name.c_str(), static_cast<int16_t>(function.type), {}, 0, 0, 0, nullptr};
    for (const int type : function.parameters) {
      row.parameters.push_back({static_cast<uint16_t>(function.byName ? 1 : 0),
                                static_cast<uint16_t>(type),
                                static_cast<uint16_t>(function.subClass)});
    }
    row.firstOptional = static_cast<uint16_t>(function.firstOptional);
    row.optionalCount = static_cast<uint16_t>(function.optionalCount);
    row.itemFlags = static_cast<uint16_t>(function.flags);
    AddFunction(ec, row);
  }
  EXPECT_EQ(Outcome(Parse(ec, ".5", "N")), "type 0");
  if ((language.flags & ORL_FLAG_RANGES) != 0) {
    EXPECT_EQ(Outcome(Parse(ec, "a AND b", "R")), "type 0");
  }
  return context;
}

// A random language: feature flags and operator callbacks.
ReferenceContext RandomLanguage(Random &random) {
  ReferenceContext language = Language(static_cast<uint16_t>(random() & 254));
  if (Below(random, 2) == 0) language.flags |= ORL_FLAG_RANGES | ORL_FLAG_MODIFIERS;
  if ((language.flags & ORL_FLAG_RANGES) == 0) language.formulas.erase("R");
  for (const char *op : {"+", "-", "/", "*", "||"}) {
    for (int type = 0; type <= 3; ++type) {
      if (Below(random, 4) == 0) language.callbacks.insert({op, type});
    }
  }
  return language;
}

void SetCallbacks(EC ec, const ReferenceContext &language) {
  const Tokens codes = {"+", "-", "/", "*", "||"};
  for (const auto &[op, type] : language.callbacks) {
    for (int16_t code = 0; code < 5; ++code) {
      if (codes[static_cast<size_t>(code)] != op) continue;
      EXPECT_EQ(ORLSetOperatorCallback(ec, code, static_cast<int16_t>(type), "routine"), 1);
    }
  }
}

// What the engine says, in the reference's words. `expected` tells what is not to be compared: the
// place of a syntax error, and the message where a failure has none of its own.
std::string EngineOutcome(EC ec, const std::string &text, const std::string &expected) {
  const Parsed parsed = Parse(ec, text);
  if (parsed.exp != nullptr) {
    std::string tree = TreeText(parsed.exp->tree);
    EXPECT_EQ(ORLDestroyEXP(ec, parsed.exp), 1);
    return tree;
  }
  std::string outcome = Outcome(parsed);
  if (expected == "109") return outcome.substr(0, outcome.find('@'));
  if (expected.compare(0, 2, "0@") == 0) return "0" + outcome.substr(outcome.find('@'));
  return outcome;
}

struct Counts {
  int accepted, rejected;
};

// Compares on `rounds` texts in each of `languages` random languages; stops at a few disagreements.
Counts Compare(uint32_t seed, int languages, int rounds, Tokens (*make)(Random &)) {
  Random random(seed);
  Counts counts = {};
  for (int i = 0; i < languages; ++i) {
    const ReferenceContext language = RandomLanguage(random);
    const OwnedContext context = EngineContext(language);
    SetCallbacks(context.get(), language);
    for (int round = 0; round < rounds && !testing::Test::HasFailure(); ++round) {
      const Tokens tokens = make(random);
      const std::string text = JoinTokens(tokens);
      const std::string expected = ReferenceParse(language, tokens);
      EXPECT_EQ(EngineOutcome(context.get(), text, expected), expected)
          << "flags " << language.flags << ", text: " << text;
      (isdigit(static_cast<unsigned char>(expected[0])) != 0 &&
               expected.find('[') == std::string::npos
           ? counts.rejected
           : counts.accepted) += 1;
    }
  }
  return counts;
}

Tokens Sentence(Random &random) {
  Tokens tokens;
  const int type = Below(random, 3);
  AppendSentence(random, type, 5, tokens);
  const std::string joint = Pick(random, {"", "", "AND", ","});
  for (int i = 0; !joint.empty() && i < (joint == "," ? 2 : 1); ++i) {
    tokens.push_back(joint);
    AppendSentence(random, type, 3, tokens);
  }
  return tokens;
}

// A sentence with one token replaced, dropped or put in.
Tokens DamagedSentence(Random &random) {
  Tokens tokens = Sentence(random);
  const auto place = tokens.begin() + Below(random, tokens.size());
  switch (Below(random, 3)) {
    case 0:
      *place = Pick(random, kAlphabet);
      break;
    case 1:
      tokens.erase(place);
      break;
    default:
      tokens.insert(place, Pick(random, kAlphabet));
  }
  return tokens;
}

Tokens Soup(Random &random) {
  Tokens tokens;
  for (int length = 1 + Below(random, 7); length > 0; --length) {
    tokens.push_back(Pick(random, kAlphabet));
  }
  return tokens;
}

TEST(ParserAgainstReference, Sentences) {
  const Counts counts = Compare(1, 200, 60, &Sentence);
  EXPECT_GT(counts.accepted, 2000);
}

TEST(ParserAgainstReference, DamagedSentences) {
  const Counts counts = Compare(2, 200, 60, &DamagedSentence);
  EXPECT_GT(counts.accepted, 300);
  EXPECT_GT(counts.rejected, 2000);
}

TEST(ParserAgainstReference, Soups) {
  const Counts counts = Compare(3, 200, 150, &Soup);
  EXPECT_GT(counts.accepted, 200);
  EXPECT_GT(counts.rejected, 10000);
}

}  // namespace
