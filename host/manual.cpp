// The commands man and completion: the commands and options of the help, for man and for the
// shells.
#include <cstdio>

#include "host/command_line.h"

namespace {

// The parts of the description of an option or command, on one line.
std::string OneLine(std::string text) {
  for (char &byte : text) {
    byte = byte == '\n' ? ' ' : byte;
  }
  return text;
}

// Text for roff: no line may begin with a point or a quote, and some characters are special.
std::string Roff(const std::string &text) {
  std::string roff;
  bool lineStart = true;
  for (const char byte : text) {
    roff += lineStart && (byte == '.' || byte == '\'') ? "\\&" : "";
    lineStart = byte == '\n';
    if (byte == '\\') {
      roff += "\\e";
    } else if (byte == '-') {
      roff += "\\-";
    } else if (byte == '\'') {
      roff += "\\(aq";
    } else if (byte == '^') {
      roff += "\\(ha";
    } else if (byte == '`') {
      roff += "\\(ga";
    } else {
      roff += byte;
    }
  }
  return roff;
}

std::vector<CLI::App *> CommandsOf(CLI::App &app) {
  return app.get_subcommands([](const CLI::App * /*command*/) { return true; });
}

std::vector<CLI::Option *> OptionsOf(CLI::App &command, bool positional) {
  return command.get_options([positional](const CLI::Option *option) {
    return option->get_positional() == positional && option->get_name() != "--help";
  });
}

// "DATA.csv ... [NAME]", as the usage line has it.
std::string ArgumentsOf(CLI::App &command) {
  std::string arguments;
  for (const CLI::Option *option : OptionsOf(command, true)) {
    const std::string name = option->get_name() + (option->get_expected_max() > 1 ? " ..." : "");
    arguments += option->get_required() ? " " + name : " [" + name + "]";
  }
  return arguments;
}

// "-f, --formula NAME=TEXT"
std::string HeadOf(const CLI::Option &option) {
  std::string head;
  for (const std::string &name : option.get_snames()) {
    head += (head.empty() ? "-" : ", -") + name;
  }
  for (const std::string &name : option.get_lnames()) {
    head += (head.empty() ? "--" : ", --") + name;
  }
  return option.get_type_name().empty() ? head : head + " " + option.get_type_name();
}

std::string ManPage(CLI::App &app) {
  std::string page =
      ".TH ORLI 1 \"\" \"orli " ORLI_VERSION
      "\" \"User commands\"\n"
      ".SH NAME\norli \\- formulas over the columns of CSV files\n"
      ".SH SYNOPSIS\n.B orli\n.I COMMAND\n[arguments and options]\n.SH DESCRIPTION\n";
  page += Roff(app.get_description()) + "\n.SH COMMANDS\n";
  for (CLI::App *command : CommandsOf(app)) {
    page += ".SS " + Roff(command->get_name() + ArgumentsOf(*command)) + "\n" +
            Roff(OneLine(command->get_description())) + ".\n";
    for (const CLI::Option *option : OptionsOf(*command, true)) {
      page += ".TP\n.I " + Roff(option->get_name()) + "\n" +
              Roff(OneLine(option->get_description())) + "\n";
    }
    for (const CLI::Option *option : OptionsOf(*command, false)) {
      page += ".TP\n.B " + Roff(HeadOf(*option)) + "\n" + Roff(OneLine(option->get_description())) +
              "\n";
    }
  }
  const std::string footer = app.get_footer();
  return page + ".SH EXAMPLES AND STATUS\n.nf\n" + Roff(footer) + "\n.fi\n";
}

// The values of an option that accepts one of a few: "table csv".
std::string ChoicesOf(const CLI::Option &option) {
  std::string choices = option.get_type_name();
  if (choices.find('|') == std::string::npos ||
      choices.find_first_of("=,. ") != std::string::npos) {
    return {};
  }
  for (char &byte : choices) {
    byte = byte == '|' ? ' ' : byte;
  }
  return choices;
}

std::string NamesOfCommands(CLI::App &app) {
  std::string names;
  for (const CLI::App *command : CommandsOf(app)) {
    names += (names.empty() ? "" : " ") + command->get_name();
  }
  return names;
}

std::string LongNames(CLI::App &command) {
  std::string names = "--help";
  for (const CLI::Option *option : OptionsOf(command, false)) {
    for (const std::string &name : option->get_lnames()) {
      names += " --" + name;
    }
  }
  return names;
}

// Words of commands, options and choices; everything else is a file.
std::string BashCompletion(CLI::App &app) {
  std::string script =
      "# bash completion of orli\n_orli() {\n"
      "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} words=\n"
      "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n    words='" +
      NamesOfCommands(app) + " --help --version'\n  else\n    case ${COMP_WORDS[1]} in\n";
  for (CLI::App *command : CommandsOf(app)) {
    script += "      " + command->get_name() + ")\n        case $before in\n";
    for (const CLI::Option *option : OptionsOf(*command, false)) {
      const std::string choices = ChoicesOf(*option);
      if (!choices.empty()) {
        script += "          " + option->get_name() + ") words='" + choices + "' ;;\n";
      }
    }
    script += "          *) case $word in -*) words='" + LongNames(*command) +
              "' ;; esac ;;\n        esac ;;\n";
  }
  return script +
         "    esac\n  fi\n"
         "  COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n}\n"
         "complete -o default -F _orli orli\n";
}

// Text inside the quotes and brackets of an option for zsh's _arguments.
std::string Zsh(const std::string &text) {
  std::string quoted;
  for (const char byte : OneLine(text)) {
    if (byte == '\'') {
      quoted += "'\\''";
      continue;
    }
    quoted += byte == '[' || byte == ']' || byte == ':' ? "\\" : "";
    quoted += byte;
  }
  return quoted;
}

std::string ZshCompletion(CLI::App &app) {
  std::string script =
      "#compdef orli\n# zsh completion of orli\n"
      "local -a commands options\ncommands=(\n";
  for (const CLI::App *command : CommandsOf(app)) {
    script += "  '" + command->get_name() + ":" + Zsh(command->get_description()) + "'\n";
  }
  script +=
      ")\nif (( CURRENT == 2 )); then\n  _describe command commands\n  return\nfi\n"
      "case $words[2] in\n";
  for (CLI::App *command : CommandsOf(app)) {
    script += "  " + command->get_name() + ") options=(\n";
    for (const CLI::Option *option : OptionsOf(*command, false)) {
      const std::string choices = ChoicesOf(*option);
      script += "    '*" + option->get_name() + "[" + Zsh(option->get_description()) +
                "]:" + Zsh(option->get_type_name()) + ":" +
                (choices.empty() ? "_files" : "(" + choices + ")") + "'\n";
    }
    script += "  ) ;;\n";
  }
  return script + "esac\n_arguments $options '*:file:_files'\n";
}

}  // namespace

void AddManualCommands(CLI::App &app, CommandLine &line, int &status) {
  CLI::App *man = app.add_subcommand("man", "Write the man page: orli man | man -l -");
  man->final_callback([&app, &status] {
    std::fputs(ManPage(app).c_str(), stdout);
    status = kExitGood;
  });
  CLI::App *completion =
      app.add_subcommand("completion", "Write the completion of a shell, for its start-up file");
  AddArgument(completion, "SHELL", line.name, "bash or zsh");
  completion->get_option("SHELL")->check(Silent(CLI::IsMember({"bash", "zsh"})));
  completion->final_callback([&app, &line, &status] {
    const std::string script = line.name == "zsh" ? ZshCompletion(app) : BashCompletion(app);
    std::fputs(script.c_str(), stdout);
    status = kExitGood;
  });
}
