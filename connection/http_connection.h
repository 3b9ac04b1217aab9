#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/http.h"

namespace lxservices::cms_interface::vantry {

/// Called with a server's URL when that server demands authentication; true means try again.
using AuthFunction = std::function<bool(const char* url)>;

/// Where the requests of a connection go.
enum class Reach {
  Server,  ///< to the server of the URL, which the host gave
  Given,   ///< to an address that a server gave; it may hold a ticket
  Nowhere  ///< nowhere: the URL is of a form that names no server, whatever a platform could make of it
};

/// Binds one server URL to one platform connection and one authentication function. Held shared.
///
/// The platform connection is made at construction; one that could not be made is made again before the next
/// request. Once there is one, it is the same for as long as the object lives. Every request runs on the
/// caller's thread; any number of threads may send at once, also from inside the callbacks of a request.
class HttpConnection {
 public:
  /// @param uri    the server URL, kept exactly as given
  /// @param auth   may be empty; then a demand for authentication raises std::bad_function_call
  /// @param reach  Nowhere makes every request end without a connection
  HttpConnection(const std::string& uri, AuthFunction auth, Reach reach = Reach::Server);

  [[nodiscard]] const std::string& uri() const { return uri_; }
  [[nodiscard]] Reach reach() const { return reach_; }
  /// The path of the URL with a "/" at its end; empty for a URL without a path.
  [[nodiscard]] const std::string& basePath() const { return basePath_; }

  /// How the platform is to authenticate one request. Owns a share of all that it uses.
  [[nodiscard]] du::http::CommonAuth MakeCommonAuth() const;

  /// Performs one exchange. Without a platform connection, and with none to be had, the result is
  /// `NoConnection` and the status is left alone.
  /// @param found  receives the cause of a failure, as far as the platform tells; may be null
  [[nodiscard]] du::http::ErrorCode SendRequest(const du::http::Request& request, int* httpStatus,
                                                du::http::FailureReport* found = nullptr);

  /// SendRequest with progress told about the body sent and about the body received. Either function may be
  /// empty; an upload function counts only for a request with a body.
  [[nodiscard]] du::http::ErrorCode SendWithProgress(const du::http::Request& request, int* httpStatus,
                                                     du::http::ProgressFunction uploadProgress,
                                                     du::http::ProgressFunction downloadProgress,
                                                     du::http::FailureReport* found = nullptr);

  /// GETs `basePath()` plus `path` straight into a local file. The body of a refusal lands in the file too.
  /// @param headers   header lines; null counts as none
  /// @param ifMissed  what it means, for the reason of the failure, that the server has no such address
  /// @return the HTTP status; 65535 when the exchange failed
  [[nodiscard]] std::uint16_t DownloadToFile(const char* path, const char* headers, const char* filePath,
                                             du::http::ProgressFunction downloadProgress,
                                             const du::http::FailureReport& ifMissed = {});

  /// DownloadToFile for a document of the server's that goes through a temporary file. One that is longer than
  /// `longest` bytes is a failed exchange and a broken answer; the file then holds no more than these.
  [[nodiscard]] std::uint16_t DownloadDocumentTo(const char* filePath, const char* path,
                                                 std::uint64_t longest,
                                                 const du::http::FailureReport& ifMissed = {});

  /// DownloadToFile for a content of a known length.
  /// @param longest  in bytes
  /// @return as of DownloadToFile; nothing for one that is longer: the exchange then ended as a broken answer, and
  ///         the file holds no more than these bytes
  [[nodiscard]] std::optional<std::uint16_t> DownloadContentTo(const char* filePath, const char* path,
                                                               std::uint64_t longest,
                                                               du::http::ProgressFunction downloadProgress);

 private:
  [[nodiscard]] du::http::Connection* Connect();
  struct DownloadParts {
    const char* path;
    const char* headers;   ///< may be null
    const char* filePath;  ///< where the sink writes
    du::http::FileSink& sink;
    const du::http::FailureReport& ifMissed;
  };
  [[nodiscard]] std::uint16_t Download(const DownloadParts& parts, du::http::ProgressFunction progress);

  const std::string uri_;
  const std::string basePath_;
  const std::shared_ptr<const std::function<bool()>> auth_;  ///< what each request has a share of
  const Reach reach_;
  std::mutex mutex_;  ///< guards the pointer below, not what it leads to
  std::unique_ptr<du::http::Connection> connection_;
};

}  // namespace lxservices::cms_interface::vantry
