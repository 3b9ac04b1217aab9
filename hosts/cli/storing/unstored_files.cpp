#include "hosts/cli/storing/unstored_files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/program/environment.h"

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

// A mount has a lock on the content of each file that it is to store.
UnstoredFiles::Discarded UnstoredFiles::WhatDiscardingDoes(const UnstoredFile& file, int descriptor) const {
  if (descriptor < 0) return errno == ENOENT ? Discarded::Gone : Discarded::Failed;
  const bool isFree = flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
  if (isFree) return Discarded::Gone;
  return file.isWhole ? Discarded::Asked : Discarded::Written;
}

int UnstoredFiles::Ask(const std::string& name) const {
  return ReplaceDurably(directory_ + "/" + name + discardEnding, "");
}

// The content first: an entry without one is listed, and a content without an entry is nobody's.
int UnstoredFiles::Remove(const std::string& name) const {
  if (unlink(ContentOf(name).c_str()) != 0 && errno != ENOENT) return errno;
  Strike(name);
  return 0;
}

UnstoredFiles::Discarded UnstoredFiles::Discard(const UnstoredFile& file, bool isDryRun) const {
  const int descriptor = open(ContentOf(file.name).c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
  Discarded came = WhatDiscardingDoes(file, descriptor);
  int error = came == Discarded::Failed ? errno : 0;
  if (!isDryRun && came == Discarded::Gone) error = Remove(file.name);
  if (!isDryRun && came == Discarded::Asked) error = Ask(file.name);
  if (descriptor >= 0) close(descriptor);
  errno = error;
  return error == 0 ? came : Discarded::Failed;
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
  listing.error = error.value();
  return listing;
}

std::optional<Failure> UnstoredFiles::FailureOf(const Listing& listing) const {
  if (listing.error == 0 || listing.error == ENOENT) return std::nullopt;
  return Failure{ExitCode::LocalFile,
                 "what was written in a mount and waits there could not be found out: cannot read " +
                     directory_ + ": " + std::strerror(listing.error)};
}

}  // namespace vtdirect_cli
