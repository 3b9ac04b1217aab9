#include <algorithm>
#include <string_view>

#include "hosts/cli/texts/examples.h"
#include "hosts/cli/texts/generated_texts.h"

namespace vtdirect_cli {
namespace {

constexpr std::size_t columns = 80;
constexpr std::size_t termColumns = 28;

// Sets a paragraph: every line but the first begins at `indent`, where the first is taken to be already.
[[nodiscard]] std::string Wrapped(std::string_view text, std::size_t indent) {
  std::string out;
  std::size_t column = indent;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (column > indent && column + 1 + word.size() > columns) {
      out += "\n" + std::string(indent, ' ');
      column = indent;
    } else if (column > indent) {
      out += ' ';
      ++column;
    }
    out += word;
    column += word.size();
  }
  return out + "\n";
}

[[nodiscard]] std::string Paragraphs(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find("\n\n"), text.size());
    out += "\n" + Wrapped(text.substr(0, end), 0);
    text.remove_prefix(std::min(end + 2, text.size()));
  }
  return out;
}

[[nodiscard]] std::string Term(const std::string& term, std::string_view text) {
  std::string out = "  " + term;
  if (out.size() + 1 > termColumns) {
    out += "\n" + std::string(termColumns, ' ');
  } else {
    out.resize(termColumns, ' ');
  }
  return out + Wrapped(text, termColumns);
}

[[nodiscard]] std::string OptionTerm(const OptionRow& row) {
  std::string term = row.letter == 0 ? "    " : std::string("-") + row.letter + ", ";
  term += "--" + std::string(row.name.text());
  if (row.value != nullptr) term += " " + std::string(row.value);
  return term;
}

[[nodiscard]] std::string OptionList(std::span<const OptionRow> rows) {
  std::string out;
  for (const OptionRow& row : rows) out += Term(OptionTerm(row), row.help);
  return out;
}

[[nodiscard]] std::string CommandList() {
  std::string out;
  for (const CommandRow& row : Commands()) {
    for (const HeadingRow& heading : Headings()) {
      if (row.name == std::string_view(heading.first)) out += std::string("\n") + heading.heading + ":\n";
    }
    out += Term(row.name, row.summary);
  }
  return out;
}

[[nodiscard]] std::string ProgramHelp() {
  std::string out = "Usage: vtdirect [options] COMMAND [options] [operands]\n" + CommandList();
  out += "\nOptions, before or after a command:\n" + OptionList(GlobalOptions()) + "\nExit status:\n";
  for (const ExitCodeRow& row : ExitCodes())
    out += Term(std::to_string(static_cast<int>(row.code)), row.meaning);
  return out + "\n" +
         Wrapped(
             "vtdirect COMMAND --help tells of one command; vtdirect(1) of addresses, credentials and the "
             "configuration file.",
             0);
}

// Not wrapped: a line can be copied as it is.
[[nodiscard]] std::string Examples(const char* command) {
  std::string out;
  for (const char* line : ExamplesOf(command))
    out += std::string(out.empty() ? "\nExamples:\n" : "") + "  " + line + "\n";
  return out;
}

[[nodiscard]] std::string CommandHelp(const CommandRow& row) {
  std::string out = "Usage: vtdirect [options] " + std::string(row.name);
  if (!row.options.empty()) out += " [options]";
  for (const OperandRow& operand : row.operands) out += " " + UsageOf(operand);
  out += "\n" + Paragraphs(row.description) + "\n";
  for (const OperandRow& operand : row.operands) out += Term(operand.name.text(), operand.help);
  out += OptionList(row.options);
  out += "\nFor the options of every command: vtdirect --help\n";
  return out + Examples(row.name);
}

}  // namespace

std::string HelpText(const CommandRow* command) {
  return command == nullptr ? ProgramHelp() : CommandHelp(*command);
}

std::string HelpText(const GroupRow& group) {
  const std::string name = group.name;
  std::string out = "Usage: vtdirect [options] " + name + " COMMAND [options] [operands]\n\n" +
                    Wrapped(group.summary + std::string("."), 0) + "\nCommands:\n";
  for (const CommandRow& row : Commands()) {
    if (GroupOf(row) == name) out += Term(row.name, row.summary);
  }
  return out + "\n" +
         Wrapped("vtdirect " + name + " COMMAND --help tells of one command; vtdirect --help of all others.",
                 0);
}

}  // namespace vtdirect_cli
