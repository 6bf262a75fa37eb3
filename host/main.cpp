/* orli - formulas over the columns of a CSV file. */
#include <orli11.h>
#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>

#include "host/commands.h"
#include "host/display.h"

namespace {

constexpr int kUtf8 = 65001;

constexpr const char *kDescription =
    "Check and compute formulas over the columns of a CSV file.\n"
    "\n"
    "The first row names the columns; their types (Number, Date, String) are found from the data. "
    "A\n"
    "formula uses a column by its name: temp_max - temp_min, or \"wind speed\" * 2 in double "
    "quotes\n"
    "where the name is not a plain one. DATA.csv may be - for standard input.\n";

constexpr const char *kFooter =
    "\nExamples:\n"
    "  orli items data/weather.csv\n"
    "  orli check data/weather.csv 'temp_max - temp_min'\n"
    "  orli eval data/weather.csv --formula range='temp_max - temp_min' \\\n"
    "                             --formula half='range() / 2' --limit 5\n"
    "\n"
    "A text that begins with a minus stands behind --, as in: orli check DATA.csv -- '-1 + wind'\n"
    "Exit status: 0 done, 1 the data or a formula is wrong, 2 the command line is wrong.";

struct CommandLine {
  std::string data, text, format;
  EvalOptions eval;
};

CLI::App *AddCommand(CLI::App &app, const char *name, const char *description) {
  CLI::App *command = app.add_subcommand(name, description);
  command->failure_message(CLI::FailureMessage::simple);
  return command;
}

void AddItems(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *items = AddCommand(app, "items", "List the columns: name, type, rows filled, example");
  items->add_option("DATA.csv", line.data, "The file")->required();
  items->final_callback([&line, &status] { status = RunItems(line.data); });
}

void AddFunctions(CLI::App &app, int &status) {
  CLI::App *functions = AddCommand(app, "functions", "List the functions and their argument types");
  functions->final_callback([&status] { status = RunFunctions(); });
}

void AddCheck(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *check =
      AddCommand(app, "check", "Tell the type of a formula, or what is wrong with it and where");
  check->add_option("DATA.csv", line.data, "The file")->required();
  check->add_option("TEXT", line.text, "The formula")->required();
  check->final_callback([&line, &status] { status = RunCheck(line.data, line.text); });
}

void AddEval(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *eval = AddCommand(app, "eval", "Compute formulas for each row");
  eval->add_option("DATA.csv", line.data, "The file")->required();
  eval->add_option(
          "-f,--formula", line.eval.formulas,
          "A formula, NAME=TEXT; as often as wanted. Formulas may call each other, in any\n"
          "order, by NAME()")
      ->required()
      ->type_name("NAME=TEXT")
      ->allow_extra_args(false);
  eval->add_option("-n,--limit", line.eval.limit, "Compute the first N rows only")
      ->type_name("N")
      ->check(CLI::NonNegativeNumber);
  eval->add_option("--format", line.format, "How the rows are written: table or csv")
      ->type_name("table|csv")
      ->check(CLI::IsMember({"table", "csv"}));
  eval->final_callback([&line, &status] {
    line.eval.data = line.data;
    line.eval.format = line.format == "csv" ? OUTPUT_CSV : OUTPUT_TABLE;
    status = RunEval(line.eval);
  });
}

int Run(int argc, char **argv) {
  CommandLine line;
  int status = EXIT_GOOD;
  CLI::App app(kDescription, "orli");
  app.require_subcommand(1);
  app.footer(kFooter);
  AddItems(app, line, status);
  AddFunctions(app, status);
  AddCheck(app, line, status);
  AddEval(app, line, status);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp &help) {
    return app.exit(help);
  } catch (const CLI::ParseError &error) {
    std::string message = error.what();
    return Complain(message + " (orli --help tells more)", EXIT_USAGE);
  }
  return status;
}

}  // namespace

int main(int argc, char **argv) {
  /* A reader that goes away, as head does, ends the run without a word. */
  static_cast<void>(std::signal(SIGPIPE, SIG_DFL));
  DisplayStart();
  WRENSetCodePage(kUtf8);
  int status = EXIT_WRONG;
  try {
    status = Run(argc, argv);
  } catch (const std::exception &error) {
    return Complain(error.what(), EXIT_WRONG);
  }
  return OutputFinish() ? status : Complain("the output cannot be written", EXIT_WRONG);
}
