#pragma once

#include <memory>
#include <string>

#include "platform/http.h"
#include "platform/http_credentials.h"
#include "platform/http_settings.h"

namespace vtdirect_test {

/// What a test asks for and what came of it, with everything in memory.
struct Asking {
  du::http::Method method = du::http::Method::Get;
  std::string uri = "/";
  std::string headers;
  const std::string* body = nullptr;
  std::function<bool()> reauthenticate = [] { return false; };
};

struct Fetched {
  du::http::ErrorCode code = du::http::ErrorCode::Done;
  int status = -77;  ///< stays so when the platform leaves it alone
  std::string body;
  int begun = 0;  ///< how often the sink was begun and finished
  int finished = 0;
  du::http::FailureReport found;  ///< what the platform explained it by
  int explanations = 0;           ///< how often it did
};

/// Performs one exchange with the mark "X-Zvk-Connected: 1".
Fetched Fetch(du::http::Connection& connection, const Asking& asking = {});

/// Makes a connection and performs one exchange on it; fails the test when the URL is refused.
Fetched FetchFrom(const std::string& url, const Asking& asking = {});

/// A connection that must be possible.
std::unique_ptr<du::http::Connection> Connect(const std::string& url);

/// What every test of the transport needs: no proxy of the machine's, limits that no test waits for, no
/// credentials of an earlier one.
void UseShortLimits();

/// The same with limits that a busy machine doesn't reach: for servers of others, whose tests are about no
/// limit.
void UseLongLimits();

/// Trusts these certificates from now on, and no others.
void Trust(const std::string& certificateFile);

}  // namespace vtdirect_test
