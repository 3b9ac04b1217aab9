#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/store/database.h"
#include "simulator/store/document_store.h"
#include "simulator/wire/or_refusal.h"

namespace vantry_sim {

/// The dynamic document with this id; a refusal with 404 for an unknown one, a CAD document, and somebody
/// else's working copy.
OrRefusal<DocumentRow> FindDynamicDocument(Database& database, std::string_view oid, std::string_view user);

/// Row id of the iteration that is the document's source XLIFF: what was linked to this version of it or,
/// where nothing was, to the version before. Nothing for a document that was never linked.
std::optional<std::int64_t> SourceXliffOf(Database& database, const DocumentRow& document);

/// Row id of the master of the source XLIFF that a document's translations came of. A source XLIFF is its
/// own.
std::optional<std::int64_t> TranslatedXliffOf(Database& database, const DocumentRow& document);

/// Makes an XLIFF document the source XLIFF of a document, in place of the one before. To be called in a
/// transaction.
/// @return a refusal for a document that was not made as XLIFF, isn't the latest version, is in a workspace
/// or belongs to another document already; and for a source that is XLIFF itself, the same document included
Refusal LinkXliff(Database& database, const DocumentRow& document, const DocumentRow& xliff);

/// Gives a document another extended type, in its own place: id and version stay. To be called in a
/// transaction.
/// @return a refusal for a document that is checked out, other than the working copy itself, or has a
/// newer version
Refusal SetExtendedType(Database& database, const DocumentRow& document, std::string_view type);

}  // namespace vantry_sim
