#include "documents/storing/multipart_file.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <random>
#include <system_error>
#include <vector>

#include "base/failure_step.h"
#include "base/local_path.h"
#include "documents/storing/disk_space.h"
#include "platform/files.h"

namespace lxservices::cms_interface::vantry {
namespace {

/// Fits into a processor's large caches, out of which the second half of the copy is taken. Measured: half as
/// much and twice as much are both slower.
constexpr std::size_t copyBufferSize = 1024 * 1024;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// The length of a file that has one to tell, which is at its start before and after; 0 for a pipe and
/// the like.
std::uint64_t AnnouncedLength(std::FILE* file) {
  if (std::fseek(file, 0, SEEK_END) != 0) return 0;
  const long end = std::ftell(file);
  std::rewind(file);
  return end < 0 ? 0 : static_cast<std::uint64_t>(end);
}

// A directory can be opened for reading, and nothing can be read from it.
bool IsDirectory(const std::string& localPath) {
  std::error_code error;
  return std::filesystem::is_directory(localPath, error);
}

// As long as the usual one, and with a random beginning.
std::string RandomBoundary() {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string boundary(usualBoundary);
  std::random_device random;
  for (std::size_t at = 0; boundary[at] == 'x'; ++at) boundary[at] = digits[random() % digits.size()];
  return boundary;
}

bool IsInFile(const std::string& path, const std::string& boundary) {
  const std::unique_ptr<std::FILE, FileCloser> file(du::FileSystem::lxfopen(path.c_str(), "rb"));
  BoundarySearch search(boundary);
  std::vector<char> buffer(copyBufferSize);
  while (file != nullptr && !search.Found()) {
    const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), file.get());
    if (count == 0) break;
    search.Take({buffer.data(), count});
  }
  return search.Found();
}

}  // namespace

// Not "wb": file systems write a truncated file out to the disk as soon as it is closed, so that a crash
// leaves the old one or the new. This file is gone after the request, mostly before it had to be written.
MultipartFile::MultipartFile(const std::string& path)
    : path_(path), file_(du::FileSystem::lxfopen(path.c_str(), "ab")) {
  // A stream's buffer would split each piece of a file in two.
  if (file_ != nullptr) std::setvbuf(file_, nullptr, _IONBF, 0);
}

MultipartFile::~MultipartFile() {
  if (file_ != nullptr) std::fclose(file_);
}

void MultipartFile::BeginField(std::string_view name) {
  AddBoundary();
  AddText("\r\nContent-Disposition: form-data; name=\"");
  AddText(name);
  AddText("\"\r\n\r\n");
}

void MultipartFile::AddText(std::string_view text) {
  if (broken_ || text.empty()) return;
  broken_ = std::fwrite(text.data(), 1, text.size(), file_) != text.size();
  length_ += text.size();
}

void MultipartFile::AddFile(const std::string& localPath, std::string_view partName) {
  const bool isDirectory = IsDirectory(localPath);
  const std::unique_ptr<std::FILE, FileCloser> source(
      isDirectory ? nullptr : du::FileSystem::lxfopen(localPath.c_str(), "rb"));
  if (source == nullptr) return ReportReason({FailureKind::LocalFile});
  AddBoundary();
  AddText("\r\nContent-Type: application/octet-stream\r\nContent-Disposition: form-data; name=\"");
  AddText(partName);
  AddText("\"; filename=\"");
  AddText(BareName(localPath));
  AddText("\"\r\n\r\n");
  CopyFrom(source.get());
}

bool MultipartFile::Finish() {
  AddBoundary();
  AddText("--");
  // A disk across the network tells only here that it was full.
  broken_ = std::fclose(file_) != 0 || broken_;
  file_ = nullptr;
  return !broken_ && (!search_.Found() || ChangeBoundary());
}

void MultipartFile::AddBoundary() {
  AddText("\r\n--");
  boundaries_.push_back(length_);
  AddText(boundary_);
}

void MultipartFile::CopyFrom(std::FILE* source) {
  // Whole pieces pass through one buffer of ours and none of the streams'.
  std::setvbuf(source, nullptr, _IONBF, 0);
  const std::uint64_t length = AnnouncedLength(source);
  if (length > 0 && !broken_) ReserveDiskSpace(file_, length_, length);
  std::uint64_t copied = 0;
  std::vector<char> buffer(copyBufferSize);
  search_.Restart();
  while (!broken_) {
    // Up to the body's next multiple of a piece: the file system keeps such a piece in one, and would else
    // keep each as a dozen smaller ones.
    const std::size_t wanted = buffer.size() - length_ % buffer.size();
    const std::size_t count = std::fread(buffer.data(), 1, wanted, source);
    if (count == 0) break;
    AddText({buffer.data(), count});
    search_.Take({buffer.data(), count});
    copied += count;
  }
  broken_ = broken_ || std::ferror(source) != 0 || copied < length;
}

// In place: a source may be a pipe, which can't be read a second time.
bool MultipartFile::ChangeBoundary() {
  do {
    boundary_ = RandomBoundary();
  } while (IsInFile(path_, boundary_));
  return WriteBoundaries();
}

bool MultipartFile::WriteBoundaries() {
  std::unique_ptr<std::FILE, FileCloser> file(du::FileSystem::lxfopen(path_.c_str(), "r+b"));
  if (file == nullptr) return false;
  bool written = true;
  for (const std::uint64_t position : boundaries_) {
    written = written && std::fseek(file.get(), static_cast<long>(position), SEEK_SET) == 0 &&
              std::fwrite(boundary_.data(), 1, boundary_.size(), file.get()) == boundary_.size();
  }
  return std::fclose(file.release()) == 0 && written;
}

}  // namespace lxservices::cms_interface::vantry
