#pragma once

#include <cstdint>
#include <string_view>

#include "simulator/wire/json.h"
#include "simulator/wire/odata_collection.h"

namespace vantry_sim {

/// The two kinds of documents; they differ in the service that shows them and in what it calls their CAD
/// name.
enum class DocumentService { Dynamic, Cad };

/// The latest version of each document that is checked in to a folder.
/// @param filtered whether the client sent a $filter, which then leads to the rows rather than the folder
ODataCollection FolderContents(std::int64_t folder, DocumentService service, bool filtered);

/// Documents of all folders, with the user's own working copies.
/// @param latestOnly one row for each document: the user's working copy, or else its latest version
ODataCollection DocumentSearch(DocumentService service, bool latestOnly, bool filtered,
                               std::string_view user);

/// Writes the member "Versions" of an $expand: the checked-in versions of the document, the oldest first.
/// @param expand selects what VersionsHave
void WriteVersions(JsonText& json, Database& database, std::int64_t iteration, DocumentService service,
                   const ODataExpand& expand);

/// A dynamic document alone.
/// @param iteration its row id; any other number gives an empty list
ODataCollection OneDocument(std::int64_t iteration);

/// The latest version of each translated document that came of a source XLIFF.
/// @param xliffMaster row id of the master of the source XLIFF
ODataCollection Translations(std::int64_t xliffMaster);

/// Writes the properties of a row, which all have columns.
void WriteDocumentMembers(JsonText& json, const ODataRow& row);

/// Whether versions have every property that the $expand selects.
bool VersionsHave(DocumentService service, const ODataExpand& expand);

}  // namespace vantry_sim
