#include "hosts/cli/storing/put_request.h"

#include <utility>

#include "hosts/cli/files/escaped_name.h"

namespace vtdirect_cli {
namespace {

using VtDirectManager::FileType;

constexpr std::pair<const char*, FileType> types[] = {{"fenlet", VtDirectManager::FileTypeFenlet},
                                                      {"general", VtDirectManager::FileTypeGeneral},
                                                      {"ugc", VtDirectManager::FileTypeUgc}};

[[nodiscard]] Result<FileType> ReadType(const Arguments& arguments) {
  if (!arguments.Has("kind")) return VtDirectManager::FileTypeFenlet;
  for (const auto& [name, value] : types) {
    if (arguments.Text("kind") == name) return value;
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

[[nodiscard]] Result<std::optional<LocalSource>> ReadOptionalSource(const Arguments& arguments,
                                                                    ArgumentName option) {
  if (!arguments.Has(option)) return std::optional<LocalSource>();
  const std::string path = arguments.Text(option);
  if (path.empty()) return Failure{ExitCode::Usage, std::string("--") + option.text() + " takes a file name"};
  const auto source = InspectSource(path);
  if (!source) return source.failure();
  return std::optional<LocalSource>(*source);
}

[[nodiscard]] std::optional<Failure> RefuseNoLanguage(const Arguments& arguments) {
  if (!arguments.Has("language") || !arguments.Text("language").empty()) return std::nullopt;
  return Failure{ExitCode::Usage, "--language takes the name of a language"};
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

[[nodiscard]] Result<SourceLinks> ReadLinks(const Arguments& arguments) {
  SourceLinks links;
  for (const std::string& argument : arguments.All("link")) {
    const auto link = ReadLink(argument);
    if (!link) return link.failure();
    if (!links.insert(*link).second) {
      return Failure{ExitCode::Usage, "--link names \"" + link->first + "\" twice"};
    }
  }
  return links;
}

}  // namespace

std::vector<LocalSource> PutRequest::Sources() const {
  std::vector<LocalSource> sources{content};
  if (viewable) sources.push_back(*viewable);
  if (metadata) sources.push_back(*metadata);
  return sources;
}

Result<SourceLinks::value_type> ReadLink(const std::string& argument) {
  const std::size_t end = EndOfName(argument);
  if (end == 0 || end == std::string::npos) {
    return Failure{ExitCode::Usage, "\"" + argument +
                                        "\" is no link: --link takes NAME=ADDRESS, or NAME= to take the "
                                        "link away"};
  }
  SourceLinks::value_type link(NormalizedName(argument.substr(0, end)), argument.substr(end + 1));
  if (link.second.empty()) return link;
  const auto kind = RequireAddress(link.second);
  if (!kind) return kind.failure();
  return link;
}

Result<PutRequest> ReadPutRequest(const Arguments& arguments) {
  const auto type = ReadType(arguments);
  if (!type) return type.failure();
  if (auto failure = RefuseForType(arguments, *type)) return *failure;
  if (auto failure = RefuseNoLanguage(arguments)) return *failure;
  const auto kind = RequireAddress(arguments.Text("ADDRESS"));
  if (!kind) return kind.failure();
  const auto links = ReadLinks(arguments);
  if (!links) return links.failure();
  const auto content = InspectSource(arguments.Text("FILE"));
  if (!content) return content.failure();
  const auto viewable = ReadOptionalSource(arguments, "viewable");
  if (!viewable) return viewable.failure();
  const auto metadata = ReadOptionalSource(arguments, "metadata");
  if (!metadata) return metadata.failure();
  return PutRequest{arguments.Text("ADDRESS"),
                    *kind,
                    *type,
                    *content,
                    *viewable,
                    *metadata,
                    arguments.Text("language"),
                    *links,
                    arguments.Has("checkin"),
                    arguments.Has("force")};
}

}  // namespace vtdirect_cli
