// orli - formulas over the columns of a CSV file.
#include <orli11.h>
#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>

#include "host/command_line.h"
#include "host/display.h"
#include "host/nearest.h"

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
    "A text that begins with a minus goes after --, as in: orli check DATA.csv -- '-.5 + wind'\n"
    "Exit status: 0 done, 1 the data or a formula is wrong, 2 the command line is wrong.";

// The help with one empty line before each group of options, not two.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App *app, std::string name,
                        CLI::AppFormatMode mode) const override {
    std::string help = CLI::Formatter::make_help(app, std::move(name), mode);
    for (size_t at = 0; (at = help.find("\n\n\n", at)) != std::string::npos;) {
      help.erase(at, 1);
    }
    return help;
  }
};

void StyleHelp(CLI::App &app) {
  constexpr size_t kColumn = 44;
  app.formatter(std::make_shared<HelpFormatter>());
  app.get_formatter()->column_width(kColumn);
  app.get_formatter()->label("REQUIRED", "(required)");
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
}

// "; did you mean --limit?", when there is a similar name.
std::string DidYouMean(const std::string &word, const std::vector<std::string> &names) {
  const std::string near = Nearest(word, names);
  return near.empty() ? near : "; did you mean " + near + "?";
}

std::vector<std::string> OptionNames(const CLI::App &app) {
  std::vector<std::string> names;
  for (const CLI::App *command : app.get_subcommands()) {
    for (const CLI::Option *option : command->get_options()) {
      names.push_back(option->get_name());
    }
  }
  return names;
}

// The error in the command line, in words that name the argument. Unknown options are reported
// first: the parser removes them and then reports what they may have been meant for as missing.
std::string UsageMessage(const CLI::App &app, const CLI::ParseError &error) {
  for (const std::string &argument : app.remaining(true)) {
    if (argument.size() > 1 && argument.front() == '-' && argument != "--") {
      const std::string near = DidYouMean(argument, OptionNames(app));
      return "unknown option: " + argument +
             (near.empty() ? " (a name or text that begins with a minus goes after --)" : near);
    }
  }
  if (app.get_subcommands().empty()) {
    return "no command is given";
  }
  std::string message = error.what();
  const size_t missing = message.find(": 1 required");
  if (missing != std::string::npos && error.get_name() == "ArgumentMismatch") {
    return message.substr(0, missing) + " needs a value after it";
  }
  const size_t twice = message.find(": At Most 1 required");
  if (twice != std::string::npos) {
    return message.substr(0, twice) + " is given twice";
  }
  return message;
}

int Run(int argc, char **argv) {
  CommandLine line;
  int status = kExitGood;
  CLI::App app(kDescription, "orli");
  app.require_subcommand(1);
  StyleHelp(app);
  app.set_version_flag("--version", "orli " ORLI_VERSION, "Print the version and exit");
  AddRowCommands(app, line, status);
  AddStoreCommands(app, line, status);
  AddManualCommands(app, line, status);
  app.footer(kFooter);
  const std::string first = argc > 1 ? argv[1] : "-";
  const auto isFirst = [&first](const CLI::App *command) { return command->get_name() == first; };
  if (first.rfind('-', 0) != 0 && app.get_subcommands(isFirst).empty()) {
    std::vector<std::string> names;
    for (const CLI::App *command : app.get_subcommands({})) {
      names.push_back(command->get_name());
    }
    return ComplainOfUsage("unknown command: '" + first + "'" + DidYouMean(first, names));
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success &help) {  // help or version
    return app.exit(help);
  } catch (const CLI::ParseError &error) {
    return ComplainOfUsage(UsageMessage(app, error));
  }
  return status;
}

}  // namespace

int main(int argc, char **argv) {
  // A reader that closes the pipe, as head does, ends the run silently.
  static_cast<void>(std::signal(SIGPIPE, SIG_DFL));
  DisplayStart();
  WRENSetCodePage(kUtf8);
  int status = kExitWrong;
  try {
    status = Run(argc, argv);
  } catch (const std::exception &error) {
    return Complain(error.what(), kExitWrong);
  }
  return OutputFinish() ? status : Complain("the output cannot be written", kExitWrong);
}
