// Items: adding, lookups, enumeration, deletion with and without a look at their use.
#include "engine/items.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include "support/context.h"

namespace {

using Names = std::vector<std::string>;

OwnedContext Empty(OrlLookupProc lookup = nullptr) {
  return OwnedContext(ORLCreateEC(nullptr, lookup, nullptr, 0));
}

TEST(Items, LayoutOfTheRecords) {
  EXPECT_EQ(sizeof(ParamRecord), 6u);
  EXPECT_EQ(sizeof(ExprItem), 93u);
  EXPECT_EQ(offsetof(ExprItem, name), 20u);
  EXPECT_EQ(offsetof(ExprItem, paramCount), 85u);
  EXPECT_EQ(offsetof(ExprItem, firstOptional), 87u);
  EXPECT_EQ(offsetof(ExprItem, optionalCount), 89u);
  EXPECT_EQ(offsetof(ExprItem, itemFlags), 91u);
}

TEST(Items, BadKindsAndNulls) {
  const OwnedContext context = Empty();
  EC ec = context.get();
  for (const int16_t kind : std::initializer_list<int16_t>{-1, 2, 4, 256}) {
    ExprItem item = {};
    item.kind = kind;
    EXPECT_EQ(ORLAddExpressionItem(ec, &item), 0) << kind;
    EXPECT_EQ(ORLDelExpItemNoCheck(ec, kind, ""), 0) << kind;
    EXPECT_EQ(ORLLoadComboBox(ec, kind, nullptr), 0) << kind;
    EXPECT_TRUE(ItemNames(ec, kind).empty()) << kind;
    EXPECT_EQ(ItemTableOf(ec, kind), nullptr) << kind;
  }
  EXPECT_EQ(Snapshot(ec), "\n\n\n");
  ExprItem item = {};
  EXPECT_EQ(ORLAddExpressionItem(nullptr, &item), 0);
  EXPECT_EQ(ORLDelExpItemNoCheck(nullptr, 1, "x"), 0);
  EXPECT_EQ(ORLDelExpItemNoCheck(ec, 1, "x"), 0);
  EXPECT_EQ(ORLDeleteExpItem(nullptr, 1, "x", nullptr), 1);
  EXPECT_EQ(ORLLoadComboBox(nullptr, 1, nullptr), 0);
}

TEST(Items, FunctionRowsKeepTheirParameters) {
  const OwnedContext context = Empty();
  ORL_EXPR_ITEM_WITH(3) row = {};
  std::vector<char> routineName = {'r', 0};
  row.item.routineName = routineName.data();
  row.item.name[0] = 'f';
  row.item.paramCount = 2;
  row.parameters[0] = {1, 2, 3};
  row.parameters[1] = {0, 1, 0};
  row.parameters[2] = {9, 9, 9};  // behind the count: not read
  ASSERT_EQ(ORLAddExpressionItem(context.get(), &row.item), 1);
  routineName[0] = 'x';
  row.parameters[0].dataType = 7;
  const ExprItem *kept = ItemFind(ItemTableOf(context.get(), ORL_FUNCTION), "f");
  ASSERT_NE(kept, nullptr);
  EXPECT_STREQ(kept->routineName, "r");
  EXPECT_EQ(+ItemParameters(kept)[0].mode, 1);
  EXPECT_EQ(+ItemParameters(kept)[0].dataType, 2);
  EXPECT_EQ(+ItemParameters(kept)[0].subClass, 3);
  EXPECT_EQ(+ItemParameters(kept)[1].dataType, 1);

  // A negative count has one record and is written without parentheses.
  row.item.paramCount = -1;
  row.item.name[0] = 'g';
  EXPECT_EQ(ORLAddExpressionItem(context.get(), &row.item), 1);
  EXPECT_EQ(ORLIsItemAggregate(context.get(), 0, "g"), 0);
  EXPECT_EQ(Outcome(Parse(context.get(), "g()")), "type 0");
}

TEST(Items, LookupOfRoutines) {
  static int asked = 0;
  asked = 0;
  const OwnedContext context = Empty([](const char *name) -> void * {
    ++asked;
    return std::string(name) == "known" ? Address(&HostValue) : nullptr;
  });
  struct Row {
    const char *routineName;
    void *routine, *kept;
    int asked;
  };
  int other = 0;
  char known[] = "known", unknown[] = "unknown";
  for (const Row &row : {Row{known, nullptr, Address(&HostValue), 1}, Row{known, &other, &other, 0},
                         Row{unknown, nullptr, nullptr, 1}, Row{nullptr, nullptr, nullptr, 0}}) {
    asked = 0;
    ExprItem item = {};
    item.kind = ORL_INPUT;
    item.name[0] = 'x';
    item.routineName = const_cast<char *>(row.routineName);
    item.routine = row.routine;
    ASSERT_EQ(ORLAddExpressionItem(context.get(), &item), 1);
    const ExprItem *kept = ItemFind(ItemTableOf(context.get(), ORL_INPUT), "x");
    void *const routine = kept->routine;  // fields of packed records cannot be referred to
    EXPECT_EQ(routine, row.kept);
    EXPECT_EQ(asked, row.asked);
    EXPECT_EQ(ORLDelExpItemNoCheck(context.get(), ORL_INPUT, "x"), 1);
  }
}

TEST(Items, FullLengthNames) {
  const OwnedContext context = Empty();
  ExprItem item = {};
  item.kind = ORL_INPUT;
  for (char &letter : item.name) letter = 'n';  // a host that forgets the terminator
  EXPECT_EQ(ORLAddExpressionItem(context.get(), &item), 1);
  EXPECT_EQ(ItemNames(context.get(), ORL_INPUT), Names{std::string(64, 'n')});
  EXPECT_EQ(InputDataType(context.get(), std::string(64, 'n').c_str()), 0);
}

TEST(Items, LookupsTakeTheFirstMatch) {
  const OwnedContext context = Empty();
  EC ec = context.get();
  EXPECT_EQ(InputDataType(ec, "x"), -1);
  EXPECT_EQ(KeywordDataType(ec, "x"), -1);
  AddKeyword(ec, "Exact", 300, 1, 1);
  AddKeyword(ec, "exact", 301, 2, 0);
  AddKeyword(ec, "Loose", 302, 0, 0);
  AddInput(ec, "x", 2);
  AddInput(ec, "x", 1);
  AddFunction(ec, {"f", 1, {}, 0, 0, 0, nullptr});
  struct Row {
    const char *name;
    int32_t type, resultType;
  };
  for (const Row &row : {Row{"Exact", 300, 1}, Row{"EXACT", 301, 1}, Row{"exact", 301, 1},
                         Row{"LOOSE", 302, 0}, Row{"loos", -1, -1}, Row{"", -1, -1}}) {
    EXPECT_EQ(KeywordDataType(ec, row.name), row.type) << row.name;
    EXPECT_EQ(KeywordResultType(ec, row.name), row.resultType) << row.name;
  }
  EXPECT_EQ(InputDataType(ec, "x"), 2);
  EXPECT_EQ(InputDataType(ec, "X"), -1);
  EXPECT_EQ(FunctionDataType(ec, "f"), 1);
  EXPECT_EQ(ORLDelExpItemNoCheck(ec, ORL_INPUT, "x"), 1);
  EXPECT_EQ(InputDataType(ec, "x"), 1);
  EXPECT_EQ(ORLDelExpItemNoCheck(ec, ORL_INPUT, "x"), 1);
  EXPECT_EQ(ORLDelExpItemNoCheck(ec, ORL_INPUT, "x"), 0);
  EXPECT_EQ(InputDataType(ec, "x"), -1);
}

// Tables keep the order of adding through deletions, whatever the number of rows.
TEST(Items, OrderAmongMany) {
  const OwnedContext context = Empty();
  EC ec = context.get();
  Names expected;
  for (int i = 0; i < 3000; ++i) {
    const std::string name = "Item" + std::to_string(i * 7919 % 3000);
    ASSERT_EQ(AddInput(ec, name.c_str(), static_cast<int16_t>(i % 3)), 1);
    expected.push_back(name);
  }
  for (int i = 2999; i >= 0; i -= 3) {
    EXPECT_EQ(ORLDelExpItemNoCheck(ec, ORL_INPUT, expected[static_cast<size_t>(i)].c_str()), 1);
    expected.erase(expected.begin() + i);
  }
  EXPECT_EQ(ItemNames(ec, ORL_INPUT), expected);
  EXPECT_EQ(InputDataType(ec, expected[1].c_str()), 1);
}

// ---- Deletion with a look at the use ----

struct Deletion {
  Names asked;
  std::string stopAt;
};
Deletion deletion;

int32_t DestroyAsked(EC ec, HEXP exp, ExprItem *row) {
  EXPECT_STREQ(row->name, "X");
  deletion.asked.push_back(NameOf(ec, exp));
  if (deletion.asked.back() == deletion.stopAt) return 0;
  EXPECT_EQ(ORLDestroyEXP(ec, exp), 1) << deletion.asked.back();
  return 1;
}

struct Definition {
  const char *name, *text;
};

TEST(DeleteItem, UsersGoFirst) {
  struct Row {
    std::vector<Definition> definitions;
    std::string stopAt;
    Names asked, left;
    int32_t result;
  };
  const Row rows[] = {
      {{{"A", "X"}, {"B", "A() + 1"}, {"C", "1"}}, "", {"B", "A"}, {"C"}, 1},
      {{{"A", "X"}, {"B", "A()"}, {"C", "B() + A()"}, {"D", "X"}}, "", {"C", "D", "B", "A"}, {}, 1},
      {{{"A", "X"}, {"B", "A()"}, {"C", "2"}}, "B", {"B"}, {"A", "B", "C"}, 0},
      {{{"A", "X"}, {"B", "A()"}, {"C", "2"}}, "A", {"B", "A"}, {"A", "C"}, 0},
      {{{"C", "2"}}, "", {}, {"C"}, 1},
      {{}, "", {}, {}, 1},
  };
  for (const Row &row : rows) {
    const OwnedContext context = Empty();
    EC ec = context.get();
    AddInput(ec, "X", 0);
    for (const Definition &definition : row.definitions) {
      ASSERT_EQ(Outcome(Parse(ec, definition.text, definition.name)), "type 0");
    }
    deletion = {{}, row.stopAt};
    EXPECT_EQ(ORLDeleteExpItem(ec, ORL_INPUT, "X", &DestroyAsked), row.result);
    EXPECT_EQ(deletion.asked, row.asked);
    Names left;
    for (int32_t i = 0; i < ORLGetExpressionCount(ec); ++i) {
      left.push_back(NameOf(ec, ORLHEXPFromOrdinal(ec, i)));
    }
    EXPECT_EQ(left, row.left);
    EXPECT_EQ(ItemNames(ec, ORL_INPUT).size(), row.result == 0 ? 1u : 0u);
  }
}

TEST(DeleteItem, FunctionsAndUnknownNames) {
  const OwnedContext context = Empty();
  EC ec = context.get();
  AddFunction(ec, {"X", 0, {}, 0, 0, 0, nullptr});
  AddInput(ec, "Y", 0);
  ASSERT_EQ(Outcome(Parse(ec, "X() + 1", "A")), "type 0");
  deletion = {};
  EXPECT_EQ(ORLDeleteExpItem(ec, ORL_INPUT, "Unknown", &DestroyAsked), 1);
  EXPECT_EQ(ORLDeleteExpItem(ec, ORL_INPUT, "Y", &DestroyAsked), 1);
  EXPECT_TRUE(deletion.asked.empty());
  EXPECT_EQ(ORLDeleteExpItem(ec, ORL_FUNCTION, "X", &DestroyAsked), 1);
  EXPECT_EQ(deletion.asked, Names{"A"});
  EXPECT_TRUE(ItemNames(ec, ORL_FUNCTION).empty());
  EXPECT_TRUE(ItemNames(ec, ORL_INPUT).empty());
}

}  // namespace
