#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vtdirect_cli {

/// A checkout that the program keeps, so that nobody has to copy the UID of a working copy about.
struct KeptCheckout {
  std::string document;  ///< UID of the document as it was before the checkout
  std::string uid;       ///< UID of the working copy, to go on with
  std::string name;      ///< file name, escaped as in a path; for a reader
  std::string user;      ///< who holds it, as the server calls them
  std::string since;     ///< when it was first kept: UTC, as 2026-01-31T09:00:00Z
};

/// One line of the file, without a line feed: the five fields, separated by tabs. A backslash and every control
/// byte is written as "\xHH"; all other bytes are written as they are.
[[nodiscard]] std::string LineOfCheckout(const KeptCheckout& checkout);

/// @return nothing for a line that LineOfCheckout would not have written, or that names no working copy
[[nodiscard]] std::optional<KeptCheckout> CheckoutOfLine(std::string_view line);

/// Whether a UID leads to this checkout: it is that of the working copy, or it names the document that was
/// checked out. The server may tell the owner of a checkout the id of the working copy where it tells others
/// that of the document, so both ids count. The UID of another working copy of that document does not lead
/// here: whoever gives it means that one.
[[nodiscard]] bool LeadsTo(const KeptCheckout& checkout, const std::string& uid);

/// Whether the UID is that of a working copy in a temporary workspace, by its form.
[[nodiscard]] bool IsTemporaryCopy(const std::string& uid);

/// The UID of the working copy as one in a workspace of the user's own would have it: its own id and the
/// workspace's. Of a UID in another form a copy.
[[nodiscard]] std::string ByOwnId(const std::string& uid);

/// The UID of the document that a working copy in a temporary workspace was taken from. Of a UID in another
/// form a copy.
[[nodiscard]] std::string ByDocumentId(const std::string& uid);

/// Whether the UID names the workspace that its object is in, which takes it to be checked in.
[[nodiscard]] bool HasWorkspace(const std::string& uid);

/// The id of the document in the UID, without a workspace; of a temporary checkout that of the document that
/// was checked out.
[[nodiscard]] std::string DocumentIdOf(const std::string& uid);

/// Whether the UID names anything: the library gives one with an empty id where a server has answered without
/// a document.
[[nodiscard]] bool HasObjectId(const std::string& uid);

/// Whether both are UIDs, of one object on one server.
[[nodiscard]] bool AreSameUid(const std::string& one, const std::string& other);

}  // namespace vtdirect_cli
