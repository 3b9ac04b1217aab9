#include <span>
#include <vector>

#include "hosts/cli/command.h"
#include "hosts/cli/generated_texts.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::vector<std::string> NamesOf(const OptionRow& row) {
  std::vector<std::string> names;
  if (row.letter != 0) names.push_back(std::string("-") + row.letter);
  names.push_back("--" + std::string(row.name));
  return names;
}

[[nodiscard]] std::string LongNames(std::span<const OptionRow> rows) {
  std::string out;
  for (const OptionRow& row : rows) out += (out.empty() ? "--" : " --") + std::string(row.name);
  return out;
}

// One line of a "case": what is offered behind the options that take a value.
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
    out += std::string(indent) + pattern + ") " + action + "; return ;;\n";
  }
  return out;
}

[[nodiscard]] std::string CommandNames() {
  std::string out;
  for (const CommandRow& row : Commands()) out += (out.empty() ? "" : " ") + std::string(row.name);
  return out;
}

}  // namespace

std::string BashCompletion() {
  std::string out =
      "# Completion of vtdirect for bash. Made by \"vtdirect --generate completion\".\n"
      "_vtdirect() {\n"
      "  local word=\"${COMP_WORDS[COMP_CWORD]}\" previous=\"${COMP_WORDS[COMP_CWORD-1]}\" command=\"\" i\n"
      "  local options=\"" +
      LongNames(GlobalOptions()) + "\" commands=\"" + CommandNames() +
      "\"\n"
      "  for ((i = 1; i < COMP_CWORD; i++)); do\n"
      "    case \" $commands \" in *\" ${COMP_WORDS[i]} \"*) command=\"${COMP_WORDS[i]}\"; break ;; esac\n"
      "  done\n"
      "  case \"$previous\" in\n" +
      ValueCases(GlobalOptions(), "    ") + "  esac\n  case \"$command\" in\n";
  out += "    \"\") options=\"$options $commands\" ;;\n";
  for (const CommandRow& row : Commands()) {
    if (row.options.empty()) continue;
    out += "    " + std::string(row.name) + ")\n      options=\"$options " + LongNames(row.options) +
           "\"\n      case \"$previous\" in\n" + ValueCases(row.options, "        ") + "      esac ;;\n";
  }
  return out +
         "  esac\n"
         "  mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$word\")\n"
         "}\n"
         "complete -F _vtdirect vtdirect\n";
}

}  // namespace vtdirect_cli
