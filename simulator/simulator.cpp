#include "simulator/simulator.h"

#include <cstdio>
#include <utility>

#include "simulator/pages/page_routes.h"
#include "simulator/routes/routes.h"
#include "simulator/seed/seeds.h"
#include "simulator/store/uploads.h"

namespace vantry_sim {
namespace {

/// A target in absolute form, which a client sends to a proxy and every server accepts, becomes one with a
/// path in front.
std::string_view OriginForm(std::string_view target) {
  const std::size_t host = target.starts_with("http://") ? 7 : target.starts_with("https://") ? 8 : 0;
  if (host == 0) return target;
  const auto slash = target.find('/', host);
  return slash == std::string_view::npos ? std::string_view("/") : target.substr(slash);
}

}  // namespace

Simulator::Simulator(Options options)
    : options_(std::move(options)),
      firstGeneration_(options_.generation),
      users_(options_.users, options_.tokens),
      authenticator_(users_, options_.digest),
      faults_(options_.faults),
      data_(std::make_unique<DataDirectory>(options_)) {
  data_->database().SetClock(clock_);
  nonces_ = std::make_unique<Nonces>(data_->database(), clock_, options_.sessionSeconds);
  context_ = std::make_unique<ServiceContext>(
      ServiceContext{options_, data_->database(), data_->contents(), options_.bindAddress, *nonces_});
  AddRoutes();
}

void Simulator::AddRoutes() {
  AddIdentificationRoutes(router_, *context_);
  AddMetadataRoutes(router_, *context_);
  AddCsrfRoutes(router_, *context_);
  AddContextRoutes(router_, *context_);
  AddDocumentRoutes(router_, *context_);
  AddObjectRoutes(router_, *context_);
  AddGatewayRoutes(router_, *context_);
  AddFolderRoutes(router_, *context_);
  AddDataAdminRoutes(router_, *context_);
  AddSearchRoutes(router_, *context_);
  AddTranslationRoutes(router_, *context_);
  AddXliffPreferenceRoutes(router_, *context_);
  AddWorkspaceRoutes(router_, *context_);
  AddWorkspaceWriteRoutes(router_, *context_);
  AddCheckoutRoutes(router_, *context_);
  AddDocumentWriteRoutes(router_, *context_);
  AddCreationFactoryRoutes(router_, *context_);
  AddApplicationVersionRoutes(router_, *context_);
  AddContentRoutes(router_, *context_);
  AddFeatureRoutes(router_, *context_);
  AddPageRoutes(router_, *context_);
}

Simulator::~Simulator() = default;

Response Simulator::Exclusively(const std::function<Response(const ServiceContext&)>& answer) {
  return Guarded([&] { return answer(*context_); });
}

void Simulator::SetGeneration(Generation generation) {
  options_.generation = generation;
  answers_.Clear();
  router_ = Router();
  AddRoutes();
}

void Simulator::TakeUpState() {
  EnsureUsers(data_->database(), options_.users);
  nonces_->WriteBack();
}

bool Simulator::Reset() {
  if (!snapshots().RestoreSeed(data_->database())) return false;
  if (options_.generation != firstGeneration_) SetGeneration(firstGeneration_);
  faults_.Reset(options_.faults);
  users_.Reset();
  clock_.Reset();
  history_.Clear();
  TakeUpState();
  return true;
}

void Simulator::ExpireSession(const Request& request) {
  const std::lock_guard lock(mutex_);
  nonces_->Expire(request);
}

Response Simulator::Handle(Request& request) {
  if (request.user.empty()) return authenticator_.Challenge(request.authorization);
  return Guarded([&] {
    const auto cookie = nonces_->Enter(request, options_.prefix, SpeaksTls(options_));
    Response response = Answer(request);
    if (cookie) response.headers.emplace_back("Set-Cookie", *cookie);
    return response;
  });
}

/// Runs one handler at a time, and answers for what it throws.
Response Simulator::Guarded(const std::function<Response()>& answer) {
  try {
    const std::lock_guard lock(mutex_);
    return answer();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vantry-sim: %s\n", error.what());
    return ErrorResponse(500, "internal", "the server failed; its error output says why");
  }
}

std::unique_ptr<UploadReceiver> Simulator::BeginUpload(Request& request, Response& refusal) {
  std::unique_ptr<UploadReceiver> upload;
  refusal = request.user.empty() ? authenticator_.Challenge(request.authorization) : Guarded([&] {
    request.path = SplitTarget(OriginForm(request.target)).path;
    Response response;
    upload = ReceiverFor(*context_, request, response);
    return response;
  });
  return upload;
}

Response Simulator::FinishUpload(UploadReceiver& upload, const Request& request) {
  if (auto refusal = upload.Finish()) return std::move(*refusal);
  return Guarded([&] { return StoreUpload(*context_, upload, request); });
}

/// A read that nothing was written since has the answer that it had.
Response Simulator::Answer(Request& request) {
  if (request.method != "GET") return Route(request);
  if (auto kept = answers_.Find(request, data_->database().Version())) return std::move(*kept);
  Response response = Route(request);
  answers_.Keep(request, response);
  return response;
}

Response Simulator::Route(Request& request) {
  const TargetParts parts = SplitTarget(OriginForm(request.target));
  auto query = ParseQuery(parts.query);
  if (!query)
    return ErrorResponse(400, "bad-escape", "a % in the query has no two hexadecimal digits after it");
  request.query = std::move(*query);

  std::string_view path = parts.path;
  if (!path.starts_with('/')) return ErrorResponse(400, "bad-target", "the request target is no path");
  const std::string& prefix = options_.prefix;
  if (!path.starts_with(prefix) || (path.size() > prefix.size() && path[prefix.size()] != '/')) {
    return ErrorResponse(404, "no-such-route", "this server has nothing outside its prefix");
  }
  request.path = path.substr(prefix.size());
  return router_.Dispatch(request, request.path);
}

}  // namespace vantry_sim
