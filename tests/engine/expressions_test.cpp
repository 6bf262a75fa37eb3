// Stored expressions: names, ordinals, texts, replacement, clones, destruction.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/context.h"

namespace {

constexpr uint16_t kRanges = ORL_FLAG_RANGES;

TEST(Expressions, CopiedTextsAreCutAndTerminated) {
  const OwnedContext context = StandardContext(0);
  EC ec = context.get();
  const Parsed parsed = Parse(ec, "Amount + 1", "NameOf_ten");
  struct Row {
    int32_t size, result;
    const char *copy;
  };
  for (const Row &row : {Row{11, 10, "Amount + 1"}, Row{100, 10, "Amount + 1"},
                         Row{10, 10, "Amount + "}, Row{5, 5, "Amou"}, Row{1, 1, ""}}) {
    char buffer[101];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(ORLGetExpressionText(ec, parsed.exp, row.size, buffer), row.result) << row.size;
    EXPECT_STREQ(buffer, row.copy) << row.size;
    EXPECT_EQ(buffer[row.size], '#') << row.size;
    EXPECT_EQ(ORLGetExpressionName(ec, parsed.exp, row.size, buffer), row.result) << row.size;
    EXPECT_STREQ(buffer, std::string("NameOf_ten").substr(0, std::strlen(row.copy)).c_str());
  }
  EXPECT_EQ(ORLGetExpressionTextLength(ec, parsed.exp), 10);
  EXPECT_EQ(ORLGetExpressionTextLength(ec, nullptr), 0);
  EXPECT_EQ(ORLGetExpressionNameLength(ec, parsed.exp), 10);
}

TEST(Expressions, GeneratedNames) {
  const OwnedContext context = StandardContext(kRanges);
  EC ec = context.get();
  AddFunction(ec, {"Formula2", 0, {}, 0, 0, 0, nullptr});
  EXPECT_EQ(Parse(ec, "1 +").exp, nullptr);  // wastes no number
  EXPECT_EQ(NameOf(ec, Parse(ec, "1").exp), "Formula1");
  EXPECT_EQ(NameOf(ec, Parse(ec, "1", "Formula3").exp), "Formula3");
  EXPECT_EQ(NameOf(ec, Parse(ec, "1", "").exp), "Formula4");
  EXPECT_EQ(NameOf(ec, Parse(ec, "1, 2").exp), "Set1");
  EXPECT_EQ(NameOf(ec, Parse(ec, "Amount AND Tax").exp), "Range1");
  EXPECT_EQ(NameOf(ec, Parse(ec, "Amount AND Tax").exp), "Range2");
  // The counter stays at the last number found, so a freed one below it is not taken again.
  EXPECT_EQ(ORLDestroyEXP(ec, ORLHEXPFromName(ec, "Formula1")), 1);
  EXPECT_EQ(NameOf(ec, Parse(ec, "1").exp), "Formula5");
  EXPECT_EQ(ORLDestroyEXP(ec, ORLHEXPFromName(ec, "Formula5")), 1);
  EXPECT_EQ(NameOf(ec, Parse(ec, "1").exp), "Formula5");
}

TEST(Expressions, WhichNamesCountAsGenerated) {
  const OwnedContext context = StandardContext(0);
  struct Row {
    const char *name;
    int32_t generated;
  };
  for (const Row &row :
       {Row{"Formula", 1}, Row{"Formula1", 1}, Row{"Formula007", 1}, Row{"Formula1a", 0},
        Row{"Range1", 0}, Row{"formula1", 0}, Row{"Formul", 0}, Row{"Formula_1", 0}}) {
    const Parsed parsed = Parse(context.get(), "1", row.name);
    EXPECT_EQ(ORLIsExpNameGenerated(context.get(), parsed.exp), row.generated) << row.name;
  }
}

TEST(Expressions, LookupsAndOrdinals) {
  const OwnedContext context = StandardContext(0);
  EC ec = context.get();
  const OwnedContext other = StandardContext(0);
  HEXP stranger = Parse(other.get(), "1").exp;
  EXPECT_EQ(ORLGetExpressionOrdinal(ec, stranger), -1);
  EXPECT_EQ(ORLHEXPFromName(ec, "A"), nullptr);
  HEXP a = Parse(ec, "1", "A").exp;
  HEXP b = Parse(ec, "2", "B").exp;
  HEXP again = Parse(ec, "3", "A").exp;  // ORLParseString does not compare names
  EXPECT_EQ(ORLGetExpressionCount(ec), 3);
  EXPECT_EQ(ORLHEXPFromName(ec, "A"), a);
  EXPECT_EQ(ORLHEXPFromName(ec, "a"), nullptr);
  EXPECT_EQ(ORLHEXPFromName(ec, "Amount"), nullptr);
  EXPECT_EQ(ORLHEXPFromOrdinal(ec, 1), b);
  EXPECT_EQ(ORLHEXPFromOrdinal(ec, 65537), b);  // an ordinal has 16 bits
  for (int32_t ordinal : {-1, 3, 65535}) EXPECT_EQ(ORLHEXPFromOrdinal(ec, ordinal), nullptr);
  EXPECT_EQ(ORLGetExpressionOrdinal(ec, again), 2);
  EXPECT_EQ(ORLGetExpressionOrdinal(ec, nullptr), -1);
  EXPECT_EQ(ORLGetExpressionOrdinal(ec, stranger), -1);
  EXPECT_EQ(ORLDestroyEXP(ec, stranger), 0);
  EXPECT_EQ(ORLDestroyEXP(ec, a), 1);
  EXPECT_EQ(ORLHEXPFromName(ec, "A"), again);
  EXPECT_EQ(ORLGetExpressionOrdinal(ec, again), 1);
  EXPECT_EQ(ORLDestroyEXP(ec, nullptr), 1);
  EXPECT_EQ(ORLDestroyEXP(ec, again), 1);
  EXPECT_EQ(ORLDestroyEXP(ec, b), 1);
  EXPECT_EQ(ORLGetExpressionCount(ec), 0);
  EXPECT_NE(Parse(ec, "1").exp, nullptr);
}

TEST(Expressions, Enumeration) {
  const OwnedContext context = StandardContext(0);
  EC ec = context.get();
  static std::vector<int32_t> seen;
  const auto five = [](EC, HEXP, int32_t ordinal) {
    seen.push_back(ordinal);
    return 5;
  };
  const auto stopAtOne = [](EC, HEXP, int32_t ordinal) {
    seen.push_back(ordinal);
    return ordinal == 1 ? 0 : 9;
  };
  seen.clear();
  EXPECT_EQ(ORLEnumExpressions(ec, five), 0);
  EXPECT_EQ(ORLEnumExpressions(nullptr, five), 0);
  for (const char *text : {"1", "2", "3"}) Parse(ec, text);
  EXPECT_EQ(ORLEnumExpressions(ec, five), 5);
  EXPECT_EQ(ORLEnumExpressions(ec, stopAtOne), 0);
  EXPECT_EQ(seen, (std::vector<int32_t>{0, 1, 2, 0, 1}));
}

TEST(Expressions, UniqueNames) {
  const OwnedContext context = StandardContext(0);
  EC ec = context.get();
  HEXP a = Parse(ec, "1", "A").exp;
  HEXP b = Parse(ec, "1", "B").exp;
  struct Row {
    HEXP exp;
    const char *name;
    int32_t unique;
  };
  for (const Row &row :
       {Row{a, "A", 1}, Row{nullptr, "A", 0}, Row{b, "A", 0}, Row{b, "a", 1},
        Row{nullptr, "Half", 0}, Row{nullptr, "Amount", 1}, Row{nullptr, "Red", 1}}) {
    EXPECT_EQ(ORLIsExpNameUnique(ec, row.exp, row.name), row.unique) << row.name;
  }
}

TEST(Expressions, Classes) {
  const OwnedContext context = StandardContext(kRanges);
  EC ec = context.get();
  struct Row {
    const char *text;
    int32_t set, range, simple, simpleInput, subClass;
    uint16_t type;
  };
  const Row rows[] = {
      {"1, 2", 1, 0, 0, 0, -1, 0},       {"Amount AND Tax", 0, 1, 0, 0, -1, 0},
      {"-1", 0, 0, 1, 0, -1, 0},         {"('a')", 0, 0, 1, 0, -1, 2},
      {"2012-01-31", 0, 0, 1, 0, -1, 1}, {"Tax", 0, 0, 0, 1, 8, 0},
      {"(Name)", 0, 0, 0, 1, 0, 2},      {"Tax + 1", 0, 0, 0, 0, -1, 0},
      {"Zero()", 0, 0, 0, 0, -1, 0},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.text);
    HEXP exp = Parse(ec, row.text).exp;
    ASSERT_NE(exp, nullptr);
    EXPECT_EQ(ORLIsExpRange(ec, exp, 1), row.set);
    EXPECT_EQ(ORLIsExpRange(ec, exp, 2), row.range);
    EXPECT_EQ(ORLIsExpRange(ec, exp, 0), 0);
    EXPECT_EQ(ORLIsExpressionSimple(ec, exp), row.simple);
    EXPECT_EQ(ORLIsExpressionSimpleInput(ec, exp), row.simpleInput);
    EXPECT_EQ(ORLGetSimpleInputSubClass(ec, exp), row.subClass);
    EXPECT_EQ(ORLGetExpressionDataType(ec, exp), row.type);
  }
  HEXP tax = Parse(ec, "Tax").exp;
  ORLDelExpItemNoCheck(ec, ORL_INPUT, "Tax");
  EXPECT_EQ(ORLGetSimpleInputSubClass(ec, tax), -1);
  EXPECT_EQ(ORLIsExpressionSimpleInput(ec, tax), 1);
  EXPECT_EQ(ORLIsExpRange(ec, nullptr, 1), 0);
  EXPECT_EQ(ORLIsExpressionSimple(ec, nullptr), 0);
  EXPECT_EQ(ORLIsExpressionSimpleInput(ec, nullptr), 0);
  EXPECT_EQ(ORLGetSimpleInputSubClass(ec, nullptr), -1);
  EXPECT_EQ(ORLGetExpressionDataType(ec, nullptr), 65535);
}

// ---- Storing with the full set of checks ----

std::vector<std::string> renamed;

OwnedContext RenameContext() {
  renamed.clear();
  OwnedContext context(ORLCreateEC(
      nullptr, nullptr,
      [](EC, const char *oldName, const char *newName) {
        renamed.push_back(std::string(oldName) + ">" + newName);
        return 1;
      },
      kRanges));
  AddFunction(context.get(), {"Half", 0, {{0, 0, 0}}, 0, 0, 0, nullptr});
  AddInput(context.get(), "Amount", 0);
  return context;
}

// Formulas F = 1, G = F() + 1, H = 'x'; each row stores a text over one of them or as a new one.
TEST(StoreFormula, Checks) {
  struct Row {
    const char *over, *text, *name, *outcome, *renamed;
  };
  const Row rows[] = {
      {"", "Amount", "New", "type 0", ""},
      {"", "Amount", "F", "126@0+6", ""},
      {"", "Amount + 1", "Half", "126@0+10", ""},
      {"", "Amount", "ab c", "107@0+6", ""},
      {"", "Amount", "DAY", "107@0+6", ""},
      {"", "", "New", "109@0+1", ""},
      {"", "Amount", nullptr, "type 0", ""},
      {"", "New()", "New", "103@0+4", ""},
      {"F", "Amount * 2", "F", "type 0", ""},
      {"F", "Amount * 2", "F2", "type 0", "F>F2"},
      {"F", "'abc'", "F", "127@0+5", ""},
      {"F", "'abc'", "F2", "type 2", "F>F2"},  // the test of use is on the new name
      {"F", "1, 2", "F", "type 0", ""},
      {"F", "Amount", "G", "126@0+6", ""},
      {"F", "F() + 1", "F", "125@0+2", ""},
      {"F", "2 * G()", "F", "125@4+2", ""},
      {"F", "Half(1), G()", "F", "125@9+2", ""},
      {"F", "Amount AND Half(G())", "F", "125@16+2", ""},
      {"F", "F() + 1", "F2", "type 0", "F>F2"},
      {"F", "Amount +", "F", "109@8+1", ""},
      {"G", "'abc'", "G", "type 2", ""},
      {"H", "G()", "H", "type 0", ""},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(std::string(row.over) + " = " + row.text);
    const OwnedContext context = RenameContext();
    EC ec = context.get();
    ASSERT_NE(Parse(ec, "1", "F").exp, nullptr);
    ASSERT_NE(Parse(ec, "F() + 1", "G").exp, nullptr);
    ASSERT_NE(Parse(ec, "'x'", "H").exp, nullptr);
    HEXP over = ORLHEXPFromName(ec, row.over);
    const std::string before = Snapshot(ec);
    const Parsed stored = Store(ec, over, row.text, row.name);
    EXPECT_EQ(Outcome(stored), row.outcome);
    EXPECT_EQ(renamed, *row.renamed == '\0' ? std::vector<std::string>{}
                                            : std::vector<std::string>{row.renamed});
    uint16_t type = 0;
    if (stored.exp == nullptr) {
      EXPECT_EQ(Snapshot(ec), before);
      // Without an error record the failure is the same.
      EXPECT_EQ(ORLParseFormula(ec, over, row.text, row.name, nullptr, &type), nullptr);
      EXPECT_EQ(Snapshot(ec), before);
      continue;
    }
    if (over != nullptr) {
      EXPECT_EQ(stored.exp, over);
    }
    EXPECT_EQ(ORLGetExpressionCount(ec), over == nullptr ? 4 : 3);
    EXPECT_EQ(TextOf(ec, stored.exp), row.text);
    EXPECT_EQ(NameOf(ec, stored.exp), row.name == nullptr ? "Formula1" : row.name);
    EXPECT_EQ(ORLHEXPFromName(ec, NameOf(ec, stored.exp).c_str()), stored.exp);
    EXPECT_EQ(ORLGetExpressionDataType(ec, stored.exp), stored.type);
  }
}

TEST(Expressions, Clones) {
  const OwnedContext context = StandardContext(0);
  EC ec = context.get();
  HEXP a = Parse(ec, "Amount + 1", "A").exp;
  struct Row {
    const char *newName, *name;
  };
  for (const Row &row : {Row{"B", "B"}, Row{"B", "Formula1"}, Row{"Half", "Formula2"},
                         Row{"", "Formula3"}, Row{nullptr, "Formula4"}}) {
    uint16_t type = 77;
    HEXP clone = ORLCloneExpression(ec, a, row.newName, &type);
    ASSERT_NE(clone, nullptr) << row.name;
    EXPECT_EQ(NameOf(ec, clone), row.name);
    EXPECT_EQ(TextOf(ec, clone), "Amount + 1");
    EXPECT_EQ(type, 0);
    EXPECT_EQ(ORLGetExpressionOrdinal(ec, clone), ORLGetExpressionCount(ec) - 1);
  }
  uint16_t type = 0;
  EXPECT_EQ(ORLCloneExpression(ec, a, "ab c", &type), nullptr);
  ORLDelExpItemNoCheck(ec, ORL_INPUT, "Amount");
  EXPECT_EQ(ORLCloneExpression(ec, a, "Z", &type), nullptr);
  EXPECT_EQ(ORLCloneExpression(ec, nullptr, "Z", &type), nullptr);
  EXPECT_EQ(ORLGetExpressionCount(ec), 6);
}

TEST(Expressions, DestroyIsRefusedWhileReferredTo) {
  const OwnedContext context = StandardContext(0);
  EC ec = context.get();
  HEXP a = Parse(ec, "1", "A").exp;
  HEXP b = Parse(ec, "Half(A()) + 1", "B").exp;
  HEXP c = Parse(ec, "B() * B()", "C").exp;
  const std::string before = Snapshot(ec);
  EXPECT_EQ(ORLDestroyEXP(ec, a), 0);
  EXPECT_EQ(ORLDestroyEXP(ec, b), 0);
  EXPECT_EQ(Snapshot(ec), before);
  EXPECT_EQ(ORLDestroyEXP(ec, c), 1);
  EXPECT_EQ(ORLDestroyEXP(ec, a), 0);
  EXPECT_EQ(Outcome(Store(ec, b, "2", "B")), "type 0");  // B no longer refers to A
  EXPECT_EQ(ORLDestroyEXP(ec, a), 1);
  EXPECT_EQ(ORLGetExpressionCount(ec), 1);
}

}  // namespace
