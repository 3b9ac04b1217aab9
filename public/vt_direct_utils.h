#pragma once

#include <memory>
#include <string>

#ifndef VTDIRECT_API
#define VTDIRECT_API __attribute__((visibility("default")))
#endif

/// Local copies that clean up after themselves.
namespace VtDirectUtils {

/// Owns what was made on the disk to hold a local copy and removes it when it is destroyed. A failed removal
/// is traced and not reported. Any thread may read it; it is destroyed once, when no thread reads it any
/// more.
class VTDIRECT_API LocalFileHolder {
 public:
  /// A host may build one for a file of its own, so that local and server files are handled alike.
  /// @param localPath        the file to read
  /// @param tempPath         what is removed on destruction; empty means nothing
  /// @param tempIsDirectory  `tempPath` is a directory, removed with what is in it
  LocalFileHolder(const std::string& localPath, const std::string& tempPath, bool tempIsDirectory);
  ~LocalFileHolder();
  LocalFileHolder(const LocalFileHolder&) = delete;
  LocalFileHolder& operator=(const LocalFileHolder&) = delete;

  /// The local file that the host is to read.
  std::string GetLocalPath();
  /// Whether something is removed when this holder goes.
  bool IsTemporary();

 private:
  std::string localPath_;
  std::string tempPath_;
  bool tempIsDirectory_;
};

/// Downloads an object into a temporary directory of its own, on this thread. Makes requests. May be called
/// from any thread at any time, as the functions of VtDirectManager may.
/// @return null on failure
VTDIRECT_API std::unique_ptr<LocalFileHolder> GetLocalFile(const char* path);

}  // namespace VtDirectUtils
