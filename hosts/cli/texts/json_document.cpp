#include <span>
#include <string>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/exit_code.h"
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

constexpr const char* kHead =
    "# What `vtdirect --json` prints\n"
    "\n"
    "<!-- Made by \"vtdirect --generate json-output\" from the program's own tables. -->\n"
    "\n"
    "With `--json` every result is one JSON object on one line of standard output, in ASCII: every other "
    "character stands\n"
    "as `\\uXXXX`, and bytes that are no UTF-8 become U+FFFD. A listing prints its lines as the server "
    "delivers its rows. A\n"
    "failure is one object on one line of standard error, and the exit status tells it too. "
    "Plain lines there are warnings,\n"
    "the trace, and what is wrong with a command line that can't be understood.\n"
    "\n"
    "`schema` is the version of the form. It rises when a member goes, changes its type or changes its "
    "meaning; a new\n"
    "member comes without a rise, so a reader passes over what it does not know.\n"
    "\n"
    "The types: `text` is a string, `flag` is true or false, `number` is a whole number that is not "
    "negative, `texts` is an\n"
    "array of strings. A member is never null: it is there or it is not.\n";

}  // namespace

std::string JsonDocument() {
  std::string out = std::string(kHead) + "\n## Every object\n\n" + Table(CommonMembers()) +
                    "\n## A failure\n\n" + Table(FailureMembers());
  for (const CommandRow& row : Commands()) {
    out += "\n## " + std::string(row.name) + "\n\n" + row.summary + ".\n\n" + Table(row.members);
  }
  return out;
}

}  // namespace vtdirect_cli
