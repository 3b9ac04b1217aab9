#include "documents/multipart_file.h"

#include <cstddef>
#include <memory>
#include <vector>

#include "base/local_path.h"
#include "connection/platform/files.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr std::string_view boundary = "xxxxxxxxxxxxxxxxxxx-Fenloom-VtDirect-Upload-Boundary";
constexpr std::size_t copyBufferSize = 1024 * 1024;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

MultipartFile::MultipartFile(const std::string& path) : file_(du::FileSystem::lxfopen(path.c_str(), "wb")) {}

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
}

void MultipartFile::AddFile(const char* localPath, std::string_view partName) {
  const std::unique_ptr<std::FILE, FileCloser> source(du::FileSystem::lxfopen(localPath, "rb"));
  if (source == nullptr) return;
  AddBoundary();
  AddText("\r\nContent-Type: application/octet-stream\r\nContent-Disposition: form-data; name=\"");
  AddText(partName);
  AddText("\"; filename=\"");
  AddText(BareName(localPath));
  AddText("\"\r\n\r\n");
  CopyFrom(source.get());
}

void MultipartFile::Finish() {
  AddBoundary();
  AddText("--");
  std::fclose(file_);
  file_ = nullptr;
}

void MultipartFile::AddBoundary() {
  AddText("\r\n--");
  AddText(boundary);
}

void MultipartFile::CopyFrom(std::FILE* source) {
  // Whole pieces pass through one buffer of ours and none of the streams'.
  std::setvbuf(source, nullptr, _IONBF, 0);
  std::vector<char> buffer(copyBufferSize);
  while (!broken_) {
    const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), source);
    if (count == 0) return;
    AddText({buffer.data(), count});
  }
}

}  // namespace lxservices::cms_interface::vantry
