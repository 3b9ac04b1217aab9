#pragma once

#include "hosts/cli/program/host.h"

namespace vtdirect_mount {

/// Lets several threads at once ask for credentials, of a host that was made for one. A thread whose demand
/// came while another one's was answered tries again with what that one got.
/// @param host  set up; outlives all requests
void ShareCredentials(vtdirect_cli::Host& host);

}  // namespace vtdirect_mount
