#include <span>
#include <string>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/failure.h"
#include "hosts/cli/texts/generated_texts.h"

namespace vtdirect_cli {
namespace {

// A "|" would end the cell of the table.
[[nodiscard]] std::string Cell(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '|') out += '\\';
    out += c;
  }
  return out;
}

[[nodiscard]] std::string Table(std::span<const MemberRow> rows) {
  std::string out = "| member | type | present | what it holds |\n| --- | --- | --- | --- |\n";
  for (const MemberRow& row : rows) {
    out += "| `" + std::string(row.name) + "` | " + NameOf(row.type) + " | " +
           Cell(row.when == nullptr ? "always" : row.when) + " | " + Cell(row.help) + " |\n";
  }
  return out;
}

[[nodiscard]] std::string VocabularyTable() {
  std::string out = "| member | type | what it holds |\n| --- | --- | --- |\n";
  for (const MemberRow& row : Vocabulary()) {
    out += "| `" + std::string(row.name) + "` | " + NameOf(row.type) + " | " + Cell(row.help) + " |\n";
  }
  return out;
}

// One table for the reader: the names of exit statuses, and what divides them further.
[[nodiscard]] std::string ClassTable() {
  std::string out = "| error | retryable | meaning |\n| --- | --- | --- |\n";
  for (const ExitCodeRow& row : ExitCodes()) {
    if (row.code == ExitCode::Ok || row.code == ExitCode::Outdated) continue;
    const char* const retryable = IsRetryable({row.code, {}}) ? "yes" : "no";
    out += "| `" + std::string(row.name) + "` | " + retryable + " | " + Cell(row.meaning) + " |\n";
  }
  for (const FailureClassRow& row : FailureClasses()) {
    out += "| `" + std::string(row.name) + "` | " + (row.retryable ? "yes" : "no") + " | " +
           Cell(row.meaning) + " |\n";
  }
  return out;
}

constexpr const char* documentHead =
    "# What `vtdirect --json` prints\n"
    "\n"
    "<!-- Made by \"vtdirect --generate json-output\" from the program's own tables. -->\n"
    "\n"
    "With `--json` every result is one JSON object on one line of standard output, in ASCII: every other "
    "character stands\n"
    "as `\\uXXXX`, and bytes that are no UTF-8 become U+FFFD. A listing prints its lines as the server "
    "delivers its rows. A\n"
    "failure is one object on one line of standard error, and the exit status tells it too; a command line "
    "that can't be\n"
    "understood is such a failure. A warning is one object on one line there as well. Plain lines on "
    "standard error are the\n"
    "trace alone.\n"
    "\n"
    "`schema` is the version of the form. It rises when a member goes, changes its type or changes its "
    "meaning; a new\n"
    "member comes without a rise, so a reader passes over what it does not know.\n"
    "\n"
    "The types: `text` is a string, `flag` is true or false, `number` is a whole number that is not "
    "negative, `texts` is an\n"
    "array of strings. A member is never null: it is there or it is not.\n";

constexpr const char* vocabulary =
    "\n## One name, one meaning\n"
    "\n"
    "These members mean the same in the results of every command. In a failure `kind` is that of the "
    "failure.\n"
    "\n";

constexpr const char* classes =
    "\n## Classes of failures\n"
    "\n"
    "The first are named after the exit statuses; the last five divide the exit statuses 1, 3 and 6 further, "
    "by\n"
    "what the library tells of the failed call. A command may be given again as it is where `retryable` says "
    "so: the server\n"
    "may be there again by then, or the other user done. It is never true when `may_have_happened` is.\n"
    "\n";

}  // namespace

std::string JsonDocument() {
  std::string out = std::string(documentHead) + "\n## Every object\n\n" + Table(CommonMembers()) +
                    vocabulary + VocabularyTable() + "\n## A failure\n\n" + Table(FailureMembers()) +
                    classes + ClassTable() + "\n## A warning\n\n" + Table(WarningMembers());
  for (const CommandRow& row : Commands()) {
    out += "\n## " + std::string(row.name) + "\n\n" + row.summary + ".\n\n" + Table(row.members);
  }
  return out;
}

}  // namespace vtdirect_cli
