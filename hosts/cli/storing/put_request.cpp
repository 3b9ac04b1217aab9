#include "hosts/cli/storing/put_request.h"

#include <utility>

#include "hosts/cli/files/escaped_name.h"

namespace vtdirect_cli {
namespace {

using VtDirectManager::FileType;

constexpr std::pair<const char*, FileType> kTypes[] = {{"fenlet", VtDirectManager::FileTypeFenlet},
                                                       {"general", VtDirectManager::FileTypeGeneral},
                                                       {"ugc", VtDirectManager::FileTypeUgc}};

[[nodiscard]] std::optional<Failure> ReadType(const Arguments& arguments, FileType& type) {
  if (!arguments.Has("kind")) return std::nullopt;
  for (const auto& [name, value] : kTypes) {
    if (arguments.Text("kind") != name) continue;
    type = value;
    return std::nullopt;
  }
  return Failure{ExitCode::Usage, "--kind takes fenlet, general or ugc"};
}

// What the library would leave out without a word.
[[nodiscard]] std::optional<Failure> RefuseForType(const Arguments& arguments, FileType type) {
  if (type == VtDirectManager::FileTypeFenlet) return std::nullopt;
  for (const ArgumentName option :
       {ArgumentName("viewable"), ArgumentName("metadata"), ArgumentName("language"), ArgumentName("link")}) {
    if (!arguments.Has(option)) continue;
    return Failure{ExitCode::Usage, std::string("--") + option.text() +
                                        " is for Fenlet documents alone, not for " + arguments.Text("kind") +
                                        " ones"};
  }
  return std::nullopt;
}

[[nodiscard]] std::optional<Failure> ReadOptionalSource(const Arguments& arguments, ArgumentName option,
                                                        std::optional<LocalSource>& source) {
  if (!arguments.Has(option)) return std::nullopt;
  const std::string path = arguments.Text(option);
  if (path.empty()) return Failure{ExitCode::Usage, std::string("--") + option.text() + " takes a file name"};
  return InspectSource(path, source.emplace());
}

[[nodiscard]] std::optional<Failure> ReadLanguage(const Arguments& arguments, std::string& language) {
  if (!arguments.Has("language")) return std::nullopt;
  language = arguments.Text("language");
  if (language.empty()) return Failure{ExitCode::Usage, "--language takes the name of a language"};
  return std::nullopt;
}

[[nodiscard]] bool BeginsAsAddress(const std::string& text) {
  return text.starts_with("//") || VtDirectManager::IsManaged(text.c_str());
}

// Where the name ends; npos when the argument isn't of the form.
[[nodiscard]] std::size_t EndOfName(const std::string& argument) {
  for (std::size_t at = argument.find('='); at != std::string::npos; at = argument.find('=', at + 1)) {
    if (BeginsAsAddress(argument.substr(at + 1))) return at;
  }
  return argument.ends_with('=') ? argument.size() - 1 : std::string::npos;
}

[[nodiscard]] std::optional<Failure> ReadLinks(const Arguments& arguments, SourceLinks& links) {
  for (const std::string& argument : arguments.All("link")) {
    if (auto failure = AddLink(argument, links)) return failure;
  }
  return std::nullopt;
}

[[nodiscard]] std::optional<Failure> ReadSources(const Arguments& arguments, PutRequest& request) {
  if (auto failure = InspectSource(arguments.Text("FILE"), request.content)) return failure;
  if (auto failure = ReadOptionalSource(arguments, "viewable", request.viewable)) return failure;
  return ReadOptionalSource(arguments, "metadata", request.metadata);
}

}  // namespace

std::vector<LocalSource> PutRequest::Sources() const {
  std::vector<LocalSource> sources{content};
  if (viewable) sources.push_back(*viewable);
  if (metadata) sources.push_back(*metadata);
  return sources;
}

std::optional<Failure> AddLink(const std::string& argument, SourceLinks& links) {
  const std::size_t end = EndOfName(argument);
  if (end == 0 || end == std::string::npos) {
    return Failure{ExitCode::Usage, "\"" + argument +
                                        "\" is no link: --link takes NAME=ADDRESS, or NAME= to take the "
                                        "link away"};
  }
  const std::string name = NormalizedName(argument.substr(0, end));
  const std::string address = argument.substr(end + 1);
  if (!links.emplace(name, address).second) {
    return Failure{ExitCode::Usage, "--link names \"" + name + "\" twice"};
  }
  if (address.empty()) return std::nullopt;
  AddressKind kind{};
  return RequireAddress(address, kind);
}

std::optional<Failure> ReadPutRequest(const Arguments& arguments, PutRequest& request) {
  request.address = arguments.Text("ADDRESS");
  request.checkIn = arguments.Has("checkin");
  request.force = arguments.Has("force");
  if (auto failure = ReadType(arguments, request.type)) return failure;
  if (auto failure = RefuseForType(arguments, request.type)) return failure;
  if (auto failure = ReadLanguage(arguments, request.language)) return failure;
  if (auto failure = RequireAddress(request.address, request.kind)) return failure;
  if (auto failure = ReadLinks(arguments, request.links)) return failure;
  return ReadSources(arguments, request);
}

}  // namespace vtdirect_cli
