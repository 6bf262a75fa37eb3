// Stored expressions: names, ordinals, texts, replacement, clones, destruction.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/cases.h"
#include "support/context.h"

namespace {

constexpr uint16_t kRanges = ORL_FLAG_RANGES;

TEST(Expressions, CopiedTextsAreTruncatedAndTerminated) {
  const HostedContext ec;
  HEXP exp = Make(ec, "Amount + 1", "NameOf_ten");
  for (const int32_t size : {1, 5, 10, 11, 100}) {
    const size_t kept = static_cast<size_t>(size < 11 ? size - 1 : 10);
    char buffer[101];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(ORLGetExpressionText(ec, exp, size, buffer), size < 10 ? size : 10) << size;
    EXPECT_EQ(buffer, std::string("Amount + 1").substr(0, kept));
    EXPECT_EQ(ORLGetExpressionName(ec, exp, size, buffer), size < 10 ? size : 10) << size;
    EXPECT_EQ(buffer, std::string("NameOf_ten").substr(0, kept));
    EXPECT_EQ(buffer[size], '#') << size;
  }
}

// A free number is searched from the counter on, which then is the last number found.
TEST(Expressions, GeneratedNames) {
  const HostedContext ec(kRanges);
  AddFunction(ec, {"Formula2", 0, {}, 0, 0, 0, nullptr});
  EXPECT_EQ(Parse(ec, "1 +").exp, nullptr);  // wastes no number
  const char *const rows[][3] = {
      {"1", "", "Formula1"},
      {"1", "Formula3", "Formula3"},
      {"1", "", "Formula4"},
      {"1, 2", "", "Set1"},
      {"Amount AND Tax", "", "Range1"},
      {"1", "Formula1", ""},
      {"Amount AND 1", "", "Range2"},
      {"1", "", "Formula5"},
      {"1", "Formula5", ""},
      {"1", "", "Formula5"},
  };
  for (const auto &[text, name, stored] : rows) {
    if (*stored == '\0') {
      EXPECT_EQ(ORLDestroyEXP(ec, ORLHEXPFromName(ec, name)), 1) << name;
    } else {
      EXPECT_EQ(NameOf(ec, Make(ec, text, name)), stored);
    }
  }
}

TEST(Expressions, KindsOfNames) {
  const HostedContext ec;
  for (const char *name : {"Formula", "Formula1", "Formula007"}) {
    EXPECT_EQ(ORLIsExpNameGenerated(ec, Make(ec, "1", name)), 1) << name;
  }
  for (const char *name : {"Formula1a", "Range1", "formula1", "Formul", "Formula_1"}) {
    EXPECT_EQ(ORLIsExpNameGenerated(ec, Make(ec, "1", name)), 0) << name;
  }
  HEXP a = Make(ec, "1", "A");
  EXPECT_EQ(ORLIsExpNameUnique(ec, a, "A"), 1);
  for (const char *name : {"a", "Amount", "Red"}) {
    EXPECT_EQ(ORLIsExpNameUnique(ec, nullptr, name), 1) << name;
  }
  for (const char *name : {"A", "Half"}) {
    EXPECT_EQ(ORLIsExpNameUnique(ec, nullptr, name), 0) << name;
    EXPECT_EQ(ORLIsExpNameUnique(ec, ORLHEXPFromName(ec, "Formul"), name), 0) << name;
  }
}

TEST(Expressions, LookupsAndOrdinals) {
  const HostedContext ec, other;
  HEXP foreign = Make(other, "1");
  EXPECT_EQ(ORLGetExpressionOrdinal(ec, foreign), -1);
  EXPECT_EQ(ORLHEXPFromName(ec, "A"), nullptr);
  HEXP a = Make(ec, "1", "A");
  HEXP b = Make(ec, "2", "B");
  HEXP again = Make(ec, "3", "A");  // ORLParseString does not compare names
  EXPECT_EQ(ORLGetExpressionCount(ec), 3);
  EXPECT_EQ(ORLHEXPFromName(ec, "A"), a);
  for (const char *name : {"a", "Amount", ""}) EXPECT_EQ(ORLHEXPFromName(ec, name), nullptr);
  EXPECT_EQ(ORLHEXPFromOrdinal(ec, 65537), b);  // an ordinal has 16 bits
  for (int32_t ordinal : {-1, 3, 65535}) EXPECT_EQ(ORLHEXPFromOrdinal(ec, ordinal), nullptr);
  EXPECT_EQ(ORLGetExpressionOrdinal(ec, foreign), -1);
  EXPECT_EQ(ORLDestroyEXP(ec, foreign), 0);
  EXPECT_EQ(ORLDestroyEXP(ec, a), 1);
  EXPECT_EQ(ORLHEXPFromName(ec, "A"), again);
  EXPECT_EQ(ORLGetExpressionOrdinal(ec, again), 1);
  EXPECT_EQ(ORLDestroyEXP(ec, again), 1);
  EXPECT_EQ(ORLDestroyEXP(ec, b), 1);
  EXPECT_EQ(ORLGetExpressionCount(ec), 0);
  EXPECT_EQ(ORLGetExpressionOrdinal(ec, Make(ec, "1")), 0);
}

TEST(Expressions, Enumeration) {
  const HostedContext ec;
  static std::string seen;
  const auto untilTwo = [](EC, HEXP, int32_t ordinal) {
    seen += std::to_string(ordinal);
    return ordinal == 2 ? 0 : 9;
  };
  for (const int32_t last : {0, 9, 9, 0, 0}) {
    EXPECT_EQ(ORLEnumExpressions(ec, untilTwo), last);
    Make(ec, "1");
  }
  EXPECT_EQ(seen, "001012012");
}

TEST(Expressions, Classes) {
  const HostedContext ec(kRanges);
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
    HEXP exp = Make(ec, row.text);
    EXPECT_EQ(ORLIsExpRange(ec, exp, 1), row.set) << row.text;
    EXPECT_EQ(ORLIsExpRange(ec, exp, 2), row.range) << row.text;
    EXPECT_EQ(ORLIsExpRange(ec, exp, 0), 0) << row.text;
    EXPECT_EQ(ORLIsExpressionSimple(ec, exp), row.simple) << row.text;
    EXPECT_EQ(ORLIsExpressionSimpleInput(ec, exp), row.simpleInput) << row.text;
    EXPECT_EQ(ORLGetSimpleInputSubClass(ec, exp), row.subClass) << row.text;
    EXPECT_EQ(ORLGetExpressionDataType(ec, exp), row.type) << row.text;
  }
  HEXP tax = Make(ec, "Tax");
  ORLDelExpItemNoCheck(ec, ORL_INPUT, "Tax");
  EXPECT_EQ(ORLGetSimpleInputSubClass(ec, tax), -1);
  EXPECT_EQ(ORLIsExpressionSimpleInput(ec, tax), 1);
}

TEST(Expressions, StoringChecks) {
  static std::string renamed;
  const auto note = [](EC, const char *from, const char *to) {
    renamed += std::string(from) + ">" + to;
    return 1;
  };
  for (const Case &row : CasesOf("engine/engine_cases.txt", "storing")) {
    SCOPED_TRACE(row.where);
    const char *const name = row[2] == "-" ? nullptr : row[2].c_str();
    const OwnedContext context(ORLCreateEC(nullptr, nullptr, note, kRanges));
    EC ec = context.get();
    AddFunction(ec, {"Half", 0, {{0, 0, 0}}, 0, 0, 0, nullptr});
    AddInput(ec, "Amount", 0);
    Make(ec, "1", "F");
    Make(ec, "F() + 1", "G");
    Make(ec, "'x'", "H");
    HEXP over = ORLHEXPFromName(ec, row[0].c_str());
    const std::string before = Snapshot(ec);
    renamed.clear();
    const Parsed stored = Store(ec, over, row[1], name);
    EXPECT_EQ(Outcome(stored), row[3]);
    EXPECT_EQ(renamed, row[4]);
    if (stored.exp == nullptr) {
      uint16_t type = 0;  // without an error record the failure is the same
      EXPECT_EQ(ORLParseFormula(ec, over, row[1].c_str(), name, nullptr, &type), nullptr);
      EXPECT_EQ(Snapshot(ec), before);
      continue;
    }
    const std::string given = name == nullptr ? "Formula1" : name;
    EXPECT_TRUE(over == nullptr || stored.exp == over);
    EXPECT_EQ(ORLGetExpressionCount(ec), over == nullptr ? 4 : 3);
    EXPECT_EQ(TextOf(ec, stored.exp), row[1]);
    EXPECT_EQ(NameOf(ec, stored.exp), given);
    EXPECT_EQ(ORLHEXPFromName(ec, given.c_str()), stored.exp);
    EXPECT_EQ(ORLGetExpressionDataType(ec, stored.exp), stored.type);
    // F can be destroyed as soon as no text refers to it.
    const int32_t free = Snapshot(ec).find("F()") == std::string::npos ? 1 : 0;
    HEXP f = ORLHEXPFromName(ec, "F");
    EXPECT_TRUE(f == nullptr || ORLDestroyEXP(ec, f) == free);
  }
}

TEST(Expressions, Clones) {
  const HostedContext ec;
  HEXP a = Make(ec, "Amount + 1", "A");
  const char *const rows[][2] = {
      {"B", "B"}, {"B", "Formula1"}, {"Half", "Formula2"}, {"", "Formula3"}, {nullptr, "Formula4"}};
  uint16_t type = 77;
  for (const auto &[newName, name] : rows) {
    HEXP clone = ORLCloneExpression(ec, a, newName, &type);
    EXPECT_EQ(NameOf(ec, clone), name);
    EXPECT_EQ(TextOf(ec, clone), "Amount + 1");
    EXPECT_EQ(type, 0);
    EXPECT_EQ(ORLGetExpressionOrdinal(ec, clone), ORLGetExpressionCount(ec) - 1);
  }
  EXPECT_EQ(ORLCloneExpression(ec, a, "ab c", &type), nullptr);
  ORLDelExpItemNoCheck(ec, ORL_INPUT, "Amount");
  EXPECT_EQ(ORLCloneExpression(ec, a, "Z", &type), nullptr);
  EXPECT_EQ(ORLGetExpressionCount(ec), 6);
}

}  // namespace
