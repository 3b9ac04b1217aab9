#include <memory>
#include <optional>
#include <utility>

#include "platform/http.h"
#include "platform_default/origin.h"
#include "platform_default/origin_registry.h"
#include "platform_default/request_flow.h"

namespace vtdirect::platform {
namespace {

/// An origin and what the process has of it; no socket of its own.
class TransportConnection final : public du::http::Connection {
 public:
  explicit TransportConnection(std::shared_ptr<OriginState> state) : state_(std::move(state)) {}
  [[nodiscard]] const std::shared_ptr<OriginState>& state() const { return state_; }

 private:
  std::shared_ptr<OriginState> state_;
};

/// The requests that this thread is inside of: more than one when a callback makes another.
class CallDepth {
 public:
  CallDepth() { ++depth_; }
  ~CallDepth() { --depth_; }
  CallDepth(const CallDepth&) = delete;
  CallDepth& operator=(const CallDepth&) = delete;
  [[nodiscard]] static bool IsOutermost() { return depth_ == 1; }

 private:
  static thread_local int depth_;
};

thread_local int CallDepth::depth_ = 0;

}  // namespace
}  // namespace vtdirect::platform

namespace du::http {

using vtdirect::platform::CallDepth;
using vtdirect::platform::OriginRegistry;
using vtdirect::platform::TransportConnection;

std::unique_ptr<Connection> ConnectURI(const char* uri, const char*, const char*) {
  if (uri == nullptr) return nullptr;
  const std::optional<vtdirect::platform::Origin> origin = vtdirect::platform::OriginOf(uri);
  if (!origin) return nullptr;
  return std::make_unique<TransportConnection>(OriginRegistry::Instance().StateOf(*origin));
}

ErrorCode DoRequestWithCommonAuth(Connection& connection, const CommonAuth& auth, const Request& request,
                                  int* httpStatus) {
  auto* known = dynamic_cast<TransportConnection*>(&connection);
  if (known == nullptr) return ErrorCode::NoConnection;
  const CallDepth depth;
  OriginRegistry::Instance().CloseExpired();
  int ignored = 0;
  vtdirect::platform::RequestFlow flow(known->state(), auth, request, CallDepth::IsOutermost());
  return flow.Run(httpStatus == nullptr ? &ignored : httpStatus);
}

}  // namespace du::http
