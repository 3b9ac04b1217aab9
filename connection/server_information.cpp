#include "connection/server_information.h"

#include <cstdlib>
#include <fstream>

#include "base/failure_trace.h"
#include "base/step_words.h"
#include "connection/scoped_temp_path.h"

namespace lxservices::cms_interface::vantry {
namespace {

/// Far more than any server has to tell. A longer document is none.
constexpr std::uint64_t longestDocument = 64 * 1024;

// The C library's atoi, with a result for numbers out of range too.
std::uint32_t ReadNumber(const std::string& text) {
  return static_cast<std::uint32_t>(static_cast<int>(std::strtol(text.c_str(), nullptr, 10)));
}

std::string WithoutTrailingSlashes(std::string url) {
  while (!url.empty() && url.back() == '/') url.pop_back();
  return url;
}

void ReadLine(const std::string& line, ServerInfo& info) {
  const auto colon = line.find(':');
  if (colon == std::string::npos) return;
  const std::string key = line.substr(0, colon);
  const std::string value = line.substr(colon + 1);
  if (key == "ServerMajorVersion") info.version.major = ReadNumber(value);
  if (key == "ServerMinorVersion") info.version.minor = ReadNumber(value);
  if (key == "ServerServicepackVersion") info.version.servicePack = ReadNumber(value);
  if (key == "ServerCPSVersion") info.version.cps = ReadNumber(value);
  if (key == "CodebaseURL") info.codebaseUrl = WithoutTrailingSlashes(value);
}

}  // namespace

du::http::FailureReport ForeignServer() {
  return {du::http::FailureDetail::ForeignServer, "What answers there is not a Vantry server"};
}

Status GetServerInfo(HttpConnection& connection, ServerInfo& info) {
  const FailureStep step(stepAskForVersion);
  const ScopedTempPath file(MakeTempFile("vtinfo", "txt"));
  if (connection.DownloadDocumentTo(file.path().c_str(), "servlet/OrvetGW", longestDocument,
                                    ForeignServer()) != 200) {
    TracerFor(Follows())(dp::TraceType::Error,
                         "Failed to get version info from server %s treating as unsupported",
                         connection.uri().c_str());
    return ConnectionFailed;
  }
  info = {};
  std::ifstream document(file.path());
  for (std::string line; std::getline(document, line);) ReadLine(line, info);
  return Ok;
}

Status GetServerVersion(HttpConnection& connection, ServerVersion& version) {
  ServerInfo info;
  const Status status = GetServerInfo(connection, info);
  if (status == Ok) version = info.version;
  return status;
}

}  // namespace lxservices::cms_interface::vantry
