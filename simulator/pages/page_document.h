#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/store/database.h"
#include "simulator/store/document_store.h"
#include "simulator/wire/json.h"
#include "simulator/wire/json_value.h"
#include "simulator/wire/messages.h"

namespace vantry_sim {

/// Writes the latest version of each document in a folder, as entries of an array.
void WriteFolderDocuments(JsonText& json, Database& database, std::int64_t folder);

/// Writes the workspaces of a user with what they hold, as entries of an array.
void WritePageWorkspaces(JsonText& json, Database& database, std::string_view user);

/// Writes everything that a page shows of a document. @param user who looks, and may edit. @param baseUrl in
/// front of content addresses
void WritePageDocument(JsonText& json, Database& database, const DocumentRow& document, std::string_view user,
                       std::string_view baseUrl);

/// What a user edits when the address names a document: one's own working copy of it where there is one.
/// Addresses of clients name the document that was checked out.
std::optional<DocumentRow> WorkingCopyOr(Database& database, const DocumentRow& document,
                                         std::string_view user);

/// Gives a document another name, number and attributes, in its own place. To be called in a transaction.
/// @return a refusal for a document that is checked out, other than the working copy itself, or has a newer
/// version, and for a body that says anything else
Refusal EditPageDocument(Database& database, const DocumentRow& document, JsonValue body);

}  // namespace vantry_sim
