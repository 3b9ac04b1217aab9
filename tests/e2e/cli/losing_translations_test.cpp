#include <gmock/gmock.h>

#include "tests/e2e/cli/accident_fixture.h"
#include "tests/e2e/cli/xliff_fixture.h"

namespace vtdirect_test {

/// The commands of translation, with every request of them failing in every way, and killed before and after
/// each: the words that are told agree with the server.
class LosingTranslations : public AccidentTest {
 protected:
  void SetUp() override {
    AccidentTest::SetUp();
    WriteFile(Here("chain.xlf"), English());
    KeepBeginning();
  }

  void ExpectTheLinkIsTold(const std::string& id) {
    EXPECT_EQ(ReadFile(Here("chain.xlf")), English());
    const std::string link = XliffLinkOf(server(), id);
    const bool isLinked = !link.empty() && DocumentOf(server(), link).bytes == English();
    const bool isTold =
        result_.status == 0 || recovered_.out.find("chain.xlf is the source XLIFF of ") != std::string::npos;
    EXPECT_EQ(isTold, isLinked) << recovered_.out;
  }

  [[nodiscard]] bool IsPublished() const {
    const auto attributes = DocumentOf(server(), "D1031").attributes;
    const auto type = attributes.find("ZVK_DD_EXTENDED_DOC_TYPE");
    return type != attributes.end() && type->second == "x-raomPublished";
  }
};

TEST_F(LosingTranslations, WhicheverRequestOfAFirstSourceFails) {
  MeetEveryAccident({"xliff", "put", "//sim/?id=D1032", "chain.xlf", "-l", "en"}, [this] {
    ExpectRecovery();
    ExpectTheLinkIsTold("D1032");
  });
}

TEST_F(LosingTranslations, WhicheverRequestOfAFurtherSourceFails) {
  MeetEveryAccident({"xliff", "put", "//sim/?id=D1028", "chain.xlf", "-l", "en"}, [this] {
    ExpectRecovery();
    ExpectTheLinkIsTold("D1028");
  });
}

// No question tells whether a translation is marked, so what is open stays so until it is marked once more.
TEST_F(LosingTranslations, WhicheverRequestOfAPublicationFails) {
  ASSERT_FALSE(IsPublished());
  MeetEveryAccident({"xliff", "publish", "//sim/?id=D1031"}, [this] {
    const bool isOpen = !OpenEntries().empty();
    EXPECT_EQ(Run({"recover"}).status, isOpen ? 11 : 0);
    EXPECT_TRUE(isOpen || IsPublished() == (result_.status == 0));
    EXPECT_EQ(Run({"xliff", "publish", "//sim/?id=D1031"}).status, 0);
    EXPECT_TRUE(IsPublished());
    EXPECT_EQ(OpenEntries(), "");
  });
}

}  // namespace vtdirect_test
