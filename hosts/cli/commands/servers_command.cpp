#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {
namespace {

void ShowServer(const char* nickname, void* user) {
  const std::string url = VtDirectManager::GetServerURL(("//" + std::string(nickname) + "/").c_str());
  static_cast<Host*>(user)->output().Row({{"nickname", std::string(nickname)}, {"url", url}});
}

ExitCode RunServers(Host& host, const Arguments& /*arguments*/) {
  VtDirectManager::ReadRootDirs(ShowServer, &host);
  if (host.servers().empty()) {
    host.output().Note("no servers are listed; list one with --server NICK=URL or in the configuration file");
  }
  return ExitCode::Ok;
}

}  // namespace

CommandRow ServersCommand() {
  return AsListing(
      {"servers",
       "List the servers",
       "Prints nickname and URL of every listed server, separated by a tab, in the order of the nicknames. "
       "No request is made. Two nicknames of one server show one URL, since they share its connection.",
       {},
       {},
       Requests::None,
       RunServers,
       {{"nickname", MemberType::Text, nullptr, "the nickname"},
        {"url", MemberType::Text, nullptr, "the server's URL"}}},
      {"nickname", "url"}, "Sort the lines by this column: nickname or url.");
}

}  // namespace vtdirect_cli
