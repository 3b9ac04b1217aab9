#pragma once

#include "hosts/cli/doctor/examined_step.h"
#include "hosts/cli/servers/origin.h"

namespace vtdirect_cli {

/// Which addresses the host's name has here. With a proxy between, that is the proxy's affair, and a name that is
/// not known here is no failure. Asks the system's resolver, which may wait for a name server.
[[nodiscard]] ExaminedStep ExamineName(const Origin& origin, bool throughProxy);

}  // namespace vtdirect_cli
