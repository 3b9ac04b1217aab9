#include "platform/http_settings.h"

#include <algorithm>
#include <mutex>

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
  sound.authenticationTries = std::max(sound.authenticationTries, 0);
  sound.redirects = std::max(sound.redirects, 0);
  const std::lock_guard lock(Slot().mutex);
  Slot().settings = sound;
}

TransportSettings GetTransportSettings() {
  const std::lock_guard lock(Slot().mutex);
  return Slot().settings;
}

}  // namespace du::http
