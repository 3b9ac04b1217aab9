#pragma once

#include <cstdint>
#include <string_view>

#include "simulator/wire/json.h"
#include "simulator/wire/odata_collection.h"

namespace vantry_sim {

/// Containers as OData shows them.
/// @param kind of a context; empty: all kinds
ODataCollection ContainerList(std::string_view kind);

/// The folders right below one.
/// @param parent 0 for the roots of the context
ODataCollection FolderList(std::int64_t context, std::int64_t parent);

/// Writes the member "Folders" of an $expand: the folders below, as many levels of them as it asks for.
/// @param parent 0 for the roots of the context
/// @param expand selects what FoldersHave
void WriteFolderTree(JsonText& json, Database& database, std::int64_t context, std::int64_t parent,
                     const ODataExpand& expand);

/// Whether folders have every property that the $expand selects.
bool FoldersHave(const ODataExpand& expand);

}  // namespace vantry_sim
