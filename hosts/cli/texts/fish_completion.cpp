#include <span>
#include <string_view>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/texts/generated_texts.h"
#include "hosts/cli/texts/operand_kinds.h"

namespace vtdirect_cli {
namespace {

// Between single quotes, in which fish knows a backslash before a quote or another one.
[[nodiscard]] std::string Quoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) quoted += (c == '\'' || c == '\\' ? std::string("\\") : std::string()) + c;
  return quoted + "'";
}

[[nodiscard]] std::string OptionLine(const OptionRow& row, const std::string& condition) {
  std::string line = "complete -c vtdirect" + condition + " -l " + row.name.text();
  if (row.letter != 0) line += std::string(" -s ") + row.letter;
  if (row.value != nullptr) {
    const bool isFile = row.completion == Completion::Files || row.completion == Completion::Directories;
    line += isFile ? " -r -F" : " -x";
    if (row.completion == Completion::Nicknames) line += " -a '(__vtdirect_nicknames)'";
    if (!row.choices.empty()) line += " -a " + Quoted(ChoicesOf(row));
  }
  return line + " -d " + Quoted(row.help) + "\n";
}

// Whether the command, of one word or two, is on the line.
[[nodiscard]] std::string ConditionOf(const CommandRow& row) {
  return " -n " + Quoted("test (__vtdirect_command) = " + Quoted(row.name));
}

[[nodiscard]] std::string CommandLines() {
  std::string out;
  for (const CommandRow& row : Commands()) {
    if (!GroupOf(row).empty()) continue;
    out += "complete -c vtdirect -n 'test -z (__vtdirect_command)' -a " + Quoted(row.name) + " -d " +
           Quoted(row.summary) + "\n";
  }
  for (const GroupRow& group : Groups()) {
    out += "complete -c vtdirect -n 'test -z (__vtdirect_command)' -a " + Quoted(group.name) + " -d " +
           Quoted(group.summary) + "\n";
    for (const CommandRow& row : Commands()) {
      if (GroupOf(row) != group.name) continue;
      out += "complete -c vtdirect -n " + Quoted("test (__vtdirect_command) = " + std::string(group.name)) +
             " -a " + Quoted(WordOf(row)) + " -d " + Quoted(row.summary) + "\n";
    }
  }
  return out;
}

[[nodiscard]] std::string OperandLines() {
  std::string out;
  for (const CommandRow& row : Commands()) {
    const OperandKinds kinds = OperandKindsOf(row);
    const std::string condition = ConditionOf(row);
    if (kinds.remote) out += "complete -c vtdirect" + condition + " -a '(__vtdirect_remote)'\n";
    if (kinds.nicknames) out += "complete -c vtdirect" + condition + " -a '(__vtdirect_nicknames)'\n";
    if (kinds.files) out += "complete -c vtdirect" + condition + " -F\n";
    if (kinds.remote && !kinds.files)
      out += "complete -c vtdirect" + condition + " -n __vtdirect_in_work_folder -F\n";
    for (const OptionRow& option : row.options) out += OptionLine(option, condition);
  }
  return out;
}

[[nodiscard]] std::string Words() {
  std::string out;
  for (const CommandRow& row : Commands()) {
    if (GroupOf(row).empty()) out += std::string(" ") + row.name;
  }
  return out;
}

[[nodiscard]] std::string GroupWords() {
  std::string out;
  for (const GroupRow& group : Groups()) out += std::string(" ") + group.name;
  return out;
}

[[nodiscard]] std::string SecondWords() {
  std::string out;
  for (const CommandRow& row : Commands()) {
    if (!GroupOf(row).empty()) out += std::string(" ") + WordOf(row);
  }
  return out;
}

[[nodiscard]] std::string Functions() {
  return "# The command that is on the line before the cursor: one word, or two.\n"
         "function __vtdirect_command\n"
         "  set -l found\n"
         "  for word in (commandline -opc)[2..-1]\n"
         "    if test -z \"$found\"; and contains -- $word" +
         Words() + GroupWords() +
         "\n"
         "      set found $word\n"
         "    else if contains -- \"$found\"" +
         GroupWords() + "; and contains -- $word" + SecondWords() +
         "\n"
         "      set found \"$found $word\"\n"
         "    end\n"
         "  end\n"
         "  echo \"$found\"\n"
         "end\n"
         "# What is below a folder of a server, or the listed servers, within half a second or not at all.\n"
         "function __vtdirect_remote\n"
         "  set -l word (commandline -ct | string unescape)\n"
         "  set -l folder //\n"
         "  set -l where\n"
         "  if string match -q -- '//*/*' \"$word\"\n"
         "    set folder (string replace -r '[^/]*$' '' -- \"$word\")\n"
         "    set where $folder\n"
         "  end\n"
         "  set -l program (commandline -opc)[1]\n"
         "  for name in (timeout 0.5 $program --quiet --no-prompt ls $where 2> /dev/null < /dev/null)\n"
         "    printf '%s\\n' \"$folder$name\"\n"
         "  end\n"
         "end\n"
         "function __vtdirect_nicknames\n"
         "  set -l program (commandline -opc)[1]\n"
         "  timeout 0.5 $program --quiet ls 2> /dev/null < /dev/null | string replace -r '/$' ''\n"
         "end\n"
         "# Whether a file's name stands for a document here.\n"
         "function __vtdirect_in_work_folder\n"
         "  set -l at $PWD\n"
         "  while test -n \"$at\"\n"
         "    test -e \"$at/.vtdirect/files.db\"; and return 0\n"
         "    # The first of several lines, which a name with a line feed makes, is shorter all the same.\n"
         "    set at (string replace -r '/[^/]*$' '' -- $at)[1]\n"
         "  end\n"
         "  return 1\n"
         "end\n";
}

}  // namespace

std::string FishCompletion() {
  std::string out = "# Completion of vtdirect for fish. Made by \"vtdirect --generate fish-completion\".\n" +
                    Functions() + "complete -c vtdirect -f\n" + CommandLines();
  for (const OptionRow& row : GlobalOptions()) out += OptionLine(row, "");
  return out + OperandLines();
}

}  // namespace vtdirect_cli
