#pragma once

#include <string_view>

#include "connection/json_parsing.h"
#include "documents/reading/document_records.h"

/// Reading of a document out of the text of its JSON, without a tree of all that is in it. What is an error in
/// the text is one as JsonReader has it, wherever it is: the record is then what was known before.
namespace lxservices::cms_interface::vantry {

/// Reads a text that is in memory whole. Makes no request.
/// @param known   what the text is read on top of; null for nothing
/// @param record  an empty one; afterwards what was known, if the text is no object, no JSON, or longer than the
///                settings allow (largestJson)
/// @return whether the text is an object
[[nodiscard]] bool ReadDocumentText(std::string_view text, const DocumentRecord* known,
                                    DocumentRecord& record);

/// The same for a text that comes in pieces.
[[nodiscard]] bool ReadDocumentText(const JsonPieces& pieces, const DocumentRecord* known,
                                    DocumentRecord& record);

}  // namespace lxservices::cms_interface::vantry
