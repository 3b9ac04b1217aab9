// The house of the project, as its include lines tell it: a folder includes from those below it and never
// from one above, and what is installed shows a host no third library.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

const fs::path root = VTDIRECT_SOURCE_DIRECTORY;

struct IncludeLine {
  std::string target;
  bool quoted = false;
};

using Names = std::set<std::string>;

bool StartsWith(const std::string& text, const std::string& beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

// The #include lines of a file, whatever blanks are in them.
std::vector<IncludeLine> ReadIncludes(const fs::path& file) {
  std::vector<IncludeLine> includes;
  std::ifstream in(file);
  EXPECT_TRUE(in) << file;
  std::string line;
  while (std::getline(in, line)) {
    std::string packed;
    std::copy_if(line.begin(), line.end(), std::back_inserter(packed),
                 [](char character) { return character != ' ' && character != '\t'; });
    if (!StartsWith(packed, "#include") || packed.size() < 10) continue;
    const char open = packed[8];
    const auto end = packed.find(open == '<' ? '>' : '"', 9);
    EXPECT_TRUE((open == '<' || open == '"') && end != std::string::npos) << file << ": " << line;
    if (end != std::string::npos) includes.push_back({packed.substr(9, end - 9), open == '"'});
  }
  return includes;
}

// The C++ files of a folder, not counting the sub-folders that are folders of the house themselves.
std::vector<fs::path> SourcesOf(const std::string& folder, const Names& otherFolders) {
  std::vector<fs::path> sources;
  if (!fs::exists(root / folder)) return sources;
  for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
    const std::string extension = entry.path().extension().string();
    if (extension != ".h" && extension != ".cpp") continue;
    const std::string inTree = fs::relative(entry.path(), root).string();
    const bool belongsElsewhere =
        std::any_of(otherFolders.begin(), otherFolders.end(), [&](const std::string& other) {
          return other.size() > folder.size() && StartsWith(inTree, other + "/");
        });
    if (!belongsElsewhere) sources.push_back(entry.path());
  }
  return sources;
}

// The folders of the library, each with those of this tree that it may include from, itself not counted.
const std::map<std::string, Names>& MayInclude() {
  static const std::map<std::string, Names> table{
      {"platform", {}},
      {"base", {"platform"}},
      {"connection", {"base", "platform"}},
      {"documents", {"connection", "base", "platform"}},
      {"translation", {"documents", "connection", "base", "platform"}},
      {"browsing", {"translation", "documents", "connection", "base", "platform"}},
      {"server", {"browsing", "translation", "documents", "connection", "base", "platform"}},
      {"public", {"server", "browsing", "translation", "documents", "connection", "base", "platform"}},
      {"platform_default", {"platform"}},
      {"simulator", {}},
      {"hosts/cli", {}},
      {"hosts/mount", {"hosts/cli"}},
  };
  return table;
}

Names Folders() {
  Names folders;
  for (const auto& [folder, allowed] : MayInclude()) folders.insert(folder);
  return folders;
}

// The folder of the house that an include line leads to, or the empty text. A path that is in no folder
// is one beside the including file.
std::string FolderOf(const std::string& target) {
  std::string found;
  for (const std::string& folder : Folders()) {
    if (StartsWith(target, folder + "/") && folder.size() > found.size()) found = folder;
  }
  return found;
}

// Headers of the standard library have neither a directory nor an extension.
bool IsOfTheStandardLibrary(const IncludeLine& include) {
  return !include.quoted && include.target.find_first_of("./") == std::string::npos;
}

// The libraries that this tree is built on, by the beginning of their include lines, and who may include
// them.
const std::map<std::string, Names>& OwnersOfLibraries() {
  static const std::map<std::string, Names> table{
      {"rapidjson/",
       {"connection", "documents", "translation", "browsing", "platform_default", "simulator", "hosts/cli"}},
      {"boost/", {"connection"}},
      {"expat", {"connection", "hosts/cli"}},
      {"curl/", {"platform_default"}},
      {"httplib", {"simulator"}},
      {"sqlite3", {"hosts/cli", "simulator"}},
      {"CLI/", {"hosts/cli", "simulator"}},
      {"fuse", {"hosts/mount"}},
  };
  return table;
}

TEST(IncludeDirections, EachFolderIncludesFromThoseBelowItOnly) {
  for (const auto& [folder, allowed] : MayInclude()) {
    for (const fs::path& file : SourcesOf(folder, Folders())) {
      for (const IncludeLine& include : ReadIncludes(file)) {
        const std::string target = FolderOf(include.target);
        if (target.empty() || target == folder) continue;
        EXPECT_TRUE(allowed.count(target) == 1) << file << " includes " << include.target;
      }
    }
  }
}

TEST(IncludeDirections, AQuotedIncludeIsOfThisTree) {
  for (const auto& [folder, allowed] : MayInclude()) {
    for (const fs::path& file : SourcesOf(folder, Folders())) {
      for (const IncludeLine& include : ReadIncludes(file)) {
        if (!include.quoted) continue;
        const bool exists =
            fs::exists(root / include.target) || fs::exists(file.parent_path() / include.target);
        EXPECT_TRUE(exists) << file << " includes \"" << include.target << "\"";
        EXPECT_EQ(include.target.find(".."), std::string::npos) << file << " includes " << include.target;
      }
    }
  }
}

TEST(IncludeDirections, HostsIncludeTheInstalledHeadersAndNothingElseOfTheLibrary) {
  const Names installed{"vtdirect/vt_direct_manager.h", "vtdirect/vt_direct_utils.h", "vtdirect/outcome.h"};
  for (const char* folder : {"hosts/cli", "hosts/mount"}) {
    for (const fs::path& file : SourcesOf(folder, {})) {
      for (const IncludeLine& include : ReadIncludes(file)) {
        if (!StartsWith(include.target, "vtdirect/")) continue;
        const std::string name = include.target.substr(std::string("vtdirect/").size());
        const bool isInstalled = installed.count(include.target) == 1 ||
                                 (StartsWith(name, "platform/") && fs::exists(root / name));
        EXPECT_TRUE(isInstalled) << file << " includes " << include.target;
      }
    }
  }
}

TEST(IncludeDirections, TheSimulatorSharesNothingWithTheLibrary) {
  for (const fs::path& file : SourcesOf("simulator", {})) {
    for (const IncludeLine& include : ReadIncludes(file)) {
      EXPECT_FALSE(StartsWith(include.target, "vtdirect/")) << file << " includes " << include.target;
      EXPECT_TRUE(!include.quoted || StartsWith(include.target, "simulator/"))
          << file << " includes " << include.target;
    }
  }
}

TEST(IncludeDirections, ThePublicHeadersIncludeTheStandardLibraryAndTheirSiblings) {
  const Names siblings{"export.h", "platform/export.h", "vt_direct_manager.h", "vt_direct_utils.h"};
  for (const char* header : {"public/vt_direct_manager.h", "public/vt_direct_utils.h", "public/outcome.h"}) {
    for (const IncludeLine& include : ReadIncludes(root / header)) {
      EXPECT_TRUE(IsOfTheStandardLibrary(include) || siblings.count(include.target) == 1)
          << header << " includes " << include.target;
    }
  }
}

TEST(IncludeDirections, ThePlatformInterfaceIncludesTheStandardLibraryAndItsSiblings) {
  for (const fs::path& header : SourcesOf("platform", {})) {
    EXPECT_EQ(header.extension(), ".h") << header;
    for (const IncludeLine& include : ReadIncludes(header)) {
      const bool isSibling = include.quoted && include.target.find('/') == std::string::npos &&
                             fs::exists(header.parent_path() / include.target);
      EXPECT_TRUE(IsOfTheStandardLibrary(include) || isSibling) << header << " includes " << include.target;
    }
  }
}

TEST(IncludeDirections, ALibraryIsIncludedByItsOwnersOnly) {
  for (const auto& [folder, allowed] : MayInclude()) {
    for (const fs::path& file : SourcesOf(folder, Folders())) {
      for (const IncludeLine& include : ReadIncludes(file)) {
        for (const auto& [library, owners] : OwnersOfLibraries()) {
          if (include.quoted || !StartsWith(include.target, library)) continue;
          EXPECT_TRUE(owners.count(folder) == 1) << file << " includes " << include.target;
        }
      }
    }
  }
}

// What is above the platform runs on every system that has one: it includes the standard library, the
// libraries that it is built on, and nothing of a system's own.
TEST(IncludeDirections, NothingAboveThePlatformIncludesASystemHeader) {
  for (const char* folder :
       {"base", "connection", "documents", "translation", "browsing", "server", "public", "platform"}) {
    for (const fs::path& file : SourcesOf(folder, Folders())) {
      for (const IncludeLine& include : ReadIncludes(file)) {
        const bool isOfALibrary =
            std::any_of(OwnersOfLibraries().begin(), OwnersOfLibraries().end(),
                        [&](const auto& library) { return StartsWith(include.target, library.first); });
        EXPECT_TRUE(include.quoted || isOfALibrary || IsOfTheStandardLibrary(include))
            << file << " includes <" << include.target << ">";
      }
    }
  }
}

// The comment above a declaration.
std::string CommentAbove(const std::vector<std::string>& lines, const std::string& declaration) {
  std::string comment;
  for (const std::string& line : lines) {
    if (StartsWith(line, "///")) {
      comment += line + "\n";
    } else if (StartsWith(line, declaration)) {
      return comment;
    } else {
      comment.clear();
    }
  }
  return "no " + declaration;
}

// What a host does not know of, it does not catch; on a runner's thread that ends the process.
TEST(PublicHeader, TellsWhichFunctionsThrow) {
  std::ifstream header(root / "public/vt_direct_manager.h");
  std::vector<std::string> lines;
  for (std::string line; std::getline(header, line);) lines.push_back(line);
  for (const char* function :
       {"Upload(const char* path", "Upload(FileType kind", "UploadAsync(const char* path",
        "UploadFenletAsync(", "Store(", "StoreAsync(", "UploadSourceXliff("}) {
    const std::string comment = CommentAbove(lines, std::string("VTDIRECT_API bool ") + function);
    EXPECT_NE(comment.find("throw"), std::string::npos) << function << ":\n" << comment;
  }
}

TEST(IncludeDirections, TheTestSeesTheTree) {
  // A wrong root would let every test above pass on nothing.
  for (const char* folder :
       {"platform", "base", "connection", "documents", "translation", "browsing", "server", "public",
        "platform_default", "simulator", "hosts/cli", "hosts/mount"}) {
    EXPECT_FALSE(SourcesOf(folder, Folders()).empty()) << folder;
  }
  bool sawPlatformHeader = false;
  for (const IncludeLine& include : ReadIncludes(root / "connection/http_connection.cpp")) {
    sawPlatformHeader = sawPlatformHeader || FolderOf(include.target) == "platform";
  }
  EXPECT_TRUE(sawPlatformHeader);
}

}  // namespace
