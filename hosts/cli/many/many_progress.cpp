#include "hosts/cli/many/many_progress.h"

#include <unistd.h>

#include <algorithm>
#include <ostream>

#include "hosts/cli/texts/printable.h"
#include "hosts/cli/texts/progress_line.h"

namespace vtdirect_cli {
namespace {

constexpr auto interval = std::chrono::milliseconds(100);
constexpr std::size_t narrowest = 20;
constexpr const char* wipe = "\r\033[K";

[[nodiscard]] std::string TimeLeft(const ManyState& state) {
  if (state.ended == 0 || state.ended >= state.all) return {};
  const double perFile = static_cast<double>(state.elapsed.count()) / static_cast<double>(state.ended);
  const auto seconds =
      static_cast<std::uint64_t>(perFile * static_cast<double>(state.all - state.ended) / 1000) + 1;
  if (seconds < 60) return "  " + std::to_string(seconds) + " s left";
  return "  " + std::to_string((seconds + 59) / 60) + " min left";
}

[[nodiscard]] std::string Rate(const ManyState& state) {
  if (state.elapsed.count() < 1000) return {};
  const double perSecond =
      static_cast<double>(state.bytes) * 1000 / static_cast<double>(state.elapsed.count());
  return "  " + SizeForPeople(static_cast<std::size_t>(perSecond)) + "/s";
}

}  // namespace

std::string ManyText(const ManyState& state, std::size_t width) {
  std::string text = std::to_string(state.ended) + " of " + std::to_string(state.all) + " files  " +
                     SizeForPeople(state.bytes) + Rate(state) + TimeLeft(state);
  const char* separator = "  ";
  for (const std::string& name : state.underWay) {
    text += separator + Printable(name);
    separator = ", ";
  }
  return CutTo(text, width);
}

ManyProgress::ManyProgress(std::ostream* terminal, std::size_t width, std::size_t all)
    : terminal_(terminal), width_(std::max(width, narrowest)) {
  state_.all = all;
  if (terminal_ == nullptr) return;
  // A process that is ended by a signal takes the line away too; by the descriptor, since the stream may be in
  // use on another thread.
  wipe_ = std::make_unique<CleanUp>([this] {
    if (shown_) static_cast<void>(!write(STDERR_FILENO, wipe, 4));
  });
}

ManyProgress::~ManyProgress() {
  Clear();
  if (wipe_) wipe_->Dismiss();
}

void ManyProgress::Begin(std::size_t number, const std::string& name) {
  const std::lock_guard lock(mutex_);
  underWay_[number] = {name.substr(name.rfind('/') + 1), 0};
  Show();
}

void ManyProgress::Advance(std::size_t number, std::uint64_t received) {
  const std::lock_guard lock(mutex_);
  File& file = underWay_[number];
  // A transfer that is begun again counts from its new beginning.
  state_.bytes = state_.bytes + received - file.received;
  file.received = received;
  Show();
}

void ManyProgress::End(std::size_t number) {
  const std::lock_guard lock(mutex_);
  underWay_.erase(number);
  ended_.insert(number);
  state_.ended = ended_.size();
  Show();
}

void ManyProgress::Clear() {
  const std::lock_guard lock(mutex_);
  Wipe();
}

void ManyProgress::MakeRoomFor(const std::function<void()>& write) {
  const std::lock_guard lock(mutex_);
  Wipe();
  write();
}

void ManyProgress::Wipe() {
  if (!shown_) return;
  *terminal_ << wipe << std::flush;
  shown_ = false;
}

void ManyProgress::Show() {
  const auto now = Clock::now();
  if (terminal_ == nullptr || now < next_) return;
  next_ = now + interval;
  shown_ = true;
  state_.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now - begin_);
  state_.underWay.clear();
  for (const auto& [number, file] : underWay_) state_.underWay.push_back(file.name);
  // The last column stays free, or a terminal would begin a new line.
  *terminal_ << wipe << ManyText(state_, width_ - 1) << std::flush;
}

}  // namespace vtdirect_cli
