#include "platform/http_settings.h"

#include <algorithm>
#include <mutex>

#include "platform_default/origin_registry.h"
#include "platform_default/temporary_space.h"

namespace du::http {
namespace {

struct SettingsSlot {
  std::mutex mutex;
  TransportSettings settings;
};

SettingsSlot& Slot() {
  static SettingsSlot& slot = *new SettingsSlot;
  return slot;
}

/// Connections that were made by one of these are of no use with the other.
bool ConnectAlike(const TransportSettings& a, const TransportSettings& b) {
  return a.certificateAuthorityFile == b.certificateAuthorityFile && a.proxy == b.proxy &&
         a.proxyExceptions == b.proxyExceptions;
}

/// Gives whether connections are made in another way from now on.
bool Store(const TransportSettings& settings) {
  const std::lock_guard lock(Slot().mutex);
  const bool other = !ConnectAlike(Slot().settings, settings);
  Slot().settings = settings;
  return other;
}

}  // namespace

void SetTransportSettings(const TransportSettings& settings) {
  const TransportSettings defaults;
  TransportSettings sound = settings;
  const auto takeDefault = [&sound, &defaults](auto TransportSettings::*limit) {
    if (sound.*limit <= 0) sound.*limit = defaults.*limit;
  };
  takeDefault(&TransportSettings::connectTimeoutMilliseconds);
  takeDefault(&TransportSettings::stallTimeoutSeconds);
  takeDefault(&TransportSettings::firstByteTimeoutSeconds);
  takeDefault(&TransportSettings::firstByteAfterBodyTimeoutSeconds);
  takeDefault(&TransportSettings::idleSeconds);
  takeDefault(&TransportSettings::exchangesAtOnce);
  takeDefault(&TransportSettings::largestTemporaryFile);
  sound.idleConnections = std::max(sound.idleConnections, 0);
  sound.authenticationTries = std::max(sound.authenticationTries, 0);
  sound.redirects = std::max(sound.redirects, 0);
  vtdirect::platform::SetLargestTemporaryFile(static_cast<std::uint64_t>(sound.largestTemporaryFile));
  if (!Store(sound)) return;
  // Connections and sessions that were made in the earlier way end, after the new one is there.
  vtdirect::platform::OriginRegistry::Instance().EndAllSessions();
}

TransportSettings GetTransportSettings() {
  const std::lock_guard lock(Slot().mutex);
  return Slot().settings;
}

}  // namespace du::http
