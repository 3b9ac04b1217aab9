#include "hosts/cli/many/wanted_files.h"

#include <set>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/files/target_file.h"
#include "hosts/cli/many/file_places.h"
#include "hosts/cli/many/subjects_below.h"
#include "hosts/cli/work_folder/parallel.h"

namespace vtdirect_cli {
namespace {

// What one subject turned out to be.
struct Content {
  std::string name;  // of the file or the folder; empty for neither
  bool isFolder = false;
  RemoteTree tree;  // of a folder, with paths below it
};

[[nodiscard]] std::string LastStep(const std::string& path) {
  const std::string open = path.ends_with('/') ? path.substr(0, path.size() - 1) : path;
  return open.substr(open.rfind('/') + 1);
}

[[nodiscard]] std::string NameOfDocument(const Subject& subject) {
  if (!subject.name.empty()) return subject.name;
  const auto kind = RequireAddress(subject.address);
  return kind ? SafeFileName(FileNameOf(subject.address)) : "";
}

class Gathering {
 public:
  void Add(const Subject& subject, const Content& content) {
    if (!content.isFolder) {
      AddDocument(subject, content.name);
      return;
    }
    wanted_.failures.insert(wanted_.failures.end(), content.tree.failures.begin(),
                            content.tree.failures.end());
    if (!content.tree.Knows("")) return;
    const std::string root = places_.TakeForFolder(content.name) + "/";
    wanted_.folders.push_back(root);
    for (const std::string& folder : content.tree.folders) wanted_.folders.push_back(root + folder + "/");
    for (const auto& [path, document] : content.tree.documents) {
      if (known_.insert(document.uid).second) {
        wanted_.files.push_back({document.address, document.uid, document.version, root + path});
      }
    }
  }

  [[nodiscard]] WantedFiles TakeFiles() { return std::move(wanted_); }
  void AddFailures(const std::vector<Failure>& failures) {
    wanted_.failures.insert(wanted_.failures.end(), failures.begin(), failures.end());
  }

 private:
  // Without a name it stays in the list, and is told of when it is asked for.
  void AddDocument(const Subject& subject, const std::string& name) {
    if (!known_.insert(subject.uid.empty() ? subject.address : subject.uid).second) return;
    wanted_.files.push_back(
        {subject.address, subject.uid, subject.version, name.empty() ? "" : places_.TakeForFile(name)});
  }

  WantedFiles wanted_;
  FilePlaces places_;
  std::set<std::string> known_;  // UIDs, and addresses without one
};

}  // namespace

WantedFiles FindWantedFiles(const Arguments& arguments, Effort effort) {
  const bool recursive = arguments.Has("recursive");
  const Wanted wanted = recursive ? Wanted::DocumentsAndFolders : Wanted::Documents;
  const Subjects subjects = FindSubjects(arguments.All("ADDRESS"), wanted, effort);
  Gathering gathering;
  std::vector<Content> contents(subjects.found.size());
  RunInParallel(contents.size(), effort.threads, [&](std::size_t number) {
    const Subject& subject = subjects.found[number];
    contents[number].isFolder = recursive && IsFolder(subject);
    contents[number].name =
        contents[number].isFolder ? SafeFileName(LastStep(subject.address)) : NameOfDocument(subject);
  });
  // Each tree is listed on all threads, so one comes after the other.
  for (std::size_t number = 0; number < contents.size(); ++number) {
    if (contents[number].isFolder) contents[number].tree = TreeBelow(subjects.found[number].address, effort);
    gathering.Add(subjects.found[number], contents[number]);
  }
  gathering.AddFailures(subjects.failures);
  return gathering.TakeFiles();
}

}  // namespace vtdirect_cli
