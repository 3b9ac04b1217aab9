#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/files/work_directory.h"
#include "hosts/cli/http_log/http_log.h"
#include "hosts/cli/servers/authenticator.h"
#include "hosts/cli/servers/credential_helper.h"
#include "hosts/cli/servers/patience.h"
#include "hosts/cli/servers/server_list.h"
#include "hosts/cli/texts/output.h"

namespace vtdirect_cli {

/// What a command works with: where it speaks to, the servers, how a demand for authentication went.
class Host {
 public:
  explicit Host(Output& output) : output_(output), whole_(*this) {}
  /// For one of several tasks of a command, which may run at the same time: says what it says to another
  /// output, and has all the rest from the host of the command, which has to outlive it.
  Host(Host& whole, Output& output) : output_(output), whole_(whole) {}
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  /// Reads the configuration, and sets the library up for one command.
  [[nodiscard]] std::optional<Failure> SetUp(const CommandRow& command, const Arguments& arguments);

  /// Sets the way to these servers, and the identity that they are shown, as their entries and the command line
  /// say; the token and the password of the environment are meant for them. What was set before for the
  /// process is replaced.
  [[nodiscard]] std::optional<Failure> WorkWith(const std::vector<std::string>& urls,
                                                const Arguments& arguments);

  /// What is to be told of each exchange of the process: it notes how long a server asks to be left alone, and
  /// whether one is silent.
  [[nodiscard]] du::http::ExchangeObserver ExchangeWatch() const;

  /// The log of the exchanges from the first call of this on.
  [[nodiscard]] std::shared_ptr<const HttpLog> ObserveHttp();

  /// Lets the server at this URL have the user's credentials too: the user has named it by other means than
  /// the list of servers. To be called before the first request.
  void NameServer(const std::string& url) {
    namedUrls_.push_back(url);
    usedUrls_.push_back(url);
  }

  /// To be called when the command has done what it was asked: a server has then taken the credentials that
  /// it was given, and the credential helper is told.
  void TellCredentialsAccepted();

  [[nodiscard]] Output& output() { return output_; }
  [[nodiscard]] const ServerMap& servers() const { return whole_.configuration_.servers; }
  [[nodiscard]] const Configuration& configuration() const { return whole_.configuration_; }
  /// The failure of a nickname that is not listed.
  [[nodiscard]] Failure NotListed(const std::string& nickname) const;
  /// A failure if the server has no credential helper.
  [[nodiscard]] std::optional<Failure> RequireHelper(const std::string& url) const;
  /// Has the credential helper of the server keep what was accepted.
  /// @return a failure if the server has no helper, or that can't be run
  [[nodiscard]] std::optional<Failure> StoreCredentials(const std::string& url,
                                                        const PasswordCredentials& accepted) const;
  /// URLs of the servers that the operands of a command name, or its option --on.
  [[nodiscard]] std::vector<std::string> ServersOf(const CommandRow& command,
                                                   const Arguments& arguments) const;
  /// How long this command waits for a silent server.
  [[nodiscard]] const std::shared_ptr<Patience>& patience() const { return whole_.patience_; }
  /// The directory for temporary files; only for a command that makes requests.
  [[nodiscard]] const std::string& workDirectory() const { return whole_.workDirectory_->path(); }

  /// Whether a demand for authentication went without an answer, and what to tell the user.
  [[nodiscard]] bool authenticationRefused() const;
  [[nodiscard]] std::string authenticationRefusal() const;
  /// Forgets the refusal of one server before the next one is asked.
  void ForgetAuthenticationRefusal();

  /// Answers a demand for authentication; called by the library's callback, on any thread.
  [[nodiscard]] bool Authenticate(const std::string& url);

 private:
  [[nodiscard]] std::optional<Failure> LoadServers(const Arguments& arguments);
  [[nodiscard]] std::optional<Failure> LimitCommand(const CommandRow& command, const Arguments& arguments);
  [[nodiscard]] std::vector<std::string> MeantUrls() const;
  [[nodiscard]] std::optional<std::string> AskPassphrase(const std::string& url, const std::string& keyFile,
                                                         bool mayAskUser);
  [[nodiscard]] std::optional<CredentialHelper> HelperOf(const Origin& origin) const;
  [[nodiscard]] HelperFields AnswerOf(const CredentialHelper& helper, const HelperFields& about);
  [[nodiscard]] HelperAnswer AskHelper(const Origin& origin, const std::string& user);
  [[nodiscard]] std::optional<Failure> SetTransport(const Arguments& arguments);
  [[nodiscard]] std::optional<Failure> SetCredentials(const Arguments& arguments);
  void SetHelper();
  [[nodiscard]] std::optional<Failure> MakeWorkDirectory();
  [[nodiscard]] std::vector<NetrcEntry> LoadNetrc(const std::string& path);

  Output& output_;
  Host& whole_;  ///< itself, but in a task
  Configuration configuration_;
  std::vector<std::string> namedUrls_;
  std::vector<std::string> usedUrls_;  ///< of these, the ones that the operands of the command name
  CredentialSources sources_;
  mutable std::mutex authenticating_;
  std::unique_ptr<Authenticator> authenticator_;
  const std::shared_ptr<Patience> patience_ = std::make_shared<Patience>();
  std::shared_ptr<const HttpLog> httpLog_;
  std::unique_ptr<WorkDirectory> workDirectory_;
};

}  // namespace vtdirect_cli
