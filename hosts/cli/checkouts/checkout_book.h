#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/failures/result.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {

/// What is in the book.
struct BookContents {
  std::vector<KeptCheckout> checkouts{};  ///< in the order in which they were first kept
  bool readable = true;                   ///< false: the file could not be read at all, or is of another form
  std::string fault;                      ///< what could not be read, for a reader; empty when all could
};

/// The file that keeps checkouts from one run to the next.
///
/// A line that can't be understood stays as it is. None of the functions makes a request.
class CheckoutBook {
 public:
  explicit CheckoutBook(std::string path = Location()) : path_(std::move(path)) {}

  /// $XDG_STATE_HOME/vtdirect/checkouts, else ~/.local/state/vtdirect/checkouts; empty without a home.
  [[nodiscard]] static std::string Location();

  [[nodiscard]] const std::string& path() const { return path_; }

  /// All that is there. A file that isn't there is an empty book.
  [[nodiscard]] BookContents Read() const;

  /// The checkout that this UID leads to (see LeadsTo).
  [[nodiscard]] std::optional<KeptCheckout> Find(const std::string& uid) const;

  /// Keeps a checkout; it takes the place of those that its document or its UID leads to.
  /// @return why it could not be kept, or an empty text
  [[nodiscard]] std::string Keep(const KeptCheckout& checkout) const;

  /// Drops the checkouts that this UID leads to. Does not touch the file without any.
  /// @return why it could not be dropped, or an empty text
  [[nodiscard]] std::string Forget(const std::string& uid) const;

 private:
  std::string path_;
};

/// The UID that an address leads to: that of the kept working copy when there is one, else the address's own;
/// empty when there is no such object. Makes requests for a path. Warns of a book that can't be read.
[[nodiscard]] std::string UidToGoOnWith(Host& host, const std::string& address);

/// The UID with the workspace of its object, which a check-in needs. The UID itself if it has one already, or if the
/// object is in no workspace of the user's own. A path of a document that the user has checked out by other means may
/// lead to the working copy without its workspace. Makes requests.
[[nodiscard]] std::string WithWorkspace(const std::string& uid);

/// Both in one, for an address whose working copy is going to be changed; a working copy that is not kept is
/// looked for on the server. Makes requests.
/// @return its UID, empty if there is no such object; a failure for a document that is elsewhere than its path
///         says, and for a working copy that the server does not tell for certain
[[nodiscard]] Result<std::string> FindWorkingCopy(Host& host, const std::string& address);

/// Keeps a working copy. What the server has done is done even when the book can't be written, so that is a
/// warning, which tells the UID.
/// Makes requests.
/// @param address  what was checked out, as it was addressed before
/// @param uid      the working copy's
/// @return whether it is kept
bool KeepCheckout(Host& host, const std::string& address, const std::string& uid);

/// Drops a checkout that has ended. A book that can't be written is a warning.
/// @param uid  the working copy's, or the document's
void ForgetCheckout(Host& host, const std::string& uid);

}  // namespace vtdirect_cli
