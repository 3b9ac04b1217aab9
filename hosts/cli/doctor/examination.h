#pragma once

#include <string>

#include "hosts/cli/doctor/examined_step.h"
#include "hosts/cli/failures/exit_code.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {

/// A server that is to be looked at.
struct ExaminedServer {
  std::string nickname;
  std::string url;
};

/// Walks the way to a server step by step: name, route, connection, certificate, login, version, services, nonce,
/// content address, upload address. The steps after one that nothing works without are skipped. Makes requests, none
/// of which changes anything on the server.
/// @param take  is told each step once it was looked at
/// @return the exit status of the worst failure; Ok without one
[[nodiscard]] ExitCode Examine(Host& host, const ExaminedServer& server, const ExaminedStepFunction& take);

/// Sets the way to each of the servers in turn and examines it.
/// @param take  is told the nickname, too
[[nodiscard]] ExitCode ExamineAll(
    Host& host, const Arguments& arguments, const std::vector<ExaminedServer>& servers,
    const std::function<void(const std::string& nickname, const ExaminedStep&)>& take);

/// The server of this nickname, or all that are listed for the empty text.
[[nodiscard]] Result<std::vector<ExaminedServer>> ServersToExamine(const Host& host,
                                                                   const std::string& nickname);

}  // namespace vtdirect_cli
