#include "hosts/cli/texts/progress_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <ostream>

#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

constexpr auto interval = std::chrono::milliseconds(100);
constexpr std::size_t narrowest = 20;
constexpr const char* wipe = "\r\033[K";

}  // namespace

std::string SizeForPeople(std::size_t bytes) {
  constexpr const char* units[] = {"B", "KiB", "MiB", "GiB", "TiB"};
  double number = static_cast<double>(bytes);
  std::size_t unit = 0;
  for (; number >= 1024 && unit + 1 < std::size(units); ++unit) number /= 1024;
  char text[32];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", number, units[unit]);
  return text;
}

std::string CutTo(const std::string& text, std::size_t bytes) {
  if (text.size() <= bytes) return text;
  std::size_t end = bytes;
  while (end > 0 && (static_cast<std::uint8_t>(text[end]) & 0xC0U) == 0x80U) --end;
  return text.substr(0, end);
}

std::string ProgressText(const std::string& name, std::size_t done, std::size_t total) {
  std::string text = name + "  " + SizeForPeople(done);
  if (total == 0) return text;
  const auto percent = static_cast<unsigned>(100.0 * static_cast<double>(done) / static_cast<double>(total));
  return text + " of " + SizeForPeople(total) + "  " + std::to_string(percent) + "%";
}

ProgressLine::ProgressLine(std::ostream* terminal, std::string name, std::size_t width)
    : terminal_(terminal), name_(Printable(name)), width_(width < narrowest ? narrowest : width) {
  if (terminal_ == nullptr) return;
  // A process that is ended by a signal takes the line away too; by the descriptor, since the stream may be
  // in use on another thread.
  wipe_ = std::make_unique<CleanUp>([this] {
    if (shown_) static_cast<void>(!write(STDERR_FILENO, wipe, 4));
  });
}

ProgressLine::~ProgressLine() {
  Clear();
  if (wipe_) wipe_->Dismiss();
}

void ProgressLine::Show(std::size_t done, std::size_t total, Clock::time_point now) {
  if (terminal_ == nullptr || now < next_) return;
  next_ = now + interval;
  shown_ = true;
  const std::string numbers = ProgressText("", done, total);
  const std::size_t forName = width_ > numbers.size() + 1 ? width_ - numbers.size() - 1 : 0;
  *terminal_ << wipe << CutTo(name_, forName) << numbers << std::flush;
}

void ProgressLine::Clear() {
  if (!shown_) return;
  *terminal_ << wipe << std::flush;
  shown_ = false;
}

std::string BytesToTell(std::uint64_t bytes) {
  constexpr std::uint64_t few = 1024;
  return bytes < few || TerminalWidth() == 0 ? ByteCount(bytes) : SizeForPeople(bytes);
}

const char* WipeOfProgress() {
  return isatty(STDERR_FILENO) == 0 ? "" : wipe;
}

std::size_t TerminalWidth() {
  if (isatty(STDERR_FILENO) == 0) return 0;
  winsize size = {};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

}  // namespace vtdirect_cli
