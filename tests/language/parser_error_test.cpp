// What the parse entries answer: the type of a good text, or the message and the faulty bytes.
#include <gtest/gtest.h>

#include <string>

#include "support/context.h"

namespace {

constexpr uint16_t kRanges = ORL_FLAG_RANGES;
constexpr uint16_t kWords = ORL_FLAG_MODIFIERS;

struct TextRow {
  uint16_t flags;
  std::string text;
  const char *outcome;
};

// Parses each row in a standard context with two formulas more: Total, a Number, and Low, a range
// where the flags allow one.
void ExpectOutcomes(const std::vector<TextRow> &rows) {
  for (const TextRow &row : rows) {
    SCOPED_TRACE("flags " + std::to_string(row.flags) + ", text: " + row.text.substr(0, 200));
    const OwnedContext context = StandardContext(row.flags);
    EC ec = context.get();
    ASSERT_EQ(Outcome(Parse(ec, "Amount + 1", "Total")), "type 0");
    Parse(ec, "Amount AND Tax", "Low");
    const std::string before = Snapshot(ec);
    const Parsed parsed = Parse(ec, row.text);
    EXPECT_EQ(Outcome(parsed), row.outcome);
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

// The place of a syntax error is told by the bytes that the scanner had taken by then.
TEST(ParserErrors, Syntax) {
  ExpectOutcomes({
      {0, "", "109@0+1"},
      {0, " ", "109@0+2"},
      {0, "1 +", "109@3+1"},
      {0, "1 + ", "109@3+2"},
      {0, "1 2 3", "109@4+1"},
      {0, "+1", "109@0+1"},
      {0, "-Amount", "109@2+6"},
      {0, "-(1)", "109@1+1"},
      {0, "1 - -2", "type 0"},
      {0, "- 5", "type 0"},
      {0, "Amount Tax", "109@8+3"},
      {0, "Amount ; Tax", "109@7+1"},
      {0, "Amount < Tax", "109@7+1"},
      {0, "Amount.", "109@7+1"},
      {0, "Amount DAYS", "109@8+4"},
      {0, "(Amount + Tax) DAYS", "109@16+4"},
      {kRanges, "Amount,", "109@7+1"},
      {kRanges, ",Amount", "109@0+1"},
      {kRanges, "(Amount, Tax)", "109@7+1"},
      {kRanges, "(Amount AND Tax)", "109@13+3"},
      {kRanges, "Amount AND Tax AND Tax", "109@20+3"},
      {kRanges, "Amount, Tax AND Tax", "109@17+3"},
      {kRanges, "Amount AND Tax, Tax", "109@14+1"},
      {kRanges, "Amount AND (Tax)", "109@7+5"},  // AND before a parenthesis is a call's name
      {0, "Count(*, Amount)", "109@7+1"},
      {0, "Half(Amount, *)", "109@13+1"},
      {0, "1 % 2", "109@2+1"},
      // Where an operand is expected a bad byte has a message of its own.
      {0, "Amount + ;", "110@9+1"},
      {0, "Amount +\r1", "110@8+1"},
      {0, "'abc", "110@0+1"},
      {0, "\"\"", "110@0+1"},
      {0, "1 | 2", "109@3+1"},
      // Depth: 150 entries, one of them the start state.
      {0, Repeat("(", 147) + "1" + Repeat(")", 147), "type 0"},
      {0, Repeat("(", 148) + "1" + Repeat(")", 148), "122@149+1"},
      {0, Repeat("1 + (", 49) + "1" + Repeat(")", 49), "type 0"},
      {0, Repeat("1 + (", 50) + "1" + Repeat(")", 50), "122@249+1"},
      {0, "1" + Repeat("+1", 5000), "type 0"},
      // Words beyond the scanner's buffer.
      {0, std::string(2100, 'a'), "112@2049+1"},
      {0, "1 + " + std::string(2100, 'a'), "112@2052+2"},
      {0, "1 + '" + std::string(2100, 'a') + "'", "112@2052+2"},
  });
}

TEST(ParserErrors, RangesAndSets) {
  ExpectOutcomes({
      {0, "Amount, Tax", "109@0+0"},
      {0, "Amount AND Tax", "109@0+0"},
      {kRanges, "Amount, Tax", "type 0"},
      {kRanges, "Amount AND Tax", "type 0"},
      {kRanges, "Amount AND Name", "135@11+4"},
      {kRanges, "Amount AND 'a' || 'b'", "135@18+3"},
      {kRanges, "Amount, Name", "134@8+4"},
      {kRanges, "Amount, Tax, Start", "134@13+5"},
      {kRanges, "Amount, Red", "129@8+3"},
      {kRanges, "Amount, Edge", "129@8+4"},
      {kRanges, "Red, Red", "type 301"},
      {kRanges, "Red AND Red", "type 301"},
      {kRanges, "Net Sales, Red", "129@11+3"},
      {kRanges, "Net Sales, net sales", "type 300"},
      {0, "Net Sales", "129@0+1000"},
      {0, "Red", "129@0+1000"},
      {0, "red", "102@0+3"},
      {0, "Net  Sales", "102@0+3"},
      // A number, AND and a number have the shape of a date.
      {0, "1 AND 2", "123@0+7"},
      {kRanges, "1 AND 2", "type 0"},
  });
}

TEST(ParserErrors, Operators) {
  constexpr uint16_t kPlus = ORL_FLAG_STRING_PLUS;
  constexpr uint16_t kPercent = ORL_FLAG_PERCENT;
  constexpr uint16_t kNoUnits = ORL_FLAG_NO_DATE_UNITS;
  ExpectOutcomes({
      {0, "1 + Name", "100@4+4"},
      {0, "1 + (Name || 'x')", "100@13+3"},
      {0, "2 * Start", "100@4+5"},
      {0, "1 + Red", "100@4+3"},
      {0, "Start + End", "100@8+3"},
      {0, "Start + Name", "100@8+4"},
      {0, "1 || 2", "111@2+2"},
      {kPercent, "1 % 2", "type 0"},
      {kPercent, "'a' % 'b'", "113@4+1"},
      {kPercent, "Start % 2", "114@6+1"},
      {0, "'a' + 'b'", "113@4+1"},
      {0, "'a' - 'b'", "113@4+1"},
      {kPlus, "'a' + 'b'", "type 2"},
      {kPlus, "'a' * 'b'", "113@4+1"},
      {kPlus, "'a' + 1 2", "115@6+1"},  // found before the stray 2
      {0, "'a' + 1 2", "113@4+1"},
      {0, "'a' || 'b'", "type 2"},
      {ORL_FLAG_NO_CONCAT, "'a' || 'b'", "113@4+2"},
      {0, "'a' || 1", "115@7+1"},
      {0, "Start * 2", "114@6+1"},
      {0, "Start || 'a'", "114@6+2"},
      {0, "Start - End", "type 0"},
      {0, "Start - 2", "type 1"},
      {0, "Start - Name", "128@8+4"},
      {ORL_FLAG_DATE_MINUS_STRING, "Start - Name", "type 0"},
      {ORL_FLAG_DATE_MINUS_STRING, "Start - Money", "128@8+5"},
      {kNoUnits, "Start + 2", "114@6+1"},
      {kNoUnits, "Start - End", "114@6+1"},
      {kNoUnits, "Start + 2 DAYS", "114@6+1"},
      {kNoUnits, "Amount + 2 DAYS", "109@12+4"},
      {0, "Red + 1", "132@4+1"},
      {0, "Money + 1", "132@6+1"},
      {0, "Edge * Edge", "132@5+1"},
      // Date units.
      {0, "Start + 2 DAYS", "type 1"},
      {0, "Start - Amount * 2 + 1 month", "type 1"},
      {0, "Start + 2 DAYS - 3 Seconds", "type 1"},
      {0, "1 + 2 DAYS", "129@6+4"},
      {0, "Start - End DAYS", "129@12+4"},
      {0, "Start + End DAYS", "100@8+3"},
      {0, "Name + 2 DAYS", "113@7+1"},  // the right operand, since the operator is no longer known
      {0, "Start + Amount * Tax DAYS", "129@15+1"},
      {0, "Start + (Amount * Tax) DAYS", "type 1"},
      {0, "Amount * Tax DAYS", "129@7+1"},
  });
}

TEST(ParserErrors, NamesAndCalls) {
  ExpectOutcomes({
      {0, "Nope", "102@0+4"},
      {0, "1 + amount", "102@4+6"},
      {0, "Half\t(Amount)", "102@0+4"},
      {0, "Nope(1)", "103@0+5"},
      {0, "1 + Nope (1)", "103@4+6"},
      {0, "Total", "102@0+5"},
      {0, "Total()", "type 0"},
      {0, "Total(1)", "124@0+6"},
      {0, "Total(*)", "124@0+6"},
      {kWords, "Total(DISTINCT)", "124@0+6"},
      {kRanges, "Low()", "136@0+4"},
      {kRanges, "1 + Low(1)", "136@4+4"},
      {0, "@PI", "type 0"},
      {0, "@PI + @PI()", "type 0"},
      {0, "@pi", "103@0+3"},
      {0, "@NOW", "103@0+4"},
      // Counts of arguments.
      {0, "Zero(1)", "105@0+5"},
      {0, "Half()", "117@0+5"},
      {0, "Half(1, 2)", "105@0+5"},
      {0, "Opt(1)", "117@0+4"},
      {0, "Opt(1, 2)", "type 0"},
      {0, "Opt(1, 2, 3)", "type 0"},
      {0, "Opt(1, 2, 3, 4)", "105@0+4"},
      {0, "Tail(1)", "117@0+5"},
      {0, "Tail(1, 'a')", "type 0"},
      {0, "Tail(1, 'a', 'b', 'c')", "type 0"},
      {0, "Tail(1, 'a', 2)", "119@13+1"},
      {0, "Any()", "type 0"},
      {0, "Any(1)", "117@0+4"},
      {0, "Any(1, 2)", "type 0"},
      {0, "Any(1, 2, 3)", "105@0+4"},
      // Their types.
      {0, "Half(Name)", "118@5+4"},
      {0, "Text(1)", "119@5+1"},
      {0, "Day(1)", "120@4+1"},
      {0, "KeyFn(Amount)", "133@6+6"},
      {0, "KeyFn(Red)", "133@6+3"},
      {0, "KeyFn(Net Sales)", "type 2"},
      {0, "Case('x', 2, 'a')", "119@10+1"},
      {0, "Case(1, 2, 'a')", "type 2"},
      {0, "Case(1, 2, 'a', 'b')", "type 2"},
      {0, "Case(1, 2, 'a', 3)", "119@16+1"},
      {0, "Case(1, 2, 'a', 3, 'b')", "type 2"},
      {0, "Case(1, 2, 'a', 'x', 'b')", "118@16+3"},
      {0, "Case()", "117@0+5"},
      // The star and the modifier words.
      {0, "Count(*)", "type 0"},
      {0, "Half(*)", "109@5+1"},
      {0, "Zero(*)", "109@5+1"},
      {kWords, "Dist(*)", "109@5+1"},
      {0, "Sum(DISTINCT Amount)", "102@4+8"},
      {kWords, "Sum(ALL Amount)", "type 0"},
      {kWords, "Sum(distinct Amount)", "type 0"},
      {kWords, "Half(DISTINCT Amount)", "129@5+8"},
      {kWords, "Half(ALL)", "129@5+3"},
      {kWords, "Dist(Amount)", "130@0+5"},
      {kWords, "Dist(ALL Amount)", "130@5+3"},
      {kWords, "Dist(DISTINCT Amount)", "type 0"},
      {kWords, "Dist(DISTINCT)", "117@0+5"},
      {kWords, "DistOpt(DISTINCT)", "type 0"},
      // Parameters by name.
      {0, "Item(Amount)", "type 0"},
      {0, "Item(Amount + 1)", "101@15+1"},
      {0, "Item(Tax)", "137@5+3"},
      {0, "ItemK(Net Sales)", "type 0"},
      {0, "ItemX(Amount + 1)", "type 0"},
      {0, "ItemD(Amount + 1)", "type 0"},
      {kWords, "ItemD(ALL Amount + 1)", "type 0"},
      {kWords, "ItemD(DISTINCT Amount + 1)", "101@25+1"},
      // A modifier stays pending for the calls among the arguments.
      {kWords, "Wrap(ItemD(Amount + 1))", "type 0"},
      {kWords, "Wrap(DISTINCT ItemD(Amount + 1))", "101@30+1"},
      {kWords, "Wrap(ALL ItemD(Amount + 1))", "type 0"},
      {kWords, "Dist(ALL Sum(DISTINCT Amount))", "type 0"},  // the inner call has cleared it
  });
}

TEST(ParserErrors, Dates) {
  ExpectOutcomes({
      {0, "10/5/1999", "type 1"},
      {0, "13/45/99", "123@0+8"},
      {kRanges, "13/45/99", "type 0"},
      {0, "1-2", "type 0"},
      {0, "10 / 5 / 2", "type 0"},
      {0, "12ab", "123@0+4"},
      {kRanges, "12ab", "123@0+4"},
      {kRanges, "12:30pm", "type 1"},
      {kRanges, "13/45/99 +", "123@0+8"},
      {kRanges, "13/45/99 + Nope", "123@0+8"},
      {kRanges, "Nope + 13/45/99", "102@0+4"},
      {0, "12 Jan 99", "type 1"},
      {0, "12 Jan 99 10:30", "123@0+5"},
      {kRanges, "12 Jan 99 10:30", "123@0+5"},
      {0, "Jan 12, 1999 10:30 am", "type 1"},
  });
}

// Two failures have no place in the table of messages: only their place is settled here.
TEST(ParserErrors, FailuresWithoutMessageOfTheirOwn) {
  const OwnedContext context =
      StandardContext(0, nullptr, [](const char *) { return Address(&HostValue); });
  ASSERT_EQ(ORLSetOperatorCallback(context.get(), 0, 3, "plus"), 1);
  EXPECT_EQ(Outcome(Parse(context.get(), "Money + Money")), "type 3");
  struct Row {
    const char *text;
    int32_t offset, length;
  };
  for (const Row &row : {Row{"Money + 1", 8, 1}, Row{"Follow()", 0, 7}}) {
    const Parsed parsed = Parse(context.get(), row.text);
    EXPECT_EQ(parsed.exp, nullptr) << row.text;
    EXPECT_NE(parsed.error.id, 0) << row.text;
    EXPECT_EQ(parsed.error.offset, row.offset) << row.text;
    EXPECT_EQ(parsed.error.length, row.length) << row.text;
  }
}

// Which operator and type a callback makes legal: operator codes are 0 +, 1 -, 2 /, 3 *, 4 ||.
TEST(ParserErrors, OperatorCallbacks) {
  struct Row {
    const char *text, *without, *with;
    int16_t op, type;
  };
  const Row rows[] = {
      {"Name + Name", "113@5+1", "type 2", 0, 2},     {"Name - Name", "113@5+1", "type 2", 1, 2},
      {"Name / Name", "113@5+1", "type 2", 2, 2},     {"Name * Name", "113@5+1", "type 2", 3, 2},
      {"Amount || 1", "111@7+2", "type 0", 4, 0},     {"Money || Money", "132@6+2", "type 3", 4, 3},
      {"Money / Money", "132@6+1", "type 3", 2, 3},   {"Start * 2", "114@6+1", "114@6+1", 3, 1},
      {"Start || Start", "114@6+2", "114@6+2", 4, 1}, {"Money / Money", "132@6+1", "132@6+1", 3, 3},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.text);
    const OwnedContext context = StandardContext(0, nullptr, [](const char *name) {
      return std::string(name) == "known" ? Address(&HostValue) : nullptr;
    });
    EXPECT_EQ(ORLSetOperatorCallback(context.get(), row.op, row.type, "unknown"), 1);
    EXPECT_EQ(Outcome(Parse(context.get(), row.text)), row.without);
    EXPECT_EQ(ORLSetOperatorCallback(context.get(), row.op, row.type, "known"), 1);
    EXPECT_EQ(Outcome(Parse(context.get(), row.text)), row.with);
  }
}

TEST(ValidName, Rows) {
  struct Row {
    std::string name;
    uint16_t flags;
    int32_t valid;
  };
  const Row rows[] = {
      {"x", 0, 1},
      {"a.b", 0, 1},
      {"\"a b\"", 0, 1},
      {"`a`.b.c", 0, 1},
      {"_DAY", 0, 1},
      {"Amount", 0, 1},
      {"Half", 0, 1},
      {"DISTINCT", 0, 1},
      {"ALL", kWords, 0},
      {"DAY", 0, 0},
      {"Seconds", 0, 0},
      {"DAY", ORL_FLAG_NO_DATE_UNITS, 1},
      {"and", 0, 0},
      {"ab c", 0, 0},
      {"1", 0, 0},
      {"a + b", 0, 0},
      {"", 0, 0},
      {"a.b.c.d", 0, 0},
      {"Red", 0, 0},
      {"Net Sales", 0, 0},
      {"(a)", 0, 0},
      {" a", 0, 0},
      {"a ", 0, 0},
      {"a\t", 0, 0},
      {"\na", 0, 0},
      {"f()", 0, 0},
      {"@NOW", 0, 0},
      {"'a'", 0, 0},
      {std::string(3000, 'a'), 0, 0},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.name);
    const OwnedContext context = StandardContext(row.flags);
    FormulaError error = {};
    EXPECT_EQ(ORLValidName(context.get(), row.name.c_str(), &error), row.valid);
    EXPECT_EQ(error.id, ORL_ERR_INPUT);
    EXPECT_EQ(error.offset, 0);
    EXPECT_EQ(error.length, static_cast<int32_t>(row.name.size()));
    EXPECT_EQ(ORLValidName(context.get(), row.name.c_str(), nullptr), row.valid);
  }
  EXPECT_EQ(ORLValidName(nullptr, "DISTINCT", nullptr), 1);
  EXPECT_EQ(ORLValidName(nullptr, "DAYS", nullptr), 0);
}

TEST(InputNameIsKeyword, Rows) {
  struct Row {
    const char *source, *target;
    int32_t result;
  };
  for (const Row &row : {Row{"Day", "_Day", 1}, Row{"days", "_days", 1}, Row{"DAYSS", "DAYSS", 0},
                         Row{"Second", "_Second", 1}, Row{"", "", 0}, Row{"S", "S", 0},
                         Row{"AND", "AND", 0}, Row{"Daylight", "Daylight", 0}}) {
    char target[66] = "before";
    EXPECT_EQ(ORLInputNameIsKeyword(target, row.source), row.result) << row.source;
    EXPECT_STREQ(target, row.target) << row.source;
  }
}

}  // namespace
