#include "documents/storing/secondary_contents.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include "tests/unit/documents/json_text.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface::vantry;

class SecondaryContents : public testing::Test {
 protected:
  SecondaryContents() { parts.document = &document; }
  void Has(const char* category, const char* fileName, bool isForwardable) {
    ContentRecord content;
    content.category = category;
    content.fileName = fileName;
    content.isForwardable = isForwardable;
    content.isHidden = true;
    content.streamId = 5;
    document.secondaryContents.push_back(content);
  }
  std::string Text() {
    rapidjson::Document memory;
    return JsonText(MakeSecondaryContents(parts, "p", memory.GetAllocator()));
  }

  DocumentRecord document;
  UploadedContent viewable{902, "v"};
  UploadedContent vcs{903, "m"};
  InstructionParts parts;
};

constexpr const char* uploaded =
    R"({"category":"VIEWABLE","fileName":"p.lxz","streamId":902,"uploadInfo":{"encodedCCD":"v"}},)"
    R"({"category":"VCSINFO","fileName":"cad-metadata.json","isHidden":true,"streamId":903,)"
    R"("uploadInfo":{"encodedCCD":"m"}})";

TEST_F(SecondaryContents, CarryWhatIsForwardableByCategoryAndNameBeforeWhatWasUploaded) {
  Has("PICTURE", "b.png", true);
  Has("VIEWABLE", "old.lxz", false);
  Has("VCSINFO", "cad-metadata.json", true);
  Has("VIEWABLE", "other.lxz", true);
  Has("", "", true);
  parts.viewable = &viewable;
  parts.vcs = &vcs;
  EXPECT_EQ(Text(), std::string(R"([{"category":"PICTURE","fileName":"b.png"},)"
                                R"({"category":"VIEWABLE","fileName":"other.lxz"},)"
                                R"({"category":"","fileName":""},)") +
                        uploaded + "]");
}

TEST_F(SecondaryContents, AreOnlyWhatWasUploadedWhenTheSwitchIsSet) {
  setenv("FENLOOM_DC_DISCARD_SEC_CONTENT", "1", 1);
  Has("PICTURE", "b.png", true);
  parts.viewable = &viewable;
  parts.vcs = &vcs;
  EXPECT_EQ(Text(), std::string("[") + uploaded + "]");
  parts.viewable = nullptr;
  parts.vcs = nullptr;
  EXPECT_EQ(Text(), "[]");
}

TEST_F(SecondaryContents, RememberTheSwitchForTheLifeOfTheProcess) {
  Has("PICTURE", "b.png", true);
  EXPECT_EQ(Text(), R"([{"category":"PICTURE","fileName":"b.png"}])");
  setenv("FENLOOM_DC_DISCARD_SEC_CONTENT", "1", 1);
  EXPECT_EQ(Text(), R"([{"category":"PICTURE","fileName":"b.png"}])");
}

TEST_F(SecondaryContents, OfANewDocumentLeaveTheSwitchUnread) {
  parts.document = nullptr;
  EXPECT_EQ(Text(), "[]");
  setenv("FENLOOM_DC_DISCARD_SEC_CONTENT", "1", 1);
  parts.document = &document;
  Has("PICTURE", "b.png", true);
  EXPECT_EQ(Text(), "[]");
}

TEST_F(SecondaryContents, OfANewDocumentAreWhatWasUploaded) {
  parts.document = nullptr;
  EXPECT_EQ(Text(), "[]");
  parts.vcs = &vcs;
  EXPECT_EQ(Text(), R"([{"category":"VCSINFO","fileName":"cad-metadata.json","isHidden":true,"streamId":903,)"
                    R"("uploadInfo":{"encodedCCD":"m"}}])");
}

}  // namespace
}  // namespace vtdirect_test
