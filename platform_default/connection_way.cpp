#include "platform_default/connection_way.h"

#include "platform/http_settings.h"

namespace vtdirect::platform {

ConnectionWay ConnectionWayTo(const Origin& home, const Origin& origin) {
  const du::http::TransportSettings settings = du::http::GetTransportSettings();
  ConnectionWay way;
  way.certificateAuthorityFile = settings.certificateAuthorityFile;
  if (home == origin) way.identity = FindClientIdentity(origin);
  way.proxy = settings.proxy;
  way.proxyExceptions = settings.proxyExceptions;
  way.proxyCredentials = FindProxyCredentials();
  return way;
}

}  // namespace vtdirect::platform
