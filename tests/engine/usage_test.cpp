// Usage queries: what an expression uses, itself and through the formulas that it refers to.
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "engine/context.h"
#include "support/context.h"

namespace {

OwnedContext UsageContext() {
  OwnedContext context(ORLCreateEC(nullptr, nullptr, nullptr, ORL_FLAG_RANGES));
  EC ec = context.get();
  for (const char *item : {"Amount", "Tax", "Bonus"}) AddInput(ec, item, 0);
  AddKeyword(ec, "Net Sales", 300, 0, 0);
  AddFunction(ec, {"F", 0, {{0, 0, 0}}, 0, 0, 0, nullptr});
  AddFunction(ec, {"G", 0, {{0, 0, 0}, {1, 0, 0}}, 0, 0, ORL_FUNC_EXPRESSION, nullptr});
  AddFunction(ec, {"K", 0, {{0, 300, 0}}, 0, 0, 0, nullptr});
  return context;
}

TEST(Usage, Rows) {
  const OwnedContext context = UsageContext();
  EC ec = context.get();
  Make(ec, "F(Amount)", "D");
  Make(ec, "1, Bonus + 1, K(Net Sales)", "S");
  Make(ec, "1 AND D()", "R");
  Make(ec, "1 + G(1, Tax)", "H");
  HEXP through = Make(ec, "F(H())", "I");
  struct Row {
    const char *formula;
    int32_t kind, used;
    const char *name;
  };
  const Row rows[] = {
      {"D", 1, 0, "amount"}, {"D", 1, 0, "F"},         {"D", -1, 0, "F"},
      {"D", 3, 0, "Amount"}, {"D", 7, 0, "Amount"},    {"D", 3, 0, "F"},
      {"S", 1, 1, "Bonus"},  {"S", 1, 1, "Net Sales"}, {"S", 1, 0, "net sales"},
      {"S", 0, 1, "K"},      {"S", 3, 0, "Net Sales"}, {"R", 1, 1, "Amount"},
      {"R", 2, 1, "D"},      {"R", 0, 1, "F"},
  };
  for (const Row &row : rows) {
    EXPECT_EQ(ORLIsItemUsed(ec, ORLHEXPFromName(ec, row.formula), row.kind, row.name), row.used)
        << row.formula << " " << row.kind << row.name;
  }
  EXPECT_EQ(ORLIsFunctionVariableUsed(ec, ORLHEXPFromName(ec, "R"), "F", "Amount"), 1);
  for (int32_t kind : {-1, 0, 1, 2, 3}) {
    for (const char *name : {"F", "G", "Amount", "Net Sales"}) {
      EXPECT_EQ(ORLIsItemAggregate(ec, kind, name), kind == 0 && *name == 'G') << kind << name;
    }
  }
  // A formula that no longer exists is a dead end.
  EXPECT_EQ(ORLIsAggregateUsed(ec, through), 1);
  ORLDelExpItemNoCheck(ec, ORL_FUNCTION, "G");
  EXPECT_EQ(ORLIsAggregateUsed(ec, through), 0);
  EXPECT_EQ(ORLIsItemUsed(ec, through, 0, "G"), 1);
  ASSERT_NE(Store(ec, ORLHEXPFromName(ec, "H"), "1", "Renamed").exp, nullptr);
  EXPECT_EQ(ORLIsItemUsed(ec, through, 1, "Tax"), 0);
  EXPECT_EQ(ORLIsItemUsed(ec, through, 2, "H"), 1);
}

// ---- Random contexts against a model that holds what each formula uses ----

const char *const kItems[] = {"Amount", "Tax", "Bonus"};

struct UsageModel {
  std::string name;
  std::set<std::string> uses;  // kind and name, "1Tax"; "F/Tax" for a call with just that item
  bool isItem, isSet;
};

bool IsItem(const std::string &text) {
  return text == kItems[0] || text == kItems[1] || text == kItems[2];
}

std::string RandomTerm(std::mt19937 &random, const std::vector<UsageModel> &known, int depth,
                       std::set<std::string> &uses) {
  const auto form = random() % 6;
  if (form == 0 || known.empty()) return "1";
  if (form == 1) {
    const UsageModel &other = known[random() % known.size()];
    if (other.isSet) return "2";  // a set cannot be referred to
    uses.insert(other.uses.begin(), other.uses.end());
    uses.insert("2" + other.name);
    return other.name + "()";
  }
  if (form > 3 || depth == 0) {
    std::string item = kItems[random() % 3];
    uses.insert("1" + item);
    return item;
  }
  const std::string function = form == 2 ? "F" : "G";
  uses.insert("0" + function);
  std::string text = function + "(";
  for (auto left = form - 1; left > 0; --left) {
    std::string argument = RandomTerm(random, known, depth - 1, uses);
    if (IsItem(argument)) {
      if (random() % 3 == 0) {
        argument.append(" + 1");
      } else {
        uses.insert(std::string(function).append("/").append(argument));
      }
    }
    text.append(text.back() == '(' ? "" : ", ").append(argument);
  }
  return text + ")";
}

TEST(Usage, RandomContextsAgainstModel) {
  std::mt19937 random(41);
  for (int round = 0; round < 60; ++round) {
    const OwnedContext context = UsageContext();
    EC ec = context.get();
    std::vector<UsageModel> models;
    std::vector<std::string> names = {"1Amount", "1Tax", "1Bonus", "0F", "0G", "0K"};
    for (int i = 0; i < 12; ++i) {
      UsageModel model = {"N" + std::to_string(i), {}, false, false};
      std::string text = RandomTerm(random, models, 3, model.uses);
      for (auto more = random() % 3; more > 0; --more) {
        model.isSet = model.isSet || random() % 8 == 0;
        text += (model.isSet ? ", " : " * ") + RandomTerm(random, models, 2, model.uses);
      }
      model.isItem = IsItem(text);
      Make(ec, text, model.name);
      models.push_back(model);
      names.push_back("2" + model.name);
    }
    ec->walkNumber = UINT32_MAX - static_cast<uint32_t>(round * 3);  // of walks that are to begin
    std::set<std::string> used, usedInComplex;
    for (const UsageModel &model : models) {
      HEXP exp = ORLHEXPFromName(ec, model.name.c_str());
      SCOPED_TRACE(Snapshot(ec) + model.name);
      for (const std::string &name : names) {
        EXPECT_EQ(ORLIsItemUsed(ec, exp, name[0] - '0', name.c_str() + 1), model.uses.count(name))
            << name;
      }
      for (const char *item : kItems) {
        for (const std::string function : {"F", "G"}) {
          EXPECT_EQ(ORLIsFunctionVariableUsed(ec, exp, function.c_str(), item),
                    model.uses.count(function + "/" + item))
              << function << item;
        }
      }
      EXPECT_EQ(ORLIsAggregateUsed(ec, exp), model.uses.count("0G"));
      used.insert(model.uses.begin(), model.uses.end());
      if (!model.isItem) usedInComplex.insert(model.uses.begin(), model.uses.end());
    }
    for (const std::string &name : names) {
      if (name[0] == '2') {
        EXPECT_EQ(ORLIsNamedFormulaUsed(ec, name.c_str() + 1), used.count(name)) << name;
      } else if (name[0] == '1') {
        EXPECT_EQ(ORLIsItemUsedInComplex(ec, name.c_str() + 1), usedInComplex.count(name)) << name;
      }
    }
    if (testing::Test::HasFailure()) return;
  }
}

}  // namespace
