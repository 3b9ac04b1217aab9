#include "hosts/cli/commands/command_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <list>

#include "hosts/cli/texts/generated_texts.h"
#include "hosts/cli/texts/near_word.h"

namespace vtdirect_cli {
namespace {

struct Binding {
  ArgumentName name;
  CLI::Option* option = nullptr;
  std::vector<std::string> values;
};

// The texts that the parser fills have to stay where they are.
using Bindings = std::list<Binding>;

[[nodiscard]] std::string Names(const OptionRow& row) {
  const std::string longName = "--" + std::string(row.name.text());
  return row.letter == 0 ? longName : std::string("-") + row.letter + "," + longName;
}

// The parser is told no help texts: those come from the table too, set by ourselves.
void Bind(CLI::App& app, const OptionRow& row, Bindings& bindings) {
  Binding& binding = bindings.emplace_back(Binding{row.name, nullptr, {}});
  if (row.value == nullptr) {
    binding.option = app.add_flag(Names(row));
    return;
  }
  // One value for each time the option is given, or it would take the operands after it as well.
  binding.option = app.add_option(Names(row), binding.values)->allow_extra_args(false);
  binding.option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void BindOperand(CLI::App& app, const OperandRow& row, Bindings& bindings) {
  Binding& binding = bindings.emplace_back(Binding{row.name, nullptr, {}});
  binding.option = app.add_option(row.name.text(), binding.values);
  if (row.count == Count::Once) binding.option->required();
  if (row.count == Count::Once || row.count == Count::AtMostOnce)
    binding.option->allow_extra_args(false)->expected(1);
}

[[nodiscard]] bool TakesSeveral(const OperandRow& row) {
  return row.count == Count::AtLeastOnce || row.count == Count::AnyNumber;
}

// An operand that is given several times takes all that there is, so the ones after it are parted from it when
// the line has been read.
void BindOperands(CLI::App& app, const CommandRow& row, Bindings& bindings) {
  for (const OperandRow& operand : row.operands) {
    BindOperand(app, operand, bindings);
    if (TakesSeveral(operand)) return;
  }
}

void Collect(const Bindings& bindings, Arguments& arguments) {
  for (const Binding& binding : bindings) {
    if (binding.option->count() > 0) arguments.Set(binding.name, binding.option->results());
  }
}

void BindGlobals(CLI::App& app, Bindings& bindings) {
  for (const OptionRow& row : GlobalOptions()) {
    if (row.name == "help") {
      app.set_help_flag(Names(row));
    } else if (row.name == "version") {
      app.set_version_flag(Names(row), VersionText());
    } else {
      Bind(app, row, bindings);
    }
  }
}

void AddGroup(CLI::App& app, const GroupRow& row) {
  CLI::App* const group = app.add_subcommand(row.name);
  group->require_subcommand(0, 1);
  group->fallthrough();
}

void BindCommand(CLI::App& app, const CommandRow& row, Bindings& bindings) {
  CLI::App& parent = GroupOf(row).empty() ? app : *app.get_subcommand(GroupOf(row));
  CLI::App* const command = parent.add_subcommand(WordOf(row));
  // A global option is understood after the command too.
  command->fallthrough();
  BindOperands(*command, row, bindings);
  for (const OptionRow& option : row.options) Bind(*command, option, bindings);
}

[[nodiscard]] const GroupRow* ChosenGroup(const CLI::App& app) {
  for (const GroupRow& row : Groups()) {
    if (app.got_subcommand(row.name)) return &row;
  }
  return nullptr;
}

// The command that is on the line, or null.
[[nodiscard]] const CommandRow* Chosen(const CLI::App& app) {
  for (const CommandRow& row : Commands()) {
    const std::string group = GroupOf(row);
    if (!group.empty() && !app.got_subcommand(group)) continue;
    const CLI::App& parent = group.empty() ? app : *app.get_subcommand(group);
    if (parent.got_subcommand(WordOf(row))) return &row;
  }
  return nullptr;
}

[[nodiscard]] std::string ChosenHelp(const CLI::App& app) {
  const CommandRow* const command = Chosen(app);
  const GroupRow* const group = ChosenGroup(app);
  return command == nullptr && group != nullptr ? HelpText(*group) : HelpText(command);
}

[[nodiscard]] Failure MissingCommand(const CLI::App& app) {
  const GroupRow* const group = ChosenGroup(app);
  if (group == nullptr) return {ExitCode::Usage, "no command is given", "see vtdirect --help"};
  const std::string name = group->name;
  return {ExitCode::Usage, name + " takes one of its commands", "see vtdirect " + name + " --help"};
}

// The letters of the options that take no value, up to the first that takes one: what follows that one is its
// value.
[[nodiscard]] bool HasLetter(std::string_view cluster, char wanted) {
  for (const char letter : cluster) {
    if (letter == wanted) return true;
    const auto takesValue = [letter](const OptionRow& row) {
      return row.letter == letter && row.value != nullptr;
    };
    if (std::any_of(GlobalOptions().begin(), GlobalOptions().end(), takesValue)) return false;
    for (const CommandRow& command : Commands()) {
      if (std::any_of(command.options.begin(), command.options.end(), takesValue)) return false;
    }
  }
  return false;
}

// Of a line that can't be understood nobody can tell what a word means, so "--json" counts wherever it is.
[[nodiscard]] bool AsksForJson(int argc, const char* const* argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view word = argv[i];
    if (word == "--") return false;
    if (word == "--json") return true;
    if (word.starts_with('-') && !word.starts_with("--") && HasLetter(word.substr(1), 'j')) return true;
  }
  return false;
}

// "xliff" of a line that names the group alone.
[[nodiscard]] std::string NamedBy(const CLI::App& app) {
  if (const CommandRow* const command = Chosen(app)) return command->name;
  const GroupRow* const group = ChosenGroup(app);
  return group == nullptr ? "" : group->name;
}

[[nodiscard]] bool IsGroup(const std::string& word) {
  return std::any_of(Groups().begin(), Groups().end(),
                     [&word](const GroupRow& row) { return word == row.name; });
}

// "help get" is what "get --help" is, and "xliff help" what "xliff --help" is. The parser takes the words from the
// back.
[[nodiscard]] std::vector<std::string> WordsFor(int argc, const char* const* argv) {
  std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  if (!words.empty() && words.front() == "help") {
    words.erase(words.begin());
    words.emplace_back("--help");
  } else if (words.size() == 2 && IsGroup(words.front()) && words.back() == "help") {
    words.back() = "--help";
  }
  std::reverse(words.begin(), words.end());
  return words;
}

// What could be in the place of the first word that was not expected: an option, or a command.
[[nodiscard]] std::vector<std::string> CandidatesFor(const CLI::App& app, const std::string& word) {
  std::vector<std::string> candidates;
  const CommandRow* const command = Chosen(app);
  if (word.starts_with("-")) {
    for (const OptionRow& row : GlobalOptions()) candidates.push_back("--" + std::string(row.name.text()));
    if (command == nullptr) return candidates;
    for (const OptionRow& row : command->options) candidates.push_back("--" + std::string(row.name.text()));
  } else if (command == nullptr) {
    const GroupRow* const group = ChosenGroup(app);
    for (const CommandRow& row : Commands()) {
      if (group == nullptr) candidates.push_back(GroupOf(row).empty() ? row.name : GroupOf(row));
      if (group != nullptr && GroupOf(row) == group->name) candidates.push_back(WordOf(row));
    }
  } else {
    // "xlif put" is read as the command put after a word that nobody knows.
    for (const CommandRow& row : Commands()) {
      if (!GroupOf(row).empty() && WordOf(row) == command->name) candidates.push_back(GroupOf(row));
    }
  }
  return candidates;
}

// "see vtdirect get --help", of the command or the group that is on the line.
[[nodiscard]] std::string SeeHelp(const CLI::App& app) {
  const std::string named = NamedBy(app);
  return "see vtdirect " + named + (named.empty() ? "" : " ") + "--help";
}

// What others call a command.
struct OtherName {
  const char* name;
  const char* meant;
};
constexpr OtherName otherNames[] = {{"push", "did you mean put, or commit in a work folder?"},
                                    {"upload", "did you mean put, or commit in a work folder?"},
                                    {"download", "did you mean get?"}};

// The first word, or the first one after a group's, if no command is called so.
[[nodiscard]] std::optional<Failure> UnknownCommand(const CLI::App& app) {
  const std::vector<std::string> words = app.remaining(true);
  if (Chosen(app) != nullptr || words.empty() || words.front().starts_with('-')) return std::nullopt;
  const std::string& word = words.front();
  const GroupRow* const group = ChosenGroup(app);
  std::string meant = DidYouMean(word, CandidatesFor(app, word));
  for (const OtherName& other : otherNames) {
    if (group == nullptr && word == other.name) meant = other.meant;
  }
  const std::string name = (group == nullptr ? "" : std::string(group->name) + " ") + word;
  return Failure{ExitCode::Usage, "there is no command \"" + name + "\"",
                 meant + (meant.empty() ? "" : " ") + SeeHelp(app)};
}

// The parser calls a value by its type; the table says what it is.
[[nodiscard]] std::string WordsOf(const CLI::App& app, const CLI::ParseError& error) {
  const std::string text = error.what();
  const CommandRow* const command = Chosen(app);
  std::vector<OptionRow> rows(GlobalOptions().begin(), GlobalOptions().end());
  if (command != nullptr) rows.insert(rows.end(), command->options.begin(), command->options.end());
  for (const OptionRow& row : rows) {
    const std::string name = "--" + std::string(row.name.text());
    if (row.value != nullptr && text.starts_with(name + ":") && text.ends_with(" missing")) {
      const bool isVowel = std::string_view("AEIOU").find(row.value[0]) != std::string_view::npos;
      return name + " takes " + (isVowel ? "an " : "a ") + row.value;
    }
  }
  return text;
}

// In their order, which the parser's own text turns round.
[[nodiscard]] Failure UnexpectedWords(const CLI::App& app) {
  if (auto failure = UnknownCommand(app)) return *failure;
  std::string words;
  std::string meant;
  for (const std::string& word : app.remaining(true)) {
    if (words.empty()) meant = DidYouMean(word.substr(0, word.find('=')), CandidatesFor(app, word));
    words += " " + word;
  }
  return {ExitCode::Usage, "not expected:" + words, meant + (meant.empty() ? "" : " ") + SeeHelp(app)};
}

// Gives the operands after one that is given several times their values, which are the last ones.
void PartOperands(const CommandRow& row, Arguments& arguments) {
  const auto several = std::find_if(row.operands.begin(), row.operands.end(), TakesSeveral);
  if (several == row.operands.end()) return;
  std::vector<std::string> values = arguments.All(several->name);
  for (auto operand = row.operands.end() - 1; operand != several; --operand) {
    // A list may hold all of them.
    const std::size_t kept = several->count == Count::AtLeastOnce && !arguments.Has("from") ? 1 : 0;
    if (values.size() <= kept) break;
    arguments.Set(operand->name, {values.back()});
    values.pop_back();
  }
  if (arguments.Has(several->name)) arguments.Set(several->name, std::move(values));
}

// A list of addresses takes the place of those that are not given.
[[nodiscard]] std::optional<Failure> MissingOperand(const CommandRow& row, const Arguments& arguments) {
  for (const OperandRow& operand : row.operands) {
    const bool mayBeAbsent = operand.count == Count::AtMostOnce || operand.count == Count::AnyNumber ||
                             (operand.count == Count::AtLeastOnce && arguments.Has("from"));
    if (mayBeAbsent || !arguments.All(operand.name).empty()) continue;
    return Failure{ExitCode::Usage, std::string(operand.name.text()) + " is required",
                   "see vtdirect " + std::string(row.name) + " --help"};
  }
  return std::nullopt;
}

}  // namespace

std::string VersionText() {
  return std::string("vtdirect ") + VTDIRECT_VERSION;
}

CommandLine ParseCommandLine(int argc, const char* const* argv) {
  CommandLine line;
  line.json = AsksForJson(argc, argv);
  CLI::App app;
  app.require_subcommand(0, 1);
  Bindings globals;
  BindGlobals(app, globals);
  for (const GroupRow& row : Groups()) AddGroup(app, row);
  std::list<Bindings> ofCommands;
  for (const CommandRow& row : Commands()) BindCommand(app, row, ofCommands.emplace_back());

  try {
    app.parse(WordsFor(argc, argv));
  } catch (const CLI::CallForHelp&) {
    line.failure = UnknownCommand(app);
    if (!line.failure) line.text = ChosenHelp(app);
    return line;
  } catch (const CLI::CallForVersion&) {
    line.text = VersionText() + "\n";
    return line;
  } catch (const CLI::ExtrasError&) {
    line.failure = UnexpectedWords(app);
    line.named = NamedBy(app);
    return line;
  } catch (const CLI::ParseError& error) {
    line.failure = Failure{ExitCode::Usage, WordsOf(app, error), SeeHelp(app)};
    line.named = NamedBy(app);
    return line;
  }
  Collect(globals, line.arguments);
  line.json = line.arguments.Has("json");
  line.command = Chosen(app);
  line.named = NamedBy(app);
  if (line.command == nullptr) {
    line.failure = MissingCommand(app);
    return line;
  }
  Collect(*std::next(ofCommands.begin(), line.command - Commands().data()), line.arguments);
  PartOperands(*line.command, line.arguments);
  line.failure = MissingOperand(*line.command, line.arguments);
  return line;
}

}  // namespace vtdirect_cli
