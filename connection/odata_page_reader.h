#pragma once

#include <rapidjson/document.h>

#include <memory>
#include <string>

#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// Reads an OData answer page by page, for answers small enough to hold one page as a document.
///
/// Callers construct it with the path and loop while Next gives true; a failed page is an empty document,
/// which ends their loop. Paging ends by a missing next link or by a failure; nothing else limits the number
/// of pages, so a server whose next link leads to the same page again is read until the host or the transport
/// ends it.
class ODataPageReader {
 public:
  /// Sends nothing.
  ODataPageReader(const ServerContext& server, std::string path);

  /// Fetches the next page by one GET on this thread; a next link goes over a connection of its own.
  /// @return false after the last page
  [[nodiscard]] bool Next();

  /// The page that Next fetched; null after a failure.
  [[nodiscard]] const rapidjson::Document& page() const { return page_; }

  /// Whether the page that Next fetched last failed.
  [[nodiscard]] bool failed() const { return failed_; }

  /// The HTTP status of the page that Next fetched last; -1 when no exchange took place.
  [[nodiscard]] int status() const { return status_; }

 private:
  [[nodiscard]] bool FetchPage(const std::shared_ptr<HttpConnection>& connection, const std::string& path);

  std::shared_ptr<VtConnection> connection_;
  std::string path_;
  std::string nextLink_;
  rapidjson::Document page_;
  bool failed_ = false;
  int status_ = -1;
};

}  // namespace lxservices::cms_interface::vantry
