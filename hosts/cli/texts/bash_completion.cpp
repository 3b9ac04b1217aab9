#include <span>
#include <vector>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/texts/generated_texts.h"
#include "hosts/cli/texts/operand_kinds.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::vector<std::string> NamesOf(const OptionRow& row) {
  std::vector<std::string> names;
  if (row.letter != 0) names.push_back(std::string("-") + row.letter);
  names.push_back("--" + std::string(row.name.text()));
  return names;
}

[[nodiscard]] std::string LongNames(std::span<const OptionRow> rows) {
  std::string out;
  for (const OptionRow& row : rows) out += (out.empty() ? "--" : " --") + std::string(row.name.text());
  return out;
}

// One line of a "case": what is offered after the options that take a value.
[[nodiscard]] std::string ValueCases(std::span<const OptionRow> rows, std::string_view indent) {
  std::string out;
  for (const OptionRow& row : rows) {
    if (row.value == nullptr) continue;
    std::string pattern;
    for (const std::string& name : NamesOf(row)) pattern += (pattern.empty() ? "" : "|") + name;
    std::string action = "COMPREPLY=()";
    if (row.completion == Completion::Files)
      action = "compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- \"$word\")";
    if (row.completion == Completion::Directories)
      action = "compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- \"$word\")";
    if (row.completion == Completion::Nicknames) action = "_vtdirect_nicknames \"$1\" \"$word\"";
    if (!row.choices.empty())
      action = "mapfile -t COMPREPLY < <(compgen -W \"" + ChoicesOf(row) + "\" -- \"$word\")";
    out += std::string(indent) + pattern + ") " + action + "; return ;;\n";
  }
  return out;
}

// What is offered where the first word of a command is.
[[nodiscard]] std::string FirstWords() {
  std::string out;
  std::string last;
  for (const CommandRow& row : Commands()) {
    const std::string word = GroupOf(row).empty() ? std::string(row.name) : GroupOf(row);
    if (word == last) continue;
    out += (out.empty() ? "" : " ") + word;
    last = word;
  }
  return out;
}

[[nodiscard]] std::string WordsOf(const GroupRow& group) {
  std::string out;
  for (const CommandRow& row : Commands()) {
    if (GroupOf(row) == group.name) out += (out.empty() ? "" : " ") + WordOf(row);
  }
  return out;
}

// The second word of a command, where there is one on the line.
[[nodiscard]] std::string GroupCases() {
  std::string out = "  case \"$command\" in\n";
  for (const GroupRow& group : Groups()) {
    out += "    " + std::string(group.name) + ") words=\"" + WordsOf(group) + "\" ;;\n";
  }
  return out +
         "  esac\n"
         "  for ((i++; i < COMP_CWORD && ${#words}; i++)); do\n"
         "    case \" $words \" in *\" ${COMP_WORDS[i]} \"*) command=\"$command ${COMP_WORDS[i]}\"; break ;; "
         "esac\n"
         "  done\n";
}

[[nodiscard]] std::string CommandCases() {
  std::string out = "  case \"$command\" in\n    \"\") options=\"$options $commands\" ;;\n";
  for (const GroupRow& group : Groups()) {
    out += "    " + std::string(group.name) + ") options=\"$options $words\" ;;\n";
  }
  for (const CommandRow& row : Commands()) {
    out += "    \"" + std::string(row.name) + "\") operands=\"" + WordsOf(OperandKindsOf(row)) + "\"";
    if (!row.options.empty()) {
      out += "\n      options=\"$options " + LongNames(row.options) + "\"\n      case \"$previous\" in\n" +
             ValueCases(row.options, "        ") + "      esac";
    }
    out += " ;;\n";
  }
  return out + "  esac\n";
}

// Names come from a server, so they are compared and never expanded: a name like "$(rm)" is text.
constexpr const char* remoteFunctions =
    "# What is below a folder of a server, or the listed servers, within half a second or not at all.\n"
    "_vtdirect_remote() {\n"
    "  local program=\"$1\" word=\"$2\" folder=\"//\" name\n"
    "  word=\"${word#[\\'\\\"]}\"\n"
    "  word=\"${word//\\\\/}\"\n"
    "  local -a where=()\n"
    "  case \"$word\" in //*/*) folder=\"${word%/*}/\"; where=(\"$folder\") ;; esac\n"
    "  while IFS= read -r name; do\n"
    "    [[ \"$folder$name\" == \"$word\"* ]] && COMPREPLY+=(\"$folder$name\")\n"
    "  done < <(timeout 0.5 \"$program\" --quiet --no-prompt ls \"${where[@]}\" 2> /dev/null < /dev/null)\n"
    "  compopt -o filenames -o nospace\n"
    "}\n"
    "_vtdirect_nicknames() {\n"
    "  local program=\"$1\" word=\"$2\" name\n"
    "  while IFS= read -r name; do\n"
    "    [[ \"$name\" == \"$word\"*/ ]] && COMPREPLY+=(\"${name%/}\")\n"
    "  done < <(timeout 0.5 \"$program\" --quiet ls 2> /dev/null < /dev/null)\n"
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

// What is no option is an operand. What a work folder keeps for itself is no file of a user.
constexpr const char* operands =
    "  if [[ \"$operands\" == remote && \"$word\" != /* ]] && _vtdirect_in_work_folder; then\n"
    "    operands=\"remote files\"\n"
    "  fi\n"
    "  if [[ \"$word\" != -* && -n \"$operands\" ]]; then\n"
    "    case \"$operands\" in *nick*) _vtdirect_nicknames \"$1\" \"$word\" ;; esac\n"
    "    case \"$operands\" in *files*) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -X "
    ".vtdirect -- \"$word\") ;; esac\n"
    "    case \"$operands:$word\" in *remote*:|*remote*:/*|*remote*:[\\'\\\"]*) _vtdirect_remote \"$1\" "
    "\"$word\" ;; esac\n"
    "    [[ -n \"$word\" || ${#COMPREPLY[@]} -gt 0 ]] && return\n"
    "  fi\n";

}  // namespace

std::string BashCompletion() {
  return "# Completion of vtdirect for bash. Made by \"vtdirect --generate completion\".\n" +
         std::string(remoteFunctions) +
         "_vtdirect() {\n"
         "  local word=\"${COMP_WORDS[COMP_CWORD]}\" previous=\"${COMP_WORDS[COMP_CWORD-1]}\"\n"
         "  local command=\"\" words=\"\" operands=\"\" i\n"
         "  local options=\"" +
         LongNames(GlobalOptions()) + "\" commands=\"" + FirstWords() +
         "\"\n"
         "  for ((i = 1; i < COMP_CWORD; i++)); do\n"
         "    case \" $commands \" in *\" ${COMP_WORDS[i]} \"*) command=\"${COMP_WORDS[i]}\"; break ;; esac\n"
         "  done\n" +
         GroupCases() + "  case \"$previous\" in\n" + ValueCases(GlobalOptions(), "    ") + "  esac\n" +
         CommandCases() + operands +
         "  mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$word\")\n"
         "}\n"
         "complete -F _vtdirect vtdirect\n";
}

}  // namespace vtdirect_cli
