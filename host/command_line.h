// The commands of orli with their arguments and options, for the parser, the help,
// the man page and the completion.
#ifndef ORLI11_HOST_COMMAND_LINE_H
#define ORLI11_HOST_COMMAND_LINE_H

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "host/commands.h"

// The parsed arguments of any command.
struct CommandLine {
  DataOptions data;
  std::string file;  // of commands with a single one
  std::string text, format, limit, decimals, jobs, store, name, newName;
  std::string delimiter, dateOrder, decimal;
  std::vector<std::string> nulls;
  std::vector<std::string> formulas, types, formulaFiles, conditions, sort, keep;
  EvalOptions eval;
  ReportOptions report;
  EditOptions edit;
  SqlOptions sql;
};

// Reports an error in the command line that the parser cannot detect. Returns kExitUsage.
int ComplainOfUsage(const std::string &message);

// Parts of commands.
void AddArgument(CLI::App *command, const char *name, std::string &value, const char *help);
void AddFormat(CLI::App *command, CommandLine &line);
// DATA.csv: one file, one that is not standard input, several, or none.
enum DataFiles { kDataOne, kDataNamed, kDataSeveral, kDataOptional };
void AddData(CLI::App *command, CommandLine &line, DataFiles files);
// A check without a text in the help.
CLI::Validator Silent(CLI::Validator validator);
// The error for an empty value, for the parser.
std::string NotEmpty(const std::string &value);

OutputFormat FormatOf(const CommandLine &line);
// The data files and how they are read.
DataOptions DataOf(const CommandLine &line);

// Adds the commands. Each runs when its command line has been parsed, and sets `status`.
void AddRowCommands(CLI::App &app, CommandLine &line, int &status);
void AddStoreCommands(CLI::App &app, CommandLine &line, int &status);
// The commands man and completion, over all commands of the app.
void AddManualCommands(CLI::App &app, CommandLine &line, int &status);

#endif
