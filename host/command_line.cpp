// The commands that compute over files: items, functions, check, eval, report.
#include "host/command_line.h"

#include <array>
#include <charconv>
#include <limits>

#include "host/column_names.h"
#include "host/display.h"

namespace {

// A whole number from 0 to `most`, or -1.
int64_t WholeNumber(std::string_view text, int64_t most) {
  int64_t number = -1;
  const std::from_chars_result result =
      std::from_chars(text.data(), text.data() + text.size(), number);
  const bool good = result.ec == std::errc() && result.ptr == text.data() + text.size();
  return good && number >= 0 && number <= most ? number : -1;
}

constexpr int64_t kMostRows = std::numeric_limits<int64_t>::max();
constexpr int64_t kMostDecimals = 50;
constexpr int64_t kMostJobs = 64;

std::string CheckWhole(const std::string &text, int64_t most) {
  if (WholeNumber(text, most) >= 0) {
    return {};
  }
  return "'" + text + "' is not a whole number from 0 to " + std::to_string(most);
}

// The byte between fields; 0 when the text names none.
char DelimiterOf(const std::string &text) {
  if (text == "tab" || text == "\\t") {
    return '\t';
  }
  const bool good =
      text.size() == 1 && std::string_view("\"\r\n").find(text[0]) == std::string::npos;
  return good ? text[0] : '\0';
}

std::string CheckDelimiter(const std::string &text) {
  return DelimiterOf(text) == '\0' ? "'" + text + "' is not one byte, or the word tab" : "";
}

constexpr std::array<const char *, 3> kOrders = {"mdy", "dmy", "ymd"};

struct TypeWord {
  const char *word;
  int16_t type;
};
constexpr std::array<TypeWord, 3> kTypes = {
    {{"text", ORL_TYPE_STRING}, {"number", ORL_TYPE_NUMBER}, {"date", ORL_TYPE_DATE}}};

// Splits NAME=TYPE; false when it is not of that form.
bool TypeOf(const std::string &text, std::pair<std::string, int16_t> &result) {
  const size_t equals = text.rfind('=');
  for (const TypeWord &entry : kTypes) {
    if (equals != std::string::npos && equals != 0 && text.substr(equals + 1) == entry.word) {
      result = {text.substr(0, equals), entry.type};
      return true;
    }
  }
  return false;
}

std::string CheckType(const std::string &text) {
  std::pair<std::string, int16_t> unused;
  return TypeOf(text, unused) ? "" : "'" + text + "' is not NAME=text, NAME=number or NAME=date";
}

constexpr std::array<std::pair<const char *, OutputFormat>, 5> kFormats = {
    {{"table", kOutputTable},
     {"csv", kOutputCsv},
     {"tsv", kOutputTsv},
     {"json", kOutputJson},
     {"jsonl", kOutputJsonl}}};

// The options for reading data files.
void AddReading(CLI::App *command, CommandLine &line) {
  constexpr char kGroup[] = "Reading";
  command
      ->add_option("--delimiter", line.delimiter,
                   "What separates fields: one byte, or tab;\nby default found in the header")
      ->type_name("C")
      ->check(CheckDelimiter)
      ->group(kGroup);
  command->add_option("--type", line.types, "The type of a column; may be repeated")
      ->type_name("NAME=text|number|date")
      ->check(CheckType)
      ->allow_extra_args(false)
      ->group(kGroup);
  command->add_option("--date-order", line.dateOrder, "How the file writes dates such as 1/2/2024")
      ->type_name("dmy|mdy|ymd")
      ->check(Silent(CLI::IsMember({"dmy", "mdy", "ymd"})))
      ->group(kGroup);
  command
      ->add_option("--decimal", line.decimal,
                   "The decimal sign of the file; the other one, or a\nblank, then groups digits")
      ->type_name(",|.")
      ->check(Silent(CLI::IsMember({",", "."})))
      ->group(kGroup);
  command->add_option("--null", line.nulls, "Fields that count as empty, such as NA,NULL,-")
      ->type_name("WORD,...")
      ->allow_extra_args(false)
      ->group(kGroup);
}

void AddFormulaFiles(CLI::App *command, CommandLine &line, const char *help) {
  command->add_option("--formulas", line.formulaFiles, help)
      ->type_name("FILE")
      ->check(NotEmpty)
      ->allow_extra_args(false);
}

void AddStoreOption(CLI::App *command, CommandLine &line, const char *help) {
  const auto isName = [](const std::string &text) {
    return text.empty() ? std::string("is the name of a file") : std::string();
  };
  command->add_option("--store", line.store, help)->type_name("STORE")->check(isName);
}

// The options that eval and report share.
void AddRowOptions(CLI::App *command, CommandLine &line, const char *limit, const char *sort) {
  command
      ->add_option(
          "--where", line.conditions,
          "Only rows in which the formula TEXT lies in a range,\nis a member of a set or equals "
          "a value; may be repeated")
      ->type_name("TEXT=BOUNDS")
      ->check(NotEmpty)
      ->allow_extra_args(false);
  command->add_option("--sort", line.sort, sort)
      ->type_name("NAME[:desc]")
      ->check(NotEmpty)
      ->allow_extra_args(false);
  command->add_option("-n,--limit", line.limit, limit)
      ->type_name("N")
      ->check([](const std::string &text) { return CheckWhole(text, kMostRows); });
  command->add_option("--decimals", line.decimals, "Write computed numbers with N decimals")
      ->type_name("N")
      ->check([](const std::string &text) { return CheckWhole(text, kMostDecimals); });
  command->add_option("--jobs", line.jobs, "Compute on N processors; by default on all")
      ->type_name("N")
      ->check([](const std::string &text) { return CheckWhole(text, kMostJobs); });
}

RowOptions RowsOf(const CommandLine &line) {
  RowOptions rows;
  rows.data = DataOf(line);
  rows.store = line.store;
  rows.formulaFiles = line.formulaFiles;
  rows.conditions = line.conditions;
  rows.sort = line.sort;
  rows.limit = line.limit.empty() ? -1 : WholeNumber(line.limit, kMostRows);
  rows.decimals =
      line.decimals.empty() ? -1 : static_cast<int>(WholeNumber(line.decimals, kMostDecimals));
  rows.jobs = line.jobs.empty() ? 0 : WholeNumber(line.jobs, kMostJobs);
  rows.format = FormatOf(line);
  return rows;
}

void AddItems(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *items =
      app.add_subcommand("items", "List columns: name, type, rows filled, bounds, example");
  AddData(items, line, kDataSeveral);
  AddFormat(items, line);
  items->final_callback([&line, &status] { status = RunItems(DataOf(line), FormatOf(line)); });
}

void AddFunctions(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *functions = app.add_subcommand("functions", "List functions, or describe one");
  functions->add_option("NAME", line.name, "Describe this one, with examples")->type_name("");
  functions->final_callback([&line, &status] { status = RunFunctions(line.name); });
}

void AddCheck(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *check =
      app.add_subcommand("check", "Show the type of a formula, or what is wrong and where");
  AddData(check, line, kDataOne);
  AddArgument(check, "TEXT", line.text, "The formula");
  AddStoreOption(check, line, "Formulas that it may call");
  AddFormulaFiles(check, line, "More of them, one NAME=TEXT to a line");
  check->final_callback([&line, &status] {
    status = RunCheck({DataOf(line), line.store, line.text, line.formulaFiles});
  });
}

void AddEval(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *eval = app.add_subcommand("eval", "Compute formulas for each row");
  AddData(eval, line, kDataSeveral);
  eval->add_option(
          "-f,--formula", line.eval.formulas,
          "A formula; may be repeated. Formulas may\ncall each other, in any order: NAME()")
      ->type_name("NAME=TEXT")
      ->allow_extra_args(false);
  AddFormulaFiles(eval, line, "A file of formulas, one NAME=TEXT to a line");
  AddStoreOption(eval, line, "Stored formulas, computed before the others");
  eval->add_option("--keep", line.keep, "Write these columns too, or all, before the formulas")
      ->type_name("all|NAME,...")
      ->check(NotEmpty)
      ->allow_extra_args(false);
  AddRowOptions(eval, line, "Compute the first N rows only",
                "Order the rows by a column or formula");
  AddFormat(eval, line);
  eval->final_callback([&line, &status] {
    line.eval.rows = RowsOf(line);
    for (const std::string &list : line.keep) {
      for (std::string &name : NamesOfList(list)) {
        line.eval.keep.push_back(std::move(name));
      }
    }
    const bool nothing = line.eval.formulas.empty() && line.store.empty() &&
                         line.formulaFiles.empty() && line.eval.keep.empty();
    status =
        nothing ? ComplainOfUsage("eval needs --formula, --keep or --store") : RunEval(line.eval);
  });
}

// The options of a report that each add a column.
struct ReportOption {
  ReportFigure figure;
  const char *name, *type, *help;
};

constexpr std::array<ReportOption, 8> kReportOptions = {{
    {kReportBy, "--by", "NAME=TEXT", "Rows with the same value of a formula are one group"},
    {kReportCount, "--count", "NAME", "The number of rows of each group"},
    {kReportDistinct, "--count-distinct", "NAME=TEXT",
     "The number of distinct values of a formula"},
    {kReportSum, "--sum", "NAME=TEXT", "The sum of a formula's values in each group"},
    {kReportMean, "--mean", "NAME=TEXT", "The mean of a formula's values"},
    {kReportMedian, "--median", "NAME=TEXT", "The median of a formula's values"},
    {kReportLeast, "--least", "NAME=TEXT", "The least number or earliest date"},
    {kReportGreatest, "--greatest", "NAME=TEXT", "The greatest number or latest date"},
}};

// The columns of a report in the order of the command line.
std::vector<ReportColumn> ReportColumns(const CLI::App &report) {
  std::vector<ReportColumn> columns;
  std::array<size_t, kReportOptions.size()> taken = {};  // values of each option so far
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
  AddData(report, line, kDataSeveral);
  for (const ReportOption &option : kReportOptions) {
    // The values are read from the options themselves, to keep their order.
    report
        ->add_option_function<std::vector<std::string>>(
            option.name, [](const std::vector<std::string> & /*values*/) {}, option.help)
        ->type_name(option.type)
        ->allow_extra_args(false);
  }
  AddFormulaFiles(report, line, "Formulas that the figures may call");
  AddStoreOption(report, line, "Stored formulas that the figures may call");
  AddRowOptions(report, line, "Write the first N groups only", "Order the groups by a column");
  AddFormat(report, line);
  report->footer("Columns are written in the order of their options, which may be repeated.");
  report->final_callback([report, &line, &status] {
    line.report.rows = RowsOf(line);
    line.report.columns = ReportColumns(*report);
    status = line.report.columns.empty()
                 ? ComplainOfUsage("a report needs --by, --count or another figure")
                 : RunReport(line.report);
  });
}

}  // namespace

int ComplainOfUsage(const std::string &message) {
  return Complain(DisplayName(message) + "; see orli --help", kExitUsage);
}

void AddArgument(CLI::App *command, const char *name, std::string &value, const char *help) {
  command->add_option(name, value, help)->required()->type_name("");
}

void AddFormat(CLI::App *command, CommandLine &line) {
  command->add_option("--format", line.format, "The form of the output; by default a table")
      ->type_name("table|csv|tsv|json|jsonl")
      ->check(Silent(CLI::IsMember({"table", "csv", "tsv", "json", "jsonl"})));
}

void AddData(CLI::App *command, CommandLine &line, DataFiles files) {
  const bool several = files == kDataSeveral;
  const char *help =
      several ? "Files with the same header, read one after the\nother; - is standard input"
      : files == kDataNamed    ? "The file with the columns"
      : files == kDataOptional ? "The file that it is to be used with from now on"
                               : "The file, or - for standard input";
  CLI::Option *data = several ? command->add_option("DATA.csv", line.data.paths, help)
                              : command->add_option("DATA.csv", line.file, help);
  data->type_name("")->required(files != kDataOptional);
  AddReading(command, line);
}

CLI::Validator Silent(CLI::Validator validator) {
  validator.description("");
  return validator;
}

std::string NotEmpty(const std::string &value) {
  return value.empty() ? "the value is empty" : "";
}

OutputFormat FormatOf(const CommandLine &line) {
  for (const auto &[word, format] : kFormats) {
    if (line.format == word) {
      return format;
    }
  }
  return kOutputTable;
}

DataOptions DataOf(const CommandLine &line) {
  DataOptions data = line.data;
  if (!line.file.empty()) {
    data.paths = {line.file};
  }
  data.delimiter = line.delimiter.empty() ? '\0' : DelimiterOf(line.delimiter);
  data.rules.decimal = line.decimal.empty() ? '\0' : line.decimal[0];
  for (size_t i = 0; i < kOrders.size(); ++i) {
    data.rules.dateOrder =
        line.dateOrder == kOrders.at(i) ? static_cast<int32_t>(i) : data.rules.dateOrder;
  }
  for (const std::string &list : line.nulls) {
    const std::vector<std::string> words = NamesOfList(list);
    data.rules.nulls.insert(data.rules.nulls.end(), words.begin(), words.end());
  }
  for (const std::string &text : line.types) {
    TypeOf(text, data.types.emplace_back());
  }
  return data;
}

void AddRowCommands(CLI::App &app, CommandLine &line, int &status) {
  AddItems(app, line, status);
  AddFunctions(app, line, status);
  AddCheck(app, line, status);
  AddEval(app, line, status);
  AddReport(app, line, status);
}
