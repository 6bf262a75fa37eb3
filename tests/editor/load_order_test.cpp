// The order in which a load parses formulas, as a user sees it: the editor opens for each invalid
// one when it is parsed.
#include <gtest/gtest.h>

#include "editor/session.h"
#include "support/context.h"

namespace {

// "F1=text" for each formula.
std::string BlockOfRows(const std::vector<std::string> &rows) {
  std::string block(24, '\0');
  block[0] = 3;
  block[21] = '\xfc';
  block[23] = static_cast<char>(rows.size());
  block += '\0';
  for (const std::string &row : rows) {
    const size_t equals = row.find('=');
    block += row.substr(equals + 1) + '\0' + row.substr(0, equals) + '\0';
  }
  return block;
}

std::string ManyCalls(const std::string &last) {
  std::string text = "L=C1()";
  for (int i = 2; i <= 40; ++i) text += " + C" + std::to_string(i) + "()";
  return text + last;
}

TEST(LoadOrder, OpensTheEditorAtTheTurnOfEachFormula) {
  std::vector<std::string> many = {ManyCalls(" + Nope + Z()"), "Z=L()"};
  for (int i = 40; i > 0; --i) {
    many.push_back("C" + std::to_string(i) + (i < 40 ? "=C" + std::to_string(i + 1) + "()" : "=1"));
  }
  const struct {
    std::vector<std::string> rows;
    std::string acts;  // in the editor
    int32_t result;
    std::string opened, stored;  // names in order
  } rows[] = {
      // An error between two calls is reported once the first formula exists, not when both do.
      {{"A=B() + Nope + C()", "B=2", "C=A()"},
       "select 100 0 -1; type 100 7; click 1",
       1,
       "A ",
       "A B C "},
      {{"A=B() + Nope + C()", "B=2", "C=D()", "D=1"}, "click 2", 0, "A ", "B D "},
      {{"A=B() + 'x' * 2 + C()", "B=2", "C=A()"},
       "select 100 0 -1; type 100 7; click 1",
       1,
       "A ",
       "A B C "},
      // Nor is it lost when very many calls are resolved one by one.
      {many, "select 100 0 -1; type 100 7; click 1", 1, "L ", ""},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.rows[0]);
    const HostedContext ec;
    const std::string block = BlockOfRows(row.rows);
    std::string opened;
    const auto steps = [&](OrlWindow window) {
      opened += Text(window, kEditName) + " ";
      Act(window, row.acts);
    };
    WithUser(steps, {}, [&] {
      const auto size = static_cast<int32_t>(block.size());
      EXPECT_EQ(ORLSetECContents(ec, size, block.data(), 1, nullptr), row.result);
    });
    EXPECT_EQ(opened, row.opened);
    std::string stored;
    for (int32_t i = 0; i < ORLGetExpressionCount(ec); ++i) {
      stored += NameOf(ec, ORLHEXPFromOrdinal(ec, i)) + " ";
    }
    if (!row.stored.empty()) {
      EXPECT_EQ(stored, row.stored);
    } else {
      EXPECT_EQ(static_cast<size_t>(ORLGetExpressionCount(ec)), row.rows.size());
    }
  }
}

}  // namespace
