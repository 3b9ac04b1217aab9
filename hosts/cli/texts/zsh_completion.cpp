#include <span>
#include <string_view>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/texts/generated_texts.h"
#include "hosts/cli/texts/operand_kinds.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

// "NAME:what it is", of which the first colon parts the two.
[[nodiscard]] std::string Described(const std::string& name, std::string_view text) {
  return QuotedForShell(name + ":" + std::string(text));
}

// The options as they are offered; those that take a value end their words with what that is.
[[nodiscard]] std::string Offers(std::span<const OptionRow> rows) {
  std::string out;
  for (const OptionRow& row : rows) out += " " + Described("--" + std::string(row.name.text()), row.help);
  return out;
}

[[nodiscard]] std::string NamesOf(const OptionRow& row) {
  const std::string name = "--" + std::string(row.name.text());
  return row.letter == 0 ? name : std::string("-") + row.letter + "|" + name;
}

// What is offered after an option that takes a value.
[[nodiscard]] std::string ValueCases(std::span<const OptionRow> rows, const std::string& indent) {
  std::string out;
  for (const OptionRow& row : rows) {
    if (row.value == nullptr) continue;
    std::string action = "_message " + QuotedForShell(row.value);
    if (row.completion == Completion::Files) action = "_files";
    if (row.completion == Completion::Directories) action = "_files -/";
    if (row.completion == Completion::Nicknames) action = "_vtdirect_nicknames";
    if (!row.choices.empty()) action = "compadd -- " + ChoicesOf(row);
    out += indent + NamesOf(row) + ") " + action + "; return ;;\n";
  }
  return out;
}

[[nodiscard]] std::string FirstWords() {
  std::string out;
  for (const CommandRow& row : Commands()) {
    if (GroupOf(row).empty()) out += " " + Described(row.name, row.summary);
  }
  for (const GroupRow& group : Groups()) out += " " + Described(group.name, group.summary);
  return out;
}

[[nodiscard]] std::string GroupCases() {
  std::string out = "  case \"$command\" in\n";
  for (const GroupRow& group : Groups()) {
    out += "    " + std::string(group.name) + ") second=(";
    for (const CommandRow& row : Commands()) {
      if (GroupOf(row) == group.name) out += " " + Described(WordOf(row), row.summary);
    }
    out += ") ;;\n";
  }
  return out + "  esac\n";
}

[[nodiscard]] std::string CommandCases() {
  std::string out = "  case \"$command\" in\n";
  for (const CommandRow& row : Commands()) {
    out += "    " + QuotedForShell(row.name) + ") operands=" + QuotedForShell(WordsOf(OperandKindsOf(row))) +
           "\n";
    out += "      offers+=(" + Offers(row.options) + ")\n      case \"$previous\" in\n" +
           ValueCases(row.options, "        ") + "      esac ;;\n";
  }
  return out + "  esac\n";
}

constexpr const char* functions =
    "# What is below a folder of a server, or the listed servers, within half a second or not at all.\n"
    "_vtdirect_remote() {\n"
    "  local word=\"${(Q)PREFIX}\" folder=// line\n"
    "  local -a where found\n"
    "  if [[ \"$word\" == //*/* ]]; then folder=\"${word%/*}/\"; where=(\"$folder\"); fi\n"
    "  while IFS= read -r line; do\n"
    "    found+=(\"$folder$line\")\n"
    "  done < <(timeout 0.5 \"${(Q)words[1]}\" --quiet --no-prompt ls \"${where[@]}\" 2> /dev/null < "
    "/dev/null)\n"
    "  compadd -S '' -- \"${found[@]}\"\n"
    "}\n"
    "_vtdirect_nicknames() {\n"
    "  local line\n"
    "  local -a found\n"
    "  while IFS= read -r line; do\n"
    "    found+=(\"${line%/}\")\n"
    "  done < <(timeout 0.5 \"${(Q)words[1]}\" --quiet ls 2> /dev/null < /dev/null)\n"
    "  compadd -- \"${found[@]}\"\n"
    "}\n"
    "# Whether a file's name stands for a document here.\n"
    "_vtdirect_in_work_folder() {\n"
    "  local at=\"$PWD\"\n"
    "  while [[ -n \"$at\" ]]; do\n"
    "    [[ -e \"$at/.vtdirect/files.db\" ]] && return 0\n"
    "    at=\"${at%/*}\"\n"
    "  done\n"
    "  return 1\n"
    "}\n";

// The command on the line, with its second word where it belongs to a group.
constexpr const char* findCommand =
    "  local command='' operands='' previous=\"${words[CURRENT-1]}\" word i\n"
    "  local -a second\n"
    "  for ((i = 2; i < CURRENT; i++)); do\n"
    "    word=\"${words[i]}\"\n"
    "    if [[ -z \"$command\" ]] && (( ${firstWords[(I)${word}:*]} )); then\n"
    "      command=\"$word\"\n"
    "      _vtdirect_second\n"
    "    elif (( ${second[(I)${word}:*]} )); then\n"
    "      command=\"$command $word\"\n"
    "      second=()\n"
    "    fi\n"
    "  done\n";

constexpr const char* offer =
    "  if [[ \"$PREFIX\" == -* ]]; then _describe option offers; return; fi\n"
    "  if [[ -z \"$command\" ]]; then _describe command firstWords; return; fi\n"
    "  if (( ${#second} )); then _describe command second; return; fi\n"
    "  [[ \"$operands\" == *remote* ]] && _vtdirect_remote\n"
    "  [[ \"$operands\" == *nick* ]] && _vtdirect_nicknames\n"
    "  [[ \"$operands\" == *files* ]] && _files\n"
    "  [[ \"$operands\" == remote && \"$PREFIX\" != /* ]] && _vtdirect_in_work_folder && _files\n"
    "  return 0\n";

}  // namespace

std::string ZshCompletion() {
  return "#compdef vtdirect\n# Completion of vtdirect for zsh. Made by \"vtdirect --generate "
         "zsh-completion\".\n" +
         std::string(functions) + "_vtdirect_second() {\n" + GroupCases() + "}\n_vtdirect() {\n" +
         "  local -a offers firstWords\n  offers=(" + Offers(GlobalOptions()) + ")\n  firstWords=(" +
         FirstWords() + ")\n" + findCommand + "  case \"$previous\" in\n" +
         ValueCases(GlobalOptions(), "    ") + "  esac\n" + CommandCases() + offer + "}\n_vtdirect \"$@\"\n";
}

}  // namespace vtdirect_cli
