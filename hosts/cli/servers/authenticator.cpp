#include "hosts/cli/servers/authenticator.h"

#include <algorithm>

namespace vtdirect_cli {
namespace {

constexpr int mostPrompts = 3;

[[nodiscard]] bool IsUpgrade(const Origin& from, const Origin& to) {
  return from.scheme == "http" && from.port == 80 && to.scheme == "https" && to.port == 443 &&
         from.host == to.host;
}

[[nodiscard]] std::vector<Origin> OriginsOf(const std::vector<std::string>& urls) {
  std::vector<Origin> origins;
  for (const std::string& url : urls) {
    if (const auto origin = OriginOf(url)) origins.push_back(*origin);
  }
  return origins;
}

[[nodiscard]] bool IsAmong(const std::vector<Origin>& origins, const Origin& origin) {
  return std::any_of(origins.begin(), origins.end(),
                     [&origin](const Origin& one) { return one == origin || IsUpgrade(one, origin); });
}

}  // namespace

Authenticator::Authenticator(CredentialSources sources, CredentialSinks sinks,
                             const std::vector<std::string>& named, const std::vector<std::string>& meant)
    : sources_(std::move(sources)),
      sinks_(std::move(sinks)),
      named_(OriginsOf(named)),
      meant_(OriginsOf(meant)) {}

Authenticator::Progress& Authenticator::ProgressOf(const Origin& origin) {
  const auto found = std::find_if(progress_.begin(), progress_.end(),
                                  [&origin](const Progress& progress) { return progress.origin == origin; });
  if (found != progress_.end()) return *found;
  progress_.emplace_back().origin = origin;
  return progress_.back();
}

bool Authenticator::Answer(const std::string& url) {
  const std::optional<Origin> origin = OriginOf(url);
  if (!origin || !IsAmong(named_, *origin)) {
    refusal_ = (origin ? TextOf(*origin) : url) +
               " demands credentials; they go only to servers that you have named, and this is none of them";
    advice_ = "list it with --server too if it may have them";
    return false;
  }
  Progress& progress = ProgressOf(*origin);
  TellRefused(progress);
  if (Take(progress, url)) {
    progress.offered = true;
    return true;
  }
  Refuse(progress);
  return false;
}

LoginFacts Authenticator::FactsOf(const Origin& origin) const {
  return sources_.facts ? sources_.facts(origin) : LoginFacts();
}

void Authenticator::Refuse(const Progress& progress) {
  const std::string server = TextOf(progress.origin);
  const LoginFacts facts = FactsOf(progress.origin);
  if (progress.offered) {
    refusal_ = server + " refused the credentials";
    advice_ = HowToLogInAnew(facts);
    return;
  }
  const bool hasPassword = !sources_.user.empty() && !sources_.password.empty();
  if ((hasPassword || !sources_.token.empty()) && !IsAmong(meant_, progress.origin)) {
    refusal_ =
        server + " demands credentials; those of the environment are for the server that the command names";
    advice_ = HowToLogInAlso(meant_.empty() ? LoginFacts() : FactsOf(meant_.front()), facts);
    return;
  }
  refusal_ = server + " demands credentials";
  advice_ = HowToLogIn(facts);
}

bool Authenticator::Take(Progress& progress, const std::string& url) {
  if (progress.next == Step::Token) {
    progress.next = Step::Environment;
    if (OfferToken(progress, url)) return true;
  }
  if (progress.next == Step::Environment) {
    progress.next = Step::Helper;
    if (OfferEnvironment(progress, url)) return true;
  }
  if (progress.next == Step::Helper) {
    progress.next = Step::Netrc;
    if (OfferHelpers(progress, url)) return true;
  }
  if (progress.next == Step::Netrc) {
    progress.next = Step::Prompt;
    if (OfferNetrc(url, progress.origin.host)) return true;
  }
  if (progress.next == Step::Prompt && OfferPrompt(progress, url)) return true;
  progress.next = Step::Done;
  return false;
}

bool Authenticator::OfferToken(const Progress& progress, const std::string& url) {
  if (sources_.token.empty() || !IsAmong(meant_, progress.origin)) return false;
  sinks_.setToken(url, sources_.token);
  return true;
}

bool Authenticator::OfferEnvironment(const Progress& progress, const std::string& url) {
  if (sources_.user.empty() || sources_.password.empty() || !IsAmong(meant_, progress.origin)) return false;
  sinks_.setPassword(url, sources_.user, sources_.password);
  return true;
}

bool Authenticator::OfferHelpers(Progress& progress, const std::string& url) {
  if (!sources_.helper.get) return false;
  const HelperAnswer answer = sources_.helper.get(progress.origin, sources_.user);
  if (answer.quit) progress.next = Step::Done;
  if (answer.quit || !answer.credentials) return false;
  if (answer.credentials->user == tokenUser) {
    sinks_.setToken(url, answer.credentials->password);
  } else {
    sinks_.setPassword(url, answer.credentials->user, answer.credentials->password);
  }
  progress.last = answer.credentials;
  progress.lastIsHelpers = true;
  return true;
}

void Authenticator::TellRefused(Progress& progress) {
  if (progress.last && progress.lastIsHelpers && sources_.helper.erase) {
    sources_.helper.erase(progress.origin, *progress.last);
  }
  progress.last.reset();
}

void Authenticator::TellAccepted() {
  for (Progress& progress : progress_) {
    if (progress.last && sources_.helper.store) sources_.helper.store(progress.origin, *progress.last);
    progress.last.reset();
  }
}

bool Authenticator::OfferNetrc(const std::string& url, const std::string& host) {
  if (!sources_.netrc) return false;
  if (!netrcEntries_) netrcEntries_ = sources_.netrc();
  const std::optional<NetrcEntry> entry = FindInNetrc(*netrcEntries_, host, sources_.user);
  if (!entry) return false;
  sinks_.setPassword(url, entry->login, entry->password);
  return true;
}

bool Authenticator::OfferPrompt(Progress& progress, const std::string& url) {
  if (!sources_.prompt || progress.prompts >= mostPrompts) return false;
  ++progress.prompts;
  const auto answer = sources_.prompt(TextOf(progress.origin), sources_.user);
  if (!answer) return false;
  sinks_.setPassword(url, answer->user, answer->password);
  progress.last = answer;
  progress.lastIsHelpers = false;
  return true;
}

}  // namespace vtdirect_cli
