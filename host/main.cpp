/* orli - formulas over the columns of a CSV file. */
#include <orli11.h>
#include <CLI/CLI.hpp>

#include <array>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <limits>
#include <string_view>

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
    "Examples:\n"
    "  orli items data/weather.csv\n"
    "  orli check data/weather.csv 'temp_max - temp_min'\n"
    "  orli eval data/weather.csv --formula range='temp_max - temp_min' \\\n"
    "                             --formula half='range() / 2' --limit 5\n"
    "  orli report data/weather.csv --by sky=weather --count reports \\\n"
    "                               --sum rain=precipitation --greatest warmest=temp_max\n"
    "  orli define weather.store data/weather.csv mean='(temp_max + temp_min) / 2'\n"
    "  orli eval data/weather.csv --store weather.store --formula warm='mean() - 10'\n"
    "  orli edit weather.store data/weather.csv mean\n"
    "\n"
    "A text that begins with a minus stands behind --, as in: orli check DATA.csv -- '-.5 + wind'\n"
    "Exit status: 0 done, 1 the data or a formula is wrong, 2 the command line is wrong.";

struct CommandLine {
  std::string data, text, format, limit, store, name, newName;
  std::vector<std::string> formulas;
  EvalOptions eval;
  ReportOptions report;
  EditOptions edit;
  SqlOptions sql;
};

/* A check that says nothing about itself in the help. */
CLI::Validator Silent(CLI::Validator validator) {
  validator.description("");
  return validator;
}

/* The rows that a limit allows; -1 when it is no whole number from 0 up. */
int64_t RowsOfLimit(std::string_view text) {
  int64_t rows = -1;
  const std::from_chars_result result =
      std::from_chars(text.data(), text.data() + text.size(), rows);
  const bool good = result.ec == std::errc() && result.ptr == text.data() + text.size();
  return good && rows >= 0 ? rows : -1;
}

std::string CheckLimit(const std::string &text) {
  if (RowsOfLimit(text) >= 0) {
    return {};
  }
  return "'" + text + "' is no whole number from 0 to " +
         std::to_string(std::numeric_limits<int64_t>::max());
}

int ComplainOfUsage(const std::string &message) {
  return Complain(DisplayName(message) + "; orli --help tells more", EXIT_USAGE);
}

/* A command's argument that must be there. */
void AddArgument(CLI::App *command, const char *name, std::string &value, const char *help) {
  command->add_option(name, value, help)->required()->type_name("");
}

void AddData(CLI::App *command, CommandLine &line) {
  AddArgument(command, "DATA.csv", line.data, "The file, or - for standard input");
}

void AddStoreOption(CLI::App *command, CommandLine &line, const char *help) {
  const auto isName = [](const std::string &text) {
    return text.empty() ? std::string("is the name of a file") : std::string();
  };
  command->add_option("--store", line.store, help)->type_name("STORE")->check(isName);
}

void AddFormat(CLI::App *command, CommandLine &line) {
  command->add_option("--format", line.format, "How the rows are written; a table if not told")
      ->type_name("table|csv")
      ->check(Silent(CLI::IsMember({"table", "csv"})));
}

OutputFormat FormatOf(const CommandLine &line) {
  return line.format == "csv" ? OUTPUT_CSV : OUTPUT_TABLE;
}

void AddItems(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *items = app.add_subcommand("items", "List columns: name, type, rows filled, example");
  AddData(items, line);
  items->final_callback([&line, &status] { status = RunItems(line.data); });
}

void AddFunctions(CLI::App &app, int &status) {
  CLI::App *functions =
      app.add_subcommand("functions", "List functions: arguments, result, description");
  functions->final_callback([&status] { status = RunFunctions(); });
}

void AddCheck(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *check =
      app.add_subcommand("check", "Tell a formula's type, or what is wrong and where");
  AddData(check, line);
  AddArgument(check, "TEXT", line.text, "The formula");
  AddStoreOption(check, line, "Formulas that it may call");
  check->final_callback([&line, &status] { status = RunCheck(line.data, line.store, line.text); });
}

void AddEval(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *eval = app.add_subcommand("eval", "Compute formulas for each row");
  AddData(eval, line);
  eval->add_option(
          "-f,--formula", line.eval.formulas,
          "A formula; as often as wanted. Formulas may\ncall each other, in any order: NAME()")
      ->type_name("NAME=TEXT")
      ->allow_extra_args(false);
  eval->add_option("-n,--limit", line.limit, "Compute the first N rows only")
      ->type_name("N")
      ->check(CheckLimit);
  AddFormat(eval, line);
  AddStoreOption(eval, line, "Stored formulas, to be computed ahead of the others");
  eval->final_callback([&line, &status] {
    line.eval.data = line.data;
    line.eval.store = line.store;
    line.eval.limit = line.limit.empty() ? -1 : RowsOfLimit(line.limit);
    line.eval.format = FormatOf(line);
    status = line.eval.formulas.empty() && line.store.empty()
                 ? ComplainOfUsage("eval needs --formula or --store")
                 : RunEval(line.eval);
  });
}

/* The options of a report that make a column each. */
struct ReportOption {
  ReportFigure figure;
  const char *name, *type, *help;
};

constexpr std::array<ReportOption, 6> kReportOptions = {{
    {REPORT_BY, "--by", "NAME=TEXT", "Rows of the same value of a formula are one group"},
    {REPORT_COUNT, "--count", "NAME", "The rows of each group"},
    {REPORT_SUM, "--sum", "NAME=TEXT", "The sum of a formula's values in each group"},
    {REPORT_MEAN, "--mean", "NAME=TEXT", "Their mean"},
    {REPORT_LEAST, "--least", "NAME=TEXT", "The least number or earliest date"},
    {REPORT_GREATEST, "--greatest", "NAME=TEXT", "The greatest number or latest date"},
}};

/* The columns of a report in the order of the command line. */
std::vector<ReportColumn> ReportColumns(const CLI::App &report) {
  std::vector<ReportColumn> columns;
  std::array<size_t, kReportOptions.size()> taken = {}; /* values of each option so far */
  for (const CLI::Option *option : report.parse_order()) {
    for (size_t i = 0; i < kReportOptions.size(); ++i) {
      if (option->get_name() == kReportOptions[i].name) {
        columns.push_back({kReportOptions[i].figure, option->results().at(taken[i]++)});
      }
    }
  }
  return columns;
}

void AddReport(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *report =
      app.add_subcommand("report", "Group the rows and compute figures of each group");
  AddData(report, line);
  for (const ReportOption &option : kReportOptions) {
    /* The values are taken from the options themselves, for the sake of their order. */
    report
        ->add_option_function<std::vector<std::string>>(
            option.name, [](const std::vector<std::string> & /*values*/) {}, option.help)
        ->type_name(option.type)
        ->allow_extra_args(false);
  }
  AddFormat(report, line);
  AddStoreOption(report, line, "Stored formulas that the figures may call");
  report->footer("Columns stand in the order of their options, each as often as wanted.");
  report->final_callback([report, &line, &status] {
    line.report.data = line.data;
    line.report.store = line.store;
    line.report.columns = ReportColumns(*report);
    line.report.format = FormatOf(line);
    status = line.report.columns.empty()
                 ? ComplainOfUsage("a report needs --by, --count or another figure")
                 : RunReport(line.report);
  });
}

void AddDefine(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *define = app.add_subcommand("define", "Keep formulas in a store, a file of formulas");
  AddArgument(define, "STORE", line.store, "The file of formulas; made when it is not there");
  AddData(define, line);
  define
      ->add_option("FORMULA", line.formulas,
                   "Formulas to add or to change: NAME=TEXT.\nThey may call each other: NAME()")
      ->required()
      ->type_name("");
  define->final_callback(
      [&line, &status] { status = RunDefine(line.store, line.data, line.formulas); });
}

void AddList(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *list = app.add_subcommand("list", "List stored formulas: name, kind, type, text");
  AddArgument(list, "STORE", line.store, "The file of formulas");
  AddFormat(list, line);
  list->final_callback([&line, &status] { status = RunList(line.store, FormatOf(line)); });
}

/* The commands that take a store and a name. */
struct NameCommand {
  const char *name, *help, *argument;
  int (*run)(const std::string &store, const std::string &name);
};

constexpr std::array<NameCommand, 3> kNameCommands = {{
    {"show", "Write the text of a stored formula", "The formula", RunShow},
    {"delete", "Delete a stored formula that no other uses", "The formula", RunDelete},
    {"uses", "List stored formulas that use something", "A column, function or formula", RunUses},
}};

void AddNameCommands(CLI::App &app, CommandLine &line, int &status) {
  for (const NameCommand &entry : kNameCommands) {
    CLI::App *command = app.add_subcommand(entry.name, entry.help);
    AddArgument(command, "STORE", line.store, "The file of formulas");
    AddArgument(command, "NAME", line.name, entry.argument);
    command->final_callback(
        [&line, &status, &entry] { status = entry.run(line.store, line.name); });
  }
}

void AddRename(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *rename = app.add_subcommand("rename", "Let stored formulas follow a column's new name");
  AddArgument(rename, "STORE", line.store, "The file of formulas");
  AddArgument(rename, "OLD", line.name, "The name of the column in the store");
  AddArgument(rename, "NEW", line.newName, "Its name from now on");
  rename->final_callback(
      [&line, &status] { status = RunRename(line.store, line.name, line.newName); });
}

/* What is wrong with an option's value, for the parser. */
std::string NotEmpty(const std::string &value) {
  return value.empty() ? "the value is empty" : "";
}

void AddEdit(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *edit = app.add_subcommand("edit", "Open the formula editor on a store");
  AddArgument(edit, "STORE", line.store, "The file of formulas; made when it is not there");
  AddArgument(edit, "DATA.csv", line.data, "The file whose columns formulas use");
  edit->add_option("NAME", line.edit.name, "The formula to edit; a new one if not told")
      ->type_name("");
  edit->add_option("--mode", line.edit.mode,
                   "What to write; if not told, what NAME is, or a\nformula")
      ->type_name("formula|range|set")
      ->check(Silent(CLI::IsMember({"formula", "range", "set"})));
  edit->add_option("--values", line.edit.values, "The column whose values to list at once")
      ->type_name("COLUMN")
      ->check(NotEmpty);
  edit->final_callback([&line, &status] {
    line.edit.store = line.store;
    line.edit.data = line.data;
    status = RunEdit(line.edit);
  });
}

void AddLoad(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *load =
      app.add_subcommand("load", "Read a store; open the editor for what no longer parses");
  AddArgument(load, "STORE", line.store, "The file of formulas");
  load->add_option("DATA.csv", line.data, "The file whose columns it is for from now on")
      ->type_name("");
  load->final_callback([&line, &status] { status = RunLoad(line.store, line.data); });
}

void AddSql(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *sql = app.add_subcommand("sql", "Let a database compute stored formulas");
  AddArgument(sql, "STORE", line.store, "The file of formulas");
  AddData(sql, line);
  sql->add_option("NAME", line.sql.names, "The formulas")->required()->type_name("");
  sql->add_option("--where", line.sql.conditions,
                  "Rows only whose formula TEXT lies in the\nstored range or set NAME; all of them")
      ->type_name("TEXT=NAME")
      ->allow_extra_args(false);
  sql->add_option("--table", line.sql.table, "The table; named like the file if not told")
      ->type_name("TABLE")
      ->check(NotEmpty);
  CLI::Option *source =
      sql->add_option("--dsn", line.sql.source,
                      "Run the statement there and write the rows: a\ndata source of ODBC or a "
                      "connection string");
  source->type_name("DSN")->check(NotEmpty);
  AddFormat(sql, line);
  sql->get_option("--format")->needs(source);
  sql->final_callback([&line, &status] {
    line.sql.store = line.store;
    line.sql.data = line.data;
    line.sql.format = FormatOf(line);
    status = RunSql(line.sql);
  });
}

void StyleHelp(CLI::App &app) {
  constexpr size_t kColumn = 44;
  app.get_formatter()->column_width(kColumn);
  app.get_formatter()->label("REQUIRED", "(required)");
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
}

/* What is wrong with the command line, in words that name the argument. An option that nobody knows
 * goes first: the parser takes it away and then misses what it may have stood for. */
std::string UsageMessage(const CLI::App &app, const CLI::ParseError &error) {
  for (const std::string &argument : app.remaining(true)) {
    if (argument.size() > 1 && argument.front() == '-' && argument != "--") {
      return "unknown option: " + argument +
             " (a name or text that begins with a minus stands behind --)";
    }
  }
  if (app.get_subcommands().empty()) {
    return "no command is given";
  }
  std::string message = error.what();
  const size_t missing = message.find(": 1 required");
  if (missing != std::string::npos && error.get_name() == "ArgumentMismatch") {
    return message.substr(0, missing) + " needs a value behind it";
  }
  return message;
}

int Run(int argc, char **argv) {
  CommandLine line;
  int status = EXIT_GOOD;
  CLI::App app(kDescription, "orli");
  app.require_subcommand(1);
  StyleHelp(app);
  AddItems(app, line, status);
  AddFunctions(app, status);
  AddCheck(app, line, status);
  AddEval(app, line, status);
  AddReport(app, line, status);
  AddDefine(app, line, status);
  AddList(app, line, status);
  AddNameCommands(app, line, status);
  AddRename(app, line, status);
  AddEdit(app, line, status);
  AddLoad(app, line, status);
  AddSql(app, line, status);
  app.footer(kFooter);
  const std::string first = argc > 1 ? argv[1] : "-";
  const auto isFirst = [&first](const CLI::App *command) { return command->get_name() == first; };
  if (first.rfind('-', 0) != 0 && app.get_subcommands(isFirst).empty()) {
    return ComplainOfUsage("unknown command: '" + first + "'");
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp &help) {
    return app.exit(help);
  } catch (const CLI::ParseError &error) {
    return ComplainOfUsage(UsageMessage(app, error));
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
