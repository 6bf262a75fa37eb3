// Usage queries: what an expression uses, itself and through the formulas that it refers to.
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "support/context.h"

namespace {

using Names = std::set<std::string>;

OwnedContext UsageContext() {
  OwnedContext context(ORLCreateEC(nullptr, nullptr, nullptr, ORL_FLAG_RANGES));
  EC ec = context.get();
  AddInput(ec, "Amount", 0);
  AddInput(ec, "Tax", 0);
  AddInput(ec, "Bonus", 0);
  AddKeyword(ec, "Net Sales", 300, 0, 0);
  AddFunction(ec, {"F", 0, {{0, 0, 0}}, 0, 0, 0, nullptr});
  AddFunction(ec, {"G", 0, {{0, 0, 0}, {1, 0, 0}}, 0, 0, ORL_FUNC_EXPRESSION, nullptr});
  AddFunction(ec, {"K", 0, {{0, 300, 0}}, 0, 0, 0, nullptr});
  AddFunction(ec, {"Z", 0, {}, 0, 0, 0, nullptr});
  return context;
}

TEST(Usage, Rows) {
  const OwnedContext context = UsageContext();
  EC ec = context.get();
  EXPECT_EQ(ORLIsNamedFormulaUsed(ec, "A"), 0);
  EXPECT_EQ(ORLIsItemUsedInComplex(ec, "Amount"), 0);
  HEXP a = Parse(ec, "Amount", "A").exp;
  EXPECT_EQ(ORLIsItemUsedInComplex(ec, "Amount"), 0);
  HEXP b = Parse(ec, "A()+1", "B").exp;
  EXPECT_EQ(ORLIsItemUsedInComplex(ec, "Amount"), 1);
  HEXP c = Parse(ec, "F(Amount+1)", "C").exp;
  HEXP d = Parse(ec, "F(Amount)", "D").exp;
  HEXP nested = Parse(ec, "F(F(Tax))", "E").exp;
  HEXP set = Parse(ec, "1, Bonus + 1, K(Net Sales)", "S").exp;
  HEXP range = Parse(ec, "1 AND D()", "R").exp;
  HEXP aggregate = Parse(ec, "1 + G(1, Tax)", "H").exp;
  HEXP through = Parse(ec, "Z() + F(H())", "I").exp;
  struct Row {
    HEXP exp;
    const char *name;
    int32_t kind, used;
  };
  const Row rows[] = {
      {b, "Amount", 1, 1},       {b, "A", 2, 1},           {b, "B", 2, 0},
      {d, "amount", 1, 0},       {d, "F", 0, 1},           {d, "F", 1, 0},
      {d, "Amount", 3, 0},       {d, "F", 3, 0},           {d, "Amount", 7, 0},
      {d, "F", -1, 0},           {c, "Amount", 1, 1},      {a, "F", 0, 0},
      {set, "Bonus", 1, 1},      {set, "Tax", 1, 0},       {set, "K", 0, 1},
      {set, "Net Sales", 1, 1},  {set, "net sales", 1, 0}, {set, "Net Sales", 3, 0},
      {range, "Amount", 1, 1},   {range, "D", 2, 1},       {range, "F", 0, 1},
      {through, "G", 0, 1},      {through, "Tax", 1, 1},   {through, "Z", 0, 1},
      {nullptr, "Amount", 1, 0},
  };
  for (const Row &row : rows) {
    EXPECT_EQ(ORLIsItemUsed(ec, row.exp, row.kind, row.name), row.used)
        << (row.exp == nullptr ? "null" : NameOf(ec, row.exp)) << " " << row.kind << row.name;
  }
  EXPECT_EQ(ORLIsNamedFormulaUsed(ec, "A"), 1);
  EXPECT_EQ(ORLIsNamedFormulaUsed(ec, "B"), 0);
  EXPECT_EQ(ORLIsFunctionVariableUsed(ec, d, "F", "Amount"), 1);
  EXPECT_EQ(ORLIsFunctionVariableUsed(ec, c, "F", "Amount"), 0);
  EXPECT_EQ(ORLIsFunctionVariableUsed(ec, nested, "F", "Tax"), 1);
  EXPECT_EQ(ORLIsFunctionVariableUsed(ec, range, "F", "Amount"), 1);
  EXPECT_EQ(ORLIsFunctionVariableUsed(ec, through, "Z", "Tax"), 0);
  EXPECT_EQ(ORLIsFunctionVariableUsed(ec, nullptr, "F", "Amount"), 0);
  EXPECT_EQ(ORLIsAggregateUsed(ec, aggregate), 1);
  EXPECT_EQ(ORLIsAggregateUsed(ec, through), 1);
  EXPECT_EQ(ORLIsAggregateUsed(ec, set), 0);
  EXPECT_EQ(ORLIsAggregateUsed(ec, nullptr), 0);
  for (int32_t kind : {-1, 0, 1, 2, 3}) {
    EXPECT_EQ(ORLIsItemAggregate(ec, kind, "G"), kind == 0 ? 1 : 0) << kind;
    EXPECT_EQ(ORLIsItemAggregate(ec, kind, "F"), 0) << kind;
    EXPECT_EQ(ORLIsItemAggregate(ec, kind, "Amount"), 0) << kind;
    EXPECT_EQ(ORLIsItemAggregate(ec, kind, "Net Sales"), 0) << kind;
  }
  // What is gone counts as a dead end.
  ORLDelExpItemNoCheck(ec, ORL_FUNCTION, "G");
  EXPECT_EQ(ORLIsAggregateUsed(ec, through), 0);
  EXPECT_EQ(ORLIsItemUsed(ec, through, 0, "G"), 1);
  ASSERT_NE(Store(ec, aggregate, "1", "Renamed").exp, nullptr);
  EXPECT_EQ(ORLIsItemUsed(ec, through, 1, "Tax"), 0);
  EXPECT_EQ(ORLIsItemUsed(ec, through, 2, "H"), 1);
}

// ---- Random contexts against a model that holds each formula's direct uses ----

struct Model {
  std::string name;
  Names items, functions, formulas, pairs;  // pairs: "F/Amount" for a call with the bare item
  bool bare;                                // the text is one item
};

std::string RandomTerm(std::mt19937 &random, const std::vector<Model> &known, int depth,
                       Model &model);

// An argument of `function`; notes the pair when it is a bare item.
std::string RandomArgument(std::mt19937 &random, const std::vector<Model> &known, int depth,
                           const std::string &function, Model &model) {
  static const std::vector<std::string> items = {"Amount", "Tax", "Bonus"};
  if (depth > 0 && random() % 2 == 0) {
    const std::string plus = random() % 2 == 0 ? " + 1" : "";
    Model inner = {};
    const std::string text = RandomTerm(random, known, depth - 1, inner);
    if (plus.empty() && inner.bare) model.pairs.insert(function + "/" + text);
    model.items.insert(inner.items.begin(), inner.items.end());
    model.functions.insert(inner.functions.begin(), inner.functions.end());
    model.formulas.insert(inner.formulas.begin(), inner.formulas.end());
    model.pairs.insert(inner.pairs.begin(), inner.pairs.end());
    return text + plus;
  }
  const std::string &item = items[random() % items.size()];
  model.items.insert(item);
  model.pairs.insert(function + "/" + item);
  return item;
}

std::string RandomTerm(std::mt19937 &random, const std::vector<Model> &known, int depth,
                       Model &model) {
  static const std::vector<std::string> items = {"Amount", "Tax", "Bonus"};
  const auto form = random() % 6;
  if (form == 0) return "1";
  if (form == 1 && !known.empty()) {
    const std::string &name = known[random() % known.size()].name;
    model.formulas.insert(name);
    return name + "()";
  }
  if (form < 4 && depth > 0) {
    const std::string function = form == 2 ? "F" : "G";
    model.functions.insert(function);
    const std::string first = RandomArgument(random, known, depth - 1, function, model);
    if (function == "F") return "F(" + first + ")";
    return "G(" + first + ", " + RandomArgument(random, known, depth - 1, function, model) + ")";
  }
  const std::string &item = items[random() % items.size()];
  model.items.insert(item);
  model.bare = true;
  return item;
}

bool Contains(const Names &names, const std::string &name) {
  return names.count(name) != 0;
}

// The model with the uses of all formulas that it refers to, themselves closed already.
void Close(Model &model, const std::vector<Model> &known) {
  for (const Model &other : known) {
    if (!Contains(model.formulas, other.name)) continue;
    model.items.insert(other.items.begin(), other.items.end());
    model.functions.insert(other.functions.begin(), other.functions.end());
    model.pairs.insert(other.pairs.begin(), other.pairs.end());
    model.formulas.insert(other.formulas.begin(), other.formulas.end());
  }
}

TEST(Usage, RandomContextsAgainstModel) {
  std::mt19937 random(41);
  for (int round = 0; round < 60; ++round) {
    const OwnedContext context = UsageContext();
    EC ec = context.get();
    std::vector<Model> models;
    for (int i = 0; i < 12; ++i) {
      Model model = {};
      std::string text = RandomTerm(random, models, 3, model);
      for (auto more = random() % 3; more > 0; --more) {
        text += (random() % 2 == 0 ? " * " : ", ") + RandomTerm(random, models, 2, model);
        model.bare = false;
      }
      // A set cannot be referred to, so its commas become another operator now and then.
      if (i % 3 != 2 && text.find(", ") != std::string::npos) model.name = "Set";
      model.name += "N" + std::to_string(i);
      HEXP exp = Parse(ec, text, model.name.c_str()).exp;
      ASSERT_NE(exp, nullptr) << text;
      if (ORLIsExpRange(ec, exp, 1) != 0) {
        ORLDestroyEXP(ec, exp);
        continue;
      }
      Close(model, models);
      models.push_back(model);
    }
    Names usedFormulas;
    for (size_t i = 0; i < models.size(); ++i) {
      const Model &model = models[i];
      HEXP exp = ORLHEXPFromName(ec, model.name.c_str());
      SCOPED_TRACE(model.name + " = " + TextOf(ec, exp));
      for (const char *item : {"Amount", "Tax", "Bonus"}) {
        EXPECT_EQ(ORLIsItemUsed(ec, exp, 1, item), Contains(model.items, item)) << item;
        for (const std::string function : {"F", "G"}) {
          EXPECT_EQ(ORLIsFunctionVariableUsed(ec, exp, function.c_str(), item),
                    Contains(model.pairs, function + "/" + item))
              << function << item;
        }
      }
      for (const char *function : {"F", "G", "Z"}) {
        EXPECT_EQ(ORLIsItemUsed(ec, exp, 0, function), Contains(model.functions, function));
      }
      EXPECT_EQ(ORLIsAggregateUsed(ec, exp), Contains(model.functions, "G"));
      for (const Model &other : models) {
        EXPECT_EQ(ORLIsItemUsed(ec, exp, 2, other.name.c_str()),
                  Contains(model.formulas, other.name))
            << other.name;
      }
      usedFormulas.insert(model.formulas.begin(), model.formulas.end());
    }
    for (const Model &model : models) {
      EXPECT_EQ(ORLIsNamedFormulaUsed(ec, model.name.c_str()), Contains(usedFormulas, model.name));
    }
    for (const char *item : {"Amount", "Tax", "Bonus"}) {
      bool complex = false;
      for (const Model &model : models) complex |= Contains(model.items, item) && !model.bare;
      EXPECT_EQ(ORLIsItemUsedInComplex(ec, item), complex) << item;
    }
    if (testing::Test::HasFailure()) return;
  }
}

}  // namespace
