#include "base/failure_step.h"
#include "public/object_address.h"
#include "public/path_resolution.h"
#include "public/vt_direct_manager.h"
#include "translation/xliff_server.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;

namespace {

// The translation service of a target; null without a server or the service.
XliffServer* XliffServerOf(const FileTarget& target) {
  if (target.server == nullptr) return nullptr;
  const FailureMark mark;
  XliffServer* xliff = target.server->GetXliffServer();
  if (xliff == nullptr) ReportReason(FollowsOr(mark, FailureKind::ServiceMissing));
  return xliff;
}

// A document without one gets its first; so does one that cannot be asked.
bool HasSource(XliffServer& xliff, const std::string& id) {
  const FailureAside aside;
  XliffDocumentRef source;
  return xliff.GetSourceXliff(id.c_str(), source) && !source.id.empty();
}

}  // namespace

bool UploadSourceXliff(const char* path, const char* xliffPath, const char* language) {
  const FailureStep step("upload the source XLIFF");
  const FileTarget target = ResolveFileTarget(path, {}, ResolveNeedId);
  XliffServer* xliff = XliffServerOf(target);
  if (xliff == nullptr) return false;
  FileInfo dropped;
  if (!HasSource(*xliff, target.id)) {
    return xliff->UploadSource(target.id.c_str(), xliffPath, language, dropped, {});
  }
  return xliff->UpdateSource(target.id.c_str(), xliffPath, dropped, {}, language);
}

bool GetUIDForSourceXliff(const char* path, std::string& uid, std::string& language) {
  const FailureStep step("find the source XLIFF");
  const FileTarget target = ResolveFileTarget(path, {}, ResolveNeedId);
  XliffServer* xliff = XliffServerOf(target);
  XliffDocumentRef source;
  if (xliff == nullptr) return false;
  const FailureMark mark;
  if (!xliff->GetSourceXliff(target.id.c_str(), source)) {
    ReportReason(FollowsOr(mark, FailureKind::NotFound));
    return false;
  }
  FileInfo info;
  if (target.server->GetFileInfo(source.id.c_str(), info) == Ok) {
    uid = UidOfInfo(*target.server, info);
    language = source.language;
  }
  return true;
}

bool GetXliffTranslations(const char* path, std::map<std::string, std::string>& translations) {
  const FailureStep step("list the translations");
  const FileTarget target = ResolveFileTarget(path, {}, ResolveNeedId);
  XliffServer* xliff = XliffServerOf(target);
  if (xliff == nullptr) return false;
  XliffDocumentRef source;
  std::map<std::string, std::string> listed;
  const FailureMark mark;
  if (!xliff->GetTranslations(target.id.c_str(), source, listed)) {
    ReportReason(FollowsOr(mark, FailureKind::NotFound));
    return false;
  }
  for (const auto& [language, id] : listed) {
    FileInfo info;
    if (target.server->GetFileInfo(id.c_str(), info) == Ok) {
      translations[language] = UidOfInfo(*target.server, info);
    }
  }
  return translations.size() == listed.size();
}

bool SetXliffPublished(const char* path) {
  const FailureStep step("mark the document as published");
  const FileTarget target = ResolveFileTarget(path, {}, ResolveNeedId);
  XliffServer* xliff = XliffServerOf(target);
  return xliff != nullptr && xliff->SetPublished(target.id.c_str());
}

}  // namespace VtDirectManager
