#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/servers/login_advice.h"
#include "hosts/cli/servers/netrc.h"
#include "hosts/cli/servers/origin.h"
#include "hosts/cli/servers/password_prompt.h"

namespace vtdirect_cli {

/// The user under which a credential helper keeps a bearer token: helpers know users and passwords.
inline constexpr const char* tokenUser = "bearer-token";

/// What a credential helper has answered.
struct HelperAnswer {
  std::optional<PasswordCredentials> credentials;
  bool quit = false;  ///< no other source is to be tried
};

/// The credential helper of an origin. Any of them may be empty.
struct HelperCalls {
  std::function<HelperAnswer(const Origin& origin, const std::string& user)> get;
  std::function<void(const Origin& origin, const PasswordCredentials& accepted)> store;
  std::function<void(const Origin& origin, const PasswordCredentials& refused)> erase;
};

/// Where credentials come from, in the order in which they are tried.
struct CredentialSources {
  std::string token;     ///< bearer token; empty for none
  std::string user;      ///< empty for none
  std::string password;  ///< counts only together with `user`
  HelperCalls helper;
  /// Reads the netrc file; called at the first need. May be empty.
  std::function<std::vector<NetrcEntry>()> netrc;
  /// Asks the user; nothing when that is not possible. May be empty.
  std::function<std::optional<PasswordCredentials>(const std::string& origin, const std::string& user)>
      prompt;
  /// What an advice about the login at an origin depends on. May be empty.
  std::function<LoginFacts(const Origin& origin)> facts;
};

/// Where they go.
struct CredentialSinks {
  std::function<void(const std::string& url, const std::string& user, const std::string& password)>
      setPassword;
  std::function<void(const std::string& url, const std::string& token)> setToken;
};

/// Answers a server's demands for authentication: the token, else user and password of the environment, the
/// credential helper, the netrc file, the user at the terminal up to three times. Each source is tried once
/// for each origin, so that what a server has refused isn't sent to it over and over.
///
/// Credentials go only to servers that the user has named. What a server says about itself (the address that
/// it calls its own, the address of a content) can point anywhere, and gets nothing; with one exception: from
/// "http" to "https" on the same host, both at their usual ports.
///
/// The token and the user and password of the environment name no server. They are meant for the ones that the
/// command works with, so no other one gets them, even when it is listed: a server could name it as the place of
/// a content. The other sources are asked for an origin and may give what is meant for that.
class Authenticator {
 public:
  /// @param named  URLs of the servers that the user has named
  /// @param meant  of those that the token and the password of the environment are for
  Authenticator(CredentialSources sources, CredentialSinks sinks, const std::vector<std::string>& named,
                const std::vector<std::string>& meant);

  /// Sets further credentials for the origin of the URL. False when there are none, which ends the tries.
  [[nodiscard]] bool Answer(const std::string& url);

  /// The server has taken what it was given: the helper is told to keep what it gave, or what was typed.
  void TellAccepted();

  /// Whether a demand has gone without an answer.
  [[nodiscard]] bool refused() const { return !refusal_.empty(); }
  /// What to tell the user about it, and what to do next.
  [[nodiscard]] const std::string& refusal() const { return refusal_; }
  [[nodiscard]] const std::string& advice() const { return advice_; }
  /// Starts anew with `refused`. What was tried stays tried.
  void ForgetRefusal() { refusal_.clear(); }

 private:
  enum class Step { Token, Environment, Helper, Netrc, Prompt, Done };
  struct Progress {
    Origin origin;
    Step next = Step::Token;
    int prompts = 0;
    bool offered = false;  // something has been sent
    // What was sent last, if it was the helper's or typed.
    std::optional<PasswordCredentials> last = std::nullopt;
    bool lastIsHelpers = false;
  };

  [[nodiscard]] Progress& ProgressOf(const Origin& origin);
  void Refuse(const Progress& progress);
  [[nodiscard]] LoginFacts FactsOf(const Origin& origin) const;
  [[nodiscard]] bool Take(Progress& progress, const std::string& url);
  [[nodiscard]] bool OfferToken(const Progress& progress, const std::string& url);
  [[nodiscard]] bool OfferEnvironment(const Progress& progress, const std::string& url);
  [[nodiscard]] bool OfferHelpers(Progress& progress, const std::string& url);
  void TellRefused(Progress& progress);
  [[nodiscard]] bool OfferNetrc(const std::string& url, const std::string& host);
  [[nodiscard]] bool OfferPrompt(Progress& progress, const std::string& url);

  CredentialSources sources_;
  CredentialSinks sinks_;
  std::vector<Origin> named_;
  std::vector<Origin> meant_;
  std::vector<Progress> progress_;
  std::optional<std::vector<NetrcEntry>> netrcEntries_;
  std::string refusal_;
  std::string advice_;
};

}  // namespace vtdirect_cli
