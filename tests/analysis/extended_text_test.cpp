// Extended text: tables of cases, and random formulas that call each other, compared with a model
// that expands the words of their texts. Text expanded without marks must also compute the same.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/cases.h"
#include "support/context.h"
#include "support/pattern.h"

namespace {

// The content of a buffer of exactly `size` bytes after the call, and the result.
std::string Filled(EC ec, HEXP exp, int32_t size, int32_t marks) {
  const std::unique_ptr<char[]> buffer(new char[static_cast<size_t>(size)]);
  std::memset(buffer.get(), '#', static_cast<size_t>(size));
  const int32_t result = ORLGetExtendedText(ec, exp, size, buffer.get(), marks);
  return buffer.get() + std::string("|") + std::to_string(result);
}

// The text, read in the order in which hosts call, and in every smaller buffer.
std::string Extended(EC ec, HEXP exp, int32_t marks) {
  const int32_t bound = ORLGetExtendedTextLength(ec, exp, marks);
  const std::string whole = Filled(ec, exp, 100000, marks);
  std::string text = whole.substr(0, whole.rfind('|'));
  EXPECT_EQ(whole, text + "|" + std::to_string(static_cast<int32_t>(text.size()) - 1));
  EXPECT_TRUE(bound >= static_cast<int32_t>(text.size())) << bound << text;
  for (size_t size = 1; size <= std::min<size_t>(text.size() + 2, 60); ++size) {
    const std::string held = text.substr(0, size - 1);
    EXPECT_EQ(Filled(ec, exp, static_cast<int32_t>(size), marks),
              held + "|" + std::to_string(static_cast<int32_t>(held.size()) - 1));
  }
  return text;
}

struct ExtendedContext : HostedContext {
  ExtendedContext() : HostedContext(ORL_FLAG_RANGES | ORL_FLAG_MODIFIERS) {
    host.values = {{"A", "5"}, {"N", "7"}, {"\"N\"", "11"}, {"N.N", "13"}};
    for (const auto &[name, value] : host.values) AddInput(*this, name.c_str(), 0);
    for (const char *name : {"F", "Marked"}) {
      AddFunction(*this,
                  {name, 0, {{0, 0, 0}}, 0, 0, ORL_FUNC_ESCAPE, Address(&FUNNumberAbsolute)});
    }
    AddFunction(*this, {"All", 0, {{1, 5, 0}}, 0, 0, ORL_FUNC_ESCAPE | ORL_FUNC_MODIFIER, nullptr});
    AddFunction(*this, {"Plain", 0, {{0, 0, 0}}, 0, 0, 0, Address(&FUNNumberAbsolute)});
    AddFunction(*this, {"Len", 0, {{0, 2, 0}}, 0, 0, 0, Address(&FUNStrLength)});
    AddFunction(*this, {"DayOf", 0, {{0, 1, 0}}, 0, 0, 0, Address(&FUNDateDay)});
    ORLDelExpItemNoCheck(*this, ORL_FUNCTION, "@PI");
    AddFunction(*this, {"@PI", 0, {}, 0, 0, ORL_FUNC_ESCAPE, nullptr});
  }
};

enum Settings { kBare, kPictures, kTemplates };
void Apply(EC ec, Settings settings) {
  if (settings == kTemplates) ORLSetDateConvert(ec, "{d '%s'}", "100%% %s%s", nullptr, 2);
  if (settings == kPictures) ORLSetDateConvert(ec, "unused %s", nullptr, nullptr, 0);
  if (settings != kBare) ORLSetDatePicture(ec, "yyyy-MM-dd", "d.M.yyyy HH:mm", "HH 'h'");
}

TEST(ExtendedText, EdgeCases) {
  for (const Case &row : CasesOf("analysis/analysis_cases.txt", "extended")) {
    SCOPED_TRACE(row.where);
    const ExtendedContext ec;
    Make(ec, "F(A)", "N"), Make(ec, "N()*2", "M"), Make(ec, "'M()'", "Q");
    Make(ec, "1/31/2012", "D");
    HEXP exp = Make(ec, row[0]);
    Apply(ec, static_cast<Settings>(row.Int(1)));
    const std::string before = Snapshot(ec);
    if (!row[4].empty()) {
      EXPECT_EQ(ORLGetExtendedTextLength(ec, exp, row.Int(2)), row.Int(4));
    }
    EXPECT_EQ(Extended(ec, exp, row.Int(2)), row[3]);
    EXPECT_EQ(Snapshot(ec), before);
  }
}

TEST(ExtendedText, FollowsTheTables) {
  ExtendedContext ec;
  HEXP n = Make(ec, "F(A)", "N"), user = Make(ec, "N()+F(1)");
  EXPECT_EQ(Extended(ec, user, 1), "(F(A))+ {fn F(1) } ");
  Store(ec, n, "A*3", "N");
  EXPECT_EQ(Extended(ec, user, 1), "(A*3)+ {fn F(1) } ");
  ORLDelExpItemNoCheck(ec, ORL_FUNCTION, "F");
  EXPECT_EQ(Extended(ec, user, 1), "(A*3)+F(1)");
  // A rename after which texts do not parse: names that are still at their positions are expanded.
  const std::pair<const char *, const char *> names[] = {
      {"B",
       " {fn F(B+2) } - {fn F(2) } +( {fn F(B) } +DayOf({d '2012-01-31'}))"
       "+DayOf({d '2012-01-31'})"},
      {"", "F(+2)-F(2)+N()+DayOf(1/31/2012)"},
      {"B (", "F(B (+2)-F(2)+N()+DayOf(1/31/2012)"},
      {"a longer name", "F(a longer name+2)-F(2)+N()+DayOf(1/31/2012)"}};
  for (const auto &[name, expected] : names) {
    const ExtendedContext renamed;
    Make(renamed, "F(A)+DayOf(1/31/2012)", "N");
    HEXP exp = Make(renamed, "F(A+2)-F(2)+N()+DayOf(1/31/2012)");
    Apply(renamed, kTemplates);
    ORLRenameExpressionItem(renamed, ORL_INPUT, "A", name);
    EXPECT_EQ(Extended(renamed, exp, 1), expected);
  }
  // A template without text would replace a date by nothing, so the date is kept.
  const ExtendedContext empty;
  Apply(empty, kPictures);
  ORLSetDateConvert(empty, "", "", "", 2);
  EXPECT_EQ(Extended(empty, Make(empty, "DayOf(1/31/2012)"), 1), "DayOf(1/31/2012)");
  EXPECT_EQ(ORLGetExtendedTextLength(ec, nullptr, 1), 0);
}

TEST(ExtendedText, TooLongOrWithoutEnd) {
  const ExtendedContext ec;
  Make(ec, "A", "F0"), Make(ec, "A", "C0");
  HEXP doubled = nullptr, chain = nullptr;
  for (int i = 1; i <= 40; ++i) {
    const std::string call = "F" + std::to_string(i - 1) + "()";
    std::string sum = call + "+";
    doubled = Make(ec, sum += call, "F" + std::to_string(i));
  }
  EXPECT_EQ(Filled(ec, doubled, 100, 0), "|0");
  EXPECT_EQ(ORLGetExtendedTextLength(ec, doubled, 0), INT32_MAX);
  for (int i = 1; i <= 30000; ++i) {
    chain = Make(ec, "C" + std::to_string(i - 1) + "()", "C" + std::to_string(i));
  }
  EXPECT_EQ(Filled(ec, chain, 70000, 1),
            std::string(30000, '(') + "A" + std::string(30000, ')') + "|60000");
  std::string sum = "1";
  while (sum.size() < UINT16_MAX - 2) sum += "+1";
  Make(ec, sum, "Long");
  EXPECT_EQ(Filled(ec, Make(ec, "Long()"), 70000, 0), "(" + sum + ")|65534");
  EXPECT_EQ(Filled(ec, Make(ec, " Long()"), 70000, 0), "|0");
  EXPECT_EQ(Filled(ec, Make(ec, sum + "+1+1"), 70000, 1), sum + "+1+1|65536");
  // A cycle, through two formulas of one name of which the first is deleted.
  HEXP first = Make(ec, "1", "X"), y = Make(ec, "2", "Y"), second = Make(ec, "Y()+F(A)", "X");
  Store(ec, y, "X()*2", "Y"), Store(ec, first, "1", "Other");
  for (HEXP exp : {y, second, Make(ec, "3+X()")}) EXPECT_EQ(Filled(ec, exp, 100, 1), "|0");
}

// ---- Random formulas ----

using Texts = std::map<std::string, std::string>;

// Expands and marks a text word by word.
std::string Model(const Texts &formulas, const std::string &text, bool marks) {
  static const Pattern token(
      R"(^('[^']*'|"[^"]*"|[A-Z][A-Za-z0-9_]*(\.[A-Za-z0-9_]+)*|[0-9]+-[0-9]+-[0-9]+|.))");
  std::string result;
  std::vector<bool> open;  // for each parenthesis: it belongs to a marked call
  bool marked = false;
  for (std::string rest = text; !rest.empty();) {
    const std::string word(token.Find(rest).at(0));
    rest.erase(0, word.size());
    const size_t called = rest.find_first_not_of(' ');
    const bool call = called != std::string::npos && rest[called] == '(';
    if (call && formulas.count(word) != 0) {
      result += "(" + Model(formulas, formulas.at(word), marks) + ")";
      rest.erase(0, rest.find(')') + 1);
      continue;
    }
    const bool opens = marks && call && (word == "F" || word == "Marked");
    result += opens ? " {fn " + word : marks && word == "2012-1-31" ? "{d '2012-01-31'}" : word;
    if (word == "(") open.push_back(marked);
    if (word == ")") {
      result += open.back() ? " } " : "";
      open.pop_back();
    }
    if (word != " ") marked = opens;
  }
  return result;
}

// A Number of up to three levels; it may call the existing formulas.
std::string RandomText(std::mt19937 &random, const Texts &formulas, int depth) {
  // clang-format off
  static const char *const leaves[] = {"A", "N", "\"N\"", "N.N", "3", "DayOf(2012-1-31)", "Len('N() F(1)')"};
  static const char *const forms[] = {"F(@)", "Marked ( @ )", "(@)-@", "Plain(@) +@", "@*@", "F(@)/F(@)"};
  // clang-format on
  if (depth == 0 && !formulas.empty() && random() % 2 != 0) {
    const auto which = static_cast<std::ptrdiff_t>(random() % formulas.size());
    return std::next(formulas.begin(), which)->first + (random() % 4 != 0 ? "()" : "  ( )");
  }
  std::string text =
      depth == 0 ? leaves[random() % std::size(leaves)] : forms[random() % std::size(forms)];
  for (size_t at = 0; (at = text.find('@')) != std::string::npos;) {
    text.replace(at, 1, RandomText(random, formulas, depth - 1));
  }
  return text;
}

TEST(ExtendedText, RandomFormulas) {
  std::mt19937 random(20120131);
  for (int i = 0; i < 300 && !HasFailure(); ++i) {
    const ExtendedContext ec;
    Apply(ec, kTemplates);
    Texts formulas;
    for (const char *name : {"N", "NN", "NNN", "F1", "Marke", "Marked2", "Top"}) {
      const std::string text = RandomText(random, formulas, static_cast<int>(random() % 4));
      SCOPED_TRACE(name + (" = " + text));
      HEXP exp = Make(ec, text, name);
      const std::string plain = Model(formulas, text, false);
      if (plain.size() > 5000) continue;
      EXPECT_EQ(Extended(ec, exp, 0), plain);
      EXPECT_EQ(Extended(ec, exp, 1), Model(formulas, text, true));
      EXPECT_EQ(Evaluate(ec, exp), Evaluate(ec, Make(ec, plain)));
      formulas[name] = text;
    }
  }
}

}  // namespace
