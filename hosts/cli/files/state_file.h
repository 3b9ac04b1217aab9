#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/cli/failures/result.h"

namespace vtdirect_cli {

using StateLines = std::vector<std::string>;

/// A file of lines that one run of the program leaves to the next, for this user alone.
///
/// Its first line names its form, and a file of another form is never written to. A change is made under a lock
/// and takes the place of the file as a whole, so two programs at once lose nothing, and a crash leaves the old
/// file or the new one; through a link the file that it leads to is replaced. The lock is a file of its own
/// beside it.
class StateFile {
 public:
  /// @param path  empty where there is no home
  /// @param form  the first line: a name, a blank and a number
  /// @param noun  what the file holds, for a message: "list of checkouts"
  StateFile(std::string path, std::string form, std::string noun)
      : path_(std::move(path)), form_(std::move(form)), noun_(std::move(noun)) {}

  /// The lines after the first one; none of a file that is empty or isn't there.
  /// @return a failure for a file that can't be read, or is of another form
  [[nodiscard]] Result<StateLines> Read() const;

  /// Changes the lines. Makes the directory, and waits some seconds for another run that changes them.
  /// @param change  says whether there was anything to change; not called if the lines can't be read
  /// @return why the old file is still there, or an empty text
  [[nodiscard]] std::string Change(const std::function<bool(StateLines&)>& change) const;

 private:
  [[nodiscard]] std::string FaultOfFirstLine(std::string_view line) const;

  std::string path_;
  std::string form_;
  std::string noun_;
};

/// The time in UTC as state files have it: 2026-01-31T09:00:00Z.
[[nodiscard]] std::string TimeOfNow();

}  // namespace vtdirect_cli
