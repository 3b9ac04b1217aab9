#include <map>
#include <mutex>
#include <utility>

#include "platform_default/client_identity.h"
#include "platform_default/origin_registry.h"

namespace vtdirect::platform {
namespace {

using Identity = std::shared_ptr<ClientIdentity>;

struct Identities {
  std::mutex mutex;
  std::map<std::string, Identity> byOrigin;
  Identity forAll;
};

Identities& TheIdentities() {
  static Identities& identities = *new Identities;
  return identities;
}

/// As with credentials, the certificate is there before the session ends. Null clears.
void SetFor(const std::string& url, Identity identity) {
  const std::optional<Origin> origin = OriginOf(url);
  if (!origin) return;
  {
    const std::lock_guard lock(TheIdentities().mutex);
    TheIdentities().byOrigin[origin->Text()].swap(identity);
    if (TheIdentities().byOrigin[origin->Text()] == nullptr) TheIdentities().byOrigin.erase(origin->Text());
  }
  OriginRegistry::Instance().EndSession(*origin);
}

}  // namespace

Identity FindClientIdentity(const Origin& origin) {
  const std::lock_guard lock(TheIdentities().mutex);
  const auto entry = TheIdentities().byOrigin.find(origin.Text());
  return entry == TheIdentities().byOrigin.end() ? TheIdentities().forAll : entry->second;
}

}  // namespace vtdirect::platform

namespace du::http {

using vtdirect::platform::ClientIdentity;
using vtdirect::platform::OriginRegistry;
using vtdirect::platform::TheIdentities;

void SetClientCertificate(const std::string& url, const ClientCertificate& certificate) {
  if (certificate.certificateFile.empty()) return;
  vtdirect::platform::SetFor(url, std::make_shared<ClientIdentity>(certificate));
}

void SetClientCertificateForAll(const ClientCertificate& certificate) {
  if (certificate.certificateFile.empty()) return;
  auto identity = std::make_shared<ClientIdentity>(certificate);
  {
    const std::lock_guard lock(TheIdentities().mutex);
    // The earlier one goes after the lock is gone: it holds a function of the host's.
    TheIdentities().forAll.swap(identity);
  }
  OriginRegistry::Instance().EndAllSessions();
}

void ClearClientCertificate(const std::string& url) {
  vtdirect::platform::SetFor(url, nullptr);
}

void ClearAllClientCertificates() {
  std::map<std::string, std::shared_ptr<ClientIdentity>> gone;
  std::shared_ptr<ClientIdentity> goneForAll;
  {
    const std::lock_guard lock(TheIdentities().mutex);
    gone.swap(TheIdentities().byOrigin);
    goneForAll.swap(TheIdentities().forAll);
  }
  OriginRegistry::Instance().EndAllSessions();
}

}  // namespace du::http
