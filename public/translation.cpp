#include "public/object_address.h"
#include "public/path_resolution.h"
#include "public/vt_direct_manager.h"
#include "translation/xliff_server.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;

namespace {

// The translation service of a target; null without a server or the service.
XliffServer* XliffServerOf(const FileTarget& target) {
  return target.server != nullptr ? target.server->GetXliffServer() : nullptr;
}

}  // namespace

bool UploadSourceXliff(const char* path, const char* xliffPath, const char* language) {
  const FileTarget target = ResolveFileTarget(path, {}, ResolveNeedId);
  XliffServer* xliff = XliffServerOf(target);
  if (xliff == nullptr) return false;
  XliffDocumentRef source;
  FileInfo dropped;
  if (!xliff->GetSourceXliff(target.id.c_str(), source) || source.id.empty()) {
    return xliff->UploadSource(target.id.c_str(), xliffPath, language, dropped, {});
  }
  return xliff->UpdateSource(target.id.c_str(), xliffPath, dropped, {}, language);
}

bool GetUIDForSourceXliff(const char* path, std::string& uid, std::string& language) {
  const FileTarget target = ResolveFileTarget(path, {}, ResolveNeedId);
  XliffServer* xliff = XliffServerOf(target);
  XliffDocumentRef source;
  if (xliff == nullptr || !xliff->GetSourceXliff(target.id.c_str(), source)) return false;
  FileInfo info;
  if (target.server->GetFileInfo(source.id.c_str(), info) == Ok) {
    uid = UidOfInfo(*target.server, info, nullptr);
    language = source.language;
  }
  return true;
}

bool GetXliffTranslations(const char* path, std::map<std::string, std::string>& translations) {
  const FileTarget target = ResolveFileTarget(path, {}, ResolveNeedId);
  XliffServer* xliff = XliffServerOf(target);
  if (xliff == nullptr) return false;
  XliffDocumentRef source;
  std::map<std::string, std::string> listed;
  if (!xliff->GetTranslations(target.id.c_str(), source, listed)) return false;
  for (const auto& [language, id] : listed) {
    FileInfo info;
    if (target.server->GetFileInfo(id.c_str(), info) == Ok) {
      translations[language] = UidOfInfo(*target.server, info, nullptr);
    }
  }
  return translations.size() == listed.size();
}

bool SetXliffPublished(const char* path) {
  const FileTarget target = ResolveFileTarget(path, {}, ResolveNeedId);
  XliffServer* xliff = XliffServerOf(target);
  return xliff != nullptr && xliff->SetPublished(target.id.c_str());
}

}  // namespace VtDirectManager
