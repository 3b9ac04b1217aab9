#include "hosts/cli/doctor/examination.h"

#include <vtdirect/platform/http_settings.h>
#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <ctime>
#include <memory>

#include "hosts/cli/browsing/tree_walk.h"
#include "hosts/cli/doctor/direct_question.h"
#include "hosts/cli/doctor/name_lookup.h"
#include "hosts/cli/doctor/route_words.h"
#include "hosts/cli/doctor/seen_way.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/servers/origin.h"

namespace vtdirect_cli {
namespace {

// Enough for a document where most people keep theirs.
constexpr std::uint64_t foldersToSearch = 12;

/// The look at one server.
class Examination {
 public:
  Examination(Host& host, const ExaminedServer& server, const ExaminedStepFunction& take)
      : host_(host),
        server_(server),
        take_(take),
        log_(host.ObserveHttp()),
        before_(log_->Seen().exchanges.size()) {}

  [[nodiscard]] ExitCode Run() {
    LookAtName();
    LookAtRoute();
    if (!LookAtServer()) {
      SkipTheRest();
      return worst_;
    }
    LookAtServices();
    LookAtNonce();
    LookAtContent();
    Tell({"upload address", ExaminedStep::State::Skipped,
          "a server tells it only when something is stored, and nothing is stored here",
          "when a put fails, --log-http shows where it went"});
    return worst_;
  }

 private:
  void Tell(const ExaminedStep& finding, ExitCode code = ExitCode::Failure) {
    if (finding.state == ExaminedStep::State::Failed) worst_ = Worse(worst_, code);
    take_(finding);
  }

  // What was exchanged with the server since the examination began.
  [[nodiscard]] std::vector<du::http::ObservedExchange> Seen() const {
    auto exchanges = log_->Seen().exchanges;
    exchanges.erase(exchanges.begin(),
                    exchanges.begin() + static_cast<std::ptrdiff_t>(std::min(before_, exchanges.size())));
    return exchanges;
  }

  void LookAtName() {
    Tell(ExamineName(OriginOf(server_.url).value_or(Origin{}), RouteNow(server_.url).isProxy));
  }

  void LookAtRoute() {
    const Route route = RouteNow(server_.url);
    Tell({"route", ExaminedStep::State::Ok, route.words, {}});
  }

  // Connection, certificate, login and version show in the first question. False when nothing else can be asked.
  [[nodiscard]] bool LookAtServer() {
    VtDirectManager::StatusCode code = VtDirectManager::StatusOk;
    std::string own;
    ForgetReasons();
    host_.ForgetAuthenticationRefusal();
    const bool supported = VtDirectManager::ServerSupported(server_.url.c_str(), &code, &own);
    const auto exchanges = Seen();
    const auto connection = ConnectionSeen(exchanges);
    if (!connection) {
      TellFailure("connection", supported, code);
      return false;
    }
    Tell(*connection);
    TellCertificate(exchanges);
    const ExaminedStep login = LoginSeen(exchanges);
    Tell(login, ExitCode::AuthenticationRefused);
    if (login.state == ExaminedStep::State::Failed) return false;
    if (!supported) {
      TellFailure("version", supported, code);
      return false;
    }
    TellVersion(exchanges, own);
    return true;
  }

  void TellFailure(const char* step, bool supported, VtDirectManager::StatusCode code) {
    if (supported) return Tell({step, ExaminedStep::State::Failed, "no answer was seen", {}});
    const Failure failure = ServerFailure(host_, server_.url, code);
    Tell({step, ExaminedStep::State::Failed, failure.message, failure.advice}, failure.code);
  }

  void TellCertificate(const std::vector<du::http::ObservedExchange>& exchanges) {
    const bool isTls = server_.url.starts_with("https:");
    const auto certificate = CertificateSeen(exchanges, static_cast<long>(std::time(nullptr)));
    if (certificate) return Tell(*certificate);
    if (!isTls) {
      return Tell({"certificate", ExaminedStep::State::Warning,
                   "none: the server is asked over http, so all goes in clear",
                   "list it with https if it can be reached so"});
    }
    Tell({"certificate", ExaminedStep::State::Skipped, "the connection was there already", {}});
  }

  void TellVersion(const std::vector<du::http::ObservedExchange>& exchanges, const std::string& own) {
    const std::string version = VersionSeen(exchanges);
    ExaminedStep finding{
        "version", ExaminedStep::State::Ok, version.empty() ? "supported" : version + ", supported", {}};
    if (!own.empty()) {
      finding.state = ExaminedStep::State::Warning;
      finding.seen += "; it calls another address its own";
      finding.advice = "list it as " + own;
    }
    Tell(finding);
  }

  void SkipTheRest() {
    for (const char* step : {"services", "nonce", "content address", "upload address"}) {
      Tell({step, ExaminedStep::State::Skipped, "nothing more can be asked", {}});
    }
  }

  void LookAtServices() {
    // How a listing is made depends on them, so the first one asks for them.
    static_cast<void>(ListPath("//" + server_.nickname + "/Products/", VtDirectManager::ReadDirFolders,
                               [](const VtDirectManager::DirEntryExt&) { return false; }));
    const std::string services = ServicesSeen(Seen());
    if (!services.empty()) return Tell({"services", ExaminedStep::State::Ok, services, {}});
    Tell({"services",
          ExaminedStep::State::Ok,
          "none of the newer ones; the server is browsed by its gateway",
          {}});
  }

  // What every change needs first. A nonce changes nothing until it is used.
  void LookAtNonce() {
    const DirectAnswer answer =
        AskDirectly(host_, UrlBelow(server_.url, "servlet/rest/security/csrf"), AnswerPart::Whole);
    if (answer.status == 200 && answer.body.find("nonce") != std::string::npos) {
      return Tell(
          {"nonce", ExaminedStep::State::Ok, "the server gives one, so that something can be stored", {}});
    }
    const std::string seen = answer.status == 0 ? answer.fault : "HTTP " + std::to_string(answer.status);
    Tell({"nonce", ExaminedStep::State::Failed,
          "the server gives none (" + seen + "), so that nothing can be stored",
          "ask whoever runs the server; something between here and there may refuse the address"});
  }

  void LookAtContent() {
    const std::string document = FindDocument();
    if (document.empty()) {
      return Tell({"content address",
                   ExaminedStep::State::Skipped,
                   "no document was found in the first " + std::to_string(foldersToSearch) + " folders",
                   {}});
    }
    std::string url;
    ForgetReasons();
    if (!VtDirectManager::GetFileDownloadURL(document.c_str(), url, nullptr)) {
      const Failure failure = Diagnose(host_, document, Seen::Unknown);
      return Tell({"content address", ExaminedStep::State::Failed, failure.message, failure.advice},
                  failure.code);
    }
    if (url.empty()) {
      return Tell({"content address", ExaminedStep::State::Skipped, document + " has no content", {}});
    }
    ProbeContent(url);
  }

  [[nodiscard]] std::string FindDocument() {
    std::string found;
    TreeBounds bounds;
    bounds.folders = foldersToSearch;
    TreeWork work;
    work.list = [](const std::string& path, const EntryFunction& receive) {
      return ListPath(path, VtDirectManager::ReadDirFiles | VtDirectManager::ReadDirFolders, receive);
    };
    work.show = [&found](const TreeEntry& entry) {
      if (!entry.isFolder) found = entry.path;
      return found.empty();
    };
    work.failed = [](const std::string&, ListingEnd) { return !Interrupted(); };
    static_cast<void>(WalkTree("//" + server_.nickname + "/Products/", bounds, work));
    return found;
  }

  void ProbeContent(const std::string& url) {
    const auto origin = OriginOf(url);
    const std::string place = origin ? TextOf(*origin) : std::string("an address that is none");
    const bool isClear = server_.url.starts_with("https:") && origin && origin->scheme == "http";
    if (isClear && du::http::GetTransportSettings().httpAddresses != du::http::HttpAddresses::Allow) {
      return Tell({"content address", ExaminedStep::State::Warning,
                   place + ", in clear, though the server is asked over https; it was not asked",
                   "http_addresses in the server's section says what becomes of such an address"});
    }
    const DirectAnswer answer = AskDirectly(host_, url, AnswerPart::HeadAlone);
    if (answer.status == 200)
      return Tell({"content address", ExaminedStep::State::Ok, place + " gives contents", {}});
    const std::string seen = answer.status == 0 ? answer.fault : "HTTP " + std::to_string(answer.status);
    Tell({"content address", ExaminedStep::State::Failed, place + " gives no contents: " + seen,
          answer.status == 401 ? host_.authenticationRefusal()
                               : "the way from here to that address has to be open as well"},
         ExitCode::DownloadFailed);
  }

  Host& host_;
  const ExaminedServer& server_;
  const ExaminedStepFunction& take_;
  std::shared_ptr<const HttpLog> log_;
  std::size_t before_;
  ExitCode worst_ = ExitCode::Ok;
};

}  // namespace

ExitCode Examine(Host& host, const ExaminedServer& server, const ExaminedStepFunction& take) {
  return Examination(host, server, take).Run();
}

ExitCode ExamineAll(Host& host, const Arguments& arguments, const std::vector<ExaminedServer>& servers,
                    const std::function<void(const std::string& nickname, const ExaminedStep&)>& take) {
  ExitCode worst = ExitCode::Ok;
  for (const ExaminedServer& server : servers) {
    if (Interrupted()) return ExitCode::Interrupted;
    const auto tell = [&](const ExaminedStep& finding) { take(server.nickname, finding); };
    if (const auto failure = host.WorkWith({server.url}, arguments)) {
      tell({"route", ExaminedStep::State::Failed, failure->message, failure->advice});
      worst = Worse(worst, failure->code);
      continue;
    }
    worst = Worse(worst, Examine(host, server, tell));
  }
  return worst;
}

Result<std::vector<ExaminedServer>> ServersToExamine(const Host& host, const std::string& nickname) {
  std::vector<ExaminedServer> servers;
  for (const auto& [name, url] : host.servers()) {
    if (nickname.empty() || name == nickname) servers.push_back({name, url});
  }
  if (!servers.empty()) return servers;
  if (nickname.empty()) {
    return Failure{ExitCode::Usage, "no servers are listed",
                   "list one with --server NICK=URL or in the configuration file"};
  }
  return host.NotListed(nickname);
}

}  // namespace vtdirect_cli
