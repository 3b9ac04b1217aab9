#include <gmock/gmock.h>

#include "tests/e2e/cli/checkout_fixture.h"

using testing::HasSubstr;

namespace vtdirect_test {

class Open : public VtDirect {
 protected:
  Open() {
    Serve();
    WriteHome("browser", "#!/bin/sh\nprintf '%s' \"$*\" > \"$HOME/shown\"\n", 0755);
    environment_["BROWSER"] = Home("browser");
  }
};

TEST_F(Open, ShowsThePageOfADocumentInTheBrowser) {
  const std::string url = Run({"browse-url", forkPath}).out;
  const ProcessResult result = Run({"open", forkPath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(ReadFile(Home("shown")) + "\n", url);
  EXPECT_EQ(result.out, "");
}

TEST_F(Open, GoesOnToTheNextBrowser) {
  environment_["BROWSER"] = "/no/such/browser:false:" + Home("browser");
  EXPECT_EQ(Run({"open", forkPath}).status, 0);
  EXPECT_THAT(ReadFile(Home("shown")), HasSubstr("http://"));
}

TEST_F(Open, NamesTheAddressWhenNoBrowserCanBeStarted) {
  environment_["BROWSER"] = "/no/such/browser";
  const ProcessResult result = Run({"open", forkPath});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("no browser could be started for http://" + server().authority()));
}

TEST_F(Open, OpensNothingForADocumentThatIsNotThere) {
  EXPECT_EQ(Run({"open", "//sim/Products/Trekking Bike/Folders/Frame/none.lxz"}).status, 6);
}

}  // namespace vtdirect_test
