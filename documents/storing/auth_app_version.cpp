#include "documents/storing/auth_app_version.h"

#include "base/settings.h"
#include "connection/rest_stream.h"
#include "documents/storing/text_file.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr const char* defaultApplication = "MERIDOX";
constexpr const char* defaultVersion = "310";

}  // namespace

std::string AuthoringApplicationOrDefault() {
  std::string application = CurrentSettings()->authoringApplication;
  return application.empty() ? defaultApplication : application;
}

std::string AuthAppVersionOrDefault(const VtConnection& connection) {
  return connection.authAppVersion.empty() ? defaultVersion : connection.authAppVersion;
}

void EnsureAuthAppVersion(const std::shared_ptr<VtConnection>& connection) {
  if (!connection->authAppVersion.empty()) return;
  std::string version;
  const std::string toRegister = CurrentSettings()->authAppVersionToRegister;
  if (!toRegister.empty()) version = RegisterAuthAppVersion(connection, toRegister);
  if (version.empty()) version = CurrentSettings()->authAppVersion;
  connection->authAppVersion = version.empty() ? defaultVersion : version;
}

std::string RegisterAuthAppVersion(const std::shared_ptr<VtConnection>& connection,
                                   const std::string& version) {
  // The blanks are part of the format; the version stands without quotes and must be a number.
  const ScopedTempPath body(WriteTextFile("register", "json",
                                          "[{ \"authoringApplication\":\"" + AuthoringApplicationOrDefault() +
                                              "\", \"authAppVersion\":" + version +
                                              ", \"ndVersions\":[\"J-01\"] }]"));
  if (body.path().empty()) return {};
  const std::string nonce = connection->CsrfHeader();
  RestStream response(MakeRestRequest(connection->http(), du::http::Method::Post,
                                      "servlet/rest/v1/dkm/registerauthappversions", body.path().c_str(),
                                      nullptr, nonce.c_str()),
                      {});
  return response.status() == 204 ? version : std::string();
}

}  // namespace lxservices::cms_interface::vantry
