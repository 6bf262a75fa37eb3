#include "host/commands.h"

#include <cstdio>

#include "host/color.h"
#include "host/display.h"
#include "host/formulas.h"
#include "host/pictures.h"
#include "host/session.h"
#include "host/store.h"
#include "host/values.h"

namespace {

constexpr size_t kWidestExample = 40;

// "Number", "range of Date", "set of String".
std::string KindAndType(EC ec, HEXP exp, uint16_t type) {
  const std::string kind = FormulaKind(ec, exp);
  return (kind == "formula" ? std::string() : kind + " of ") + TypeName(type);
}

// A value as the table of columns shows it.
std::string BoundOf(int32_t type, const NumberValue &value) {
  std::string cell;
  CellFromValue(type, &value, cell);
  return cell;
}

}  // namespace

int RunItems(const DataOptions &data, OutputFormat format) {
  const auto write = [format](const Session &session) {
    Output output;
    output.format = format;
    output.columns = {{"name"},
                      {"type"},
                      {"filled", ORL_TYPE_NUMBER},
                      {"empty", ORL_TYPE_NUMBER},
                      {"least"},
                      {"greatest"},
                      {"example"},
                      {"why"}};
    for (const Column &column : session.table.columns) {
      size_t width = 0;
      OutputRow(output, {column.name, TypeName(column.type), std::to_string(column.filled),
                         std::to_string(session.table.rows - column.filled),
                         BoundOf(column.type, column.least), BoundOf(column.type, column.most),
                         DisplayLine(column.example, kWidestExample, width), column.why});
    }
    OutputEnd(output);
    return static_cast<int>(kExitGood);
  };
  return WithSession(data, write, true);
}

int RunCheck(const CheckOptions &options) {
  return WithSession(options.data, [&options](const Session &session) {
    std::vector<Formula> others;
    std::string problem;
    if (!options.store.empty() && !StoreFormulas(options.store, session, others, problem)) {
      return Complain(problem, kExitWrong);
    }
    for (const std::string &path : options.formulaFiles) {
      if (!FormulasRead(path, others, problem)) {
        return Complain(problem, kExitWrong);
      }
    }
    EC ec = session.ec.get();
    if (!FormulasDefine(ec, others, problem)) {
      return Complain(problem, kExitWrong);
    }
    FormulaError error = {};
    uint16_t type = 0;
    HEXP exp = ORLParseFormula(ec, nullptr, options.text.c_str(), nullptr, &error, &type);
    if (exp == nullptr) {
      std::fputs(Colored(stdout, ErrorWithPlace(ec, options.text, error)).c_str(), stdout);
      return static_cast<int>(kExitWrong);
    }
    std::puts(KindAndType(ec, exp, type).c_str());
    static_cast<void>(std::fflush(stdout));
    for (const std::string &picture : PictureProblems(options.text)) {
      Complain(picture, kExitGood);
    }
    return static_cast<int>(kExitGood);
  });
}
