// Items: adding, lookups, enumeration, deletion with and without a check of their use.
#include "engine/items.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "support/context.h"

namespace {

OwnedContext Empty() {
  return OwnedContext(ORLCreateEC(nullptr, nullptr, nullptr, 0));
}

static_assert(sizeof(ParamRecord) == 6 && sizeof(ExprItem) == 93 &&
              offsetof(ExprItem, name) == 20 && offsetof(ExprItem, paramCount) == 85 &&
              offsetof(ExprItem, firstOptional) == 87 && offsetof(ExprItem, optionalCount) == 89 &&
              offsetof(ExprItem, itemFlags) == 91);

TEST(Items, BadKinds) {
  const OwnedContext context = Empty();
  EC ec = context.get();
  for (const int kind : {-1, 2, 4, 256}) {
    ExprItem item = {};
    item.kind = static_cast<int16_t>(kind);
    EXPECT_EQ(ORLAddExpressionItem(ec, &item), 0) << kind;
    EXPECT_EQ(ORLDelExpItemNoCheck(ec, kind, ""), 0) << kind;
    EXPECT_EQ(ORLLoadComboBox(ec, kind, nullptr), 0) << kind;
    EXPECT_TRUE(ItemNames(ec, kind).empty()) << kind;
    EXPECT_EQ(ORLGetExpressionItem(ec, kind, "", &item, 0), 0) << kind;
  }
}

TEST(Items, RecordsAreCopied) {
  const OwnedContext context = Empty();
  EC ec = context.get();
  ORL_EXPR_ITEM_WITH(3) row = {};
  char routineName[] = "r";
  row.item.routineName = routineName;
  for (char &letter : row.item.name) letter = 'n';  // a host that forgets the terminator
  row.item.paramCount = 2;
  row.parameters[0] = {1, 2, 3};
  row.parameters[1] = {0, 1, 0};
  row.parameters[2] = {9, 9, 9};  // after the count: not read
  ASSERT_EQ(ORLAddExpressionItem(ec, &row.item), 1);
  routineName[0] = 'x';
  row.parameters[0].dataType = 7;
  const ExprItem *kept = ItemFind(ItemTableOf(ec, ORL_FUNCTION), std::string(64, 'n').c_str());
  ASSERT_NE(kept, nullptr);
  EXPECT_STREQ(+kept->routineName, "r");
  EXPECT_EQ(+ItemParameters(kept)[0].mode, 1);
  EXPECT_EQ(+ItemParameters(kept)[0].dataType, 2);
  EXPECT_EQ(+ItemParameters(kept)[0].subClass, 3);
  EXPECT_EQ(+ItemParameters(kept)[1].dataType, 1);
  const std::string name(64, 'n');
  for (const int32_t parameters : {-1, 0, 1, 2, 3}) {
    ORL_EXPR_ITEM_WITH(3) copy = {};
    EXPECT_EQ(ORLGetExpressionItem(ec, ORL_FUNCTION, name.c_str(), &copy.item, parameters), 1);
    EXPECT_EQ(+copy.item.name, name) << parameters;
    EXPECT_EQ(+copy.item.routineName, +kept->routineName) << parameters;
    EXPECT_EQ(+copy.parameters[0].subClass, parameters > 0 ? 3 : 0) << parameters;
    EXPECT_EQ(+copy.parameters[1].dataType, parameters > 1 ? 1 : 0) << parameters;
    EXPECT_EQ(+copy.parameters[2].mode, 0) << parameters;
  }
  row.item.paramCount = -1;  // written without parentheses, and accepted with them too
  row.item.name[1] = '\0';
  EXPECT_EQ(ORLAddExpressionItem(ec, &row.item), 1);
  EXPECT_EQ(Outcome(Parse(ec, "n()")), "type 0");
  row = {};
  EXPECT_EQ(ORLGetExpressionItem(ec, ORL_FUNCTION, "n", &row.item, 3), 1);
  EXPECT_EQ(+row.parameters[0].dataType, 7);
  EXPECT_EQ(+row.parameters[1].dataType, 0);  // the row has one record
}

TEST(Items, KeywordsByName) {
  const OwnedContext context = Empty();
  EC ec = context.get();
  AddKeyword(ec, "Exact", 300, 1, 1);
  AddKeyword(ec, "exact", 301, 2, 0);
  AddKeyword(ec, "Loose", 302, 0, 0);
  struct Row {
    const char *name;
    int32_t type, resultType;
  };
  for (const Row &row : {Row{"Exact", 300, 1}, Row{"EXACT", 301, 1}, Row{"exact", 301, 1},
                         Row{"LOOSE", 302, 0}, Row{"loos", -1, -1}, Row{"", -1, -1}}) {
    EXPECT_EQ(KeywordDataType(ec, row.name), row.type) << row.name;
    EXPECT_EQ(KeywordResultType(ec, row.name), row.resultType) << row.name;
  }
}

// Tables keep insertion order through deletions, and a name means the first row that has it.
TEST(Items, OrderAmongMany) {
  const OwnedContext context = Empty();
  EC ec = context.get();
  std::vector<std::string> names;
  for (int i = 0; i <= 3000; ++i) {
    names.push_back("Item" + std::to_string((i == 3000 ? 2 : i) * 7919 % 3000));
    AddInput(ec, names.back().c_str(), static_cast<int16_t>(i % 7));
  }
  for (int i = 2999; i >= 0; i -= 3) {
    const std::string name = names[static_cast<size_t>(i)];
    EXPECT_EQ(InputDataType(ec, name.c_str()), i % 7) << name;
    EXPECT_EQ(ORLDelExpItemNoCheck(ec, ORL_INPUT, name.c_str()), 1) << name;
    EXPECT_EQ(InputDataType(ec, name.c_str()), i == 2 ? 3000 % 7 : -1) << name;
    names.erase(names.begin() + i);
  }
  EXPECT_EQ(ItemNames(ec, ORL_INPUT), names);
  EXPECT_EQ(InputDataType(ec, "item1"), -1);
}

}  // namespace
