#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/address.h"
#include "hosts/cli/command.h"
#include "hosts/cli/diagnosis.h"
#include "hosts/cli/host.h"
#include "hosts/cli/trace_log.h"

namespace vtdirect_cli {
namespace {

void AddUnlessEmpty(Record& record, const char* key, const std::string& value) {
  if (!value.empty()) record.emplace_back(key, value);
}

// What the text of the address tells, with the list of servers.
[[nodiscard]] Record DescribeAddress(const std::string& address, AddressKind kind) {
  return {{"address", address},
          {"kind", std::string(kind == AddressKind::Uid ? "uid" : "path")},
          {"server", VtDirectManager::GetServerNickname(address.c_str())},
          {"server_url", VtDirectManager::GetServerURL(address.c_str())}};
}

void DescribeObject(const std::string& address, Record& record) {
  const char* const text = address.c_str();
  AddUnlessEmpty(record, "uid", VtDirectManager::GetUID(text));
  AddUnlessEmpty(record, "file_name", FileNameOf(address));
  AddUnlessEmpty(record, "path_latest", VtDirectManager::GetVFSPathLatest(text));
  AddUnlessEmpty(record, "path_versioned", VtDirectManager::GetVFSPathVersioned(text));
  AddUnlessEmpty(record, "folder", VtDirectManager::GetVFSFolderPath(text));
  std::string url;
  if (VtDirectManager::GetFileDownloadURL(text, url, nullptr)) AddUnlessEmpty(record, "content_url", url);
  std::string page;
  if (VtDirectManager::BrowserInfo(text, page)) AddUnlessEmpty(record, "web_page", page);
}

void DescribeServer(const std::string& address, Record& record) {
  const char* const text = address.c_str();
  record.emplace_back("checkout_supported", VtDirectManager::IsCheckoutSupported(text));
  record.emplace_back("translation_supported", VtDirectManager::TranslationSupported(text));
  record.emplace_back("separated_sources", VtDirectManager::SupportsSeparatedSources(text));
  record.emplace_back("vcs_metadata", VtDirectManager::SupportsVCSMetadata(text));
}

ExitCode RunInfo(Host& host, const Arguments& arguments) {
  const std::string address = arguments.Text("ADDRESS");
  AddressKind kind{};
  if (const auto failure = ClassifyAddress(address, kind)) return host.output().Fail(*failure);
  if (const auto failure = RequireListedServer(address, kind)) return host.output().Fail(*failure);

  ForgetTracedErrors();
  Record record = DescribeAddress(address, kind);
  if (!VtDirectManager::FileExists(address.c_str())) {
    const Failure failure = Diagnose(host, address, true);
    if (failure.code == ExitCode::NotFound) {
      record.emplace_back("exists", false);
      host.output().Lines(record);
    }
    return host.output().Fail(failure);
  }
  record.emplace_back("exists", true);
  DescribeObject(address, record);
  DescribeServer(address, record);
  host.output().Lines(record);
  return ExitCode::Ok;
}

}  // namespace

CommandRow InfoCommand() {
  return {"info",
          "Tell what is known of an object",
          "Prints \"key: value\" lines: address, kind (path or uid), server and server_url, exists; for an "
          "object "
          "that is there also uid, file_name (escaped, as in a path), path_latest, path_versioned, folder, "
          "content_url and web_page, as far as the server tells them; and what the server offers: "
          "checkout_supported, translation_supported, separated_sources, vcs_metadata.",
          {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
          {},
          true,
          RunInfo};
}

}  // namespace vtdirect_cli
