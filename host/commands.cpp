#include "host/commands.h"

#include <cstdio>

#include "host/display.h"
#include "host/formulas.h"
#include "host/session.h"
#include "host/store.h"

namespace {

constexpr size_t kWidestExample = 40;

/* "Number", "range of Date", "set of String". */
std::string KindAndType(EC ec, HEXP exp, uint16_t type) {
  const std::string kind = FormulaKind(ec, exp);
  return (kind == "formula" ? std::string() : kind + " of ") + TypeName(type);
}

}  // namespace

int Complain(const std::string &message, int status) {
  std::fprintf(stderr, "orli: %s%s", message.c_str(),
               !message.empty() && message.back() == '\n' ? "" : "\n");
  return status;
}

int RunItems(const std::string &data) {
  return WithSession(data, [](const Session &session) {
    Output output;
    output.columns = {{"name"}, {"type"}, {"filled", true}, {"example"}};
    for (const Column &column : session.table.columns) {
      size_t width = 0;
      OutputRow(output, {column.name, TypeName(column.type), std::to_string(column.filled),
                         DisplayLine(column.example, kWidestExample, width)});
    }
    OutputEnd(output);
    return static_cast<int>(EXIT_GOOD);
  });
}

int RunCheck(const std::string &data, const std::string &store, const std::string &text) {
  return WithSession(data, [&store, &text](const Session &session) {
    std::vector<Formula> stored;
    std::string problem;
    if (!store.empty() && (!StoreFormulas(store, session, stored, problem) ||
                           !FormulasDefine(session.ec, stored, problem))) {
      return Complain(problem, EXIT_WRONG);
    }
    FormulaError error = {};
    uint16_t type = 0;
    HEXP exp = ORLParseFormula(session.ec, nullptr, text.c_str(), nullptr, &error, &type);
    if (exp == nullptr) {
      std::fputs(ErrorWithPlace(text, error).c_str(), stdout);
      return static_cast<int>(EXIT_WRONG);
    }
    std::puts(KindAndType(session.ec, exp, type).c_str());
    return static_cast<int>(EXIT_GOOD);
  });
}
