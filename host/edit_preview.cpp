#include "host/edit_preview.h"

#include <algorithm>
#include <chrono>

#include "host/values.h"

namespace {

constexpr size_t kRows = 10;
constexpr size_t kShownBytes = 200;                         // of a value
constexpr auto kPatience = std::chrono::milliseconds(150);  // for all rows together

bool TakeRow(const CsvRow &row, void *user, std::string &error) {
  RowPreview &preview = *static_cast<RowPreview *>(user);
  if (!ColumnsFit(preview.session->csv, preview.session->table, row, error)) {
    return false;
  }
  preview.rows.emplace_back(row);
  return preview.rows.size() < kRows;
}

std::string Cut(std::string cell) {
  size_t end = std::min(cell.size(), kShownBytes);
  while (end > 0 && end < cell.size() && (static_cast<unsigned char>(cell[end]) & 0xC0) == 0x80) {
    --end;
  }
  const bool cut = end < cell.size();
  cell.resize(end);
  return cut ? cell + " ..." : cell;
}

std::string ValueOf(EC ec, HEXP exp, int32_t type, Block &block) {
  std::string cell;
  const bool good = Evaluate(ec, exp, block) && CellFromValue(type, block.get(), cell);
  return !good ? "no value" : cell.empty() ? "empty" : Cut(cell);
}

void Forget(EC ec) {
  // Formulas are stored after those that they use, except for changed ones: several rounds are
  // needed.
  for (int32_t before = -1; ORLGetExpressionCount(ec) != before;) {
    before = ORLGetExpressionCount(ec);
    for (int32_t i = before - 1; i >= 0; --i) {
      ORLDestroyEXP(ec, ORLHEXPFromOrdinal(ec, i));
    }
  }
}

}  // namespace

void PreviewOpen(RowPreview &preview, Session &session) {
  preview.session = &session;
  std::string error;
  CsvRead(session.csv, TakeRow, &preview, error);
}

void PreviewFormulas(RowPreview &preview, std::vector<Formula> formulas) {
  EC ec = preview.session->ec.get();
  Forget(ec);
  std::string error;
  FormulasDefine(ec, formulas, error);
}

std::vector<std::string> PreviewOf(RowPreview &preview, const char *text) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  EC ec = preview.session->ec.get();
  uint16_t type = 0;
  HEXP exp = ORLParseString(ec, text, nullptr, nullptr, &type);
  std::vector<std::string> lines;
  if (exp == nullptr || ORLIsExpRange(ec, exp, 1) != 0 || ORLIsExpRange(ec, exp, 2) != 0) {
    ORLDestroyEXP(ec, exp);
    return lines;
  }
  Block block = NewBlock(sizeof(NumberValue));
  for (const CsvRowCopy &row : preview.rows) {
    if (std::chrono::steady_clock::now() > end) {
      lines.emplace_back("...");
      break;
    }
    SessionSetRow(*preview.session, row.Row());
    lines.push_back(ValueOf(ec, exp, type, block));
  }
  preview.session->row = {};
  ORLDestroyEXP(ec, exp);
  return lines;
}
