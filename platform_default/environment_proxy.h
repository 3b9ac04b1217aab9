#pragma once

namespace vtdirect::platform {

/// Whether the environment of the process names a proxy, by one of the variables that curl looks at; whether it
/// counts for some host doesn't matter here. It is asked before each request, so it goes over the environment
/// once, and not once for each name.
/// @param isPlain  for requests without TLS; otherwise for those with it
[[nodiscard]] bool EnvironmentNamesProxy(bool isPlain);

}  // namespace vtdirect::platform
