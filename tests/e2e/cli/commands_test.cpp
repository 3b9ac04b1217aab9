#include <gmock/gmock.h>

#include "tests/e2e/cli/vtdirect_fixture.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace vtdirect_test {

TEST_F(VtDirect, ListsServersOfTheConfigurationFileAndOfTheCommandLineByNickname) {
  WriteHome(".config/vtdirect/config", "# mine\n[servers]\nzeta = https://z.example/vt\nplm=http://old/\n",
            0644);
  const ProcessResult result = Run({"servers", "--server", "plm=https://plm.example/vt/"});
  EXPECT_EQ(result.out, "plm\thttps://plm.example/vt/\nzeta\thttps://z.example/vt/\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST_F(VtDirect, ReadsTheConfigurationFileThatTheEnvironmentOrAnOptionNames) {
  WriteHome("x/vtdirect/config", "[servers]\nx=http://x/\n", 0644);
  WriteHome("y", "[servers]\ny=http://y/\n", 0644);
  environment_["XDG_CONFIG_HOME"] = Home("x");
  EXPECT_EQ(Run({"servers"}).out, "x\thttp://x/\n");
  EXPECT_EQ(Run({"servers", "--config", Home("y")}).out, "y\thttp://y/\n");
}

TEST_F(VtDirect, ReadsTheConfigurationFileThatAVariableNamesUnlessAnOptionNamesAnother) {
  WriteHome("x", "[servers]\nx=http://x/\n", 0644);
  WriteHome("y", "[servers]\ny=http://y/\n", 0644);
  environment_["VTDIRECT_CONFIG"] = Home("x");
  EXPECT_EQ(Run({"servers"}).out, "x\thttp://x/\n");
  EXPECT_EQ(Run({"servers", "--config", Home("y")}).out, "y\thttp://y/\n");
  environment_["VTDIRECT_CONFIG"] = Home("missing");
  EXPECT_EQ(Run({"servers"}).status, 8);
}

TEST_F(VtDirect, ListsServersOfTheEnvironmentBetweenTheFileAndTheCommandLine) {
  WriteHome(".config/vtdirect/config", "[servers]\na=http://file/\nb=http://file/b\nc=http://file/c\n", 0644);
  environment_["VTDIRECT_SERVER_b"] = "http://environment/b";
  environment_["VTDIRECT_SERVER_c"] = "http://environment/c";
  EXPECT_EQ(Run({"servers", "-s", "c=http://line/c"}).out,
            "a\thttp://file/\nb\thttp://environment/b/\nc\thttp://line/c/\n");
  environment_["VTDIRECT_SERVER_d"] = "nowhere";
  const ProcessResult result = Run({"servers"});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.err, HasSubstr("VTDIRECT_SERVER_d: a server URL begins with"));
}

TEST_F(VtDirect, AsksWhetherAnotherWordWasMeant) {
  const auto adviceOf = [this](const std::vector<std::string>& words, int status) {
    const ProcessResult result = Run(words);
    EXPECT_EQ(result.status, status);
    return result.err;
  };
  EXPECT_THAT(adviceOf({"chekout", "//a/b"}, 2),
              HasSubstr("there is no command \"chekout\"; did you mean checkout?"));
  EXPECT_THAT(adviceOf({"get", "//a/b", "--ouput", "f"}, 2), HasSubstr("did you mean --output?"));
  EXPECT_THAT(adviceOf({"xliff", "lst"}, 2), HasSubstr("did you mean list?"));
  EXPECT_THAT(adviceOf({"xlif", "put"}, 2), HasSubstr("did you mean xliff?"));
  EXPECT_THAT(adviceOf({"--server", "plm=http://h/", "get", "//plmm/b"}, 9), HasSubstr("did you mean plm?"));
  EXPECT_THAT(adviceOf({"--server", "plm=http://h/", "doctor", "lpm"}, 9), HasSubstr("did you mean plm?"));
  EXPECT_THAT(adviceOf({"--server", "plm=http://h/", "ls", "plm"}, 2), HasSubstr("did you mean //plm/?"));
  EXPECT_THAT(adviceOf({"--server", "plm=http://h/", "uid", "plm/b"}, 2), HasSubstr("did you mean //plm/b?"));
  EXPECT_EQ(adviceOf({"zzzzzz"}, 2).find("did you mean"), std::string::npos);
}

TEST_F(VtDirect, ListsServersAsJsonObjects) {
  EXPECT_EQ(Run({"--json", "-s", "a=http://a/", "-s", "b=http://b/", "servers"}).out,
            "{\"schema\":2,\"command\":\"servers\",\"nickname\":\"a\",\"url\":\"http://a/\"}\n"
            "{\"schema\":2,\"command\":\"servers\",\"nickname\":\"b\",\"url\":\"http://b/\"}\n");
}

TEST_F(VtDirect, ChecksASupportedServer) {
  Serve();
  const ProcessResult result = Run({"check", server().url()});
  EXPECT_EQ(result.out, "url: " + server().url() + "\nsupported: yes\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(Run({"check", "sim"}).out, "url: " + server().url() + "\nsupported: yes\n");
  EXPECT_EQ(Run({"check", "sim", "--json"}).out,
            "{\"schema\":2,\"command\":\"check\",\"url\":\"" + server().url() + "\",\"supported\":true}\n");
}

TEST_F(VtDirect, TellsTheAddressThatAServerCallsItsOwn) {
  Serve();
  const std::string own = "http://" + server().authority();
  const TemporaryDirectory directory;
  const Simulator other(directory.path(), {"--codebase-url", own});
  const ProcessResult result = Run({"check", other.url()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "url: " + other.url() + "\nsupported: yes\nuse: " + own + "\n");
  EXPECT_EQ(Run({"--json", "check", other.url()}).out, "{\"schema\":2,\"command\":\"check\",\"url\":\"" +
                                                           other.url() + "\",\"supported\":true,\"use\":\"" +
                                                           own + "\"}\n");
}

TEST_F(VtDirect, GivesTheUidOfADocument) {
  Serve();
  const ProcessResult result = Run({"uid", server().Uid("D1001")});
  EXPECT_EQ(result.out, server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(Run({"uid", "//sim/?id=D1001"}).out, server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(Run({"uid", "korvufenloom-vfs://sim/?id=D1001"}).out,
            server().Uid("D1001") + "&file=/fork.lxz\n");
}

TEST_F(VtDirect, DescribesADocument) {
  Serve();
  const ProcessResult result = Run({"info", server().Uid("D1001")});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_THAT(result.out, StartsWith("address: " + server().Uid("D1001") +
                                     "\naddress_kind: uid\nserver: sim\nserver_url: " + server().url() +
                                     "\nexists: yes\nkind: document\nuid: " + server().Uid("D1001") +
                                     "&file=/fork.lxz\ntitle: Fork\nnumber: 0000100001\nname: "
                                     "fork.lxz\nversion: B.1\nlatest_version: B.1\n"));
  EXPECT_THAT(result.out, HasSubstr("\ncontent_url: http://" + server().authority() + forkContent + "\n"));
}

TEST_F(VtDirect, DescribesADocumentAsJson) {
  Serve();
  const ProcessResult result = Run({"info", "//sim/?id=D1005", "--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, StartsWith("{\"schema\":2,\"command\":\"info\",\"address\":\"//sim/?id=D1005\","
                                     "\"address_kind\":\"path\",\"server\":\"sim\",\"server_url\":\"" +
                                     server().url() + "\",\"exists\":true,"));
  EXPECT_THAT(result.out, HasSubstr("\"name\":\"Gr\\u00F6\\u00DFentabelle Rahmen.lxz\""));
  EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 1);
}

TEST_F(VtDirect, TellsThatAnObjectIsNotThere) {
  Serve();
  const ProcessResult result = Run({"info", "//sim/?id=D9999"});
  EXPECT_EQ(result.status, 6);
  EXPECT_EQ(result.out, "address: //sim/?id=D9999\naddress_kind: path\nserver: sim\nserver_url: " +
                            server().url() + "\nexists: no\n");
  EXPECT_THAT(result.err, HasSubstr("not found: //sim/?id=D9999"));
}

TEST_F(VtDirect, ShowsTheTraceThatIsAskedForOnStandardError) {
  Serve();
  const ProcessResult result = Run({"--trace", "0", "get", server().Uid("D1001"), "-o", "-"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.err,
              HasSubstr("trace 0 VtDirect: Downloading " + server().Uid("D1001") + " succeeded\n"));
  EXPECT_EQ(Run({"get", server().Uid("D1001"), "-o", "-"}).err, "");
}

TEST_F(VtDirect, ShowsHelpAndVersionOnStandardOutput) {
  EXPECT_THAT(Run({"--help"}).out, HasSubstr("Exit status:"));
  EXPECT_THAT(Run({"get", "--help"}).out, HasSubstr("--no-clobber"));
  EXPECT_THAT(Run({"--version"}).out, StartsWith("vtdirect "));
  EXPECT_EQ(Run({"--version"}).status, 0);
}

}  // namespace vtdirect_test
