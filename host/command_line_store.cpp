// The commands that keep formulas in a file, and those that open it elsewhere: define, list, show,
// delete, uses, rename, edit, load, sql.
#include <array>

#include "host/command_line.h"

namespace {

void AddDefine(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *define = app.add_subcommand("define", "Add formulas to a store, a file of formulas");
  AddArgument(define, "STORE", line.store, "The file of formulas; created if missing");
  AddData(define, line, kDataOne);
  define
      ->add_option("FORMULA", line.formulas,
                   "Formulas to add or to change: NAME=TEXT.\nThey may call each other: NAME()")
      ->type_name("");
  define->add_option("--formulas", line.formulaFiles, "A file of formulas, one NAME=TEXT to a line")
      ->type_name("FILE")
      ->check(NotEmpty)
      ->allow_extra_args(false);
  define->final_callback([&line, &status] {
    status = line.formulas.empty() && line.formulaFiles.empty()
                 ? ComplainOfUsage("FORMULA is required")
                 : RunDefine(line.store, DataOf(line), line.formulas, line.formulaFiles);
  });
}

void AddList(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *list = app.add_subcommand("list", "List stored formulas: name, kind, type, text");
  AddArgument(list, "STORE", line.store, "The file of formulas");
  AddFormat(list, line);
  list->final_callback([&line, &status] { status = RunList(line.store, FormatOf(line)); });
}

// The commands that take a store and a name.
struct NameCommand {
  const char *name, *help, *argument;
  int (*run)(const std::string &store, const std::string &name);
};

constexpr std::array<NameCommand, 3> kNameCommands = {{
    {"show", "Show the text of a stored formula", "The formula", RunShow},
    {"delete", "Delete a stored formula that no other one uses", "The formula", RunDelete},
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
  CLI::App *rename = app.add_subcommand("rename", "Change the name of a column in stored formulas");
  AddArgument(rename, "STORE", line.store, "The file of formulas");
  AddArgument(rename, "OLD", line.name, "The name of the column in the store");
  AddArgument(rename, "NEW", line.newName, "Its new name");
  rename->final_callback(
      [&line, &status] { status = RunRename(line.store, line.name, line.newName); });
}

void AddEdit(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *edit = app.add_subcommand("edit", "Open the formula editor on a store");
  AddArgument(edit, "STORE", line.store, "The file of formulas; created if missing");
  AddData(edit, line, kDataNamed);
  edit->add_option("NAME", line.edit.name, "The formula to edit; by default a new one")
      ->type_name("");
  edit->add_option("--mode", line.edit.mode,
                   "What to write; by default what NAME is, or a\nformula")
      ->type_name("formula|range|set")
      ->check(Silent(CLI::IsMember({"formula", "range", "set"})));
  edit->add_option("--values", line.edit.values, "The column whose values are listed at the start")
      ->type_name("COLUMN")
      ->check(NotEmpty);
  edit->add_flag("--sql", line.edit.sql, "List the functions for databases too");
  edit->final_callback([&line, &status] {
    line.edit.store = line.store;
    line.edit.data = DataOf(line);
    status = RunEdit(line.edit);
  });
}

void AddLoad(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *load =
      app.add_subcommand("load", "Read a store; open the editor for what no longer parses");
  AddArgument(load, "STORE", line.store, "The file of formulas");
  AddData(load, line, kDataOptional);
  load->final_callback([&line, &status] { status = RunLoad(line.store, DataOf(line)); });
}

void AddSql(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *sql = app.add_subcommand("sql", "Write SQL that computes stored formulas, or run it");
  AddArgument(sql, "STORE", line.store, "The file of formulas");
  AddData(sql, line, kDataOne);
  sql->add_option("NAME", line.sql.names, "The formulas")->required()->type_name("");
  sql->add_option("--where", line.sql.conditions,
                  "Only rows in which the formula TEXT lies in the\nstored range or set NAME; may "
                  "be repeated")
      ->type_name("TEXT=NAME")
      ->allow_extra_args(false);
  sql->add_option("--table", line.sql.table, "The table; by default the name of the file")
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
    line.sql.data = DataOf(line);
    line.sql.format = FormatOf(line);
    status = RunSql(line.sql);
  });
}

}  // namespace

void AddStoreCommands(CLI::App &app, CommandLine &line, int &status) {
  AddDefine(app, line, status);
  AddList(app, line, status);
  AddNameCommands(app, line, status);
  AddRename(app, line, status);
  AddEdit(app, line, status);
  AddLoad(app, line, status);
  AddSql(app, line, status);
}
