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

// Where a content lies.
struct ContentPlace {
  std::shared_ptr<HttpConnection> server;  ///< null when there is nothing to fetch
  std::string path;
};

ContentPlace PlaceOf(ServerContext& server, const DocumentRecord& record) {
  if (record.contentSections.empty() || record.contentSections.front().contentUrl.empty()) return {};
  auto [base, path] = SplitContentUrl(record.contentSections.front().contentUrl.front());
  return {server.MakeSideConnection(base), std::move(path)};
}

// The HTTP status as of DownloadPrimaryContent; nothing for a content that is longer than it may be. That one
// ends at once, since it could fill the disk.
std::optional<std::uint16_t> DownloadUpTo(std::optional<std::uint64_t> longest, ServerContext& server,
                                          const DocumentRecord& record, const std::string& localPath,
                                          du::http::ProgressFunction progress) {
  if (!longest) return DownloadPrimaryContent(server, record, localPath, std::move(progress));
  const auto [side, path] = PlaceOf(server, record);
  if (side == nullptr) return 0;
  return side->DownloadContentTo(localPath.c_str(), path.c_str(), *longest, std::move(progress));
}

// Nothing of a pipe or a device, whose length nobody can tell.
std::optional<std::uint64_t> LengthOf(const std::string& localPath) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(localPath, error)) return std::nullopt;
  const std::uintmax_t length = std::filesystem::file_size(localPath, error);
  if (error) return std::nullopt;
  return length;
}

// @param length  in bytes: "5", "more than 6"
std::nullopt_t RefuseLength(const std::string& length, std::uint64_t expected, const std::string& localPath) {
  const du::http::FailureReport found{
      du::http::FailureDetail::ContentOfOtherLength,
      "The server's record says " + std::to_string(expected) + " bytes, and its content has " + length};
  TracerFor({FailureKind::AnswerBroken, false, found})(dp::TraceType::Error)
      << "Downloaded " << length << " bytes of a document of " << expected << " bytes to " << localPath
      << "\n";
  return std::nullopt;
}

}  // namespace

std::optional<FileInfo> DownloadDocument(ServerContext& server, const CheckoutId& id,
                                         const std::string& localPath, du::http::ProgressFunction progress,
                                         bool compareSize) {
  const FailureStep step(stepDownloadContent);
  const FailureMark mark;
  const auto [status, record] = ReadDocument(server, id.document);
  if (status != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to locate document %s on server\n", id.text.c_str());
    return std::nullopt;
  }
  FileInfo info = MakeFileInfo(record, id.text);
  const auto expected = compareSize ? info.downloadSize : std::nullopt;
  const auto answer = DownloadUpTo(expected, server, record, localPath, std::move(progress));
  if (!answer) return RefuseLength("more than " + std::to_string(*expected), *expected, localPath);
  if (*answer != 200) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Error)
        << "Failed to download file " << id.text << " with error: " << TracedContent{localPath};
    return std::nullopt;
  }
  const auto length = expected ? LengthOf(localPath) : std::nullopt;
  if (length && *length != *expected) return RefuseLength(std::to_string(*length), *expected, localPath);
  return info;
}

std::uint16_t DownloadPrimaryContent(ServerContext& server, const DocumentRecord& record,
                                     const std::string& localPath, du::http::ProgressFunction progress) {
  const auto [side, path] = PlaceOf(server, record);
  if (side == nullptr) return 0;
  return side->DownloadToFile(path.c_str(), "", localPath.c_str(), std::move(progress));
}

}  // namespace lxservices::cms_interface::vantry
