#pragma once

#include <string>
#include <vector>

#include "tests/e2e/cli/vtdirect_fixture.h"

namespace vtdirect_test {

/// The demo's D1001, by its path, and by its path in a workspace of anna's.
inline constexpr const char* forkPath = "//sim/Products/Trekking Bike/Folders/Frame/fork.lxz";
inline constexpr const char* forkOnBench = "//sim/Products/Trekking Bike/Workspaces/Anna's bench/fork.lxz";

/// The first line of the file that keeps checkouts.
inline constexpr const char* bookHead = "vtdirect-checkouts 1\n";

/// Checks documents out, and looks at what the server holds and what is kept afterwards.
class CheckoutTest : public VtDirect {
 protected:
  /// Starts the server again where it was, with all that it holds.
  void Restart(std::vector<std::string> options);

  /// Checks out, and gives the UID of the working copy.
  std::string CheckOut(const std::string& address);

  /// Runs with another home, so that what is kept here learns nothing of it.
  ProcessResult RunElsewhere(const std::vector<std::string>& words);

  /// The file that keeps checkouts; empty when it isn't there.
  [[nodiscard]] std::string Book() const;
  [[nodiscard]] std::string BookPath() const { return Home(".local/state/vtdirect/checkouts"); }

  /// Who has a document checked out, as the server tells anna; empty for nobody.
  [[nodiscard]] std::string HolderOf(const std::string& id) const;
  /// How many temporary workspaces anna has in the product Trekking Bike.
  [[nodiscard]] std::size_t TemporaryWorkspaces() const;

  /// The regular expression of a working copy's UID in a temporary workspace.
  [[nodiscard]] std::string TemporaryUid(const std::string& id, const std::string& name) const;
};

}  // namespace vtdirect_test
