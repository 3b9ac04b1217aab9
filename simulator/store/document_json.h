#pragma once

#include <string_view>

#include "simulator/store/database.h"
#include "simulator/store/document_store.h"
#include "simulator/wire/json.h"

namespace vantry_sim {

/// Writes a document as an object of a version list: what is on the iteration itself, its context, its
/// state and its master.
/// @param user who asks; decides "isCheckoutByYou"
void WriteDocumentSummary(JsonText& json, const DocumentRow& document, std::string_view user);

/// Writes a whole document, with its location, dependencies, contents and attributes.
/// @param baseUrl in front of the content URLs, without "/" at its end
void WriteDocument(JsonText& json, Database& database, const DocumentRow& document, std::string_view user,
                   std::string_view baseUrl);

}  // namespace vantry_sim
