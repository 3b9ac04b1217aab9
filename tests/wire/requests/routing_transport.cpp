#include "tests/wire/requests/routing_transport.h"

#include <memory>
#include <utility>

#include "platform/http.h"

namespace vtdirect_test {
namespace {

RoutingTransport* current = nullptr;

std::string NameOf(du::http::Method method) {
  switch (method) {
    case du::http::Method::Get:
      return "GET ";
    case du::http::Method::Patch:
      return "PATCH ";
    default:
      return "POST ";
  }
}

class RoutedConnection final : public du::http::Connection {};

}  // namespace

RoutingTransport::RoutingTransport(Router router) : router_(std::move(router)) {
  current = this;
}

RoutingTransport::~RoutingTransport() {
  current = nullptr;
}

RoutedAnswer RoutingTransport::Exchange(const std::string& line) {
  lines_.push_back(line);
  return router_(line);
}

}  // namespace vtdirect_test

namespace du::http {

std::unique_ptr<Connection> ConnectURI(const char*, const char*, const char*) {
  return std::make_unique<vtdirect_test::RoutedConnection>();
}

ErrorCode DoRequestWithCommonAuth(Connection&, const CommonAuth&, const Request& request, int* httpStatus) {
  if (vtdirect_test::current == nullptr) return ErrorCode::NoConnection;
  const auto answer = vtdirect_test::current->Exchange(vtdirect_test::NameOf(request.method) + request.uri);
  *httpStatus = answer.status;
  if (request.sink == nullptr) return ErrorCode::Done;
  const auto* data = reinterpret_cast<const std::uint8_t*>(answer.body.data());
  ErrorCode error = request.sink->Begin(answer.status, answer.body.size());
  if (error == ErrorCode::Done) error = request.sink->Write(data, answer.body.size());
  return error == ErrorCode::Done ? request.sink->Finish() : error;
}

}  // namespace du::http
