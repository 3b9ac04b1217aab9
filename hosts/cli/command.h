#pragma once

#include <map>
#include <span>
#include <string>
#include <vector>

#include "hosts/cli/exit_code.h"

namespace vtdirect_cli {

class Host;

/// What a completion offers for a value.
enum class Completion { Nothing, Files, Directories };

/// One option of the program or of a command.
struct OptionRow {
  const char* name;   ///< long name, without dashes
  char letter;        ///< short name; 0 for none
  const char* value;  ///< what stands for its value in the help; null for a flag
  bool repeatable;    ///< may be given several times, all of which count; otherwise the last one counts
  Completion completion;
  const char* help;  ///< one sentence
};

/// One operand of a command; each is required and given once.
struct OperandRow {
  const char* name;
  const char* help;
};

/// The options and operands of one call, by the names of the table.
class Arguments {
 public:
  /// Whether the option was given.
  [[nodiscard]] bool Has(const std::string& name) const { return values_.contains(name); }
  /// The last value; empty when it wasn't given.
  [[nodiscard]] std::string Text(const std::string& name) const;
  /// Every value, in order.
  [[nodiscard]] std::vector<std::string> All(const std::string& name) const;
  void Set(const std::string& name, std::vector<std::string> values) { values_[name] = std::move(values); }

 private:
  std::map<std::string, std::vector<std::string>> values_;
};

/// One command. The parser, the help texts, the manual page and the completion all read this record.
struct CommandRow {
  const char* name;
  const char* summary;      ///< one line
  const char* description;  ///< paragraphs, parted by an empty line
  std::vector<OperandRow> operands;
  std::vector<OptionRow> options;
  bool makesRequests;
  ExitCode (*run)(Host& host, const Arguments& arguments);
};

/// Every command, in the order of the help text.
[[nodiscard]] std::span<const CommandRow> Commands();

/// The options that every command takes.
[[nodiscard]] std::span<const OptionRow> GlobalOptions();

/// A piece of the general documentation: the heading, and paragraphs parted by an empty line. A paragraph
/// whose lines begin with two blanks is shown as it stands.
struct SectionRow {
  const char* heading;
  const char* text;
};

/// What the manual page says beside the commands.
[[nodiscard]] std::span<const SectionRow> Sections();

// One function a file: each gives its row of the table.
[[nodiscard]] CommandRow CheckCommand();
[[nodiscard]] CommandRow GetCommand();
[[nodiscard]] CommandRow InfoCommand();
[[nodiscard]] CommandRow UidCommand();
[[nodiscard]] CommandRow ServersCommand();

}  // namespace vtdirect_cli
