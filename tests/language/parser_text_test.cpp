// What the parse entries make of a text: its type or its tree, or the message and the faulty bytes.
#include <gtest/gtest.h>

#include <map>

#include "engine/expressions.h"
#include "support/context.h"
#include "support/tree_text.h"

namespace {

constexpr uint16_t kRanges = ORL_FLAG_RANGES;
constexpr uint16_t kWords = ORL_FLAG_MODIFIERS;

struct TextRow {
  uint16_t flags;
  std::string text;
  const char *outcome;
};

// Parses each row in a standard context with two formulas more: Total, a Number, and Low, a range
// where the flags allow one. An outcome with a bracket is a tree.
void ExpectOutcomes(const std::vector<TextRow> &rows) {
  for (const auto &[flags, text, outcome] : rows) {
    SCOPED_TRACE("flags " + std::to_string(flags) + ", text: " + text.substr(0, 200));
    const OwnedContext context = StandardContext(flags);
    EC ec = context.get();
    ASSERT_EQ(Outcome(Parse(ec, "Amount + 1", "Total")), "type 0");
    Parse(ec, "Amount AND Tax", "Low");
    const std::string before = Snapshot(ec);
    const Parsed parsed = Parse(ec, text);
    const bool tree = parsed.exp != nullptr && std::string(outcome).find('[') != std::string::npos;
    EXPECT_EQ(tree ? TreeText(parsed.exp->tree) : Outcome(parsed), outcome);
    if (parsed.exp == nullptr) {
      EXPECT_EQ(Snapshot(ec), before);
    }
  }
}

std::string Repeat(const char *piece, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += piece;
  return text;
}

// clang-format off
TEST(ParserTrees, Rows) {
  ExpectOutcomes({
      {0, "'it''s'", "~'it''s'[2 0+7]"},
      {0, "2012-01-31", "#2012-01-31#[1 0+10]"},
      {0, "1 + 2 * 30 - 4", "-[0 13+1](+[0 11+1](1[0 0+1] *[0 11+1](2[0 4+1] 30[0 8+2])) 4[0 13+1])"},
      {0, "@PI", "@PI[0 0+3]()"},
      {0, "Half  ( Amount )", "Half[0 0+7^15](Amount[0 8+6])"},
      {0, "KeyFn(net sales)", "KeyFn[2 0+6^15](net sales[300 6+9])"},
      {kRanges, "13/45/99", "/[0 6+2](/[0 5+1](13[0 0+2] 45[0 3+2]) 99[0 6+2])"},
      {kRanges, "1.5E-3 AND 2", "RANGE[0 0+0](0.0015[0 0+6] 2[0 11+1])"},
  });
}

// The place of a syntax error is told by the bytes that the scanner had taken by then.
TEST(ParserErrors, Syntax) {
  ExpectOutcomes({
      {0, "", "109@0+1"},
      {0, " ", "109@0+2"},
      {0, "1 + ", "109@3+2"},
      {0, "1 2 3", "109@4+1"},
      {0, "-Amount", "109@2+6"},
      {0, "Amount DAYS", "109@8+4"},
      {kRanges, "Amount AND (Tax)", "109@7+5"},  // AND before a parenthesis is a call's name
      // Where an operand is expected a bad byte has a message of its own.
      {0, "Amount +\r1", "110@8+1"},
      // Depth: 150 entries, one of them the start state.
      {0, Repeat("(", 147) + "1" + Repeat(")", 147), "type 0"},
      {0, Repeat("(", 148) + "1" + Repeat(")", 148), "122@149+1"},
      // Words beyond the scanner's buffer.
      {0, std::string(2100, 'a'), "112@2049+1"},
      {0, "1 + '" + std::string(2100, 'a') + "'", "112@2052+2"},
      {0, "(1) " + std::string(2100, 'a'), "112@2052+2"},
  });
}

TEST(ParserErrors, NamesAndTypes) {
  ExpectOutcomes({
      {kRanges, "Amount, Edge", "129@8+4"},
      {kRanges, "Net Sales, net sales", "type 300"},
      {0, "Net Sales", "129@0+1000"},
      {0, "Edge * Edge", "132@5+1"},
      {0, "@pi", "103@0+3"},
      {0, "Follow()", "117@0+7"},
      {0, "Case('x', 2, 'a')", "119@10+1"},
      {0, "Case(1, 2, 'a', 3)", "119@16+1"},
      {0, "Case(1, 2, 'a', 3, 'b')", "type 2"},
      {0, "Case(1, 2, 'a', 'x', 'b')", "118@16+3"},
      {kWords, "DistOpt(DISTINCT)", "type 0"},
      {0, "ItemK(Net Sales)", "type 0"},
      // A modifier stays pending for the calls among the arguments, until one of them takes it.
      {kWords, "Wrap(DISTINCT ItemD(Amount + 1))", "101@30+1"},
  });
}

TEST(ParserErrors, Dates) {
  ExpectOutcomes({
      {0, "13/45/99", "123@0+8"},
      {0, "2-1.5", "123@0+5"},
      {0, "12/31/1999-1", "123@0+12"},
      {kRanges, "10-5-2.5", "123@0+8"},
      {kRanges, "12ab", "123@0+4"},
      {kRanges, "13/45/99 + Nope", "123@0+8"},
      {kRanges, "Nope + 13/45/99", "102@0+4"},
      {kRanges, "12 Jan 99 10:30", "123@0+5"},
  });
}

TEST(ValidName, Rows) {
  const struct {
    std::string name;
    uint16_t flags;
    int32_t valid;
  } rows[] = {
      {"\"a b\"", 0, 1},
      {"DISTINCT", 0, 1},
      {"ALL", kWords, 0},
      {"DAY", 0, 0},
      {"DAY", ORL_FLAG_NO_DATE_UNITS, 1},
      {"", 0, 0},
      {"Red", 0, 0},
      {"Net Sales", 0, 0},
      {"(a)", 0, 0},
      {" a", 0, 0},
      {"a\t", 0, 0},
      {"f()", 0, 0},
      {std::string(3000, 'a'), 0, 0},
  };
  for (const auto &[name, flags, valid] : rows) {
    SCOPED_TRACE(name);
    const OwnedContext context = StandardContext(flags);
    FormulaError error = {};
    EXPECT_EQ(ORLValidName(context.get(), name.c_str(), &error), valid);
    const Parsed told = {nullptr, error, 0};
    EXPECT_EQ(Outcome(told), "108@0+" + std::to_string(name.size()));
    EXPECT_EQ(ORLValidName(context.get(), name.c_str(), nullptr), valid);
  }
  EXPECT_EQ(ORLValidName(nullptr, "DISTINCT", nullptr), 1);
  EXPECT_EQ(ORLValidName(nullptr, "DAYS", nullptr), 0);
}

TEST(InputNameIsKeyword, Rows) {
  const std::map<std::string, std::string> rows = {
      {"Day", "_Day"}, {"seconds", "_seconds"}, {"DAYSS", "DAYSS"}, {"\xC4""AY", "\xC4""AY"}, {"", ""}};
  for (const auto &[source, target] : rows) {
    char name[66] = "before";
    EXPECT_EQ(ORLInputNameIsKeyword(name, source.c_str()), source == target ? 0 : 1) << source;
    EXPECT_EQ(name, target);
  }
  char name[66] = "before";
  EXPECT_EQ(ORLInputNameIsKeyword(name, nullptr), 0);
  EXPECT_STREQ(name, "");
  EXPECT_EQ(ORLInputNameIsKeyword(nullptr, "Day") + ORLInputNameIsKeyword(nullptr, nullptr), 1);
}
// clang-format on

}  // namespace
