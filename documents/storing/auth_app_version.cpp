#include "documents/storing/auth_app_version.h"

#include "base/failure_step.h"
#include "base/step_words.h"
#include "connection/rest_stream.h"
#include "documents/storing/text_file.h"
#include "platform/files.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr const char* defaultApplication = "MERIDOX";
constexpr const char* defaultVersion = "310";

}  // namespace

std::string AuthoringApplicationOrDefault(const ServerContext& server) {
  const std::string& application = server.settings().authoringApplication;
  return application.empty() ? defaultApplication : application;
}

std::string AuthAppVersionOrDefault(const ServerContext& server) {
  const std::string version = server.connection()->knowledge().AuthAppVersion();
  return version.empty() ? defaultVersion : version;
}

void EnsureAuthAppVersion(ServerContext& server) {
  ServerKnowledge& knowledge = server.connection()->knowledge();
  if (!knowledge.AuthAppVersion().empty()) return;
  std::string version;
  const std::string& toRegister = server.settings().authAppVersionToRegister;
  if (!toRegister.empty()) version = RegisterAuthAppVersion(server, toRegister);
  if (version.empty()) version = server.settings().authAppVersion;
  knowledge.LearnAuthAppVersion(version.empty() ? defaultVersion : version);
}

std::string RegisterAuthAppVersion(ServerContext& server, const std::string& version) {
  const FailureStep step(stepRegisterApplication);
  // The blanks are part of the format; the version is without quotes and must be a number.
  const ScopedTempPath body(
      WriteTextFile(du::FileSystem::MkTempFile(nullptr, "register", "json"),
                    "[{ \"authoringApplication\":\"" + AuthoringApplicationOrDefault(server) +
                        "\", \"authAppVersion\":" + version + ", \"ndVersions\":[\"J-01\"] }]"));
  if (body.path().empty()) return {};
  const std::string nonce = server.CsrfHeader();
  RestStream response(
      MakeRestRequest(server.http(), du::http::Method::Post, "servlet/rest/v1/dkm/registerauthappversions",
                      body.path().c_str(), nullptr, nonce.c_str()),
      {});
  if (response.status() != 204) response.ReportBroken();
  return response.status() == 204 ? version : std::string();
}

}  // namespace lxservices::cms_interface::vantry
