#include "host/commands.h"

#include <cstdio>

#include "host/display.h"
#include "host/formulas.h"
#include "host/session.h"

namespace {

constexpr size_t kWidestExample = 40;

/* "Number", "range of Date", "set of String". */
std::string KindAndType(EC ec, HEXP exp, uint16_t type) {
  const char *kind = "";
  if (ORLIsExpRange(ec, exp, 1) == 1) {
    kind = "set of ";
  } else if (ORLIsExpRange(ec, exp, 2) == 1) {
    kind = "range of ";
  }
  return std::string(kind) + TypeName(type);
}

/* Runs a command over an open session; closes it in any case. */
template <typename Command>
int WithSession(const std::string &data, Command command) {
  Session session;
  Progress progress;
  std::string error;
  ProgressStart(progress);
  const bool open = SessionOpen(data.c_str(), session, progress, error);
  const int status = open ? command(session) : Complain(error, EXIT_WRONG);
  SessionClose(session);
  return status;
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

int RunCheck(const std::string &data, const std::string &text) {
  return WithSession(data, [&text](const Session &session) {
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
