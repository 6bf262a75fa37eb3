// What the parse entries make of a text: its type or its tree, or the message and the faulty bytes.
#include <gtest/gtest.h>

#include <map>
#include <utility>

#include "engine/expressions.h"
#include "support/cases.h"
#include "support/context.h"
#include "support/tree_text.h"

namespace {

// Parses a text in a standard context with two formulas more: Total, a Number, and Low, a range
// where the flags allow one. An outcome with a bracket is a tree.
void ExpectOutcome(uint16_t flags, const std::string &text, const std::string &outcome) {
  const OwnedContext context = StandardContext(flags);
  EC ec = context.get();
  ASSERT_EQ(Outcome(Parse(ec, "Amount + 1", "Total")), "type 0");
  Parse(ec, "Amount AND Tax", "Low");
  const std::string before = Snapshot(ec);
  const Parsed parsed = Parse(ec, text);
  const bool tree = parsed.exp != nullptr && outcome.find('[') != std::string::npos;
  EXPECT_EQ(tree ? TreeText(parsed.exp->tree) : Outcome(parsed), outcome);
  if (parsed.exp == nullptr) {
    EXPECT_EQ(Snapshot(ec), before);
  }
}

std::string Repeat(const char *piece, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += piece;
  return text;
}

TEST(Parser, Outcomes) {
  for (const Case &row : CasesOf("language/parser_cases.txt", "outcomes")) {
    SCOPED_TRACE(row.where);
    ExpectOutcome(row.Flags(0), row[1], row[2]);
  }
}

TEST(Parser, Limits) {
  const std::string word(2100, 'a');  // beyond the scanner's buffer
  const std::pair<std::string, const char *> rows[] = {
      // Depth: 150 entries, one of them the start state.
      {Repeat("(", 147) + "1" + Repeat(")", 147), "type 0"},
      {Repeat("(", 148) + "1" + Repeat(")", 148), "122@149+1"},
      {word, "112@2049+1"},
      {"1 + '" + word + "'", "112@2052+2"},
      {"(1) " + word, "112@2052+2"},
  };
  for (const auto &[text, outcome] : rows) {
    SCOPED_TRACE(text.substr(0, 20));
    ExpectOutcome(0, text, outcome);
  }
}

void ExpectValid(const std::string &name, uint16_t flags, int32_t valid) {
  const OwnedContext context = StandardContext(flags);
  FormulaError error = {};
  EXPECT_EQ(ORLValidName(context.get(), name.c_str(), &error), valid);
  EXPECT_EQ(Outcome({nullptr, error, 0}), "108@0+" + std::to_string(name.size()));
  EXPECT_EQ(ORLValidName(context.get(), name.c_str(), nullptr), valid);
}

TEST(ValidName, Rows) {
  for (const Case &row : CasesOf("language/parser_cases.txt", "names")) {
    SCOPED_TRACE(row.where);
    ExpectValid(row[0], row.Flags(1), row.Int(2));
  }
  ExpectValid(std::string(3000, 'a'), 0, 0);
  EXPECT_EQ(ORLValidName(nullptr, "DISTINCT", nullptr), 1);
  EXPECT_EQ(ORLValidName(nullptr, "DAYS", nullptr), 0);
}

// clang-format off
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
