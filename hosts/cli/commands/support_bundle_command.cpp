#include <unistd.h>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/doctor/examination.h"
#include "hosts/cli/doctor/support_report.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/http_log/har_document.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::string LineOf(const std::string& nickname, const ExaminedStep& finding) {
  return Printable(nickname) + "\t" + finding.step + "\t" + WordOf(finding.state) + "\t" +
         Printable(finding.seen) + (finding.advice.empty() ? "" : "\t" + Printable(finding.advice)) + "\n";
}

ExitCode RunSupportBundle(Host& host, const Arguments& arguments) {
  const std::string path = arguments.Text("FILE");
  if (path.empty() || path.ends_with('/')) return host.output().Fail({ExitCode::Usage, "FILE names no file"});
  if (access(path.c_str(), F_OK) == 0) {
    return host.output().Fail(
        {ExitCode::LocalFile, Printable(path) + " is there already; name another file"});
  }
  const auto log = host.ObserveHttp();
  std::string report;
  const auto servers = ServersToExamine(host, {});
  if (!servers && servers.failure().code != ExitCode::Usage) return host.output().Fail(servers.failure());
  if (servers) {
    static_cast<void>(
        ExamineAll(host, arguments, *servers, [&](const std::string& nickname, const ExaminedStep& finding) {
          report += LineOf(nickname, finding);
        }));
  }
  if (Interrupted()) return host.output().Fail(InterruptedFailure());
  const SeenExchanges seen = log->Seen();
  // A server may repeat in its error texts what it was sent.
  const KnownSecrets secrets = WithSecretsOf(seen, SecretsOfEnvironment());
  std::vector<ReportFile> files = {VersionReport(), ConfigurationReport(host), {"doctor.txt", report}};
  for (ReportFile& file : files) file.text = secrets.Hide(file.text);
  files.push_back({"exchanges.har", HarDocument(seen, secrets)});
  if (const auto failure = PackReport(files, host.workDirectory(), path)) return host.output().Fail(*failure);
  Record record{{"file", path}};
  host.output().JsonOnly(record);
  host.output().Note("wrote " + path + "; look into it before you send it to somebody");
  return ExitCode::Ok;
}

}  // namespace

CommandRow SupportBundleCommand() {
  return {"support-bundle",
          "Collect what support needs to find a fault",
          "Writes FILE, a compressed tar archive: the versions of vtdirect and of the system, the servers "
          "with their settings, what doctor says of each of them, and the exchanges that it made with them, "
          "as --log-http writes them. FILE must not be there.\n\n"
          "It holds no passwords, tokens, cookies, nonces or tickets, and of variables and settings that may "
          "hold one only that they are set. It names servers, and a document. The exchanges of earlier runs "
          "are not kept anywhere: to show a failure, run the command that fails with --log-http and send "
          "that file too.",
          {{"FILE", "The archive to write: support.tar.gz."}},
          {},
          Requests::Some,
          RunSupportBundle,
          {{"file", MemberType::Text, nullptr, "the archive that was written"}}};
}

}  // namespace vtdirect_cli
