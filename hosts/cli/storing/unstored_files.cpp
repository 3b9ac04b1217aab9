#include "hosts/cli/storing/unstored_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>

#include "hosts/cli/environment.h"
#include "hosts/cli/files/durable_file.h"

namespace vtdirect_cli {
namespace {

constexpr const char* form = "vtdirect-unstored 1";
constexpr const char* ending = ".entry";
constexpr const char* discardEnding = ".discard";

// A value is one line.
[[nodiscard]] std::string OneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char character) { return static_cast<unsigned char>(character) < ' '; },
      '?');
  return text;
}

[[nodiscard]] UnstoredFile ReadEntry(const std::string& path, const std::string& name) {
  UnstoredFile file;
  file.name = name;
  std::ifstream stream(path);
  std::string line;
  if (!std::getline(stream, line) || line != form) {
    file.fault = path + " can't be read";
    return file;
  }
  std::getline(stream, file.address);
  std::getline(stream, file.since);
  std::getline(stream, line);
  file.isWhole = line == "whole";
  std::getline(stream, file.fault);
  std::getline(stream, file.server);
  std::getline(stream, file.base);
  return file;
}

}  // namespace

std::string UnstoredFiles::Location() {
  const std::string directory = StateDirectory();
  return directory.empty() ? "" : directory + "/unstored";
}

int UnstoredFiles::Write(const UnstoredFile& file) const {
  const std::string text = std::string(form) + "\n" + OneLine(file.address) + "\n" + OneLine(file.since) +
                           "\n" + (file.isWhole ? "whole" : "open") + "\n" + OneLine(file.fault) + "\n" +
                           OneLine(file.server) + "\n" + OneLine(file.base) + "\n";
  return ReplaceDurably(directory_ + "/" + file.name + ending, text);
}

UnstoredFiles::Discarded UnstoredFiles::Discard(const UnstoredFile& file) const {
  const std::string content = ContentOf(file.name);
  const int descriptor = open(content.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
  if (descriptor < 0 && errno != ENOENT) return Discarded::Failed;
  const bool isFree = descriptor < 0 || flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
  Discarded came = Discarded::Gone;
  if (isFree) {
    // The content first: an entry without one is listed, and a content without an entry is nobody's.
    if (unlink(content.c_str()) != 0 && errno != ENOENT) came = Discarded::Failed;
    if (came == Discarded::Gone) Strike(file.name);
  } else if (!file.isWhole) {
    came = Discarded::Written;
  } else {
    const bool isAsked = ReplaceDurably(directory_ + "/" + file.name + discardEnding, "") == 0;
    came = isAsked ? Discarded::Asked : Discarded::Failed;
  }
  if (descriptor >= 0) close(descriptor);
  return came;
}

bool UnstoredFiles::IsToBeDropped(const std::string& name) const {
  return access((directory_ + "/" + name + discardEnding).c_str(), F_OK) == 0;
}

void UnstoredFiles::KeepAfterAll(const std::string& name) const {
  unlink((directory_ + "/" + name + discardEnding).c_str());
}

void UnstoredFiles::Strike(const std::string& name) const {
  unlink((directory_ + "/" + name + ending).c_str());
  KeepAfterAll(name);
  SyncDirectory(directory_);
}

UnstoredFiles::Listing UnstoredFiles::List() const {
  Listing listing;
  std::vector<UnstoredFile>& files = listing.files;
  std::error_code error;
  for (auto entry = std::filesystem::directory_iterator(directory_, error);
       !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    if (entry->path().extension() == ending) {
      files.push_back(ReadEntry(entry->path().string(), entry->path().stem().string()));
    }
  }
  std::sort(files.begin(), files.end(),
            [](const UnstoredFile& one, const UnstoredFile& other) { return one.name < other.name; });
  listing.isComplete = !error;
  return listing;
}

}  // namespace vtdirect_cli
