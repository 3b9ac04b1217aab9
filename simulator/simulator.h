#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "simulator/options.h"
#include "simulator/routes/service_context.h"
#include "simulator/store/content_store.h"
#include "simulator/store/data_directory.h"
#include "simulator/store/database.h"
#include "simulator/store/server_clock.h"
#include "simulator/store/upload_receiver.h"
#include "simulator/wire/answer_cache.h"
#include "simulator/wire/authenticator.h"
#include "simulator/wire/fault_table.h"
#include "simulator/wire/messages.h"
#include "simulator/wire/request_history.h"
#include "simulator/wire/router.h"
#include "simulator/wire/user_directory.h"

namespace vantry_sim {

/// The server without its HTTP: a data directory and the routes over it.
class Simulator {
 public:
  /// Opens the data directory, or makes and seeds a new one. One that was seeded before keeps all that it
  /// holds, whatever seed the options name. @throws std::exception when the directory cannot be used, for one
  /// because another simulator has it
  explicit Simulator(Options options);
  Simulator(const Simulator&) = delete;
  Simulator& operator=(const Simulator&) = delete;
  ~Simulator();

  [[nodiscard]] const Options& options() const { return options_; }

  /// The address for requests whose Host header is of no use, e.g. "127.0.0.1:8080". Call before Handle.
  void SetOwnAddress(std::string address) { context_->ownAddress = std::move(address); }

  /// The port where lists go on. Call before Handle; without it they go on where they began.
  void SetPagePort(int port) { context_->pagePort = port; }

  /// The port that takes uploads. Call before Handle; without it none are taken.
  void SetUploadPort(int port) { context_->uploadPort = port; }

  /// What goes wrong; counted over all ports together.
  [[nodiscard]] FaultTable& faults() { return faults_; }

  /// The time that the server believes in.
  [[nodiscard]] ServerClock& clock() { return clock_; }
  [[nodiscard]] const ServerClock& clock() const { return clock_; }

  /// Who may come in.
  [[nodiscard]] UserDirectory& users() { return users_; }

  /// What was asked, on all ports together.
  [[nodiscard]] RequestHistory& history() { return history_; }

  /// What it answers.
  [[nodiscard]] std::vector<Router::Listed> Routes() const { return router_.List(); }

  /// Who asks; empty for a refusal.
  [[nodiscard]] std::string UserOf(const Introduction& introduction) const {
    return authenticator_.UserOf(introduction);
  }

  /// Ends the session that a request came with or, on a server without sessions, the nonce. Any thread.
  void ExpireSession(const Request& request);

  /// Runs with the state alone, and answers for what it throws. Any thread.
  Response Exclusively(const std::function<Response(const ServiceContext&)>& answer);

  // To be called by what runs exclusively.

  /// Plays another generation of servers from now on.
  void SetGeneration(Generation generation);
  [[nodiscard]] Snapshots& snapshots() { return data_->snapshots(); }
  [[nodiscard]] Nonces& nonces() { return *nonces_; }
  /// The state was put in the place of another: the users of the start are in it, and the nonce that clients
  /// hold is good.
  void TakeUpState();
  /// Everything as it was at the start: state, generation, faults, users, clock, and no requests remembered.
  /// Sessions and the nonce stay, as clients hold them. @return false where no state was kept for it
  bool Reset();

  /// Answers a request whose headers, `target`, `method`, `user` and `body` are set; the rest is filled here.
  /// A request with an empty user gets the 401. Any thread; one request is handled at a time.
  Response Handle(Request& request);

  /// Starts an upload; its bytes go to the receiver and then to FinishUpload, on the caller's thread. The
  /// request's body is not looked at. Any thread.
  /// @return null with `refusal` filled
  std::unique_ptr<UploadReceiver> BeginUpload(Request& request, Response& refusal);

  /// Makes what was received the server's, whole or not at all, and answers. Any thread.
  Response FinishUpload(UploadReceiver& upload, const Request& request);

 private:
  Response Route(Request& request);
  Response Answer(Request& request);
  Response Guarded(const std::function<Response()>& answer);
  void AddRoutes();

  Options options_;
  const Generation firstGeneration_;
  ServerClock clock_;
  UserDirectory users_;
  Authenticator authenticator_;
  FaultTable faults_;
  RequestHistory history_;
  std::unique_ptr<DataDirectory> data_;
  std::unique_ptr<Nonces> nonces_;
  std::unique_ptr<ServiceContext> context_;
  Router router_;
  AnswerCache answers_;
  std::mutex mutex_;
};

}  // namespace vantry_sim
