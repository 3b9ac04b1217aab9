#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulator/routes/service_context.h"
#include "simulator/store/document_store.h"
#include "simulator/wire/or_refusal.h"

namespace vantry_sim {

/// What somebody does to a document without the clients knowing.
struct DocumentChange {
  std::string user;
  std::string comment;
  std::string workspace;  ///< id of one of the user's; empty: any in the context, made if there is none
  std::optional<std::string> content;  ///< bytes of the primary content; nothing: those that it has
  std::vector<std::pair<std::string, std::string>> attributes;  ///< added to those that it has
};

// Each of these is to be called in a transaction, which is to be rolled back after a refusal, and gives the
// id of the version or the working copy that came of it. What a server would refuse to everybody is refused
// here too; conflicts that a client would be asked about are resolved.

/// The version or the working copy with this id, whoever's it is.
std::optional<DocumentRow> FindAnyDocument(Database& database, std::string_view oid);

/// Makes the next iteration of a document that nobody has checked out.
OrRefusal<std::string> IterateAs(const ServiceContext& context, const DocumentRow& document,
                                 const DocumentChange& change);
/// Checks a document out.
OrRefusal<std::string> CheckOutAs(const ServiceContext& context, const DocumentRow& document,
                                  const DocumentChange& change);
/// Checks in what somebody has checked out. @param document the base or the working copy
OrRefusal<std::string> CheckInAs(const ServiceContext& context, const DocumentRow& document,
                                 const DocumentChange& change);
/// Throws away what somebody has checked out. @param document the base or the working copy
OrRefusal<std::string> UndoAs(const ServiceContext& context, const DocumentRow& document,
                              const DocumentChange& change);
/// Gives a version other values of attributes, in its own place.
OrRefusal<std::string> SetAttributes(const ServiceContext& context, const DocumentRow& document,
                                     const DocumentChange& change);
/// Deletes a document, or one version alone.
void Delete(const ServiceContext& context, const DocumentRow& document, bool versionAlone);

}  // namespace vantry_sim
