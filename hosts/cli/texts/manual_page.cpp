#include <algorithm>
#include <span>
#include <string_view>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/commands/command_line.h"
#include "hosts/cli/texts/examples.h"
#include "hosts/cli/texts/generated_texts.h"

namespace vtdirect_cli {
namespace {

// "-" would be set as a hyphen, which can't be copied into a shell; a line that begins with a dot or an
// apostrophe would be taken for a request of the formatter.
[[nodiscard]] std::string Escaped(std::string_view text) {
  std::string out;
  bool lineStart = true;
  for (const char c : text) {
    if (lineStart && (c == '.' || c == '\'')) out += "\\&";
    lineStart = c == '\n';
    if (c == '\\') {
      out += "\\e";
    } else if (c == '-') {
      out += "\\-";
    } else if (c == '~') {
      out += "\\(ti";
    } else if (c == '\'') {
      out += "\\(aq";
    } else {
      out += c;
    }
  }
  return out;
}

// What fits on a terminal of 80 columns beside the margin of a page.
constexpr std::size_t unfilledWidth = 71;

// The column at which an entry of a list continues: below what follows the term, or a little to the right of
// "TERM: ". 0 for a line that is no entry, as a command, which is to be copied whole.
[[nodiscard]] std::size_t ContinuationOf(std::string_view line) {
  const std::size_t term = std::min(line.find_first_not_of(' '), line.size());
  const std::size_t gap = line.find("  ", term);
  if (gap != std::string_view::npos) return line.find_first_not_of(' ', gap);
  return line.find(": ", term) == std::string_view::npos ? 0 : term + 2;
}

[[nodiscard]] std::string FilledLine(std::string line) {
  const std::size_t continuation = ContinuationOf(line);
  if (continuation == 0 || continuation == std::string::npos) return line;
  std::string out;
  while (line.size() > unfilledWidth) {
    const std::size_t blank = line.rfind(' ', unfilledWidth);
    if (blank == std::string::npos || blank < continuation) break;
    out += line.substr(0, blank) + "\n";
    line = std::string(continuation, ' ') + line.substr(blank + 1);
  }
  return out + line;
}

[[nodiscard]] std::string FilledLines(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    out += FilledLine(std::string(text.substr(0, end)));
    if (end < text.size()) out += '\n';
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return out;
}

[[nodiscard]] std::string Paragraphs(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find("\n\n"), text.size());
    const std::string_view paragraph = text.substr(0, end);
    text.remove_prefix(std::min(end + 2, text.size()));
    if (paragraph.starts_with("  ")) {
      out += ".PP\n.nf\n" + Escaped(FilledLines(paragraph)) + "\n.fi\n";
    } else {
      out += ".PP\n" + Escaped(paragraph) + "\n";
    }
  }
  return out;
}

[[nodiscard]] std::string Term(const std::string& term, std::string_view text) {
  return ".TP\n" + term + "\n" + Escaped(text) + "\n";
}

[[nodiscard]] std::string OptionTerm(const OptionRow& row) {
  std::string term = ".B ";
  if (row.letter != 0) term += std::string("\\-") + row.letter + ", ";
  term += "\\-\\-" + Escaped(row.name.text());
  if (row.value != nullptr) term += " \\fI" + Escaped(row.value) + "\\fP";
  return term;
}

[[nodiscard]] std::string OptionList(std::span<const OptionRow> rows) {
  std::string out;
  for (const OptionRow& row : rows) out += Term(OptionTerm(row), row.help);
  return out;
}

[[nodiscard]] std::string Members(std::span<const MemberRow> rows) {
  std::string out;
  for (const MemberRow& row : rows) {
    out += out.empty() ? "" : ", ";
    out += row.name;
    if (row.when != nullptr) out += " (" + std::string(row.when) + ")";
  }
  return ".PP\n" + Escaped("The members with --json: " + out + ".") + "\n";
}

[[nodiscard]] std::string Examples(const char* command) {
  std::string out;
  for (const char* line : ExamplesOf(command)) out += Escaped(std::string("  ") + line) + "\n";
  return out.empty() ? out : ".PP\nExamples:\n.PP\n.nf\n" + out + ".fi\n";
}

[[nodiscard]] std::string CommandSection(const CommandRow& row) {
  std::string out = ".SS vtdirect " + Escaped(row.name);
  if (!row.options.empty()) out += " [options]";
  for (const OperandRow& operand : row.operands) out += " " + Escaped(UsageOf(operand));
  out += "\n" + Paragraphs(row.description);
  for (const OperandRow& operand : row.operands) {
    out += Term(".I " + Escaped(operand.name.text()), operand.help);
  }
  return out + OptionList(row.options) + Examples(row.name) + Members(row.members);
}

[[nodiscard]] std::string Synopsis(const CommandRow& row) {
  std::string out = ".SH SYNOPSIS\n.B vtdirect\n[options] \\fB" + Escaped(row.name) + "\\fP";
  if (!row.options.empty()) out += " [options]";
  for (const OperandRow& operand : row.operands) out += " \\fI" + Escaped(UsageOf(operand)) + "\\fP";
  return out + "\n";
}

[[nodiscard]] std::string ExitStatus() {
  std::string out = ".SH EXIT STATUS\n";
  for (const ExitCodeRow& row : ExitCodes()) {
    out += Term(".B " + std::to_string(static_cast<int>(row.code)) + " " + Escaped(row.name), row.meaning);
  }
  return out + ".PP\n" +
         Escaped(
             "The class is found out from the reason that the library tells of a failed call. Where that is "
             "not enough, vtdirect asks again whether the server can be used and whether the object is "
             "there. An object that the server keeps from this user counts as not found.") +
         "\n";
}

// "Download an object's content" as it is after a dash.
[[nodiscard]] std::string InASentence(std::string text) {
  if (text[0] >= 'A' && text[0] <= 'Z') text[0] = static_cast<char>(text[0] - 'A' + 'a');
  return text;
}

[[nodiscard]] std::string SeeAlso() {
  std::string out = ".SH SEE ALSO\n.PP\nEach command has a page of its own:\n";
  std::string separator;
  for (const CommandRow& row : Commands()) {
    out += separator + ".BR " + Escaped(NameOfPage(row)) + " (1)";
    separator = ",\n";
  }
  return out + ".\n";
}

}  // namespace

std::string ManualPage() {
  std::string out = ".TH VTDIRECT 1 \"\" \"" + VersionText() + "\" \"User Commands\"\n";
  out += ".SH NAME\nvtdirect \\- reach the documents of a Vantry server from the command line\n";
  out += ".SH SYNOPSIS\n.B vtdirect\n[options] \\fIcommand\\fP [options] [operands]\n";
  out += ".SH COMMANDS\n";
  for (const CommandRow& row : Commands()) out += CommandSection(row);
  out += ".SH OPTIONS\n.PP\nThese are taken before or after a command.\n";
  out += OptionList(GlobalOptions());
  for (const SectionRow& section : Sections()) {
    out += ".SH " + std::string(section.heading) + "\n" + Paragraphs(section.text);
  }
  return out + ExitStatus() + SeeAlso();
}

std::string NameOfPage(const CommandRow& row) {
  std::string name = "vtdirect-" + std::string(row.name);
  std::replace(name.begin(), name.end(), ' ', '-');
  return name;
}

bool HasOwnPage(const CommandRow& row) {
  return std::string_view(row.name) != "mount";
}

std::string ManualPage(const CommandRow& row) {
  std::string title = NameOfPage(row);
  for (char& c : title) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  std::string out = ".TH " + title + " 1 \"\" \"" + VersionText() + "\" \"User Commands\"\n";
  out += ".SH NAME\n" + Escaped(NameOfPage(row)) + " \\- " + Escaped(InASentence(row.summary)) + "\n" +
         Synopsis(row);
  out += ".SH DESCRIPTION\n" + Paragraphs(row.description);
  for (const OperandRow& operand : row.operands) {
    out += Term(".I " + Escaped(operand.name.text()), operand.help);
  }
  out += ".SH OPTIONS\n" + OptionList(row.options) +
         ".PP\n.BR vtdirect (1)\ntells the options that every command takes, addresses, servers and "
         "credentials.\n";
  out += ".SH OUTPUT" + Members(row.members).substr(3);
  out +=
      ".SH EXIT STATUS\n.PP\n0 when the command has done what it was asked;\n.BR vtdirect (1)\nhas the "
      "others.\n";
  out += ".SH EXAMPLES\n.PP\n.nf\n";
  for (const char* line : ExamplesOf(row.name)) out += Escaped(line) + "\n";
  return out + ".fi\n.SH SEE ALSO\n.BR vtdirect (1)\n";
}

}  // namespace vtdirect_cli
