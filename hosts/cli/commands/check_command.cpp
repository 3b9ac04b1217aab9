#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {
namespace {

// A nickname of the list stands for its URL.
[[nodiscard]] std::string UrlOf(const Host& host, const std::string& operand) {
  const auto found = host.servers().find(operand);
  return found == host.servers().end() ? operand : found->second;
}

ExitCode RunCheck(Host& host, const Arguments& arguments) {
  const std::string url = UrlOf(host, arguments.Text("URL"));
  if (const auto fault = ServerUrlFault(url)) return host.output().Fail({ExitCode::Usage, *fault});
  host.NameServer(url);

  VtDirectManager::StatusCode code = VtDirectManager::StatusOk;
  std::string redirect;
  ForgetReasons();
  if (VtDirectManager::ServerSupported(url.c_str(), &code, &redirect)) {
    Record record{{"url", url}, {"supported", true}};
    if (!redirect.empty()) record.emplace_back("use", redirect);
    host.output().Lines(record);
    return ExitCode::Ok;
  }
  const Failure failure = ServerFailure(host, url, code);
  if (failure.code == ExitCode::Interrupted) return host.output().Fail(failure);
  host.output().Lines({{"url", url}, {"supported", false}, {"reason", std::string(ClassOf(failure))}});
  return host.output().Fail(failure);
}

}  // namespace

CommandRow CheckCommand() {
  return {
      "check",
      "Tell whether a server can be used",
      "Asks the server at URL for its release and for useful data. Prints \"supported: yes\" or \"supported: "
      "no\" with the reason. When the server calls another address its own and answers there, \"use:\" gives "
      "that address: it is the one to list.\n\nURL may also be a nickname of the list of servers.",
      {{"URL", "The server's URL, for example https://plm.example/vt."}},
      {},
      Requests::Some,
      RunCheck,
      {{"url", MemberType::Text, nullptr, "the URL that was asked"},
       {"supported", MemberType::Flag, nullptr, "whether the server can be used"},
       {"reason", MemberType::Text, "when not supported", "the class of the failure"},
       {"use", MemberType::Text, "when the server calls another address its own", "that address"}}};
}

}  // namespace vtdirect_cli
