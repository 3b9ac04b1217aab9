#pragma once

#include <optional>
#include <string>

#include "hosts/cli/failures/result.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/put_request.h"

namespace vtdirect_cli {

/// Where a file goes, as the server tells before anything is sent.
struct PutTarget {
  enum class Action {
    Create,   ///< a new document at a path
    Iterate,  ///< a new iteration of a document that nobody has checked out
    Store     ///< into a working copy
  };
  Action action = Action::Create;
  std::string address{};   ///< the path of a new document, or a UID
  bool temporary = false;  ///< the working copy is in a temporary workspace
  /// Of a new document: another one of its name is in another folder, and the path leads to that.
  bool hasNamesake = false;
  /// By which UID the document is read that a store or an iteration follows. In a temporary workspace that of
  /// the working copy by its own id: the UID to go on with reads as the document that was checked out.
  std::string before{};
};

/// What an action is called.
struct ActionWords {
  const char* step;   ///< in the journal
  const char* done;   ///< what has become of the document
  const char* doing;  ///< to be followed by its address
};
[[nodiscard]] const ActionWords& WordsOf(PutTarget::Action action);

/// What the library is given for a target. It takes the path of a new document for that of its namesake in
/// another folder, and refuses it. With a version that no document has the path leads to none, and the version
/// is not part of the new document's name.
[[nodiscard]] std::string PathToStoreAt(const PutTarget& target);

/// Finds out what the address of the request means. A folder takes the file's name. What isn't there is created, also
/// beside a document of the same name in another folder. A document that this user has checked out by this program
/// gets a store into its working copy. Makes requests, none of which changes anything.
/// @return where it goes, or a failure for what the server can't take: no such folder, checked out by somebody
///         else, an older iteration
[[nodiscard]] Result<PutTarget> SettlePutTarget(Host& host, const PutRequest& request);

}  // namespace vtdirect_cli
