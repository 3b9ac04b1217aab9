#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "documents/storing/boundary_search.h"

namespace lxservices::cms_interface::vantry {

/// The boundary of every multipart body, but for one with a file that holds it.
inline constexpr std::string_view usualBoundary = "xxxxxxxxxxxxxxxxxxx-Fenloom-VtDirect-Upload-Boundary";

/// Writes a multipart body into a file, part by part, with no file held in memory. The body begins with a CR
/// LF and ends without one.
///
/// A server ends a part where it finds the boundary, so a file that holds it would be stored up to there and
/// no further. Such a body gets another boundary, which no file in it holds.
///
/// After the first error nothing more is written: a full disk, or a local file that cannot be read to the end
/// it had, leaves a body without its closing line, which no server takes for a whole one. Finish tells of it,
/// and such a body is not to be sent.
class MultipartFile {
 public:
  /// @param path  an empty file, or one that is not there yet
  explicit MultipartFile(const std::string& path);
  ~MultipartFile();
  MultipartFile(const MultipartFile&) = delete;
  MultipartFile& operator=(const MultipartFile&) = delete;

  [[nodiscard]] bool IsOpen() const { return file_ != nullptr; }

  /// Begins a part that is a form field of text; its value follows by AddText.
  void BeginField(std::string_view name);
  void AddText(std::string_view text);
  /// Adds a part that holds a local file's bytes, those included that are appended to it meanwhile. A file
  /// that cannot be opened is left out; a directory is none that can.
  void AddFile(const std::string& localPath, std::string_view partName);
  /// Writes the closing line and closes the file.
  /// @return whether every byte has reached the file
  [[nodiscard]] bool Finish();
  /// The content type of the body, with its boundary. Known after Finish.
  [[nodiscard]] std::string ContentType() const { return "multipart/form-data; boundary=" + boundary_; }

 private:
  void AddBoundary();
  void CopyFrom(std::FILE* source);
  [[nodiscard]] bool ChangeBoundary();
  [[nodiscard]] bool WriteBoundaries();

  const std::string path_;
  std::FILE* file_;
  std::string boundary_{usualBoundary};
  std::vector<std::uint64_t> boundaries_;  ///< where they are in the file
  BoundarySearch search_{usualBoundary};
  std::uint64_t length_ = 0;
  bool broken_ = false;
};

}  // namespace lxservices::cms_interface::vantry
