#include <optional>
#include <utility>

#include "platform/http.h"
#include "platform_default/curl_connection.h"
#include "platform_default/origin.h"
#include "platform_default/request_flow.h"

namespace du::http {

using vtdirect::platform::CurlConnection;

std::unique_ptr<Connection> ConnectURI(const char* uri, const char*, const char*) {
  if (uri == nullptr) return nullptr;
  std::optional<vtdirect::platform::Origin> origin = vtdirect::platform::OriginOf(uri);
  if (!origin) return nullptr;
  return CurlConnection::Make(std::move(*origin));
}

ErrorCode DoRequestWithCommonAuth(Connection& connection, const CommonAuth& auth, const Request& request,
                                  int* httpStatus) {
  auto* curl = dynamic_cast<CurlConnection*>(&connection);
  if (curl == nullptr) return ErrorCode::NoConnection;
  int ignored = 0;
  return vtdirect::platform::RequestFlow(*curl, auth, request)
      .Run(httpStatus == nullptr ? &ignored : httpStatus);
}

}  // namespace du::http
