#include "hosts/cli/storing/unstored_files.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "hosts/cli/environment.h"
#include "hosts/cli/files/durable_file.h"

namespace vtdirect_cli {
namespace {

constexpr const char* form = "vtdirect-unstored 1";
constexpr const char* ending = ".entry";

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
  return file;
}

}  // namespace

std::string UnstoredFiles::Location() {
  const std::string directory = StateDirectory();
  return directory.empty() ? "" : directory + "/unstored";
}

int UnstoredFiles::Write(const UnstoredFile& file) const {
  const std::string text = std::string(form) + "\n" + OneLine(file.address) + "\n" + OneLine(file.since) +
                           "\n" + (file.isWhole ? "whole" : "open") + "\n" + OneLine(file.fault) + "\n";
  return ReplaceDurably(directory_ + "/" + file.name + ending, text);
}

void UnstoredFiles::Strike(const std::string& name) const {
  unlink((directory_ + "/" + name + ending).c_str());
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
