#include <vtdirect/platform/http_credentials.h>
#include <vtdirect/vt_direct_manager.h>

#include <memory>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/doctor/seen_way.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/http_log/http_log.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/servers/authenticator.h"
#include "hosts/cli/servers/password_prompt.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::optional<PasswordCredentials> Ask(const Arguments& arguments, const std::string& url) {
  const auto origin = OriginOf(url);
  const std::string place = origin ? TextOf(*origin) : url;
  if (!arguments.Has("token")) return PromptForPassword(place, arguments.Text("user"));
  const auto token = PromptForToken(place);
  if (!token) return std::nullopt;
  return PasswordCredentials{tokenUser, *token};
}

// The server is asked with this login and no other.
[[nodiscard]] std::optional<Failure> Try(Host& host, const std::string& url,
                                         const PasswordCredentials& login) {
  VtDirectManager::RegisterAuth(nullptr);
  if (login.user == tokenUser) {
    du::http::SetBearerToken(url, login.password);
  } else {
    du::http::SetPasswordCredentials(url, login.user, login.password);
  }
  const auto log = host.ObserveHttp();
  const std::size_t before = log->Seen().exchanges.size();
  VtDirectManager::StatusCode code = VtDirectManager::StatusOk;
  ForgetReasons();
  const bool supported = VtDirectManager::ServerSupported(url.c_str(), &code, nullptr);
  auto exchanges = log->Seen().exchanges;
  exchanges.erase(exchanges.begin(), exchanges.begin() + static_cast<std::ptrdiff_t>(before));
  if (LoginSeen(exchanges).state == ExaminedStep::State::Failed) {
    return WithReason({ExitCode::AuthenticationRefused, url + " refused the login; nothing was kept"});
  }
  if (!supported) return ServerFailure(host, url, code);
  if (!LoginWasTaken(exchanges)) {
    return Failure{ExitCode::Failure,
                   url + " asked for no login, so whether it takes this one is not known; nothing was kept"};
  }
  return std::nullopt;
}

ExitCode RunLogin(Host& host, const Arguments& arguments) {
  const std::string nickname = arguments.Text("NICK");
  const auto server = host.servers().find(nickname);
  if (server == host.servers().end()) {
    return host.output().Fail(host.NotListed(nickname));
  }
  const std::string& url = server->second;
  if (const auto failure = host.RequireHelper(url)) return host.output().Fail(*failure);
  if (arguments.Has("no-prompt")) {
    return host.output().Fail({ExitCode::Usage, "login asks at the terminal, and --no-prompt forbids it"});
  }
  const auto login = Ask(arguments, url);
  if (!login || login->password.empty()) {
    return host.output().Fail({ExitCode::AuthenticationRefused, "no login was given; nothing was kept"});
  }
  if (const auto failure = Try(host, url, *login)) return host.output().Fail(*failure);
  if (const auto failure = host.StoreCredentials(url, *login)) return host.output().Fail(*failure);
  host.output().JsonOnly({{"server", nickname}, {"user", login->user}});
  host.output().Note(url + " took the login, and the credential helper keeps it");
  return ExitCode::Ok;
}

}  // namespace

CommandRow LoginCommand() {
  return {
      "login",
      "Have the credential helper keep a login",
      "Asks at the terminal for a user name and a password, or with --token for a bearer token, without "
      "showing what is typed. Tries them with the server, and hands them to its credential_helper (see "
      "CREDENTIALS) once the server has taken them. What the server refuses is not kept.\n\n"
      "A token is kept as the password of the user \"bearer-token\"; what the helper gives for that user is "
      "sent as a token again.",
      {{"NICK", "The nickname of a listed server."}},
      {{.name = "token", .help = "Ask for a bearer token in place of a password."},
       {.name = "user", .value = "NAME", .help = "Ask for the password of this user."}},
      Requests::Some,
      RunLogin,
      {{"server", MemberType::Text, nullptr, "the nickname"},
       {"user", MemberType::Text, nullptr, "the user whose login is kept; bearer-token for a token"}}};
}

}  // namespace vtdirect_cli
