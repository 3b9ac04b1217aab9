#include "documents/storing/conflict_resolution.h"

#include <gtest/gtest.h>

#include "tests/unit/documents/json_text.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface::vantry;

std::string TextOf(const ConflictResolution& resolution, const std::string& id) {
  rapidjson::Document memory;
  return JsonText(MakeResolution(memory.GetAllocator(), resolution, id));
}

// The server's own spelling: a code with its letters in the right order would resolve nothing.
TEST(ConflictResolution, OfACheckoutSubstitutesTheMaster) {
  EXPECT_EQ(TextOf(checkoutResolution, "M2002"),
            R"({"code":"vn.epm.util.EPMConflictType.WORKASPACE_ADD_EXISTING_OBJECT",)"
            R"("resolutionOption":"vn.epm.util.EPMResolutionType.WORKSPACE_SUBSTITUTE_EXISTING_OBJECT",)"
            R"("appliedEntities":[{"type":"vn.epm.EPMDocumentMaster","field":"id","value":"M2002"}]})");
}

TEST(ConflictResolution, OfACheckinIgnoresStaleSecondaryContent) {
  EXPECT_EQ(
      TextOf(checkinResolution, "D1002"),
      R"({"code":"com.zvk.vantry.udkm.common.conflict.UdkmConflictType.STALE_SEC_CONTENT",)"
      R"("resolutionOption":"com.zvk.vantry.udkm.common.conflict.UdkmResolutionType.IGNORE_STALE_SEC_CONTENT",)"
      R"("appliedEntities":[{"type":"vn.epm.EPMDocument","field":"id","value":"D1002"}]})");
}

TEST(ConflictResolution, OfAnIterationMovesTheImageToTheNewVersion) {
  EXPECT_EQ(
      TextOf(iterationResolution, "D1001"),
      R"({"code":"vn.epm.upload.EPMUploadConflictType.IMAGE_HAS_REP_RULE_WITH_OTHER_VERSION_OF_ORIGINAL",)"
      R"("resolutionOption":"vn.epm.upload.EPMUploadResolutionType.UPDATE_IMAGE_TO_NEW_VERSION",)"
      R"("appliedEntities":[{"type":"vn.epm.EPMDocument","field":"id","value":"D1001"}]})");
}

TEST(ConflictResolution, NamesAnEmptyIdAndEscapesAnOddOne) {
  EXPECT_NE(TextOf(checkoutResolution, "").find(R"("field":"id","value":"")"), std::string::npos);
  EXPECT_NE(TextOf(checkoutResolution, "a\"b\\\n").find(R"("value":"a\"b\\\n")"), std::string::npos);
}

}  // namespace
}  // namespace vtdirect_test
