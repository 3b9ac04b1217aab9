#pragma once

#include <string>
#include <string_view>

#include "documents/storing/document_writer.h"

/// What the server's workspace operations are told to do about conflicts.
namespace lxservices::cms_interface::vantry {

/// A conflict, how it is resolved, and the class of the object that it is about.
struct ConflictResolution {
  std::string_view code;
  std::string_view resolutionOption;
  std::string_view type;
};

/// Check-out: the object is in the workspace already. The server's own spelling of the code.
inline constexpr ConflictResolution checkoutResolution{
    "vn.epm.util.EPMConflictType.WORKASPACE_ADD_EXISTING_OBJECT",
    "vn.epm.util.EPMResolutionType.WORKSPACE_SUBSTITUTE_EXISTING_OBJECT", "vn.epm.EPMDocumentMaster"};

/// Check-in: secondary content is older than the primary one.
inline constexpr ConflictResolution checkinResolution{
    "com.zvk.vantry.udkm.common.conflict.UdkmConflictType.STALE_SEC_CONTENT",
    "com.zvk.vantry.udkm.common.conflict.UdkmResolutionType.IGNORE_STALE_SEC_CONTENT", "vn.epm.EPMDocument"};

/// Iteration and store: an image was made from another version of its original.
inline constexpr ConflictResolution iterationResolution{
    "vn.epm.upload.EPMUploadConflictType.IMAGE_HAS_REP_RULE_WITH_OTHER_VERSION_OF_ORIGINAL",
    "vn.epm.upload.EPMUploadResolutionType.UPDATE_IMAGE_TO_NEW_VERSION", "vn.epm.EPMDocument"};

/// The JSON of a resolution for one object. Pure.
[[nodiscard]] rapidjson::Value MakeResolution(JsonAllocator& allocator, const ConflictResolution& resolution,
                                              const std::string& id);

}  // namespace lxservices::cms_interface::vantry
