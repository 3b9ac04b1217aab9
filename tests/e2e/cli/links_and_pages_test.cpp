#include <gmock/gmock.h>

#include "tests/e2e/cli/put_fixture.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace vtdirect_test {
namespace {

const std::string forkAddress = "//sim/Products/Trekking Bike/Folders/Frame/fork.lxz";
const std::string bench = "//sim/Products/Trekking Bike/Workspaces/Anna's bench/";

}  // namespace

class LinksAndPages : public PutTest {};

TEST_F(LinksAndPages, ListTheSourcesOfADocumentByNameAndUid) {
  Serve();
  const std::string line = "frame.lxz\t" + server().Uid("D1002") + "&file=/frame.lxz\n";
  for (const std::string& address : {forkAddress, server().Uid("D1001"), std::string("//sim/?id=D1001")}) {
    const ProcessResult result = Run({"links", address});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, line);
    EXPECT_EQ(result.err, "");
  }
  EXPECT_EQ(Run({"links", forkAddress, "--json"}).out,
            "{\"schema\":2,\"command\":\"links\",\"link\":\"frame.lxz\","
            "\"uid\":\"" +
                server().Uid("D1002") + "&file=/frame.lxz\"}\n");
}

TEST_F(LinksAndPages, EscapeTheNameOfALinkAsPutTakesIt) {
  Serve();
  WriteFile(Here("f"), "content");
  const std::string source = server().Uid("D1003") + "&file=/gear.lxz";
  const ProcessResult stored =
      Run({"put", "f", "//sim/Products/Trekking Bike/Folders/Frame/", "--link", "a%7cb=c.lxz=" + source});
  ASSERT_EQ(stored.status, 0) << stored.err;
  EXPECT_EQ(DocumentOf(server(), IdIn(stored.out)).sources.count("a|b=c.lxz"), 1U);
  EXPECT_EQ(Run({"links", server().Uid(IdIn(stored.out))}).out, "a%7cb=c.lxz\t" + source + "\n");
}

TEST_F(LinksAndPages, ListNothingForADocumentWithoutSources) {
  Serve();
  const ProcessResult result = Run({"links", server().Uid("D1003")});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "vtdirect: " + server().Uid("D1003") + " has no source links\n");
}

TEST_F(LinksAndPages, TellWhenADocumentOrASourceCannotBeRead) {
  Serve({"--fault", "GET *documents/D1002=404"});
  EXPECT_EQ(Run({"links", server().Uid("D9999")}).status, 6);
  EXPECT_EQ(Run({"links", "//sim/Products/Trekking Bike/Folders/Frame/none"}).status, 6);
  const ProcessResult result = Run({"links", forkAddress});
  EXPECT_EQ(result.status, 11);
  EXPECT_EQ(result.out, "frame.lxz\t\n");
  EXPECT_EQ(result.err, "vtdirect: 1 of 1 links lead to documents that can't be read\n");
}

TEST_F(LinksAndPages, GiveThePageOfAnObject) {
  Serve();
  const std::string url = server().url() + "app/#zvk1/tcomp/infoPage?oid=D1001\n";
  EXPECT_EQ(Run({"browse-url", forkAddress}).out, url);
  const std::string before = server().Log();
  EXPECT_EQ(Run({"browse-url", server().Uid("D1001")}).out, url);
  EXPECT_EQ(Run({"browse-url", server().Uid("D1026|W301")}).out,
            server().url() + "app/#zvk1/tcomp/infoPage?oid=D1026\n");
  EXPECT_EQ(server().Log(), before);
  EXPECT_EQ(Run({"browse-url", forkAddress + "x"}).status, 6);
}

TEST_F(LinksAndPages, GiveThePageThatEditsTheAttributesOfAWorkingCopy) {
  Serve();
  const std::string url = server().url() +
                          "servlet/VantryAuthGW/vn.enterprise.URLProcessor/URLTemplateAction?u8&action="
                          "MULTIEDITATTR&oid=D1026&wsName=Anna%27s%20bench&wscontext=1\n";
  EXPECT_EQ(Run({"edit-url", bench + "crank.lxz"}).out, url);
  EXPECT_EQ(Run({"edit-url", server().Uid("D1026|W301")}).out, url);
  EXPECT_EQ(Run({"edit-url", server().Uid("D1026")}).out, url);
}

TEST_F(LinksAndPages, TellWhyThereAreNoAttributesToEdit) {
  Serve();
  const ProcessResult plain = Run({"edit-url", forkAddress});
  EXPECT_EQ(plain.status, 1);
  EXPECT_EQ(plain.out, "");
  EXPECT_THAT(plain.err, HasSubstr("\"vtdirect checkout '" + forkAddress + "'\""));
  const ProcessResult brunos = Run({"edit-url", server().Uid("D1015")});
  EXPECT_EQ(brunos.status, 1);
  EXPECT_THAT(brunos.err, HasSubstr("is checked out by bruno"));
  EXPECT_EQ(Run({"edit-url", server().Uid("D9999")}).status, 6);
}

}  // namespace vtdirect_test
