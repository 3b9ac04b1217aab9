#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace vtdirect_test {

/// A call as docs/requests.md has a line for it.
struct CountedCall {
  /// Makes the call; false when it did not do what it is for, so that a failure's requests are not counted.
  std::function<bool()> run;
  /// Runs once before the counting: opens what `run` reads.
  std::function<void()> prepare = [] {};
  /// Whether the server is in the host's list.
  bool isListed = true;
  /// Whether a server without OData refuses it, and what counts there is what that takes.
  bool needsOData = false;
};

/// By function and what it is called with, in the words of the page.
[[nodiscard]] const std::map<std::pair<std::string, std::string>, CountedCall>& CountedCalls();

/// By function: the calls that make no request at all.
[[nodiscard]] const std::map<std::string, std::function<void()>>& SilentCalls();

/// The temporary files that the calls have left behind. Its first call makes the directory for them, before
/// any thread starts: the directory is told to the library by an environment variable.
[[nodiscard]] std::vector<std::string> LeftoversOfCalls();

/// Puts the server into the host's list under a fresh server object, or takes it out.
void ListSampleServer(bool isListed);

}  // namespace vtdirect_test
