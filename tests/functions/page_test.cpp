// The page of the functions: it has the functions of the engine, and what it says they give they
// give. The tables in the page of the pictures are computed as well.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>

#include "engine/items.h"
#include "support/context.h"

namespace {

using Texts = std::vector<std::string>;

// A row of a table with the row of its head, or a heading: a row of one cell without a head.
struct Row {
  std::string place;  // "page:line"
  Texts head, cells;
};

// The cells of a line "| a | `b \| c` |": without the marks of code, an escaped bar as it is meant.
Texts CellsOf(const std::string &line) {
  static const std::regex form(R"(\| *`?((?:\\.|[^|\\])*?)`? *(?=\|))"), bar(R"(\\\|)");
  Texts cells;
  for (std::sregex_iterator at(line.begin(), line.end(), form), end; at != end; ++at) {
    cells.push_back(std::regex_replace(at->str(1), bar, "|"));
  }
  return cells;
}

std::vector<Row> RowsOf(const std::string &page) {
  std::vector<Row> rows;
  Texts head;
  std::ifstream stream(page);
  std::string line, last;
  for (int number = 1; std::getline(stream, line); number++, last = line) {
    const std::string place = page + ":" + std::to_string(number);
    if (line.starts_with("### ")) rows.push_back({place, {}, {line.substr(4)}});
    if (line.empty()) head.clear();
    if (!head.empty()) rows.push_back({place, head, CellsOf(line)});
    if (line.starts_with("|---")) head = CellsOf(last);
  }
  return rows;
}

// The built-in functions, and the items of the page, which are null.
OwnedContext PageContext(HostData &host) {
  host.values = {{"NoNumber", ""}, {"NoDate", ""}};
  OwnedContext ec(ORLCreateEC(nullptr, nullptr, nullptr, 0));
  ORLSetUserLong(ec.get(), reinterpret_cast<intptr_t>(&host));
  EXPECT_EQ(WRENSetCodePage(65001) + WRENSetCountry("C") + FUNDefineFunctions(ec.get()), 3);
  AddInput(ec.get(), "NoNumber", ORL_TYPE_NUMBER);
  AddInput(ec.get(), "NoDate", ORL_TYPE_DATE);
  return ec;
}

std::string ResultOf(const OwnedContext &ec, const std::string &formula) {
  const Parsed parsed = Parse(ec.get(), formula);
  return parsed.exp == nullptr ? "message " + Outcome(parsed) : Evaluate(ec.get(), parsed.exp);
}

TEST(FunctionsPage, ExamplesGiveTheirResults) {
  HostData host;
  const OwnedContext ec = PageContext(host);
  const std::string types[] = {"Number", "Date", "String"};
  std::map<std::string, int> examples;  // of each function by its signature
  std::string signature, name;
  for (const Row &row : RowsOf("docs/functions.md")) {
    SCOPED_TRACE(row.place + ": " + row.cells[0]);
    if (row.head.empty()) {
      signature = std::regex_replace(row.cells[0], std::regex("\\w+: "), "");
      name = signature.substr(0, signature.find('(') + 1);
      EXPECT_TRUE(examples.emplace(signature, 0).second) << "twice";
      continue;
    }
    ASSERT_EQ(row.cells.size(), 2u);
    EXPECT_NE(row.cells[0].find(name), std::string::npos) << "no example of " << signature;
    EXPECT_EQ(ResultOf(ec, row.cells[0]), row.cells[1]);
    examples[signature]++;
  }
  for (const std::string &function : ItemNames(ec.get(), ORL_FUNCTION)) {
    const ExprItem *row = ItemFind(ItemTableOf(ec.get(), ORL_FUNCTION), function.c_str());
    std::string built = function + "(";
    for (int i = 0; i < row->paramCount; i++) {
      built += (i == 0 ? "" : ", ") + types[ItemParameters(row)[i].dataType];
    }
    built += "): " + types[row->dataType];
    EXPECT_GE(examples[built], 2) << "examples in docs/functions.md of " << built;
    examples.erase(built);
  }
  EXPECT_TRUE(examples.empty()) << "no such function: " << testing::PrintToString(examples);
}

TEST(PicturesPage, TablesGiveTheirResults) {
  // By the heads of a picture's or number's column and of the column of the result.
  const std::map<std::string, std::string> formulas = {
      {"Picture, Text", "DateToStrPicture(2012-01-09 21:04:07.25, "},
      {"Picture, 1234.5", "NumberToStrPicture(1234.5, "},
      {"Picture, -1234.5", "NumberToStrPicture(-1234.5, "},
      {"Picture, 0", "NumberToStrPicture(0, "},
      {"Number, Mode 4", "NumberCountryFmt("},
      {"Number, Mode 5", "NumberToCurrency("}};
  HostData host;
  const OwnedContext ec = PageContext(host);
  int results = 0;
  for (const Row &row : RowsOf("docs/pictures.md")) {
    for (size_t i = 1; i < row.head.size(); i++) {
      const auto formula = formulas.find(row.head[0] + ", " + row.head[i]);
      if (formula == formulas.end()) continue;
      std::string argument = std::regex_replace(row.cells[0], std::regex("'"), "''");
      if (row.head[0] == "Picture") argument.insert(0, "'").append("'");
      EXPECT_EQ(ResultOf(ec, formula->second + argument + ")"), "'" + row.cells.at(i) + "'")
          << row.place << ": " << row.cells[0];
      results++;
    }
  }
  EXPECT_EQ(results, 3 + 4 * 3 + 3 * 2);
}

}  // namespace
