#include "public/path_resolution.h"
#include "public/vt_direct_manager.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;

namespace {

// Asks the server of an address; false when there is none.
template <typename Ask>
bool AskServer(const char* path, unsigned flags, Ask ask) {
  const PathTarget target = ResolveTarget(path, {}, flags);
  return target.server != nullptr && ask(*target.server, target.relativePath.c_str());
}

// The server of an address if it is of the Vantry kind, else null.
vantry::VantryFileServer* AsVantry(FileServer& server) {
  return dynamic_cast<vantry::VantryFileServer*>(&server);
}

}  // namespace

bool BrowserInfo(const char* path, std::string& url) {
  const FileTarget target = ResolveFileTarget(path, {}, 0);
  if (target.server == nullptr) return false;
  url = target.server->BrowserInfo(target.id.c_str());
  return !url.empty();
}

std::string VantryEditAttributesURL(const char* path) {
  const FileTarget target = ResolveFileTarget(path, {}, ResolveNeedId);
  if (target.server == nullptr || AsVantry(*target.server) == nullptr) return {};
  return target.server->EditAttributesURL(target.id.c_str());
}

bool CanPathShowDetails(const char* path) {
  return AskServer(path, ResolveQuiet, [](FileServer& server, const char* relativePath) {
    return server.CanPathShowDetails(relativePath);
  });
}

bool CanPathShowVersions(const char* path) {
  return AskServer(path, ResolveQuiet, [](FileServer& server, const char* relativePath) {
    return server.CanPathShowVersions(relativePath);
  });
}

bool IsPathWritable(const char* path) {
  return AskServer(path, ResolveQuiet, [](FileServer& server, const char* relativePath) {
    return server.IsPathWritable(relativePath);
  });
}

bool IsCheckoutSupported(const char* path) {
  return AskServer(path, ResolveQuiet,
                   [](FileServer& server, const char*) { return server.GetCheckoutServer() != nullptr; });
}

bool TranslationSupported(const char* path) {
  // The one capability query whose failure is traced as an error.
  return AskServer(path, 0,
                   [](FileServer& server, const char*) { return server.GetXliffServer() != nullptr; });
}

bool SupportsSeparatedSources(const char* path) {
  return AskServer(path, ResolveQuiet, [](FileServer& server, const char*) {
    return AsVantry(server) != nullptr && server.SupportsSeparatedSources();
  });
}

bool SupportsVCSMetadata(const char* path) {
  return AskServer(path, ResolveQuiet, [](FileServer& server, const char*) {
    return AsVantry(server) != nullptr && server.SupportsVCSMetadata();
  });
}

}  // namespace VtDirectManager
