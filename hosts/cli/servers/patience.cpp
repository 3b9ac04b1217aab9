#include "hosts/cli/servers/patience.h"

#include <algorithm>

namespace vtdirect_cli {
namespace {

constexpr long questionSeconds = 60;
constexpr long changeSeconds = 120;
constexpr long mostSeconds = 900;
constexpr long silentServerSeconds = 5;
// What the slowest server that is still at work brings to its disk in a second.
constexpr std::uint64_t bytesPerSecond = 1'000'000;

// With as much longer as the server may need for a file.
[[nodiscard]] long SecondsForChange(std::uint64_t fileBytes) {
  const auto work = static_cast<long>(std::min<std::uint64_t>(fileBytes / bytesPerSecond, mostSeconds));
  return std::min(changeSeconds + work, mostSeconds);
}

}  // namespace

void Patience::Begin(std::optional<long> seconds, long connectSeconds) {
  const std::lock_guard lock(mutex_);
  seconds_ = seconds;
  connectSeconds_ = connectSeconds;
  Apply();
}

void Patience::Note(const du::http::ObservedExchange& exchange) {
  const bool isSilent = exchange.result == du::http::ErrorCode::TimedOut;
  if (!isSilent && exchange.result != du::http::ErrorCode::Done) return;
  const std::lock_guard lock(mutex_);
  if (isSilent == wasSilent_ || connectSeconds_ == 0) return;
  wasSilent_ = isSilent;
  Apply();
}

void Patience::SendFile(std::uint64_t bytes) {
  const std::lock_guard lock(mutex_);
  fileBytes_ = bytes;
  if (connectSeconds_ != 0) Apply();
}

void Patience::Apply() {
  const auto limited = [this](long seconds) {
    return wasSilent_ ? std::min(seconds, silentServerSeconds) : seconds;
  };
  const long question = limited(seconds_.value_or(questionSeconds));
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  settings.connectTimeoutMilliseconds = limited(connectSeconds_) * 1000;
  settings.stallTimeoutSeconds = question;
  settings.firstByteTimeoutSeconds = question;
  settings.firstByteAfterBodyTimeoutSeconds = limited(seconds_.value_or(SecondsForChange(fileBytes_)));
  du::http::SetTransportSettings(settings);
}

Patience::WhileSending::WhileSending(Patience& patience, std::uint64_t bytes) : patience_(patience) {
  patience_.SendFile(bytes);
}

Patience::WhileSending::~WhileSending() {
  patience_.SendFile(0);
}

}  // namespace vtdirect_cli
