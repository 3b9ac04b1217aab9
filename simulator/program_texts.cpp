#include "simulator/program_texts.h"

#include <string_view>

namespace vantry_sim {
namespace {

/// A "-" would be set as a hyphen, which no shell takes, and a line must not begin with a request of man's.
std::string Escaped(std::string_view text) {
  std::string out;
  if (text.starts_with('.') || text.starts_with('\'')) out += "\\&";
  for (const char c : text) {
    if (c == '\\') {
      out += "\\e";
    } else if (c == '-') {
      out += "\\-";
    } else if (c == '\'') {
      out += "\\(aq";
    } else {
      out += c;
    }
  }
  return out;
}

std::string NamesOf(const OptionText& option, std::string_view separator) {
  std::string out;
  for (const std::string& name : option.names) out += (out.empty() ? "" : std::string(separator)) + name;
  return out;
}

std::string Terms(const std::vector<OptionText>& options) {
  std::string out;
  for (const OptionText& option : options) {
    out += ".TP\n.B " + Escaped(NamesOf(option, ", "));
    if (!option.value.empty()) out += " \\fI" + Escaped(option.value) + "\\fP";
    out += "\n" + Escaped(option.about) + ".";
    if (!option.defaultValue.empty()) out += " Without it: " + Escaped(option.defaultValue) + ".";
    out += "\n";
  }
  return out;
}

constexpr std::string_view frontMatter = R"(.TH VANTRY\-SIM 1 "" "vantry\-sim )" VANTRY_SIM_VERSION
                                         R"(" "User Commands"
.SH NAME
vantry\-sim \- a Vantry server to try clients on
.SH SYNOPSIS
.B vantry\-sim \-\-data
.I DIR
[options]
.br
.B vantry\-sim export \-\-data
.I DIR
[options]
.br
.B vantry\-sim \-\-check
.I STATE
.SH DESCRIPTION
Serves a repository of documents over HTTP, with a real database, and with every refusal and accident that a client
has to live with. When it answers, it says so in one line on standard output:
.PP
.nf
vantry\-sim listening on http://127.0.0.1:43817/ admin on http://127.0.0.1:43818/
.fi
.PP
The second address is that of \-\-admin\-port, where a test resets the state, turns faults on and off and looks at
the requests; it shows a live view to a browser, and describes itself at openapi.json. The pages at app/ below the
first address show the repository.
.SH OPTIONS
)";
constexpr std::string_view files = R"(.SH EXIT STATUS
0 after SIGTERM or SIGINT; 1 if it could not start, or if a state file has something wrong with it; 2 for bad usage.
.SH FILES
.TP
.I DIR/vantry\-sim.db
The database, in SQLite's format.
.TP
.I DIR/content
The bytes of documents, a file for each stream.
.TP
.I DIR/snapshots
States that were kept by the admin port.
.SH SEE ALSO
README.md of vantry\-sim tells the routes, the faults, the state files and the admin port.
)";

/// What is offered after an option that takes a value.
std::string Offer(const std::string& value) {
  if (value == "DIR") return "compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- \"$word\")";
  if (value == "FILE" || value == "STATE" || value == "CERT KEY")
    return "compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- \"$word\")";
  if (value.find('|') == std::string::npos) return "COMPREPLY=()";
  std::string words = value;
  for (char& c : words) c = c == '|' ? ' ' : c;
  return "mapfile -t COMPREPLY < <(compgen -W \"" + words + "\" -- \"$word\")";
}

std::string Cases(const std::vector<OptionText>& options) {
  std::string out;
  for (const OptionText& option : options) {
    if (option.value.empty()) continue;
    out += "      " + NamesOf(option, "|") + ") " + Offer(option.value) + "; return ;;\n";
  }
  return out;
}

std::string AllNames(const std::vector<OptionText>& options) {
  std::string out;
  for (const OptionText& option : options) out += (out.empty() ? "" : " ") + option.names.front();
  return out;
}

std::string Branch(const std::vector<OptionText>& options, const std::string& words) {
  return "    case \"$previous\" in\n" + Cases(options) + "    esac\n    words=\"" + words +
         AllNames(options) + "\"\n";
}

std::string Row(const Router::Listed& route) {
  return "| " + route.method + " | `" + route.pattern + "` | " + route.about + " |\n";
}

}  // namespace

std::string ProgramTexts::ManualPage() const {
  return std::string(frontMatter) + Terms(server) + ".SH EXPORT\nThe command\n.B export\n" +
         "writes what a data directory holds as a state file, while no server uses it.\n" +
         Terms(exportCommand) + std::string(files);
}

std::string ProgramTexts::BashCompletion() const {
  return "# Completion of vantry-sim for bash. Made by \"vantry-sim --generate completion\".\n"
         "_vantry_sim() {\n"
         "  local word=\"${COMP_WORDS[COMP_CWORD]}\" previous=\"${COMP_WORDS[COMP_CWORD-1]}\" words\n"
         "  if [ \"${COMP_WORDS[1]}\" = export ] && ((COMP_CWORD > 1)); then\n" +
         Branch(exportCommand, "") + "  else\n" + Branch(server, "export ") +
         "  fi\n"
         "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n"
         "}\n"
         "complete -F _vantry_sim vantry-sim\n";
}

std::string RouteTable(const std::vector<Router::Listed>& routes) {
  std::string reads, writes;
  for (const Router::Listed& route : routes) (route.method == "GET" ? reads : writes) += Row(route);
  return "| method | route | what |\n| --- | --- | --- |\n" + reads + writes;
}

}  // namespace vantry_sim
