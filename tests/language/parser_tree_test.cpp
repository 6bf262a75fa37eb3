// Trees of good texts, with kinds, types and spans.
#include <gtest/gtest.h>

#include <string>

#include "engine/expressions.h"
#include "support/context.h"
#include "support/tree_text.h"

namespace {

// Every node's parent and slot must agree with where it stands, and the walk must visit them all.
void ExpectLinked(const ExprNode *root) {
  EXPECT_EQ(root->parent, nullptr);
  for (const ExprNode *node = root; node != nullptr; node = ExprNodeNext(root, node)) {
    EXPECT_EQ(node->kind == NODE_SET || node->kind == NODE_RANGE,
              node == root && node->length == 0);
    for (uint32_t i = 0; HasList(node->kind) && i < ExprListCount(NodeList(node)); ++i) {
      const ExprNode *child = ExprListAt(NodeList(node), i);
      EXPECT_EQ(child->parent, node);
      EXPECT_EQ(child->slot, i);
    }
    if (HasOperands(node->kind)) {
      EXPECT_EQ(LeftOperand(node)->parent, node);
      EXPECT_EQ(RightOperand(node)->parent, node);
    }
  }
}

TEST(ParserTrees, Rows) {
  constexpr uint16_t kFlags = ORL_FLAG_RANGES | ORL_FLAG_MODIFIERS | ORL_FLAG_PERCENT;
  struct Row {
    const char *text, *tree;
  };
  const Row rows[] = {
      {"-5", "-5[0 1+1]"},
      {"- 5.25", "-5.25[0 2+4]"},
      {" Amount", "Amount[0 1+6]"},
      {"'it''s'", "~'it''s'[2 0+7]"},
      {"'abc'", "'abc'[2 0+5]"},
      {"''", "''[2 0+2]"},
      {"'a\\'", "'a\\'[2 0+4]"},
      {"2012-01-31", "#2012-01-31#[1 0+10]"},
      // Parentheses leave no node; an operator has the span of the token scanned last.
      {"1 + 2", "+[0 4+1](1[0 0+1] 2[0 4+1])"},
      {"(1 + 2)", "+[0 6+1](1[0 1+1] 2[0 5+1])"},
      {"1 + 2 * 30 - 4", "-[0 13+1](+[0 11+1](1[0 0+1] *[0 11+1](2[0 4+1] 30[0 8+2])) 4[0 13+1])"},
      {"9 - 4 - 3", "-[0 8+1](-[0 6+1](9[0 0+1] 4[0 4+1]) 3[0 8+1])"},
      {"8 / 4 * 3", "*[0 8+1](/[0 6+1](8[0 0+1] 4[0 4+1]) 3[0 8+1])"},
      {"8 * 4 % 3", "*[0 8+1](8[0 0+1] %[0 8+1](4[0 4+1] 3[0 8+1]))"},
      {"Name || 'b' || Name", "||[2 15+4](||[2 8+3](Name[2 0+4] 'b'[2 8+3]) Name[2 15+4])"},
      {"Start + (2 * 3) DAYS", "+:1[1 16+4](Start[1 0+5] *[0 14+1](2[0 9+1] 3[0 13+1]))"},
      {"Start - Amount seconds", "-:32[1 15+7](Start[1 0+5] Amount[0 8+6])"},
      {"Start + (3) HOUR - 2", "-[1 19+1](+:8[1 12+4](Start[1 0+5] 3[0 9+1]) 2[0 19+1])"},
      {"Zero()", "Zero[0 0+5^5]()"},
      {"@PI", "@PI[0 0+3]()"},
      {"Half  ( Amount )", "Half[0 0+7^15](Amount[0 8+6])"},
      {"Count(*)", "Count[0 0+6 form2^7]()"},
      {"Sum(DISTINCT Amount)", "Sum[0 0+4 form4^19](Amount[0 13+6])"},
      {"Sum(ALL Amount)", "Sum[0 0+4 form4^14](Amount[0 8+6])"},
      {"Opt(1, Half(2), 3) + 1",
       "+[0 21+1](Opt[0 0+4^17](1[0 4+1] Half[0 7+5^13](2[0 12+1]) 3[0 16+1]) 1[0 21+1])"},
      {"KeyFn(net sales)", "KeyFn[2 0+6^15](net sales[300 6+9])"},
      {"Total() * 2", "*[0 10+1](Total![0 0+6^6] 2[0 10+1])"},
      // AND leaves the span of the token before it.
      {"1.5 + 2 AND Amount", "RANGE[0 0+0](+[0 6+1](1.5[0 0+3] 2[0 6+1]) Amount[0 12+6])"},
      {"Amount + 1, Tax, 3", "SET[0 0+0](+[0 10+1](Amount[0 0+6] 1[0 9+1]) Tax[0 12+3] 3[0 17+1])"},
      {"Red, Red", "SET[301 0+0](Red[301 0+3] Red[301 5+3])"},
      // What only looks like a date.
      {"13/45/99", "/[0 6+2](/[0 5+1](13[0 0+2] 45[0 3+2]) 99[0 6+2])"},
      {"1.5E-3 * 2", "*[0 9+1](0.0015[0 0+6] 2[0 9+1])"},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.text);
    const OwnedContext context = StandardContext(kFlags);
    ASSERT_EQ(Outcome(Parse(context.get(), "1", "Total")), "type 0");
    const Parsed parsed = Parse(context.get(), row.text);
    EXPECT_EQ(parsed.exp == nullptr ? Outcome(parsed) : "ok", "ok");
    if (parsed.exp == nullptr) continue;
    EXPECT_EQ(TreeText(parsed.exp->tree), row.tree);
    ExpectLinked(parsed.exp->tree);
  }
}

}  // namespace
