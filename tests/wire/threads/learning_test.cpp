// What two threads learn of one server at the same time. A gate in the server's answer to one thread puts the
// two into the order that is asked about.

#include <atomic>
#include <thread>

#include "connection/server_context.h"
#include "public/vt_direct_manager.h"
#include "tests/support/gate.h"
#include "tests/wire/threads/threaded_host.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::Not;

constexpr const char* dataAdmin = "GET /vt/servlet/odata/DataAdmin/$metadata";
constexpr const char* dynamicDoc = "GET /vt/servlet/odata/DynamicDocMgmt/$metadata";
constexpr const char* features = "GET /vt/servlet/odata/v3/Visualization/GetHVDFeatures()";
constexpr const char* gateway = "GET /vt/servlet/OrvetGW";
constexpr const char* nonce = "GET /vt/servlet/rest/security/csrf";
constexpr const char* registration = "POST /vt/servlet/rest/v1/dkm/registerauthappversions";

Answer NonceAnswer(const std::string& value) {
  return {200, R"({"items":[{"id":"csrf","attributes":{"nonce_key":"N","nonce":")" + value + R"("}}]})"};
}

/// A host in which the first request of one kind is held until the test lets it go; the answer is then the
/// one that the test has given for it. Every other request is answered by the server.
class HeldAnswer : public testing::Test {
 protected:
  void Hold(const std::string& line, Answer answer) {
    heldLine_ = line;
    held_ = std::move(answer);
    host.transport.AnswerBy([this](const SentRequest& request) { return AnswerTo(request); });
  }

  // The answers that all but the held request of that kind get.
  void Others(Answer answer) { others_ = std::move(answer); }

  // Runs `first` until its request is held, then `second` to its end, and only then the rest of `first`.
  void FirstAroundSecond(const std::function<void()>& first, const std::function<void()>& second) {
    std::jthread thread(first);
    EXPECT_TRUE(isHeld_.Pass());
    second();
    letGo_.Open();
  }

  // How often a request has been sent.
  [[nodiscard]] int Count(const std::string& line) const {
    int count = 0;
    for (const std::string& sent : host.transport.lines()) count += sent == line ? 1 : 0;
    return count;
  }

  ThreadedHost host;

 private:
  Answer AnswerTo(const SentRequest& request) {
    if (request.line != heldLine_) return host.AnswerOfServers(request);
    if (holds_.exchange(false)) {
      isHeld_.Open();
      EXPECT_TRUE(letGo_.Pass());
      return held_;
    }
    return others_ ? *others_ : host.AnswerOfServers(request);
  }

  std::string heldLine_;
  Answer held_;
  std::optional<Answer> others_;
  std::atomic<bool> holds_ = true;
  Gate isHeld_;
  Gate letGo_;
};

using Services = HeldAnswer;
using Features = HeldAnswer;
using Translation = HeldAnswer;
using Nonce = HeldAnswer;
using ApplicationVersion = HeldAnswer;
using OperationThatRuns = HeldAnswer;

TEST_F(Services, ThatAreSettledStayWhenALaterQuestionFails) {
  Hold(dataAdmin, {500, {}});
  bool first = false;
  FirstAroundSecond([&] { first = FileExists(pathOfD1); }, [] { EXPECT_TRUE(FileExists(pathOfD1)); });
  EXPECT_TRUE(first);
  host.transport.ClearRequests();
  EXPECT_TRUE(FileExists(pathOfD1));
  EXPECT_THAT(host.transport.lines(), Each(Not(HasSubstr("$metadata"))));
}

TEST_F(Services, ThatAreSettledStayWhenALaterAnswerSaysTheyAreNotThere) {
  Hold(dataAdmin, {404, {}});
  FirstAroundSecond([] { EXPECT_TRUE(FileExists(pathOfD1)); }, [] { EXPECT_TRUE(FileExists(pathOfD1)); });
  // Folder contents by OData, in the fifth version: what the second answer said.
  EXPECT_TRUE(CanPathShowVersions(framesFolder));
}

TEST_F(Services, ThatFailedForOneThreadAreSettledByTheOther) {
  Hold(dynamicDoc, {500, {}});
  FirstAroundSecond([] { (void)CanPathShowVersions(framesFolder); },
                    [] { EXPECT_TRUE(CanPathShowVersions(framesFolder)); });
  host.transport.ClearRequests();
  EXPECT_TRUE(CanPathShowVersions(framesFolder));
  EXPECT_TRUE(host.transport.lines().empty());
}

TEST_F(Services, ThatFailedAreAskedForAgainByTheNextOperation) {
  std::atomic<bool> failed = false;
  host.transport.AnswerBy([&](const SentRequest& request) {
    if (request.line != dataAdmin || failed.exchange(true)) return host.AnswerOfServers(request);
    return Answer{500, {}};
  });
  EXPECT_FALSE(CanPathShowVersions(framesFolder));
  EXPECT_TRUE(CanPathShowVersions(framesFolder));
  EXPECT_EQ(Count(dataAdmin), 2);
}

// The first thread begins where the services are not known, and is on its way when the other one settles
// them.
TEST_F(OperationThatRuns, GoesOnByTheServicesThatItBeganWith) {
  using namespace lxservices::cms_interface::vantry;
  std::atomic<bool> fails = true;
  Gate began;
  Gate goOn;
  host.transport.AnswerBy([&](const SentRequest& request) {
    if (request.line == dataAdmin && fails) return Answer{500, {}};
    if (request.line.starts_with("GET /vt/servlet/rest/objects?") && fails) {
      began.Open();
      EXPECT_TRUE(goOn.Pass());
    }
    return host.AnswerOfServers(request);
  });
  std::string version;
  {
    std::jthread thread([&] { (void)FileExists(pathOfD1); });
    EXPECT_TRUE(began.Pass());
    fails = false;
    EXPECT_TRUE(CanPathShowVersions(framesFolder));
    host.transport.ClearRequests();
    goOn.Open();
  }
  // Without dynamic documents, as it began, what the search gives is not looked for once more.
  EXPECT_THAT(host.transport.lines(), Each(Not(HasSubstr("/odata/"))));
}

TEST_F(OperationThatRuns, KeepsTheServerThatIsDroppedFromTheList) {
  Hold("GET /vt/servlet/rest/v1/dkm/documents/D1",
       host.server.AnswerTo("GET /vt/servlet/rest/v1/dkm/documents/D1"));
  std::string path;
  FirstAroundSecond([&] { path = GetVFSPathLatest(uidOfD1); }, [] { UpdateServerList({}); });
  EXPECT_EQ(path, std::string("korvufenloom-vfs:") + pathOfD1);
  EXPECT_EQ(GetVFSPathLatest(uidOfD1), "");
}

TEST_F(OperationThatRuns, KeepsTheSettingsThatItBeganWith) {
  SetAppConfig(ConfigTempWorkspacePrefix, "BEFORE");
  SetAppConfig(ConfigTempWorkspaceDescription, "before");
  Hold("GET /vt/servlet/rest/v1/dkm/documents/D1",
       host.server.AnswerTo("GET /vt/servlet/rest/v1/dkm/documents/D1"));
  FirstAroundSecond([] { EXPECT_NE(Checkout(uidOfD1), ""); },
                    [] {
                      SetAppConfig(ConfigTempWorkspacePrefix, "AFTER");
                      SetAppConfig(ConfigTempWorkspaceDescription, "after");
                    });
  std::string workspace;
  for (const SentRequest& request : host.transport.requests()) {
    if (request.line == "POST /vt/servlet/rest/v1/dkm/workspaces") workspace = request.body.value_or("");
  }
  EXPECT_THAT(workspace, HasSubstr(R"("name":"BEFORE)"));
  EXPECT_THAT(workspace, HasSubstr(R"("description":"before")"));
  SetAppConfig(ConfigTempWorkspacePrefix, "");
  SetAppConfig(ConfigTempWorkspaceDescription, "");
}

TEST_F(OperationThatRuns, ResolvesItsLinksInTheListThatItBeganWith) {
  Hold(dynamicDoc, host.server.AnswerTo(dynamicDoc));
  FirstAroundSecond(
      [] {
        EXPECT_TRUE(Upload(uidOfD1, "/dev/null", "",
                           {{"wheel.lxz", "korvufenloom-vt://plm.example/vt/?id=D4"}}, {}, {}, nullptr,
                           false));
      },
      [] {
        UpdateServerList({});
        UpdateServerList({{"plm", plmUrl}});
      });
  std::string instruction;
  for (const SentRequest& request : host.transport.requests()) {
    if (request.line == "POST /vt/servlet/rest/v1/dkm/documents") instruction = request.body.value_or("");
  }
  EXPECT_THAT(instruction, HasSubstr(R"("asStoredChildName":"wheel.lxz")"));
  for (const TraceLine& line : host.trace.lines()) EXPECT_THAT(line.text, Not(HasSubstr("will be broken")));
}

TEST_F(Features, OfWhichOneThreadLearnedStayWhenTheOthersQuestionFails) {
  Hold(features, {500, {}});
  FirstAroundSecond([] { (void)SupportsVCSMetadata(uidOfD1); },
                    [] { EXPECT_TRUE(SupportsVCSMetadata(uidOfD1)); });
  EXPECT_TRUE(SupportsVCSMetadata(uidOfD1));
  EXPECT_TRUE(SupportsSeparatedSources(uidOfD1));
  EXPECT_EQ(Count(features), 2);
}

TEST_F(Features, AreTakenFromTheThreadThatLearnsThemLater) {
  Hold(features, host.server.AnswerTo(features));
  Others({500, {}});
  FirstAroundSecond([] { EXPECT_TRUE(SupportsVCSMetadata(uidOfD1)); },
                    [] { EXPECT_FALSE(SupportsVCSMetadata(uidOfD1)); });
  EXPECT_TRUE(SupportsVCSMetadata(uidOfD1));
  EXPECT_TRUE(SupportsSeparatedSources(uidOfD1));
}

TEST_F(Translation, ThatWasGrantedStaysWhenALaterQuestionFails) {
  Hold(gateway, {500, {}});
  FirstAroundSecond([] { (void)TranslationSupported(uidOfD1); },
                    [] { EXPECT_TRUE(TranslationSupported(uidOfD1)); });
  EXPECT_TRUE(TranslationSupported(uidOfD1));
  EXPECT_EQ(Count(gateway), 2);
}

TEST_F(Translation, ThatFailedForOneThreadIsGrantedByTheOther) {
  Hold(gateway, host.server.AnswerTo(gateway));
  Others({500, {}});
  FirstAroundSecond([] { EXPECT_TRUE(TranslationSupported(uidOfD1)); },
                    [] { EXPECT_FALSE(TranslationSupported(uidOfD1)); });
  EXPECT_TRUE(TranslationSupported(uidOfD1));
}

// The header lines of the last write.
std::string LastWrite(const ScriptedTransport& transport) {
  std::string headers;
  for (const SentRequest& request : transport.requests()) {
    if (request.line.starts_with("POST ")) headers = request.headers;
  }
  return headers;
}

TEST_F(Nonce, IsTheLastThatWasFetched) {
  Hold(nonce, NonceAnswer("late"));
  Others(NonceAnswer("early"));
  FirstAroundSecond([] { EXPECT_NE(Checkout(uidOfD1), ""); }, [] { EXPECT_NE(Checkout(uidOfD1), ""); });
  host.transport.ClearRequests();
  EXPECT_NE(Checkout(uidOfD1), "");
  EXPECT_THAT(LastWrite(host.transport), HasSubstr("N: late"));
  EXPECT_EQ(Count(nonce), 0);
}

TEST_F(Nonce, ThatCouldNotBeFetchedIsTakenFromTheThreadThatCould) {
  Hold(nonce, {500, {}});
  Others(NonceAnswer("early"));
  FirstAroundSecond([] { EXPECT_NE(Checkout(uidOfD1), ""); }, [] { EXPECT_NE(Checkout(uidOfD1), ""); });
  for (const SentRequest& request : host.transport.requests()) {
    if (!request.line.starts_with("POST ")) continue;
    EXPECT_THAT(request.headers, HasSubstr("N: early")) << request.line;
  }
  EXPECT_EQ(Count(nonce), 2);
}

TEST_F(ApplicationVersion, IsWholeForEachOfTwoUploads) {
  SetAppConfig(ConfigRegisterAuthAppVersion, "300");
  Hold(registration, {204, {}});
  Others({204, {}});
  const auto upload = [] {
    const char* path = "//plm/Products/Bike/Folders/Frames/new.lxz";
    EXPECT_TRUE(Upload(FileTypeGeneral, path, "/dev/null", {}, {}, nullptr, false));
  };
  FirstAroundSecond(upload, upload);
  int stored = 0;
  for (const SentRequest& request : host.transport.requests()) {
    if (request.line != "POST /vt/servlet/rest/v1/dkm/documents") continue;
    EXPECT_THAT(request.body.value_or(""), HasSubstr(R"("authAppVersion":"300")"));
    ++stored;
  }
  EXPECT_EQ(stored, 2);
  SetAppConfig(ConfigRegisterAuthAppVersion, "");
}

}  // namespace
}  // namespace vtdirect_test
