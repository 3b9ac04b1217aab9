#include "documents/workspaces/temporary_workspace.h"

#include "base/result.h"
#include "base/settings.h"
#include "documents/workspaces/workspace_name.h"
#include "tests/wire/documents/flow_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;

// Names for these seconds: 0 c6801501, 1 2f821e22, 59 28f6179c.
constexpr const char* nameAt0 = "FenloomTMPc6801501";
constexpr const char* nameAt1 = "FenloomTMP2f821e22";

// Clocks of the test: one that stands, one that goes on by a second each time it is read.
std::uint32_t now = 0;
std::uint32_t StandingClock() {
  return now;
}
std::uint32_t RunningClock() {
  return now++;
}

std::string CreationBody(const std::string& name) {
  return R"({"name":")" + name + R"(","contextId":"C5","description":"ZVK Fenloom temporary workspace"})";
}

// A list of the names taken.
std::string Taken(const Lines& names) {
  std::string list;
  for (const auto& name : names) list += (list.empty() ? "" : ",") + (R"({"id":"W","name":")" + name + "\"}");
  return "[" + list + "]";
}

class TemporaryWorkspaces : public FlowTest {
 protected:
  TemporaryWorkspaces() {
    now = 0;
    ThenNonce();
  }
  static SentRequest Creation(const std::string& name) { return Write(workspacesPath, CreationBody(name)); }
  static SentRequest List() { return Read(workspacesPath + "?contextId=C5"); }
};

TEST_F(TemporaryWorkspaces, AreCreatedByOneRequestByteForByte) {
  transport.Then(200, R"({"id":"W77","name":"n","description":"d","contextId":"C5","more":[1]})");
  WorkspaceRecord workspace;
  EXPECT_TRUE(HandOver(
      CreateWorkspace(Begin(connection), "C5", "FenloomTMP0a1b2c3d", "ZVK Fenloom temporary workspace"),
      workspace));
  EXPECT_EQ(
      transport.requests(),
      (Requests{ReadNonce(), Write(workspacesPath, R"({"name":"FenloomTMP0a1b2c3d","contextId":"C5",)"
                                                   R"("description":"ZVK Fenloom temporary workspace"})")}));
  EXPECT_EQ(workspace.id, "W77");
  EXPECT_EQ(workspace.name, "n");
  EXPECT_EQ(workspace.description, "d");
  EXPECT_EQ(workspace.contextId, "C5");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(TemporaryWorkspaces, AreCreatedWithoutADescriptionOnlyForNull) {
  transport.Then(201, "{}").Then(201, "{}");
  WorkspaceRecord workspace;
  EXPECT_TRUE(HandOver(CreateWorkspace(Begin(connection), "C5", "n", std::nullopt), workspace));
  EXPECT_EQ(transport.requests().back().body, R"({"name":"n","contextId":"C5"})");
  EXPECT_TRUE(HandOver(CreateWorkspace(Begin(connection), "C5", "n", ""), workspace));
  EXPECT_EQ(transport.requests().back().body, R"({"name":"n","contextId":"C5","description":""})");
}

TEST_F(TemporaryWorkspaces, CountAsCreatedByTheStatusAlone) {
  for (const char* body : {"", "<html>", "[]", "7", R"({"id":7,"name":null})"}) {
    transport.Then(200, body);
    WorkspaceRecord workspace;
    workspace.id = "before";
    EXPECT_TRUE(HandOver(CreateWorkspace(Begin(connection), "C5", "n", "d"), workspace)) << body;
    EXPECT_EQ(workspace.id, "") << body;
  }
  for (const int status : {199, 300, 401, 409, 500}) {
    transport.Then(status, R"({"id":"W"})");
    WorkspaceRecord workspace;
    EXPECT_FALSE(HandOver(CreateWorkspace(Begin(connection), "C5", "n", "d"), workspace)) << status;
    EXPECT_EQ(workspace.id, "") << status;
  }
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(TemporaryWorkspaces, AreDeletedByAnEmptyArray) {
  transport.Then(200, "<html>").Then(500).ThenFail(du::http::ErrorCode::TimedOut);
  EXPECT_TRUE(DeleteWorkspace(Begin(connection), "OR:w/77"));
  EXPECT_EQ(transport.requests().back(), Write(workspacesPath + "/OR%3Aw%2F77/delete", "[]"));
  EXPECT_FALSE(DeleteWorkspace(Begin(connection), "W77"));
  EXPECT_FALSE(DeleteWorkspace(Begin(connection), "W77"));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(TemporaryWorkspaces, TakeTheFirstNameWhenTheServerDoes) {
  transport.Then(200, R"({"id":"W77"})");
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", StandingClock), "W77");
  EXPECT_EQ(transport.requests(), (Requests{ReadNonce(), Creation(nameAt0)}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(TemporaryWorkspaces, HaveTheHostsPrefixAndDescription) {
  SetTemporaryWorkspacePrefix("MYTMP");
  SetTemporaryWorkspaceDescription("ours");
  transport.Then(200, R"({"id":"W77"})");
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", StandingClock), "W77");
  EXPECT_EQ(transport.requests().back().body,
            R"({"name":"MYTMPc6801501","contextId":"C5","description":"ours"})");
}

TEST_F(TemporaryWorkspaces, AreNotTriedAgainWhenTheNameWasFree) {
  transport.Then(409, "no right").Then(200, Taken({nameAt1, "FenloomTMPC6801501", ""}));
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", StandingClock), "");
  EXPECT_EQ(transport.requests(), (Requests{ReadNonce(), Creation(nameAt0), List()}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

// Only a name, and only the whole of it, is a name that is taken.
TEST_F(TemporaryWorkspaces, AreNotTriedAgainForALongerNameOrAnotherMember) {
  transport.Then(409).Then(200, R"([{"id":"FenloomTMPc6801501","name":"FenloomTMPc6801501x",)"
                                R"("description":"FenloomTMPc6801501","contextId":"FenloomTMPc6801501"}])");
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", StandingClock), "");
  EXPECT_EQ(transport.requests(), (Requests{ReadNonce(), Creation(nameAt0), List()}));
}

TEST_F(TemporaryWorkspaces, HaveTheHostsPrefixAndDescriptionAtEveryTry) {
  SetTemporaryWorkspacePrefix("MYTMP");
  SetTemporaryWorkspaceDescription("ours");
  const std::string rest = R"(","contextId":"C5","description":"ours"})";
  const std::string taken = Taken({"MYTMPc6801501"});
  transport.Then(409).Then(200, taken).Then(200, R"({"id":"W78"})");
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", RunningClock), "W78");
  EXPECT_EQ(transport.requests().back().body, R"({"name":"MYTMP2f821e22)" + rest);
  now = 0;
  transport.Then(409).Then(200, taken).Then(200, R"({"id":"W79"})");
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", StandingClock), "W79");
  EXPECT_EQ(transport.requests().back().body, R"({"name":"MYTMPc68015010)" + rest);
}

TEST_F(TemporaryWorkspaces, CountAFailedListAsAnEmptyOne) {
  transport.Then(409).Then(500).Then(409).Then(200, R"({"items":[]})");
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", StandingClock), "");
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", StandingClock), "");
  EXPECT_EQ(transport.requests().size(), 5u);
}

TEST_F(TemporaryWorkspaces, TakeTheNameOfALaterSecondWhenTheFirstIsTaken) {
  transport.Then(409).Then(200, Taken({"x", nameAt0})).Then(200, R"({"id":"W78"})");
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", RunningClock), "W78");
  EXPECT_EQ(transport.requests(), (Requests{ReadNonce(), Creation(nameAt0), List(), Creation(nameAt1)}));
}

TEST_F(TemporaryWorkspaces, NumberTheNameWhenTheClockStandsStill) {
  transport.Then(409).Then(200, Taken({nameAt0})).Then(200, R"({"id":"W78"})");
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", StandingClock), "W78");
  EXPECT_EQ(transport.requests().back(), Creation(nameAt0 + std::string("0")));
  transport.Then(409)
      .Then(200, Taken({nameAt0, nameAt0 + std::string("1"), nameAt0 + std::string("0")}))
      .Then(200, R"({"id":"W79"})");
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", StandingClock), "W79");
  EXPECT_EQ(transport.requests().back(), Creation(nameAt0 + std::string("2")));
}

TEST_F(TemporaryWorkspaces, AreNoneWhenEveryNameIsTaken) {
  Lines names{nameAt0};
  for (int number = 0; number < 16; ++number) names.push_back(nameAt0 + std::to_string(number));
  transport.Then(409).Then(200, Taken(names));
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", StandingClock), "");
  names.erase(names.begin() + 16);  // number 15 is free
  transport.Then(409).Then(200, Taken(names)).Then(200, R"({"id":"W80"})");
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", StandingClock), "W80");
  EXPECT_EQ(transport.requests().back(), Creation(nameAt0 + std::string("15")));
}

// The first name, sixteen further ones and the stem of the numbered ones are drawn one after the other.
TEST_F(TemporaryWorkspaces, DrawSixteenFurtherNamesBeforeTheyNumberOne) {
  Lines names;
  for (std::uint32_t second = 0; second < 17; ++second)
    names.push_back(MakeWorkspaceName("FenloomTMP", second));
  const std::string stem = MakeWorkspaceName("FenloomTMP", 17);
  transport.Then(409).Then(200, Taken(names)).Then(200, R"({"id":"W81"})");
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", RunningClock), "W81");
  EXPECT_EQ(transport.requests().back(), Creation(stem + "0"));
  EXPECT_EQ(now, 18u);
}

TEST_F(TemporaryWorkspaces, AreNoneWhenTheSecondCreationIsRefusedToo) {
  transport.Then(409).Then(200, Taken({nameAt0})).Then(409);
  EXPECT_EQ(CreateTemporaryWorkspace(Begin(connection), "C5", StandingClock), "");
  EXPECT_EQ(transport.requests().size(), 4u);
  EXPECT_THAT(trace.lines(), IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test
