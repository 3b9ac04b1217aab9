#include "hosts/cli/commands/command.h"
#include "hosts/cli/doctor/examination.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption.h"

namespace vtdirect_cli {
namespace {

void Show(Host& host, const std::string& nickname, const ExaminedStep& finding) {
  Record shown{{"server", nickname},
               {"step", finding.step},
               {"state", std::string(WordOf(finding.state))},
               {"seen", finding.seen}};
  if (!finding.advice.empty()) shown.emplace_back("advice", finding.advice);
  host.output().Row(shown);
  static_cast<void>(host.output().Flush());
}

ExitCode RunDoctor(Host& host, const Arguments& arguments) {
  const auto servers = ServersToExamine(host, arguments.Text("NICK"));
  if (!servers) return host.output().Fail(servers.failure());
  const ExitCode worst = ExamineAll(
      host, arguments, *servers,
      [&host](const std::string& nickname, const ExaminedStep& finding) { Show(host, nickname, finding); });
  if (worst == ExitCode::Ok) {
    host.output().NoteToWatcher("what was looked at works");
    return worst;
  }
  return host.output().Fail(
      {worst, "something on the way to a server does not work", "see the lines that say failed"});
}

}  // namespace

CommandRow DoctorCommand() {
  return {"doctor",
          "Look for what is wrong on the way to a server",
          "Walks the way to the server of the nickname, or to every listed one, and prints a line for each "
          "step: the nickname, the step, ok, warning, failed or skipped, what was seen, and what to do, "
          "separated by tabs. The steps are name, route (whether there is a proxy between), connection, "
          "certificate (whose, by whom issued, until when), login, version, services, nonce (which every "
          "change needs), content address and upload address.\n\n"
          "Nothing is changed on the server. So the upload address, which a server tells only when something "
          "is stored, is not asked for. For the content address a document is looked for in the first "
          "folders, and the head of its content is asked for.\n\n"
          "The exit status is that of the worst failure; a warning is none.",
          {{"NICK", "The nickname of a listed server.", Count::AtMostOnce}},
          {},
          Requests::Some,
          RunDoctor,
          {{"server", MemberType::Text, nullptr, "the nickname"},
           {"step", MemberType::Text, nullptr, "what was looked at"},
           {"state", MemberType::Text, nullptr, "ok, warning, failed or skipped"},
           {"seen", MemberType::Text, nullptr, "what was seen, for a reader"},
           {"advice", MemberType::Text, "when something is to be done", "what to do"}}};
}

}  // namespace vtdirect_cli
