#include "hosts/cli/servers/patience.h"

#include <algorithm>

namespace vtdirect_cli {
namespace {

constexpr long kQuestionSeconds = 60;
constexpr long kChangeSeconds = 120;
constexpr long kMostSeconds = 900;
constexpr long kSilentServerSeconds = 5;
// What the slowest server that is still at work brings to its disk in a second.
constexpr std::uint64_t kBytesPerSecond = 1'000'000;

// With as much longer as the server may need for a file.
[[nodiscard]] long SecondsForChange(std::uint64_t fileBytes) {
  const auto work = static_cast<long>(std::min<std::uint64_t>(fileBytes / kBytesPerSecond, kMostSeconds));
  return std::min(kChangeSeconds + work, kMostSeconds);
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
    return wasSilent_ ? std::min(seconds, kSilentServerSeconds) : seconds;
  };
  const long question = limited(seconds_.value_or(kQuestionSeconds));
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
