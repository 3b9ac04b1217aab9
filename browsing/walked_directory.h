#pragma once

#include <functional>
#include <memory>

#include "browsing/dir_entry.h"

namespace lxservices::cms_interface {

class WalkedDirectory;

/// Takes one entry of a walk. With a folder comes the directory that it is, with a document null.
using WalkCallback =
    std::function<void(const DirEntryInfoExt& entry, const std::shared_ptr<WalkedDirectory>& folder)>;

/// How a directory was listed.
enum class ListingAnswer {
  Whole,     ///< to its end
  Broken,    ///< it failed, perhaps after some entries
  NotThere,  ///< nothing was delivered, for the server says that there is no such directory any more
};

/// Whether an HTTP status says that there is nothing at an address.
[[nodiscard]] constexpr bool IsNotThere(int httpStatus) {
  return httpStatus == 404 || httpStatus == 410;
}

/// A directory that a walk has come to, which knows what the listing above it told of it. Any number of
/// threads may use it at once. It holds a share of the connection and not of the server object.
class WalkedDirectory {
 public:
  virtual ~WalkedDirectory() = default;

  /// Lists the directory, and asks for it by its path once if it is not where it was any more. Makes requests.
  /// @return false when that failed; what was delivered before stays delivered
  [[nodiscard]] bool List(const WalkCallback& callback, ReadDirFlags flags);

  /// Lists the directory by what is known of it, and asks for nothing again.
  [[nodiscard]] virtual ListingAnswer ListAsFound(const WalkCallback& callback, ReadDirFlags flags) = 0;

 protected:
  /// Looks the directory up by its path. Null if it is not there, and for one that is looked up each time.
  [[nodiscard]] virtual std::shared_ptr<WalkedDirectory> FindAnew() { return nullptr; }
};

}  // namespace lxservices::cms_interface
