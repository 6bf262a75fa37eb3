// The page of the functions: it has the functions of the engine, and its examples have the
// documented results. The tables in the page of the pictures are computed as well.
#include <gtest/gtest.h>

#include <fstream>

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
  Texts cells(1);
  for (const char byte : line) {
    std::string &cell = cells.back();
    if (byte == '|' && cell.ends_with('\\')) {
      cell.back() = byte;
    } else if (byte == '|') {
      cell.erase(cell.find_last_not_of(" `") + 1).erase(0, cell.find_first_not_of(" `"));
      cells.emplace_back();
    } else {
      cell += byte;
    }
  }
  return {cells.begin() + 1, cells.end() - 1};
}

std::vector<Row> RowsOf(const std::string &page) {
  std::vector<Row> rows;
  Texts head;
  std::ifstream stream(page);
  std::string line, last;
  for (int number = 1; std::getline(stream, line); ++number, last = line) {
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
  OwnedContext ec(ORLCreateEC(nullptr, nullptr, nullptr, ORL_FLAG_RANGES));
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

// The first letters of the types of the arguments and of the result, as "ND" of
// "Foo(count: Number): Date".
std::string TypesOf(const std::string &heading) {
  std::string types;
  for (size_t at = 0; (at = heading.find(": ", at)) != std::string::npos; ++at) {
    types += heading[at + 2];
  }
  return types;
}

std::string TypesOf(const ExprItem *row) {
  std::string types;
  for (int i = 0; i < row->paramCount; ++i) types += "NDS"[ItemParameters(row)[i].dataType];
  return types + "NDS"[row->dataType];
}

std::string Literal(const std::string &text) {
  std::string literal = "'";
  for (const char byte : text) literal.append(byte == '\'' ? 2 : 1, byte);
  return literal + "'";
}

TEST(FunctionsPage, ExamplesHaveTheirResults) {
  HostData host;
  const OwnedContext ec = PageContext(host);
  std::map<std::string, int> examples;  // of each function by its name
  std::string name;
  for (const Row &row : RowsOf("docs/functions.md")) {
    SCOPED_TRACE(row.place + ": " + row.cells[0]);
    if (row.head.empty()) {
      name = row.cells[0].substr(0, row.cells[0].find('('));
      const ExprItem *built = ItemFind(ItemTableOf(ec.get(), ORL_FUNCTION), name.c_str());
      ASSERT_NE(built, nullptr);
      EXPECT_EQ(TypesOf(row.cells[0]), TypesOf(built));
      EXPECT_TRUE(examples.emplace(name, 0).second) << "twice";
      continue;
    }
    ASSERT_EQ(row.cells.size(), 2u);
    EXPECT_NE(row.cells[0].find(name), std::string::npos) << "no example of " << name;
    EXPECT_EQ(ResultOf(ec, row.cells[0]), row.cells[1]);
    ++examples[name];
  }
  for (const std::string &function : ItemNames(ec.get(), ORL_FUNCTION)) {
    EXPECT_GE(examples[function], 2) << "examples in docs/functions.md of " << function;
  }
}

TEST(PicturesPage, TablesHaveTheirResults) {
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
    for (size_t i = 1; i < row.head.size(); ++i) {
      const auto formula = formulas.find(row.head[0] + ", " + row.head[i]);
      if (formula == formulas.end()) continue;
      const std::string argument = row.head[0] == "Picture" ? Literal(row.cells[0]) : row.cells[0];
      EXPECT_EQ(ResultOf(ec, formula->second + argument + ")"), "'" + row.cells.at(i) + "'")
          << row.place << ": " << row.cells[0];
      ++results;
    }
  }
  EXPECT_EQ(results, 3 + 4 * 3 + 3 * 2);
}

}  // namespace
