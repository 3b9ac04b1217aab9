#pragma once

#include <curl/curl.h>

#include "platform/http.h"

namespace vtdirect::platform {

/// What one of curl's results means to the callers of the platform.
[[nodiscard]] du::http::ErrorCode ErrorCodeOf(CURLcode result);

}  // namespace vtdirect::platform
