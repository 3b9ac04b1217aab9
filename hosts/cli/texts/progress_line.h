#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

#include "hosts/cli/program/interruption.h"

namespace vtdirect_cli {

/// "12.0 MiB".
[[nodiscard]] std::string SizeForPeople(std::size_t bytes);

/// The size of something that a note tells of: for people on a terminal, where standard error is one, and to the byte
/// elsewhere.
[[nodiscard]] std::string BytesToTell(std::uint64_t bytes);

/// So many bytes of a text at most, cut in front of a character and never within one.
[[nodiscard]] std::string CutTo(const std::string& text, std::size_t bytes);

/// The text of a progress line, for example "fork.lxz  12.0 MiB of 64.0 MiB  18%".
/// @param total  0 when it is not known
[[nodiscard]] std::string ProgressText(const std::string& name, std::size_t done, std::size_t total);

/// A line on a terminal that is rewritten as a transfer goes, at most ten times a second, and is gone at the
/// end.
class ProgressLine {
 public:
  using Clock = std::chrono::steady_clock;

  /// @param terminal  where to write; null shows nothing
  /// @param width     columns of the terminal; longer lines are cut
  ProgressLine(std::ostream* terminal, std::string name, std::size_t width);
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  void Show(std::size_t done, std::size_t total, Clock::time_point now);
  /// Takes the line away.
  void Clear();

 private:
  std::ostream* terminal_;
  std::string name_;
  std::size_t width_;
  std::atomic<bool> shown_{false};
  Clock::time_point next_{};
  std::unique_ptr<CleanUp> wipe_;
};

/// What takes a line of progress away, for who writes to the terminal meanwhile; empty when standard error is none.
[[nodiscard]] const char* WipeOfProgress();

/// The width of the terminal on standard error; 0 when it is none.
[[nodiscard]] std::size_t TerminalWidth();

}  // namespace vtdirect_cli
