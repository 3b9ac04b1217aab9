#include "documents/reading/document_download.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <ostream>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/failure_trace.h"
#include "base/step_words.h"
#include "connection/url_split.h"
#include "documents/reading/document_reads.h"
#include "platform/files.h"

namespace lxservices::cms_interface::vantry {
namespace {

/// As much of an answer as a line of a trace is for. A content whose transfer broke off may be large, and is
/// seldom text.
constexpr std::size_t tracedLength = 8 * 1024;

// What a local file holds, for a trace line. The file is read when the line is written, and so not at all
// when nobody listens.
struct TracedContent {
  const std::string& path;
};

// The beginning of the file up to its first zero byte, which is where a traced text ends; nothing when it
// cannot be read.
std::ostream& operator<<(std::ostream& line, const TracedContent& content) {
  // Opening a pipe that nobody writes to would wait for ever, and a device may never end.
  std::error_code error;
  if (!std::filesystem::is_regular_file(content.path, error)) return line;
  std::FILE* file = du::FileSystem::lxfopen(content.path.c_str(), "rb");
  if (file == nullptr) return line;
  std::array<char, tracedLength> text;
  const std::size_t count = std::fread(text.data(), 1, text.size(), file);
  std::fclose(file);
  const std::string_view read(text.data(), count);
  return line << read.substr(0, read.find('\0'));
}

}  // namespace

std::optional<FileInfo> DownloadDocument(ServerContext& server, const CheckoutId& id,
                                         const std::string& localPath, du::http::ProgressFunction progress) {
  const FailureStep step(stepDownloadContent);
  const FailureMark mark;
  const auto [status, record] = ReadDocument(server, id.document);
  if (status != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to locate document %s on server\n", id.text.c_str());
    return std::nullopt;
  }
  if (DownloadPrimaryContent(server, record, localPath, std::move(progress)) != 200) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Error)
        << "Failed to download file " << id.text << " with error: " << TracedContent{localPath};
    return std::nullopt;
  }
  return MakeFileInfo(record, id.text);
}

std::uint16_t DownloadPrimaryContent(ServerContext& server, const DocumentRecord& record,
                                     const std::string& localPath, du::http::ProgressFunction progress) {
  if (record.contentSections.empty() || record.contentSections.front().contentUrl.empty()) return 0;
  const auto [base, path] = SplitContentUrl(record.contentSections.front().contentUrl.front());
  const auto side = server.MakeSideConnection(base);
  if (side == nullptr) return 0;
  return side->DownloadToFile(path.c_str(), "", localPath.c_str(), std::move(progress));
}

}  // namespace lxservices::cms_interface::vantry
