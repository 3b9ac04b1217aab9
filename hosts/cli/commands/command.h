#pragma once

#include <map>
#include <span>
#include <string>
#include <vector>

#include "hosts/cli/commands/argument_name.h"
#include "hosts/cli/failures/failure.h"

namespace vtdirect_cli {

class Host;

/// What a completion offers for a value.
enum class Completion { Nothing, Files, Directories, Nicknames };

/// One option of the program or of a command.
struct OptionRow {
  ArgumentName name;            ///< long name, without dashes
  char letter = 0;              ///< short name; 0 for none
  const char* value = nullptr;  ///< what stands for its value in the help; null for a flag
  bool repeatable = false;  ///< may be given several times, all of which count; otherwise the last one counts
  Completion completion = Completion::Nothing;
  const char* help = nullptr;             ///< one sentence
  std::vector<const char*> choices = {};  ///< all values that there are, when they can be listed
};

/// The choices of an option as words of a shell, separated by blanks.
[[nodiscard]] std::string ChoicesOf(const OptionRow& row);

/// How often an operand is given.
enum class Count { Once, AtMostOnce, AtLeastOnce, AnyNumber };

/// One operand of a command.
struct OperandRow {
  ArgumentName name;
  const char* help;
  Count count = Count::Once;
};

/// How the operand is written in a line of usage: "PATH", "[PATH]", "PATH..." or "[PATH...]".
[[nodiscard]] std::string UsageOf(const OperandRow& row);

/// What a member of a JSON object holds.
enum class MemberType { Text, Flag, Number, Texts };

/// One member of the JSON objects that a command prints.
struct MemberRow {
  const char* name;
  MemberType type;
  const char* when;  ///< when it is there, completing "present ..."; null for always
  const char* help;  ///< what it holds
};

/// The options and operands of one call, by the names of the table.
class Arguments {
 public:
  /// Whether the option was given.
  [[nodiscard]] bool Has(ArgumentName name) const { return values_.contains(name); }
  /// The last value; empty when it wasn't given.
  [[nodiscard]] std::string Text(ArgumentName name) const;
  /// Every value, in order.
  [[nodiscard]] std::vector<std::string> All(ArgumentName name) const;
  void Set(ArgumentName name, std::vector<std::string> values) { values_[name] = std::move(values); }

 private:
  std::map<ArgumentName, std::vector<std::string>> values_;
};

/// Whether a command asks a server anything.
enum class Requests { None, Some };

/// One command, named by one word, or by two of which the first is the name of a group. The parser, the help
/// texts, the manual page, the completion and the description of the JSON all read this record.
struct CommandRow {
  const char* name;
  const char* summary;      ///< one line
  const char* description;  ///< paragraphs, separated by an empty line
  std::vector<OperandRow> operands;
  std::vector<OptionRow> options;
  Requests requests;
  ExitCode (*run)(Host& host, const Arguments& arguments);
  std::vector<MemberRow> members = {};  ///< of the JSON objects on standard output
  bool worksInFolder = false;  ///< its server is that of the work folder around the current directory
  std::vector<const char*> columns = {};  ///< of a listing: what --sort takes
};

/// A command whose rows are a listing: with headings and columns on a terminal, and with the option --sort.
/// @param columns  keys of what it shows, or of its JSON
/// @param help     of --sort, which names them; it has to live as long as the process
[[nodiscard]] CommandRow AsListing(CommandRow row, std::vector<const char*> columns, const char* help);

/// Every command, in the order of the help text.
[[nodiscard]] std::span<const CommandRow> Commands();

/// What several commands are for that follow each other.
struct HeadingRow {
  const char* heading;
  const char* first;  ///< name of the first of them
};

/// Every heading of the list of commands, in its order.
[[nodiscard]] std::span<const HeadingRow> Headings();

/// The options that were given of these, as words of a command line.
[[nodiscard]] std::vector<std::string> WordsOf(std::span<const OptionRow> rows, const Arguments& arguments);

/// Several commands that share the first word of their names.
struct GroupRow {
  const char* name;
  const char* summary;  ///< one line
};

/// Every group, in the order of its first command.
[[nodiscard]] std::span<const GroupRow> Groups();

/// The name of the group that the command belongs to; empty for a name of one word.
[[nodiscard]] std::string GroupOf(const CommandRow& row);

/// The last word of the command's name, which is what is typed after the group's.
[[nodiscard]] std::string WordOf(const CommandRow& row);

/// The options that every command takes.
[[nodiscard]] std::span<const OptionRow> GlobalOptions();

/// The members of every JSON object on standard output and on standard error, in front of all others.
[[nodiscard]] std::span<const MemberRow> CommonMembers();

/// The members of a failure, on standard error.
[[nodiscard]] std::span<const MemberRow> FailureMembers();

/// The members of a warning, on standard error.
[[nodiscard]] std::span<const MemberRow> WarningMembers();

/// What the members mean that several commands have: the same in each of them.
[[nodiscard]] std::span<const MemberRow> Vocabulary();

/// "text", "flag", "number" or "texts".
[[nodiscard]] const char* NameOf(MemberType type);

/// A piece of the general documentation: the heading, and paragraphs separated by an empty line. A paragraph
/// whose lines begin with two blanks is shown as it is.
struct SectionRow {
  const char* heading;
  const char* text;
};

/// What the manual page says beside the commands.
[[nodiscard]] std::span<const SectionRow> Sections();

// One function a file: each gives its row of the table.
[[nodiscard]] CommandRow BrowseUrlCommand();
[[nodiscard]] CommandRow CheckCommand();
[[nodiscard]] CommandRow CheckinCommand();
[[nodiscard]] CommandRow CheckoutCommand();
[[nodiscard]] CommandRow CheckoutsCommand();
[[nodiscard]] CommandRow CloneCommand();
[[nodiscard]] CommandRow CommitCommand();
[[nodiscard]] CommandRow DiffCommand();
[[nodiscard]] CommandRow DoctorCommand();
[[nodiscard]] CommandRow EditCommand();
[[nodiscard]] CommandRow EditUrlCommand();
[[nodiscard]] CommandRow FindCommand();
[[nodiscard]] CommandRow GetCommand();
[[nodiscard]] CommandRow InfoCommand();
[[nodiscard]] CommandRow LinksCommand();
[[nodiscard]] CommandRow LogCommand();
[[nodiscard]] CommandRow LoginCommand();
[[nodiscard]] CommandRow LsCommand();
[[nodiscard]] CommandRow MountCommand();
[[nodiscard]] CommandRow OpenCommand();
[[nodiscard]] CommandRow PathCommand();
[[nodiscard]] CommandRow PullCommand();
[[nodiscard]] CommandRow PutCommand();
[[nodiscard]] CommandRow RecoverCommand();
[[nodiscard]] CommandRow RefreshCommand();
[[nodiscard]] CommandRow RevertCommand();
[[nodiscard]] CommandRow StCommand();
[[nodiscard]] CommandRow StatusCommand();
[[nodiscard]] CommandRow SupportBundleCommand();
[[nodiscard]] CommandRow TreeCommand();
[[nodiscard]] CommandRow UidCommand();
[[nodiscard]] CommandRow UndoCommand();
[[nodiscard]] CommandRow UnmountCommand();
[[nodiscard]] CommandRow UrlCommand();
[[nodiscard]] CommandRow VerifyCommand();
[[nodiscard]] CommandRow VersionsCommand();
[[nodiscard]] CommandRow ServersCommand();
[[nodiscard]] CommandRow XliffPutCommand();
[[nodiscard]] CommandRow XliffSourceCommand();
[[nodiscard]] CommandRow XliffListCommand();
[[nodiscard]] CommandRow XliffGetCommand();
[[nodiscard]] CommandRow XliffPublishCommand();

}  // namespace vtdirect_cli
