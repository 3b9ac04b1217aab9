#include <gmock/gmock.h>

#include "tests/e2e/cli/checkout_fixture.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace vtdirect_test {

class Find : public CheckoutTest {
 protected:
  static constexpr const char* bike = "//sim/Products/Trekking Bike/";
};

TEST_F(Find, PrintsThePathsOfTheDocumentsOfAName) {
  Serve();
  const ProcessResult result = Run({"find", bike, "--name", "FORK.*"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr(std::string(forkPath) + "\n"));
  EXPECT_THAT(result.out, Not(HasSubstr("frame.lxz")));
}

TEST_F(Find, TakesATitleForANameToo) {
  Serve();
  EXPECT_THAT(Run({"find", bike, "--name", "Fork"}).out, HasSubstr(std::string(forkPath) + "\n"));
}

TEST_F(Find, FindsADocumentByItsNumber) {
  Serve();
  const ProcessResult result =
      Run({"--json", "find", "//sim/Products/Trekking Bike/Folders/", "--number", "0000100001"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("\"name\":\"fork.lxz\",\"number\":\"0000100001\",\"title\":\"Fork\""));
}

TEST_F(Find, FindsWhatTheUserHasCheckedOut) {
  Serve();
  EXPECT_EQ(Run({"find", "//sim/Products/Trekking Bike/Folders/Frame/", "--mine", "--name", "fork*"}).out,
            "");
  CheckOut(forkPath);
  EXPECT_EQ(Run({"find", "//sim/Products/Trekking Bike/Folders/Frame/", "--mine", "--name", "fork*"}).out,
            std::string(forkPath) + "\n");
}

TEST_F(Find, FindsWhatHasAVersionAfterAnother) {
  Serve();
  const std::string folder = "//sim/Products/Trekking Bike/Folders/Frame/";
  EXPECT_THAT(Run({"find", folder, "--newer", "A.99"}).out, HasSubstr(std::string(forkPath) + "\n"));
  EXPECT_THAT(Run({"find", folder, "--newer", "B.1", "--name", "fork*"}).out, IsEmpty());
}

TEST_F(Find, SaysThatAnOlderServerShowsNoVersions) {
  Serve({"--generation", "gateway"});
  const ProcessResult result = Run({"find", "//sim/Products/Trekking Bike/Folders/Frame/", "--newer", "A.1"});
  EXPECT_EQ(result.status, 11);
  EXPECT_THAT(result.err, HasSubstr("show no numbers or versions, so documents in them were passed over"));
}

TEST_F(Find, RefusesADocumentAndAFolderThatIsNotThere) {
  Serve();
  const ProcessResult document = Run({"find", "//sim/?id=D1001"});
  EXPECT_EQ(document.status, 1);
  EXPECT_THAT(document.err, HasSubstr("is a document and no folder"));
  EXPECT_EQ(Run({"find", "//sim/Products/Trekking Bike/Folders/none/"}).status, 6);
}

TEST_F(Find, GoesOnAfterAFolderThatCannotBeListed) {
  Serve({"--fault", "GET *Contents*=after:1,503*1"});
  const ProcessResult result = Run({"find", "//sim/Products/Trekking Bike/Folders/", "--name", "*.lxz"});
  EXPECT_EQ(result.status, 11) << result.err;
  EXPECT_THAT(result.err, HasSubstr("warning: cannot list "));
}

}  // namespace vtdirect_test
