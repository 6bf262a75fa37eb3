// Rename: texts against a model of the walk through their words, trees against a fresh parse of the
// text that is stored now.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "engine/expressions.h"
#include "support/cases.h"
#include "support/context.h"
#include "support/tree_text.h"

namespace {

constexpr int32_t kWestern = 1252, kDoubleByte = 932, kUtf8 = 65001;

// ---- The model ----

// Bytes of the character at `at`; in the other pages no byte of a longer one is a delimiter.
size_t CharBytes(const std::string &text, size_t at, int32_t page) {
  const auto byte = static_cast<uint8_t>(text[at]);
  const bool lead =
      page == kDoubleByte && ((byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC));
  return lead && at + 1 < text.size() ? 2 : 1;
}

bool Is(const std::string &text, size_t at, int32_t page, const char *bytes) {
  return CharBytes(text, at, page) == 1 && std::strchr(bytes, text[at]) != nullptr;
}

std::string Folded(std::string text, int32_t page) {
  for (size_t at = 0; at < text.size(); at += CharBytes(text, at, page)) {
    const bool e = text[at] == '\xC9' && (page == kWestern);
    const bool second = page == kUtf8 && at > 0 && text[at - 1] == '\xC3' && text[at] == '\x89';
    const bool capital = CharBytes(text, at, page) == 1 && text[at] >= 'A' && text[at] <= 'Z';
    if (e || second || capital) text[at] = static_cast<char>(text[at] | 0x20);
  }
  return text;
}

std::string Model(const std::string &text, const std::string &before, const std::string &after,
                  int32_t page) {
  std::string result;
  for (size_t at = 0; at < text.size();) {
    while (at < text.size() && Is(text, at, page, " \t\r()*+-/|%,")) result += text[at++];
    const size_t start = at;
    for (bool quoted = false; at < text.size(); at += CharBytes(text, at, page)) {
      if (!quoted && Is(text, at, page, " \t\r()*+-/|%,")) break;
      quoted = quoted != Is(text, at, page, "\"");
    }
    const std::string token = text.substr(start, at - start);
    const bool found = Folded(token, page) == Folded(before, page);
    result += found ? after : token;
  }
  return result;
}

// ---- What must hold after a rename ----

// The nodes of a tree in preorder; items of one name may be shown under another.
std::string Nodes(const ExprNode *tree, const std::string &before = "", const char *after = "") {
  std::string all;
  for (const ExprNode *node = tree; node != nullptr; node = ExprNodeNext(tree, node)) {
    const char *text = HasText(NodeKindOf(node)) ? NodeText(node) : "";
    const bool renamed = NodeKindOf(node) == NODE_ITEM && before == text;
    all += std::to_string(NodeKindOf(node)) + ":" + (renamed ? after : text) + "@" +
           std::to_string(NodeOffset(node)) + "+" + std::to_string(NodeLength(node)) + " ";
  }
  return all;
}

std::string Uses(EC ec, HEXP exp) {
  std::string uses;
  for (int32_t kind : {ORL_FUNCTION, ORL_INPUT}) {
    for (const std::string &name : ItemNames(ec, kind)) {
      uses += ORLIsItemUsed(ec, exp, kind, name.c_str()) != 0 ? name + " " : "";
    }
  }
  return uses + std::to_string(ORLIsItemUsed(ec, exp, ORL_FORMULA, "Rate")) +
         std::to_string(ORLIsAggregateUsed(ec, exp));
}

struct Renaming {
  std::string text;
  const char *before, *after;
  std::string textAfter;  // "": as the model predicts
  int32_t kind;
};

int32_t Twice(EC, HEXP, int32_t, void **result, const char *, void **args) {
  if (args == nullptr || args[0] == nullptr) return 0;
  const auto *number = static_cast<const NumberValue *>(args[0]);
  return WRENNumAdd(static_cast<NumberValue *>(*result), number, number), 1;
}

struct RenameContext : HostedContext {
  RenameContext() : HostedContext(ORL_FLAG_RANGES | ORL_FLAG_PERCENT) {
    host.values = {{"Amount", "5"}, {"Tax", "2"}, {"Name", "Ann"}, {"Start", "2012-01-31"}};
    AddFunction(*this, {"Twice", 0, {{0, 0, 0}}, 0, 0, 0, Address(&Twice)});
    for (const char *name :
         {"\"Net Amount\"", "\"Amount\"", "\xC9t\xE9", "\xC3\x89t\xC3\xA9", "\x83\x7C\x83\x41"}) {
      AddInput(*this, name, 0);
      host.values[name] = "7";
    }
    AddInput(*this, "Amount", 2);  // the first row of a name is the one that counts
    Make(*this, "Tax / 100", "Rate");
  }
};

// Renames in a context whose formula Tested has the text. True when the formula parses afterwards.
bool Check(const Renaming &row, int32_t page = kWestern) {
  SCOPED_TRACE("«" + row.text + "», " + row.before + " to " + row.after);
  RenameContext ec;
  HEXP exp = Make(ec, row.text, "Tested");
  if (exp == nullptr) return false;
  ec.host.values[row.after] = ec.host.values[row.before];
  const std::string model = Model(row.text, row.before, row.after, page);
  const std::string narrow = Nodes(exp->tree, row.before, row.after);
  EXPECT_EQ(ORLRenameExpressionItem(ec, row.kind, row.before, row.after), 0);
  EXPECT_EQ(TextOf(ec, exp), model);
  EXPECT_TRUE(row.textAfter.empty() || row.textAfter == model) << row.textAfter;
  uint16_t type = 0;
  HEXP fresh = ORLCloneExpression(ec, exp, nullptr, &type);
  if (fresh == nullptr) {
    EXPECT_EQ(Nodes(exp->tree), narrow);
    return false;
  }
  EXPECT_EQ(TreeText(exp->tree), TreeText(fresh->tree));
  EXPECT_EQ(Evaluate(ec, exp), Evaluate(ec, fresh));
  EXPECT_EQ(Uses(ec, exp), Uses(ec, fresh));
  EXPECT_EQ(exp->dataType, type);
  return true;
}

TEST(Rename, EdgeCases) {
  for (const Case &row : CasesOf("analysis/analysis_cases.txt", "rename")) {
    const Renaming renaming = {row[1], row[2].c_str(), row[3].c_str(), row[4], row.Int(0)};
    EXPECT_EQ(Check(renaming), row.Int(5) != 0) << row.where;
  }
}

// Sums, calls and sets over items of every spelling.
std::string RandomFormula(std::mt19937 &random, const std::vector<std::string> &items) {
  const char *const forms[] = {"@", "Twice(@)", "(\t@ )", "Opt(1,@ ,Rate())", "@ \n", "@/3"};
  std::string text;
  for (size_t terms = 1 + random() % 4; terms > 0; --terms) {
    std::string form = forms[random() % std::size(forms)];
    form.replace(form.find('@'), 1, items[random() % items.size()]);
    text += (text.empty() ? "" : random() % 4 == 0 ? ", " : "+") + form;
  }
  return text;
}

// A string constant with anything in it.
std::string RandomConstant(std::mt19937 &random, const std::vector<std::string> &items) {
  // clang-format off
  const char *const pieces[] = {
      "AMOUNT", "tAx", "\"", "\n", "\r", "\\ ", "Net ", "\t", "|", "%,", "(", ")", "*", "-", "+/", " ",
      "'' ", "''|", "\xE9T\xE9 ", "\x83|", "\xC3 ", "\xE2*", "\x8A\xBF"};
  // clang-format on
  std::string text = "' ";
  for (size_t count = random() % 12; count > 0; --count) {
    const bool item = random() % 2 != 0;
    text += item ? items[random() % items.size()] : pieces[random() % std::size(pieces)];
  }
  return text + " '";
}

TEST(Rename, RandomTexts) {
  struct Page {
    int32_t number;
    std::vector<std::string> items;
    const char *name;
  };
  const Page pages[] = {
      {kWestern, {"Amount", "Tax", "\"Net Amount\"", "\"Amount\"", "\xC9t\xE9"}, "\xD6l"},
      {kDoubleByte, {"Amount", "Tax", "\"Amount\"", "\x83\x7C\x83\x41"}, "\x83\x5C"},
      {kUtf8, {"Amount", "Tax", "\"Amount\"", "\xC3\x89t\xC3\xA9"}, "\xE2\x82\xAC"},
  };
  std::mt19937 random(20120131);
  int parsed = 0;
  for (int i = 0; i < 3000 && !HasFailure(); ++i) {
    const auto &[number, items, name] = pages[i % 3];
    WRENSetCodePage(number);
    const int32_t kind = random() % 8 == 0 ? ORL_FUNCTION : ORL_INPUT;
    const std::string before = kind == ORL_FUNCTION ? "Twice" : items[random() % items.size()];
    const std::string after = std::vector<std::string>{"N", name, "A longer name"}[random() % 3];
    const std::string text =
        i % 2 == 0 ? RandomFormula(random, items) : RandomConstant(random, items);
    parsed += Check({text, before.c_str(), after.c_str(), "", kind}, number) ? 1 : 0;
    WRENSetCodePage(kWestern);
  }
  EXPECT_GT(parsed, 2000);
  EXPECT_LT(parsed, 2950);
}

TEST(Rename, ChangesNothing) {
  const std::string tooLong(65, 'n');
  const char *const rows[][2] = {
      {"Amount", tooLong.c_str()}, {"Amount", nullptr}, {nullptr, "Total"},
      {"amount", "Total"},         {"Red", "Total"},    {"Twice", "Total"}};
  const RenameContext ec;
  Make(ec, "Amount + Twice(Tax)");
  const std::string before = Snapshot(ec);
  for (const auto &[oldName, newName] : rows) {
    EXPECT_EQ(ORLRenameExpressionItem(ec, ORL_KEYWORD, oldName, newName), 0);
    EXPECT_EQ(Snapshot(ec), before) << (oldName == nullptr ? "null" : oldName);
  }
  EXPECT_EQ(ORLRenameExpressionItem(nullptr, ORL_INPUT, "Amount", "Total"), 0);
}

// Where the new text would not be a formula that can be stored, the tree keeps its shape: Name
// takes the name of a Number, and formulas keep the type that their users were parsed with; the
// item Rate takes the name of the formula that uses it, and that does not refer to itself.
TEST(Rename, NoTreeThatCouldNotBeStored) {
  RenameContext ec;
  HEXP used = Make(ec, "Name", "Used"), unused = Make(ec, "Name", "Unused");
  HEXP user = Make(ec, "Used() || 'a'", "User");
  ORLRenameExpressionItem(ec, ORL_INPUT, "Name", "Tax");
  EXPECT_EQ(TextOf(ec, used) + TextOf(ec, unused), "TaxTax");
  EXPECT_EQ(ORLGetExpressionDataType(ec, used), ORL_TYPE_STRING);
  EXPECT_EQ(ORLGetExpressionDataType(ec, unused), ORL_TYPE_NUMBER);
  EXPECT_EQ(Evaluate(ec, unused) + Evaluate(ec, used) + Evaluate(ec, user), "2nonenone");
  AddInput(ec, "Rate", 0);
  ec.host.values["Self"] = "4";
  HEXP self = Make(ec, "Rate + Rate()", "Self");
  ORLRenameExpressionItem(ec, ORL_INPUT, "Rate", "Self");
  EXPECT_EQ(TextOf(ec, self), "Self + Self()");
  EXPECT_EQ(ORLIsItemUsed(ec, self, ORL_FORMULA, "Self"), 0);
  EXPECT_EQ(Evaluate(ec, self), "4.02");
}

TEST(Rename, BlocksKeepTheRoutineName) {
  RenameContext ec;
  ExprItem item = {};
  item.kind = ORL_INPUT;
  item.routineName = "GetGross";
  std::strcpy(item.name, "Gross");
  ORLAddExpressionItem(ec, &item);
  Make(ec, "Gross*2", "Net");
  ORLRenameExpressionItem(ec, ORL_INPUT, "Gross", "Sum");
  std::string block(static_cast<size_t>(ORLGetECBlockSize(ec, 1)), '#');
  ORLGetECBlock(ec, static_cast<int32_t>(block.size()), block.data());
  EXPECT_NE(block.find("Sum" + std::string(70, '\0') + "GetGross"), std::string::npos) << block;
  EXPECT_NE(block.find(std::string("Sum*2\0Net", 9)), std::string::npos) << block;
}

int32_t RenamesItems(EC ec, HEXP, int32_t, void **result, const char *, void **) {
  ORLRenameExpressionItem(ec, ORL_INPUT, "Amount", "Total");
  ORLRenameExpressionItem(ec, ORL_INPUT, "Tax", "A name much longer than the one before");
  ORLRenameExpressionItem(ec, ORL_FUNCTION, "Twice", "Double");
  return WRENNumFromInt(static_cast<NumberValue *>(*result), 1), 1;
}

// The trees that the evaluation uses are kept; the next rename updates them.
TEST(Rename, WhileAFormulaIsComputed) {
  RenameContext ec;
  ec.host.values["Total"] = "50";
  AddFunction(ec, {"Renaming", 0, {}, 0, 0, 0, Address(&RenamesItems)});
  AddFunction(ec, {"Renaming2", 2, {{0, 2, 0}, {0, 0, 0}}, 0, 0, 0, Address(&RenamesItems)});
  Make(ec, "'an Amount in a text'", "Constant");
  Make(ec, "Twice(Amount + Renaming() + Amount)", "Inner");
  HEXP exp = Make(ec, "Amount + Inner() + Amount", "Outer");
  HEXP text = Make(ec, "Constant() || Renaming2(' Amount ', Renaming())", "Texts");
  EXPECT_EQ(Evaluate(ec, exp), "167");  // 5 + 2 * (5 + 1 + 50) + 50
  EXPECT_EQ(TextOf(ec, exp), "Total + Inner() + Total");
  EXPECT_EQ(Evaluate(ec, exp), "none");  // the call in Inner has the name that it had
  ORLRenameExpressionItem(ec, ORL_INPUT, "Total", "Amount");
  EXPECT_EQ(TextOf(ec, ORLHEXPFromName(ec, "Inner")), "Double(Amount + Renaming() + Amount)");
  Evaluate(ec, text);
  EXPECT_EQ(TextOf(ec, ORLHEXPFromName(ec, "Constant")), "'an Total in a text'");
}

}  // namespace
