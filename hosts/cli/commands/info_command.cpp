#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/newest_iteration.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/many/batch_options.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

void AddUnlessEmpty(Record& record, const char* key, const std::string& value) {
  if (!value.empty()) record.emplace_back(key, value);
}

// What the text of the address tells, with the list of servers.
[[nodiscard]] Record DescribeAddress(const std::string& address, AddressKind kind) {
  return {{"address", address},
          {"address_kind", std::string(kind == AddressKind::Uid ? "uid" : "path")},
          {"server", VtDirectManager::GetServerNickname(address.c_str())},
          {"server_url", VtDirectManager::GetServerURL(address.c_str())}};
}

void DescribeIdentity(const std::string& address, const std::string& uid, Record& record) {
  AddUnlessEmpty(record, "uid", uid);
  std::map<VtDirectManager::VtDetails, std::string> details{{VtDirectManager::DetailName, ""},
                                                            {VtDirectManager::DetailNumber, ""}};
  if (VtDirectManager::ReadDetails(address.c_str(), details)) {
    AddUnlessEmpty(record, "title", details[VtDirectManager::DetailName]);
    AddUnlessEmpty(record, "number", details[VtDirectManager::DetailNumber]);
  }
  AddUnlessEmpty(record, "name", FileNameOf(address));
}

void DescribeVersion(const std::string& address, const std::string& uid, Record& record) {
  std::string current;
  std::string latest;
  if (VtDirectManager::GetStatus(uid.c_str(), current, latest, nullptr) >= 0) {
    AddUnlessEmpty(record, "version", current);
  }
  std::string latestUid;
  const VtDirectManager::Outcome outcome;
  if (VtDirectManager::GetLatest(address.c_str(), latest, latestUid) && !NewestIsUntold(outcome)) {
    AddUnlessEmpty(record, "latest_version", latest);
    AddUnlessEmpty(record, "latest_uid", latestUid);
  }
}

void DescribeCheckout(const std::string& address, Record& record) {
  const CheckoutState checkout = ReadCheckoutState(address);
  record.emplace_back("checkout", std::string(CheckoutWord(checkout.status)));
  AddUnlessEmpty(record, "checked_out_by", checkout.user);
}

// @param member  "folder" for that of a document, "path" for one that was asked for itself
void DescribeFolder(const char* member, const std::string& folder, Record& record) {
  const char* const text = folder.c_str();
  record.insert(record.end(), {{member, folder},
                               {"writable", VtDirectManager::IsPathWritable(text)},
                               {"shows_details", VtDirectManager::CanPathShowDetails(text)},
                               {"shows_versions", VtDirectManager::CanPathShowVersions(text)}});
}

void DescribePlace(const std::string& address, const std::string& placed, Record& record) {
  AddUnlessEmpty(record, "path_latest", VtDirectManager::GetVFSPathLatest(placed.c_str()));
  AddUnlessEmpty(record, "path_versioned", VtDirectManager::GetVFSPathVersioned(address.c_str()));
  const std::string folder = VtDirectManager::GetVFSFolderPath(address.c_str());
  if (!folder.empty()) DescribeFolder("folder", folder, record);
  std::string url;
  if (VtDirectManager::GetFileDownloadURL(address.c_str(), url, nullptr)) {
    AddUnlessEmpty(record, "content_url", url);
  }
  std::string page;
  if (VtDirectManager::BrowserInfo(address.c_str(), page)) AddUnlessEmpty(record, "web_page", page);
}

void DescribeObject(const std::string& address, AddressKind kind, Record& record) {
  record.emplace_back("kind", std::string("document"));
  const std::string uid = VtDirectManager::GetUID(address.c_str());
  DescribeIdentity(address, uid, record);
  DescribeVersion(address, uid, record);
  DescribeCheckout(address, record);
  DescribePlace(address, IsById(address, kind) ? uid : address, record);
}

void DescribeServer(const std::string& address, Record& record) {
  const char* const text = address.c_str();
  record.insert(record.end(), {{"checkout_supported", VtDirectManager::IsCheckoutSupported(text)},
                               {"translation_supported", VtDirectManager::TranslationSupported(text)},
                               {"separated_sources", VtDirectManager::SupportsSeparatedSources(text)},
                               {"vcs_metadata", VtDirectManager::SupportsVCSMetadata(text)}});
}

// Whether it is a folder's path, with or without the "/" that closes it.
[[nodiscard]] bool IsFolder(const std::string& address, AddressKind kind) {
  return !IsById(address, kind) && VtDirectManager::FileOrFolderExists(WithClosingSlash(address).c_str());
}

ExitCode FailMissing(Host& host, const std::string& address, Record& record) {
  const Failure failure = Diagnose(host, address, Seen::Missing);
  if (failure.code == ExitCode::NotFound) {
    record.emplace_back("exists", false);
    host.output().Lines(record);
  }
  return host.output().Fail(failure);
}

[[nodiscard]] ExitCode TellInfo(Host& host, const Arguments& arguments, const std::string& address) {
  const auto kind = RequirePlacedAddress(host, arguments, address);
  if (!kind) return host.output().Fail(kind.failure());

  ForgetReasons();
  Record record = DescribeAddress(address, *kind);
  const bool isObject = VtDirectManager::FileExists(address.c_str());
  const bool isThere = isObject ? !LastAnswerWasBroken() : IsFolder(address, *kind);
  if (!isThere) return FailMissing(host, address, record);
  record.emplace_back("exists", true);
  if (isObject) {
    DescribeObject(address, *kind, record);
  } else {
    record.emplace_back("kind", std::string("folder"));
    DescribeFolder("path", WithClosingSlash(address), record);
  }
  DescribeServer(address, record);
  host.output().Lines(record);
  return ExitCode::Ok;
}

// An empty line ends each of several.
[[nodiscard]] ExitCode TellNext(Host& host, const Arguments& arguments, const std::string& address) {
  const ExitCode code = TellInfo(host, arguments, address);
  host.output().Separate();
  return code;
}

ExitCode RunInfo(Host& host, const Arguments& arguments) {
  return ReadEach(host, arguments, Wanted::DocumentsAndFolders, IsForMany(arguments) ? TellNext : TellInfo);
}

[[nodiscard]] std::vector<OptionRow> Options() {
  std::vector<OptionRow> options = {AnywhereOption()};
  for (const OptionRow& row : ReadingManyOptions()) options.push_back(row);
  return options;
}

[[nodiscard]] std::vector<MemberRow> Members() {
  constexpr const char* whenTold = "for a document, as far as the server tells it";
  constexpr const char* withFolder = "with folder, and for a folder";
  constexpr const char* whenThere = "when the object is there";
  return {
      {"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
      {"address_kind", MemberType::Text, nullptr, "uid or path: what ADDRESS is"},
      {"server", MemberType::Text, nullptr, "nickname of the server"},
      {"server_url", MemberType::Text, nullptr, "its URL"},
      {"exists", MemberType::Flag, nullptr, "whether the object is there"},
      {"kind", MemberType::Text, whenThere, "document, folder or server"},
      {"uid", MemberType::Text, whenTold, "the object's UID"},
      {"title", MemberType::Text, whenTold, "the document's name that people gave it, free text"},
      {"number", MemberType::Text, whenTold, "its number"},
      {"name", MemberType::Text, whenTold, "the name as it is in a path, escaped"},
      {"version", MemberType::Text, whenTold, "the version of this iteration"},
      {"latest_version", MemberType::Text, whenTold, "the newest version"},
      {"latest_uid", MemberType::Text, whenTold, "UID of the newest iteration"},
      {"checkout", MemberType::Text, "for a document",
       "none, by-you, by-other, temporary-workspace, workspace, not-possible, unsupported or unknown"},
      {"checked_out_by", MemberType::Text, "when checked out", "who holds the checkout"},
      {"path_latest", MemberType::Text, whenTold, "path of the newest iteration"},
      {"path_versioned", MemberType::Text, whenTold, "path of exactly this iteration"},
      {"folder", MemberType::Text, whenTold, "path of the folder that holds the document"},
      {"path", MemberType::Text, "for a folder", "the object's own path; a folder's closes with \"/\""},
      {"content_url", MemberType::Text, whenTold, "URL of its content"},
      {"web_page", MemberType::Text, whenTold, "address of its page for a web browser"},
      {"writable", MemberType::Flag, withFolder, "whether documents can be created in the folder"},
      {"shows_details", MemberType::Flag, withFolder, "whether its listing shows numbers and titles"},
      {"shows_versions", MemberType::Flag, withFolder, "whether its listing shows versions"},
      {"checkout_supported", MemberType::Flag, whenThere, "whether the server offers checkout"},
      {"translation_supported", MemberType::Flag, whenThere, "whether it offers translation"},
      {"separated_sources", MemberType::Flag, whenThere, "whether it keeps sources apart"},
      {"vcs_metadata", MemberType::Flag, whenThere, "whether it takes metadata files"},
  };
}

}  // namespace

CommandRow InfoCommand() {
  return {"info",
          "Tell what is known of an object",
          "Prints \"key: value\" lines: address, address_kind (path or uid), server and server_url, exists. "
          "For a document that is there also kind, uid, title, number, name (escaped, as in a path), "
          "version, latest_version and latest_uid, checkout (see status) and checked_out_by, path_latest, "
          "path_versioned, folder with writable, shows_details and shows_versions, content_url and web_page, "
          "as far as the server tells them. For a folder: kind, path, writable, shows_details, "
          "shows_versions. For both what the server offers: checkout_supported, translation_supported, "
          "separated_sources, vcs_metadata.\n\nOf several objects each ends with an empty line; they are "
          "asked for --parallel at a time, and told in their order.",
          {{"ADDRESS", "A path, a pattern or a UID; see ADDRESSES. May be given several times.",
            Count::AtLeastOnce}},
          Options(),
          Requests::Some,
          RunInfo,
          Members()};
}

}  // namespace vtdirect_cli
