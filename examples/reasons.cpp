// Tells why a document could not be fetched: by the last status, and by what the library traced on the way.
//
//   reasons http://127.0.0.1:8080/ '//plm/?id=D9999'
#include <vtdirect/platform/trace.h>
#include <vtdirect/vt_direct_manager.h>
#include <vtdirect/vt_direct_utils.h>

#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace VtDirectManager;

// Whether the server itself can be used, and what is wrong with it otherwise.
bool ExplainServer(const char* url) {
  StatusCode code = StatusOk;
  std::string instead;
  if (ServerSupported(url, &code, &instead)) return true;
  if (code == StatusConnectFailed) std::cout << "no server answers at " << url << '\n';
  if (code == StatusServerRefused) std::cout << "the server wants other credentials\n";
  if (code == StatusServerUnsupported) std::cout << "the server is of a release that is not supported\n";
  if (!instead.empty()) std::cout << "the server calls itself " << instead << '\n';
  return false;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    std::cerr << "usage: reasons SERVER ADDRESS\n";
    return 2;
  }
  UpdateServerList({{"plm", arguments[1]}});
  if (!ExplainServer(arguments[1])) return 1;

  // Every line of the library comes here from now on. They are for people and may change; a program decides
  // by what the functions give back.
  std::vector<std::string> lines;
  dp::SetTraceHandler([&](const char*, const char*, dp::TraceType type, const std::string& text) {
    const bool tells = type == dp::TraceType::Warning || type == dp::TraceType::Error;
    if (tells && !text.empty()) lines.push_back(text);
  });
  const bool exists = FileExists(arguments[2]);
  const bool fetched = VtDirectUtils::GetLocalFile(arguments[2]) != nullptr;
  dp::SetTraceHandler({});

  if (fetched) {
    std::cout << "nothing is wrong\n";
    return 0;
  }
  std::cout << (exists ? "the document is there, and its content could not be fetched\n"
                       : "there is no such document\n");
  for (const std::string& line : lines) std::cout << "  " << line << (line.back() == '\n' ? "" : "\n");
  return 1;
}
