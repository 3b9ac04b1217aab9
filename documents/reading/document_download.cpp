#include "documents/reading/document_download.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/checkout_id.h"
#include "base/text.h"
#include "base/tracers.h"
#include "connection/url_split.h"
#include "documents/reading/document_reads.h"
#include "platform/files.h"

namespace lxservices::cms_interface::vantry {
namespace {

// What stands in a local file up to the first zero byte, which is where a traced text ends; empty when it
// cannot be read. A content whose transfer broke off is large and seldom text, and is not to be taken into
// memory whole.
std::string ReadLocalFile(const char* path) {
  // Opening a pipe that nobody writes to would wait for ever, and a device may never end.
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return {};
  std::FILE* file = du::FileSystem::lxfopen(path, "rb");
  if (file == nullptr) return {};
  std::string text;
  std::array<char, 64 * 1024> piece;
  bool ended = false;
  while (!ended) {
    const std::size_t count = std::fread(piece.data(), 1, piece.size(), file);
    const std::size_t zero = std::string_view(piece.data(), count).find('\0');
    ended = count < piece.size() || zero != std::string_view::npos;
    text.append(piece.data(), std::min(count, zero));
  }
  std::fclose(file);
  return text;
}

}  // namespace

bool DownloadDocument(ServerContext& server, const char* id, const char* localPath, FileInfo& info,
                      du::http::ProgressFunction progress) {
  DocumentRecord record;
  if (ReadDocument(server, ParseCheckoutId(id).field0, record) != Ok) {
    VtDirectTracer()(dp::TraceType::Error, "Failed to locate document %s on server\n", TextOrEmpty(id));
    return false;
  }
  if (DownloadPrimaryContent(server, record, localPath, std::move(progress)) != 200) {
    VtDirectTracer()(dp::TraceType::Error, "Failed to download file %s with error: %s", TextOrEmpty(id),
                     ReadLocalFile(TextOrEmpty(localPath)).c_str());
    return false;
  }
  info = MakeFileInfo(record);
  info.id = TextOrEmpty(id);
  return true;
}

std::uint16_t DownloadPrimaryContent(ServerContext& server, const DocumentRecord& record,
                                     const char* localPath, du::http::ProgressFunction progress) {
  if (record.contentSections.empty() || record.contentSections.front().contentUrl.empty()) return 0;
  const auto [base, path] = SplitUrlAtPath(record.contentSections.front().contentUrl.front());
  const auto side = server.MakeSideConnection(base);
  if (side == nullptr) return 0;
  return side->DownloadToFile(path.c_str(), "", localPath, std::move(progress));
}

}  // namespace lxservices::cms_interface::vantry
