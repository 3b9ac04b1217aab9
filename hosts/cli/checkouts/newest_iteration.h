#pragma once

#include <vtdirect/outcome.h>

#include <optional>
#include <string>

/// Which iteration of a document is the newest, as the server tells. The library takes the one that it is asked about
/// for the newest when it gets no answer. Each function makes requests.
namespace vtdirect_cli {

/// An iteration beside the newest one of its document.
struct IterationState {
  std::string version;
  std::string newestVersion;

  [[nodiscard]] bool isNewest() const { return version == newestVersion; }
};

/// The state of the iteration at this UID; nothing when it can't be read or the server did not tell the newest one.
[[nodiscard]] std::optional<IterationState> AskForNewest(const std::string& uid);

/// The UID of the newest iteration of a document, which is the given one when there is none newer; nothing when the
/// server did not tell.
[[nodiscard]] std::optional<std::string> NewestUidOf(const std::string& uid);

/// Whether a question for the newest iteration was left without an answer. Makes no request.
/// @param outcome  of that question
[[nodiscard]] bool NewestIsUntold(const VtDirectManager::Outcome& outcome);

}  // namespace vtdirect_cli
