#include "platform/http_credentials.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>

#include "platform_default/credential_store.h"
#include "platform_default/origin_registry.h"

namespace vtdirect::platform {
namespace {

struct Store {
  std::mutex mutex;
  std::map<std::string, Credentials> byOrigin;
  std::optional<ProxyCredentials> ofProxy;
};

Store& TheStore() {
  static Store& store = *new Store;
  return store;
}

/// Text that is to be on a header line. A control byte would end the line and begin another.
bool FitsHeaderLine(const std::string& text) {
  return std::none_of(text.begin(), text.end(), [](char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value < 0x20 || value == 0x7F;
  });
}

/// The credentials are set before the session ends, so that whoever finds the next session finds them too, and
/// no login of an earlier user gets into it.
void Set(const std::string& url, Credentials credentials) {
  const std::optional<Origin> origin = OriginOf(url);
  if (!origin) return;
  {
    const std::lock_guard lock(TheStore().mutex);
    TheStore().byOrigin[origin->Text()] = std::move(credentials);
  }
  OriginRegistry::Instance().EndSession(*origin);
}

void SetForProxy(std::optional<ProxyCredentials> credentials) {
  {
    const std::lock_guard lock(TheStore().mutex);
    TheStore().ofProxy = std::move(credentials);
  }
  OriginRegistry::Instance().EndAllSessions();
}

}  // namespace

std::optional<ProxyCredentials> FindProxyCredentials() {
  const std::lock_guard lock(TheStore().mutex);
  return TheStore().ofProxy;
}

std::optional<Credentials> FindCredentials(const Origin& origin) {
  const std::lock_guard lock(TheStore().mutex);
  if (TheStore().byOrigin.empty()) return std::nullopt;
  const auto entry = TheStore().byOrigin.find(origin.Text());
  if (entry == TheStore().byOrigin.end()) return std::nullopt;
  return entry->second;
}

}  // namespace vtdirect::platform

namespace du::http {

using vtdirect::platform::CredentialKind;
using vtdirect::platform::OriginRegistry;
using vtdirect::platform::TheStore;

void SetPasswordCredentials(const std::string& url, const std::string& user, const std::string& password) {
  if (!vtdirect::platform::FitsHeaderLine(user)) return;
  vtdirect::platform::Set(url, {CredentialKind::Password, user, password});
}

void SetBearerToken(const std::string& url, const std::string& token) {
  if (!vtdirect::platform::FitsHeaderLine(token)) return;
  vtdirect::platform::Set(url, {CredentialKind::Token, {}, token});
}

void SetNegotiateCredentials(const std::string& url) {
  vtdirect::platform::Set(url, {CredentialKind::Negotiate, {}, {}});
}

void SetProxyCredentials(const std::string& user, const std::string& password) {
  // Basic ends the user name at its first ":".
  if (!vtdirect::platform::FitsHeaderLine(user) || user.find(':') != std::string::npos) return;
  vtdirect::platform::SetForProxy(vtdirect::platform::ProxyCredentials{user, password});
}

void ClearProxyCredentials() {
  vtdirect::platform::SetForProxy(std::nullopt);
}

void ClearCredentials(const std::string& url) {
  const auto origin = vtdirect::platform::OriginOf(url);
  if (!origin) return;
  {
    const std::lock_guard lock(TheStore().mutex);
    TheStore().byOrigin.erase(origin->Text());
  }
  OriginRegistry::Instance().EndSession(*origin);
}

void ClearAllCredentials() {
  {
    const std::lock_guard lock(TheStore().mutex);
    TheStore().byOrigin.clear();
  }
  OriginRegistry::Instance().EndAllSessions();
}

}  // namespace du::http
