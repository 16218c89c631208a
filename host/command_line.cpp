#include "host/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <iostream>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "host/commands.h"
#include "host/mistake.h"
#include "host/output.h"
#include "host/plugin_text.h"
#include "host/printable.h"

namespace {

// The name of the command that was given; "" for none.
std::string GivenCommand(const CLI::App& app) {
  const std::vector<CLI::App*> given = app.get_subcommands();
  return given.empty() ? "" : given.front()->get_name();
}

// CLI11 misses a command, or an argument, before it minds the word in its place.
std::string InWords(const CLI::App& app, const CLI::Error& error) {
  host::Mistake mistake = {GivenCommand(app), app.remaining(true), error.what()};
  if (mistake.Command.empty()) {
    mistake.Text = "a command is missing";
  }
  return host::InWords(mistake);
}

std::string Complaint(const CLI::App* app, const CLI::Error& error) {
  return "statuscollector: " + host::Printable(InWords(*app, error)) + "\n";
}

CLI::Option* AddOption(CLI::App& command, const host::Argument& argument) {
  if (bool* const* const flag = std::get_if<bool*>(&argument.Value)) {
    return command.add_flag(argument.Name, **flag, argument.About);
  }
  CLI::Option* const option = std::visit(
      [&](auto* value) { return command.add_option(argument.Name, *value, argument.About); },
      argument.Value);
  option->type_name(argument.Type);
  if (std::holds_alternative<std::vector<std::string>*>(argument.Value)) {
    option->allow_extra_args(false);  // one value each time
  }
  return option;
}

void Add(CLI::App& command, const host::Argument& argument) {
  CLI::Option* const option = AddOption(command, argument);
  if (std::holds_alternative<bool*>(argument.Value)) {
    return;
  }
  option->required(option->get_positional() && !argument.MayBeMissing);
  if (std::holds_alternative<int*>(argument.Value)) {
    option->check(CLI::Range(argument.Least, argument.Most).description(""));
  } else {
    option->check([](const std::string& text) {
      return std::string(text.empty() ? "must not be empty" : "");
    });
  }
  if (!argument.Choices.empty()) {
    option->check(CLI::IsMember(argument.Choices).description(""));
  }
}

// The exit statuses of a command; those of wrong usage and of trouble are the same for all.
std::string Footer(const host::Command& command) {
  return std::string("Exit status: ") + command.Statuses +
         (command.Trouble == host::kTrouble
              ? ";\n2 wrong usage, or something could not be read or written."
              : ".");
}

// `help COMMAND`, which puts the name of the command into `*described`.
void AddHelp(CLI::App& app, std::string* described) {
  CLI::App* const help = app.add_subcommand(host::kHelp, host::kAboutHelp);
  Add(*help, {.Name = "command",
              .Type = "COMMAND",
              .About = "The command to describe",
              .Value = described,
              .MayBeMissing = true});
  help->footer("Exit status: 0;\n2 wrong usage, or something could not be written.");
}

// The same as `COMMAND --help`; of the program without a command.
int ShowHelp(const CLI::App& app, const std::string& described) {
  const bool all = described.empty();
  try {
    const CLI::App* const which = all ? &app : app.get_subcommand(described);
    const std::string name = app.get_name() + (all ? "" : " " + described);
    host::StandardOutput().Write(
        app.get_formatter()->make_help(which, name, CLI::AppFormatMode::Normal));
  } catch (const CLI::OptionNotFound&) {
    throw std::runtime_error(host::InWords(host::Mistake{"", {described}, ""}));
  }
  return host::kAllWell;
}

// What wrong usage of the command that was given ends with. A monitoring client shows what a plugin
// writes to standard output, so that the reason stands there, too.
int WrongUsage(const CLI::App& app, const CLI::Error& error) {
  for (const host::Command& command : host::kCommands) {
    if (command.Name == GivenCommand(app) && command.Trouble == host::kPluginUnknown) {
      host::StandardOutput().Write("UNKNOWN - " + host::PluginText(InWords(app, error)) + "\n");
      return command.Trouble;
    }
  }
  return host::kTrouble;
}

// A command that the parser knows, and what runs it.
struct Declared {
  const CLI::App* Parsed;
  std::function<int()> Run;
};

Declared Declare(const host::Command& command, CLI::App* app) {
  CLI::App* const declared = app->add_subcommand(command.Name, command.About);
  declared->footer(Footer(command));
  host::Declaration declaration = command.Declare();
  for (const host::Argument& argument : declaration.Arguments) {
    Add(*declared, argument);
  }
  return {declared, std::move(declaration.Run)};
}

// The command that the first word names; empty when it names none. No other command needs to be
// declared then, which takes longer than to parse what is given.
std::span<const host::Command> FirstWord(int argc, char** argv) {
  const std::string_view word = argc > 1 ? argv[1] : "";
  const auto named = std::ranges::find(host::kCommands, word, &host::Command::Name);
  return {named, named == host::kCommands.end() ? 0U : 1U};
}

}  // namespace

int host::RunCommandLine(int argc, char** argv) {
  CLI::App app("Collects the status of an LED display controller.", "statuscollector");
  app.set_version_flag("--version", "statuscollector " STATUS_VERSION);
  app.footer("statuscollector COMMAND --help, or help COMMAND, describes a command.");
  app.require_subcommand(1);
  app.failure_message(&Complaint);
  app.get_formatter()->column_width(26);
  const std::span<const host::Command> given = FirstWord(argc, argv);
  std::vector<Declared> commands;
  for (const host::Command& command : given.empty() ? host::kCommands : given) {
    commands.push_back(Declare(command, &app));
  }
  std::string described;
  if (given.empty()) {
    AddHelp(app, &described);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& outcome) {
    // Help and version go to standard output and are no fault, everything else is.
    std::ostringstream text;
    const bool wanted = app.exit(outcome, text, std::cerr) == 0;
    host::StandardOutput().Write(text.str());
    return wanted ? static_cast<int>(host::kAllWell) : WrongUsage(app, outcome);
  }
  for (const Declared& command : commands) {
    if (command.Parsed->parsed()) {
      return command.Run();
    }
  }
  return ShowHelp(app, described);
}
