// Sends the source XLIFF of a document to be translated, fetches the translations that have come back, and
// publishes one of them.
//
//   translations http://127.0.0.1:8080/ '//plm/?id=D1028' manual.xlf en fr
#include <vtdirect/vt_direct_manager.h>
#include <vtdirect/vt_direct_utils.h>

#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <string>

namespace {

// Prints a translation by its size: the local copy is removed when the holder goes.
bool Show(const std::string& language, const std::string& uid) {
  const std::unique_ptr<VtDirectUtils::LocalFileHolder> copy = VtDirectUtils::GetLocalFile(uid.c_str());
  if (!copy) return false;
  std::ifstream file(copy->GetLocalPath(), std::ios::binary | std::ios::ate);
  std::cout << language << '\t' << file.tellg() << '\t' << uid << '\n';
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 6) {
    std::cerr << "usage: translations SERVER ADDRESS XLIFF SOURCE_LANGUAGE LANGUAGE_TO_PUBLISH\n";
    return 2;
  }
  VtDirectManager::UpdateServerList({{"plm", arguments[1]}});
  if (!VtDirectManager::TranslationSupported(arguments[2])) {
    std::cerr << "this server offers no translation\n";
    return 1;
  }
  // What follows takes UIDs only.
  const std::string document = VtDirectManager::GetUID(arguments[2]);
  std::map<std::string, std::string> translations;
  if (!VtDirectManager::GetXliffTranslations(document.c_str(), translations)) {
    std::cerr << "not every translation could be read\n";
  }
  for (const auto& [language, uid] : translations) {
    if (!Show(language, uid)) std::cerr << "the translation to " << language << " could not be fetched\n";
  }
  const auto wanted = translations.find(arguments[5]);
  if (wanted == translations.end() || !VtDirectManager::SetXliffPublished(wanted->second.c_str())) {
    std::cerr << "not published\n";
    return 1;
  }
  if (!VtDirectManager::UploadSourceXliff(document.c_str(), arguments[3], arguments[4])) {
    std::cerr << "the source was not sent\n";
    return 1;
  }
  return 0;
}
