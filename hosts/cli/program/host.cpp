#include "hosts/cli/program/host.h"

#include <vtdirect/platform/http_credentials.h>
#include <vtdirect/platform/http_settings.h>
#include <vtdirect/vt_direct_manager.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "hosts/cli/browsing/folders_ahead.h"
#include "hosts/cli/files/local_text_file.h"
#include "hosts/cli/files/temporary_files.h"
#include "hosts/cli/http_log/asked_pause.h"
#include "hosts/cli/program/environment.h"
#include "hosts/cli/servers/configuration_file.h"
#include "hosts/cli/servers/server_access.h"
#include "hosts/cli/servers/server_environment.h"
#include "hosts/cli/texts/near_word.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/work_folder/work_folder.h"

namespace vtdirect_cli {
namespace {

// Enough for every source of credentials and three questions at the terminal, so that it is the host that
// ends the tries and knows it.
constexpr int mostAuthenticationTries = 8;
// Long enough to unlock a keyring.
constexpr long helperSeconds = 60;

// The library's authentication callback is a plain function without an argument of ours.
Host* theHost = nullptr;

bool AnswerDemand(const char* url) {
  return !IsAheadOfWalk() && theHost != nullptr && theHost->Authenticate(url == nullptr ? "" : url);
}

// @param otherwise  the seconds if the option was not given
[[nodiscard]] Result<long> ReadSecondsOption(const Arguments& arguments, ArgumentName option,
                                             long otherwise) {
  if (!arguments.Has(option)) return otherwise;
  if (const auto read = ReadSeconds(arguments.Text(option))) return *read;
  return Failure{ExitCode::Usage, "--" + std::string(option.text()) +
                                      " takes a number of seconds from 1 to " +
                                      std::to_string(longestSeconds)};
}

// The server that an address leads to, or a name in a work folder; empty for any other text.
[[nodiscard]] std::string ServerOfAddress(const std::string& text) {
  return VtDirectManager::GetServerURL(AddressOfWorkName(text).c_str());
}

// The server of a nickname or a URL; empty for any other text.
[[nodiscard]] std::string ServerNamed(const ServerMap& servers, const std::string& text) {
  const auto listed = servers.find(text);
  if (listed != servers.end()) return listed->second;
  return OriginOf(text) ? text : std::string();
}

// A file of this machine is no server, whatever it is called and wherever it lies.
[[nodiscard]] std::string ServerOfOperand(const ServerMap& servers, ArgumentName operand,
                                          const std::string& text) {
  if (operand == ArgumentName("ADDRESS") || operand == ArgumentName("PATH")) return ServerOfAddress(text);
  if (operand == ArgumentName("NICK") || operand == ArgumentName("URL")) return ServerNamed(servers, text);
  return {};
}

// As git's helpers are told of a server.
[[nodiscard]] HelperFields FieldsOf(const Origin& origin) {
  const std::string text = TextOf(origin);
  return {{"protocol", origin.scheme}, {"host", text.substr(text.find("://") + 3)}};
}

[[nodiscard]] HelperFields FieldsOf(const Origin& origin, const PasswordCredentials& credentials) {
  HelperFields fields = FieldsOf(origin);
  fields.emplace_back("username", credentials.user);
  fields.emplace_back("password", credentials.password);
  return fields;
}

[[nodiscard]] std::string NetrcFault(const std::string& path, int error) {
  if (error != EPERM) return "cannot read " + path + ": " + std::strerror(error);
  return path +
         " is not used: it holds passwords, and others than its owner may read or write it "
         "(chmod 600 mends that)";
}

}  // namespace

Host::~Host() {
  if (&whole_ != this) return;
  VtDirectManager::RegisterAuth(nullptr);
  theHost = nullptr;
}

std::optional<Failure> Host::SetUp(const CommandRow& command, const Arguments& arguments) {
  if (auto failure = LoadServers(arguments)) return failure;
  if (auto failure = SetTransport(arguments)) return failure;
  if (auto failure = SetCredentials(arguments)) return failure;
  if (command.requests == Requests::Some) {
    if (auto failure = MakeWorkDirectory()) return failure;
  }
  theHost = this;
  if (arguments.Has("cad")) VtDirectManager::SetAppConfig(VtDirectManager::ConfigBrowseCadDocuments, "on");
  VtDirectManager::RegisterAuth(AnswerDemand);
  VtDirectManager::UpdateServerList(configuration_.servers);
  if (auto failure = WorkWith(ServersOf(command, arguments), arguments)) return failure;
  return LimitCommand(command, arguments);
}

std::optional<Failure> Host::LoadServers(const Arguments& arguments) {
  // A vtdirect that a helper or an editor starts works with the same servers.
  if (arguments.Has("config")) setenv("VTDIRECT_CONFIG", arguments.Text("config").c_str(), 1);
  const bool named = arguments.Has("config") || !Environment("VTDIRECT_CONFIG").empty();
  const std::string path = arguments.Has("config") ? arguments.Text("config") : ConfigurationFile();
  if (!path.empty() || named) {
    auto read = LoadConfiguration(path, named);
    if (!read) return read.failure();
    configuration_ = std::move(*read);
  }
  auto withEnvironment = WithServersOfEnvironment(std::move(configuration_), ServerVariables());
  if (!withEnvironment) return withEnvironment.failure();
  configuration_ = std::move(*withEnvironment);
  for (const std::string& argument : arguments.All("server")) {
    auto extended = WithServerArgument(argument, configuration_);
    if (!extended) return extended.failure();
    configuration_ = std::move(*extended);
  }
  for (const auto& [nickname, url] : configuration_.servers) namedUrls_.push_back(url);
  return ConfigurationFault(configuration_);
}

std::vector<std::string> Host::ServersOf(const CommandRow& command, const Arguments& arguments) const {
  std::vector<std::string> urls;
  const auto add = [&urls](const std::string& url) {
    if (!url.empty()) urls.push_back(url);
  };
  for (const OperandRow& operand : command.operands) {
    for (const std::string& text : arguments.All(operand.name)) {
      add(ServerOfOperand(servers(), operand.name, text));
    }
  }
  for (const std::string& text : arguments.All("on")) add(ServerNamed(servers(), text));
  if (command.worksInFolder) add(VtDirectManager::GetServerURL(AddressOfWorkFolderHere().c_str()));
  return urls;
}

// A command that names no server works with all of them.
std::vector<std::string> Host::MeantUrls() const {
  if (usedUrls_.empty()) return namedUrls_;
  std::vector<std::string> meant = usedUrls_;
  for (const std::string& url : usedUrls_) {
    for (const std::string& other : ServersWithLoginOf(configuration_, url)) meant.push_back(other);
  }
  return meant;
}

du::http::ExchangeObserver Host::ExchangeWatch() const {
  // An exchange that is under way reports later than the end of this object.
  return [patience = patience()](const du::http::ObservedExchange& exchange) {
    NoteAskedPause(exchange);
    patience->Note(exchange);
  };
}

std::shared_ptr<const HttpLog> Host::ObserveHttp() {
  if (whole_.httpLog_ == nullptr) whole_.httpLog_ = std::make_shared<const HttpLog>(ExchangeWatch());
  return whole_.httpLog_;
}

std::optional<Failure> Host::WorkWith(const std::vector<std::string>& urls, const Arguments& arguments) {
  usedUrls_ = urls;
  // It knows for which servers the credentials of the environment are.
  authenticator_.reset();
  ServerAccess access{configuration_, {}, namedUrls_, urls, {}};
  access.listed.insert(access.listed.end(), access.used.begin(), access.used.end());
  access.commandLine.authorityFile = arguments.Text("ca-file");
  access.commandLine.clientCertificate = arguments.Text("client-cert");
  access.commandLine.clientKey = arguments.Text("client-key");
  access.commandLine.proxy = arguments.Text("proxy");
  if (arguments.Has("client-key") && !arguments.Has("client-cert")) {
    return Failure{ExitCode::Usage, "--client-key takes --client-cert beside it"};
  }
  if (arguments.Has("proxy")) {
    if (const auto fault = ProxyFault(arguments.Text("proxy"))) return Failure{ExitCode::Usage, *fault};
  }
  const bool mayAsk = !arguments.Has("no-prompt");
  access.passphrase = [this, mayAsk](const std::string& url, const std::string& keyFile) {
    return AskPassphrase(url, keyFile, mayAsk);
  };
  if (auto failure = ApplyServerAccess(access)) return failure;
  const std::string user = Environment("VTDIRECT_PROXY_USER");
  if (!user.empty()) du::http::SetProxyCredentials(user, Environment("VTDIRECT_PROXY_PASSWORD"));
  return std::nullopt;
}

std::optional<std::string> Host::AskPassphrase(const std::string& url, const std::string& keyFile,
                                               bool mayAskUser) {
  const std::string known = Environment("VTDIRECT_KEY_PASSPHRASE");
  if (!known.empty()) return known;
  const auto origin = OriginOf(url);
  if (const auto helper = origin ? HelperOf(*origin) : std::nullopt) {
    // As git's helpers are told of a certificate.
    const HelperFields fields = AnswerOf(*helper, {{"protocol", "cert"}, {"path", keyFile}});
    if (!ValueOf(fields, "password").empty()) return ValueOf(fields, "password");
  }
  return mayAskUser ? PromptForPassphrase(keyFile) : std::nullopt;
}

// A command that works with several servers has the shortest time of them.
std::optional<Failure> Host::LimitCommand(const CommandRow& command, const Arguments& arguments) {
  const auto given = ReadSecondsOption(arguments, "max-time", 0);
  if (!given) return given.failure();
  long seconds = *given;
  if (command.requests == Requests::None) return std::nullopt;
  if (!arguments.Has("max-time")) {
    for (const std::string& url : ServersOf(command, arguments)) {
      const auto limit = SettingsFor(configuration_, url).maxTime;
      if (limit && (seconds == 0 || *limit < seconds)) seconds = *limit;
    }
  }
  if (seconds == 0) return std::nullopt;
  const Failure failure{ExitCode::TimedOut, "the time for the command is over (" + std::to_string(seconds) +
                                                " s, by --max-time or max_time)"};
  LimitTime(seconds, static_cast<int>(failure.code), FailureLine(command.name, output_.json(), failure));
  return std::nullopt;
}

std::optional<Failure> Host::SetTransport(const Arguments& arguments) {
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  const auto connectSeconds =
      ReadSecondsOption(arguments, "connect-timeout", settings.connectTimeoutMilliseconds / 1000);
  if (!connectSeconds) return connectSeconds.failure();
  const auto stallSeconds = ReadSecondsOption(arguments, "stall-timeout", settings.stallTimeoutSeconds);
  if (!stallSeconds) return stallSeconds.failure();
  settings.authenticationTries = mostAuthenticationTries;
  du::http::SetTransportSettings(settings);
  // Who names a time means any silence, also that of a server that has not begun to answer.
  patience_->Begin(arguments.Has("stall-timeout") ? std::optional(*stallSeconds) : std::nullopt,
                   *connectSeconds);
  return std::nullopt;
}

std::optional<Failure> Host::SetCredentials(const Arguments& arguments) {
  sources_.token = Environment("VTDIRECT_TOKEN");
  sources_.user = Environment("VTDIRECT_USER");
  sources_.password = Environment("VTDIRECT_PASSWORD");
  if (!arguments.Has("no-prompt")) sources_.prompt = PromptForPassword;
  SetHelper();
  sources_.facts = [this](const Origin& origin) { return LoginFactsOf(configuration_, origin); };

  if (arguments.Has("netrc")) {
    // The user counts on this file: not to use it is a failure, and not only a warning.
    const std::string path = arguments.Text("netrc");
    const LocalText netrc = ReadPrivateTextFile(path);
    if (netrc.error != 0) return Failure{ExitCode::LocalFile, NetrcFault(path, netrc.error)};
    sources_.netrc = [text = netrc.text] { return ReadNetrc(text); };
    return std::nullopt;
  }
  std::string path = Environment("NETRC");
  if (path.empty() && !Environment("HOME").empty()) path = Environment("HOME") + "/.netrc";
  if (!path.empty()) sources_.netrc = [this, path] { return LoadNetrc(path); };
  return std::nullopt;
}

void Host::SetHelper() {
  sources_.helper.get = [this](const Origin& origin, const std::string& user) {
    return AskHelper(origin, user);
  };
  sources_.helper.store = [this](const Origin& origin, const PasswordCredentials& accepted) {
    const auto helper = HelperOf(origin);
    const std::string fault = helper ? helper->Store(FieldsOf(origin, accepted)) : std::string();
    if (!fault.empty()) output_.Warning(fault);
  };
  sources_.helper.erase = [this](const Origin& origin, const PasswordCredentials& refused) {
    const auto helper = HelperOf(origin);
    const std::string fault = helper ? helper->Erase(FieldsOf(origin, refused)) : std::string();
    if (!fault.empty()) output_.Warning(fault);
  };
}

Failure Host::NotListed(const std::string& nickname) const {
  std::vector<std::string> nicknames;
  for (const auto& [listed, url] : servers()) nicknames.push_back(listed);
  const std::string meant = DidYouMean(nickname, nicknames);
  return {ExitCode::ServerNotListed, "no server is listed as \"" + nickname + "\"",
          meant.empty() ? "vtdirect servers shows those that are" : meant};
}

std::optional<Failure> Host::RequireHelper(const std::string& url) const {
  const auto origin = OriginOf(url);
  if (origin && HelperOf(*origin)) return std::nullopt;
  return Failure{ExitCode::Usage,
                 "no credential_helper is set for " + url + ", so there is nobody to keep a login",
                 "name one in the server's section of the configuration file, for example "
                 "/usr/lib/git-core/git-credential-cache, which keeps a login in memory for a while"};
}

std::optional<Failure> Host::StoreCredentials(const std::string& url,
                                              const PasswordCredentials& accepted) const {
  if (auto failure = RequireHelper(url)) return failure;
  const auto origin = OriginOf(url);
  const std::string fault = HelperOf(*origin)->Store(FieldsOf(*origin, accepted));
  if (fault.empty()) return std::nullopt;
  return Failure{ExitCode::Failure, fault};
}

std::optional<CredentialHelper> Host::HelperOf(const Origin& origin) const {
  const std::string command = SettingsFor(configuration(), TextOf(origin)).credentialHelper;
  if (command.empty()) return std::nullopt;
  return CredentialHelper(command, helperSeconds);
}

// A helper without an answer is a warning, and the next source of credentials is asked.
HelperFields Host::AnswerOf(const CredentialHelper& helper, const HelperFields& about) {
  auto answer = helper.Get(about);
  if (answer) return *answer;
  output_.Warning(answer.failure().message);
  return {};
}

HelperAnswer Host::AskHelper(const Origin& origin, const std::string& user) {
  HelperAnswer answer;
  const auto helper = HelperOf(origin);
  if (!helper) return answer;
  HelperFields about = FieldsOf(origin);
  if (!user.empty()) about.emplace_back("username", user);
  const HelperFields fields = AnswerOf(*helper, about);
  const std::string quit = ValueOf(fields, "quit");
  answer.quit = quit == "1" || quit == "true";
  const std::string told = ValueOf(fields, "username");
  PasswordCredentials credentials{told.empty() ? user : told, ValueOf(fields, "password")};
  // Of another user than the one that was asked for it is no answer.
  const bool fits = user.empty() || credentials.user == user;
  if (fits && !credentials.user.empty() && !credentials.password.empty()) answer.credentials = credentials;
  return answer;
}

std::vector<NetrcEntry> Host::LoadNetrc(const std::string& path) {
  const LocalText netrc = ReadPrivateTextFile(path);
  if (netrc.error == 0) return ReadNetrc(netrc.text);
  if (netrc.error != ENOENT) output_.Warning(NetrcFault(path, netrc.error));
  return {};
}

std::optional<Failure> Host::MakeWorkDirectory() {
  auto created = WorkDirectory::Create();
  if (!created) return created.failure();
  workDirectory_ = std::move(*created);
  return std::nullopt;
}

bool Host::authenticationRefused() const {
  const std::lock_guard lock(whole_.authenticating_);
  return whole_.authenticator_ && whole_.authenticator_->refused();
}

Failure Host::authenticationRefusal() const {
  const std::lock_guard lock(whole_.authenticating_);
  if (!whole_.authenticator_) return {ExitCode::AuthenticationRefused, ""};
  return {ExitCode::AuthenticationRefused, whole_.authenticator_->refusal(), whole_.authenticator_->advice()};
}

void Host::TellCredentialsAccepted() {
  if (authenticator_ && !authenticator_->refused()) authenticator_->TellAccepted();
}

void Host::ForgetAuthenticationRefusal() {
  const std::lock_guard lock(whole_.authenticating_);
  if (whole_.authenticator_) whole_.authenticator_->ForgetRefusal();
}

bool Host::Authenticate(const std::string& url) {
  // Several threads may be asked at once, and there is one terminal.
  const std::lock_guard lock(authenticating_);
  if (!authenticator_) {
    const CredentialSinks sinks{du::http::SetPasswordCredentials, du::http::SetBearerToken};
    authenticator_ = std::make_unique<Authenticator>(sources_, sinks, namedUrls_, MeantUrls());
  }
  return authenticator_->Answer(url);
}

}  // namespace vtdirect_cli
