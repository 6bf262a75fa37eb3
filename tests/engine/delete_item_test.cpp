// The guarded delete of an item against a plain model of it: a list of deferred expressions, and
// rounds over that list.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "closed/wren/memory.h"
#include "orli11.h"

namespace {

struct Formula {
  std::string name;
  bool usesItem;
  std::vector<std::string> calls;
};

// What the host does at the n-th call: destroy, refuse, pretend, or also destroy another
// expression.
enum class Answer : int { Destroy, Refuse, Pretend, DestroyMore };

struct DeleteModel {
  std::vector<Formula> formulas;
  std::vector<Answer> answers;
  std::string asked;

  const Formula *Find(const std::string &name) const {
    for (const Formula &f : formulas) {
      if (f.name == name) return &f;
    }
    return nullptr;
  }
  bool Uses(const Formula &f) const {
    return f.usesItem || std::any_of(f.calls.begin(), f.calls.end(), [&](const std::string &call) {
             return Find(call) != nullptr && Uses(*Find(call));
           });
  }
  bool IsCalled(const std::string &name) const {
    return std::any_of(formulas.begin(), formulas.end(), [&](const Formula &f) {
      return std::count(f.calls.begin(), f.calls.end(), name) > 0;
    });
  }
  void Destroy(const std::string &name) {
    if (IsCalled(name)) return;
    formulas.erase(std::remove_if(formulas.begin(), formulas.end(),
                                  [&](const Formula &f) { return f.name == name; }),
                   formulas.end());
  }
  Answer Next() { return answers[asked.size() % answers.size()]; }
  bool HandOver(const std::string &name) {
    const Answer answer = Next();
    asked += name;
    if (answer == Answer::Destroy || answer == Answer::DestroyMore) Destroy(name);
    if (answer == Answer::DestroyMore && !formulas.empty()) {
      const std::string first = formulas.front().name;
      Destroy(first);
    }
    return answer != Answer::Refuse;
  }
  bool Delete() {
    std::vector<std::string> order;
    for (const Formula &f : formulas) order.push_back(f.name);
    std::vector<std::string> pending;
    for (const std::string &name : order) {
      const Formula *f = Find(name);
      if (f == nullptr || !Uses(*f)) continue;
      if (IsCalled(name)) {
        pending.push_back(name);
      } else if (!HandOver(name)) {
        return false;
      }
    }
    for (;;) {
      std::vector<std::string> still;
      bool progress = false;
      for (const std::string &name : pending) {
        if (Find(name) == nullptr) continue;
        if (IsCalled(name)) {
          still.push_back(name);
        } else if (!HandOver(name)) {
          return false;
        } else {
          progress = true;
        }
      }
      still.erase(std::remove_if(still.begin(), still.end(),
                                 [&](const std::string &name) { return Find(name) == nullptr; }),
                  still.end());
      pending = still;
      if (pending.empty()) return true;
      if (!progress) return false;
    }
  }
};

// The host's implementation of these.
struct Host {
  std::vector<Answer> answers;
  std::string asked;
} host;

int32_t AnswerAsPlanned(EC ec, HEXP exp, ExprItem *row) {
  EXPECT_STREQ(row->name, "X");
  const Answer answer = host.answers[host.asked.size() % host.answers.size()];
  char name[8];
  ORLGetExpressionName(ec, exp, sizeof name, name);
  host.asked += name;
  if (answer == Answer::Destroy || answer == Answer::DestroyMore) ORLDestroyEXP(ec, exp);
  if (answer == Answer::DestroyMore) ORLDestroyEXP(ec, ORLHEXPFromOrdinal(ec, 0));
  return answer == Answer::Refuse ? 0 : 1;
}

std::string TextOf(const Formula &f) {
  std::string text = f.usesItem ? "X" : "1";
  for (const std::string &call : f.calls) text += " + " + call + "()";
  return text;
}

EC ContextOf(const std::vector<Formula> &formulas) {
  EC ec = ORLCreateEC(nullptr, nullptr, nullptr, 0);
  ExprItem item = {};
  item.kind = ORL_INPUT;
  item.name[0] = 'X';
  ORLAddExpressionItem(ec, &item);
  for (const Formula &f : formulas) {
    uint16_t type = 0;
    EXPECT_NE(ORLParseString(ec, TextOf(f).c_str(), f.name.c_str(), nullptr, &type), nullptr)
        << TextOf(f);
  }
  return ec;
}

std::string NamesIn(EC ec) {
  std::string names;
  for (int32_t i = 0; i < ORLGetExpressionCount(ec); ++i) {
    char name[8];
    ORLGetExpressionName(ec, ORLHEXPFromOrdinal(ec, i), sizeof name, name);
    names += name;
  }
  return names;
}

// Formulas call earlier ones; the table holds them in another order through replacement.
std::vector<Formula> RandomFormulas(std::mt19937 &random) {
  std::vector<Formula> formulas;
  const size_t count = random() % 12;
  for (size_t i = 0; i < count; ++i) {
    Formula f = {std::string(1, static_cast<char>('a' + i)), random() % 4 == 0, {}};
    for (const Formula &earlier : formulas) {
      if (random() % 4 == 0) f.calls.push_back(earlier.name);
    }
    formulas.push_back(f);
  }
  return formulas;
}

TEST(DeleteItem, AsksInTheOrderOfTheModel) {
  std::mt19937 random(7);
  for (int round = 0; round < 4000; ++round) {
    DeleteModel model;
    model.formulas = RandomFormulas(random);
    const int habit = static_cast<int>(random() % 3);
    for (int i = 0; i < 7; ++i) {
      const bool odd = habit == 2 || (habit == 1 && random() % 5 == 0);
      model.answers.push_back(odd ? static_cast<Answer>(random() % 4) : Answer::Destroy);
    }
    host = {model.answers, ""};
    std::string trace = "round " + std::to_string(round);
    for (const Formula &f : model.formulas) trace += "; " + f.name + " = " + TextOf(f);
    SCOPED_TRACE(trace);
    const int64_t before = TEST_LiveBlocks();
    EC ec = ContextOf(model.formulas);
    const bool deleted = model.Delete();
    EXPECT_EQ(ORLDeleteExpItem(ec, ORL_INPUT, "X", &AnswerAsPlanned), deleted ? 1 : 0);
    EXPECT_EQ(host.asked, model.asked);
    std::string left;
    for (const Formula &f : model.formulas) left += f.name;
    EXPECT_EQ(NamesIn(ec), left);
    EXPECT_EQ(ORLDelExpItemNoCheck(ec, ORL_INPUT, "X"), deleted ? 0 : 1);
    ORLDestroyEC(ec);
    EXPECT_EQ(TEST_LiveBlocks(), before);
    if (::testing::Test::HasFailure()) return;
  }
}

// Without memory for its queues the delete asks for the same expressions, possibly in other rounds.
TEST(DeleteItem, NeedsNoMemory) {
  std::mt19937 random(11);
  for (int round = 0; round < 300; ++round) {
    const std::vector<Formula> formulas = RandomFormulas(random);
    host = {{Answer::Destroy}, ""};
    EC ec = ContextOf(formulas);
    TEST_FailAllocationsAfter(static_cast<int64_t>(random() % 2));
    EXPECT_EQ(ORLDeleteExpItem(ec, ORL_INPUT, "X", &AnswerAsPlanned), 1);
    TEST_FailAllocationsAfter(-1);
    for (int32_t i = 0; i < ORLGetExpressionCount(ec); ++i) {
      EXPECT_EQ(ORLIsItemUsed(ec, ORLHEXPFromOrdinal(ec, i), ORL_INPUT, "X"), 0) << NamesIn(ec);
    }
    EXPECT_EQ(ORLDelExpItemNoCheck(ec, ORL_INPUT, "X"), 0);
    ORLDestroyEC(ec);
  }
}

TEST(DeleteItem, UnknownRowAsksNothing) {
  host = {{Answer::Refuse}, ""};
  EC ec = ContextOf({{"a", true, {}}, {"b", false, {"a"}}});
  EXPECT_EQ(ORLDelExpItemNoCheck(ec, ORL_INPUT, "X"), 1);
  EXPECT_EQ(ORLDeleteExpItem(ec, ORL_INPUT, "X", &AnswerAsPlanned), 1);
  EXPECT_EQ(host.asked, "");
  EXPECT_EQ(NamesIn(ec), "ab");
  ORLDestroyEC(ec);
}

// Thirty thousand formulas, each calling the previous one, are deleted one by one from the end.
TEST(DeleteItem, BelowALongChain) {
  std::vector<Formula> formulas = {{"a0", true, {}}};
  for (int i = 1; i < 30000; ++i) {
    formulas.push_back({"a" + std::to_string(i), false, {formulas.back().name}});
  }
  host = {{Answer::Destroy}, ""};
  EC ec = ContextOf(formulas);
  EXPECT_EQ(ORLDeleteExpItem(ec, ORL_INPUT, "X", &AnswerAsPlanned), 1);
  EXPECT_EQ(ORLGetExpressionCount(ec), 0);
  ORLDestroyEC(ec);
}

}  // namespace
