#pragma once

#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// Whether a server gets a translation service: its release must be recent enough. Whether the add-on and the
/// service that it needs are there is asked and traced, and does not close the gate. Up to three GETs on this
/// thread; none, and always yes, when the environment variable FENLOOM_FORCE_NRX_XLIFF_ENABLE is not empty.
[[nodiscard]] bool TranslationGate(ServerContext& server);

}  // namespace lxservices::cms_interface::vantry
