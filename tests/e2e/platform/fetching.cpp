#include "tests/e2e/platform/fetching.h"

#include <stdlib.h>

#include <stdexcept>

namespace vtdirect_test {
namespace {

class CountingSink final : public du::http::FileSink {
 public:
  explicit CountingSink(Fetched& fetched) : fetched_(fetched) {}
  du::http::ErrorCode Begin(int, std::optional<std::uint64_t>) override {
    ++fetched_.begun;
    return du::http::ErrorCode::Done;
  }
  du::http::ErrorCode Write(const std::uint8_t* data, std::size_t count) override {
    fetched_.body.append(reinterpret_cast<const char*>(data), count);
    return du::http::ErrorCode::Done;
  }
  du::http::ErrorCode Finish() override {
    ++fetched_.finished;
    return du::http::ErrorCode::Done;
  }

 private:
  Fetched& fetched_;
};

du::http::BufferFileSource SourceOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

Fetched Fetch(du::http::Connection& connection, const Asking& asking) {
  Fetched fetched;
  CountingSink sink(fetched);
  du::http::BufferFileSource headers = SourceOf(asking.headers);
  static const std::string none;
  du::http::BufferFileSource body = SourceOf(asking.body == nullptr ? none : *asking.body);
  du::http::Request request;
  request.method = asking.method;
  request.uri = asking.uri.c_str();
  request.headers = &headers;
  if (asking.body != nullptr) request.body = &body;
  request.sink = &sink;
  const auto explain = [&fetched](const du::http::FailureReport& found) {
    fetched.found = found;
    ++fetched.explanations;
  };
  const du::http::CommonAuth auth{"X-Zvk-Connected: 1", asking.reauthenticate, explain};
  fetched.code = du::http::DoRequestWithCommonAuth(connection, auth, request, &fetched.status);
  return fetched;
}

std::unique_ptr<du::http::Connection> Connect(const std::string& url) {
  auto connection = du::http::ConnectURI(url.c_str(), nullptr, nullptr);
  if (connection == nullptr) throw std::runtime_error("refused URL " + url);
  return connection;
}

Fetched FetchFrom(const std::string& url, const Asking& asking) {
  return Fetch(*Connect(url), asking);
}

void UseShortLimits() {
  for (const char* variable : {"http_proxy", "HTTP_PROXY", "https_proxy", "HTTPS_PROXY", "all_proxy",
                               "ALL_PROXY", "no_proxy", "NO_PROXY"}) {
    unsetenv(variable);
  }
  du::http::TransportSettings settings;
  settings.connectTimeoutMilliseconds = 2000;
  settings.stallTimeoutSeconds = 1;
  settings.firstByteTimeoutSeconds = 1;
  settings.firstByteAfterBodyTimeoutSeconds = 1;
  du::http::SetTransportSettings(settings);
  du::http::ClearAllCredentials();
  du::http::ClearAllClientCertificates();
  du::http::ClearProxyCredentials();
}

void UseLongLimits() {
  UseShortLimits();
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  settings.connectTimeoutMilliseconds = 20'000;
  settings.stallTimeoutSeconds = 20;
  settings.firstByteTimeoutSeconds = 20;
  settings.firstByteAfterBodyTimeoutSeconds = 20;
  du::http::SetTransportSettings(settings);
}

void Trust(const std::string& certificateFile) {
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  settings.certificateAuthorityFile = certificateFile;
  du::http::SetTransportSettings(settings);
}

}  // namespace vtdirect_test
