#pragma once

#include <string>

#include "documents/storing/document_instruction.h"

namespace lxservices::cms_interface::vantry {

/// "secondaryContents": what the document carries forward, then the viewable, then the metadata file. The
/// environment variable FENLOOM_DC_DISCARD_SEC_CONTENT, read once at the first iteration or store, keeps the
/// first away.
/// @param primaryFileName  the viewable is named after it
[[nodiscard]] rapidjson::Value MakeSecondaryContents(const InstructionParts& parts,
                                                     const std::string& primaryFileName,
                                                     JsonAllocator& allocator);

}  // namespace lxservices::cms_interface::vantry
