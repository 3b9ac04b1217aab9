#include "connection/odata_page_reader.h"

#include <utility>

#include "base/failure_step.h"
#include "connection/json_members.h"
#include "connection/rest_stream.h"
#include "connection/url_split.h"

namespace lxservices::cms_interface::vantry {

ODataPageReader::ODataPageReader(const ServerContext& server, std::string path)
    : connection_(server.connection()), path_(std::move(path)) {}

bool ODataPageReader::Next() {
  const FailureMark mark;
  page_ = rapidjson::Document();
  if (path_.empty() && nextLink_.empty()) return false;
  std::shared_ptr<HttpConnection> http = connection_->http();
  std::string path = std::move(path_);
  if (!nextLink_.empty()) {
    auto [base, rest] = SplitUrlAtPath(nextLink_);
    http = connection_->MakeSideConnection(base);
    path = std::move(rest);
  }
  path_.clear();
  nextLink_.clear();
  status_ = -1;
  // A next link that leads nowhere.
  if (http == nullptr) ReportReason(FollowsOr(mark, FailureKind::AnswerBroken));
  failed_ = http == nullptr || !FetchPage(http, path);
  if (failed_) return true;
  if (const auto* link = FindString(page_, "@odata.nextLink")) nextLink_ = TextView(*link);
  return true;
}

bool ODataPageReader::FetchPage(const std::shared_ptr<HttpConnection>& connection, const std::string& path) {
  RestStream response(MakeGetRequest(connection, path.c_str(), VtConnection::ODataHeaders()), {});
  status_ = response.status();
  if (!response.succeeded() || !ParseJsonResponse(response, page_)) return false;
  if (!page_.IsObject()) response.ReportBroken();
  return true;
}

}  // namespace lxservices::cms_interface::vantry
