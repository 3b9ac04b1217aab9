#include "tests/wire/threads/threaded_host.h"

#include <atomic>
#include <cstdlib>

#include "public/vt_direct_manager.h"

namespace vtdirect_test {

using namespace VtDirectManager;
using testing::IsEmpty;

ThreadedHost::ThreadedHost(Generation generation) : server(generation) {
  // The environment is written before there is a second thread.
  setenv("FENLOOM_LANGUAGE", "en", 1);
  EXPECT_THAT(LeftoversOfCalls(), IsEmpty());
  transport.AnswerBy([this](const SentRequest& request) { return AnswerOfServers(request); });
  ListServers();
}

ThreadedHost::~ThreadedHost() {
  RegisterAuth(nullptr);
  RegisterTaskRunner(nullptr);
  EXPECT_THAT(LeftoversOfCalls(), IsEmpty());
  EXPECT_THAT(server.unknown(), IsEmpty());
}

void ThreadedHost::ListServers() {
  UpdateServerList({});
  UpdateServerList({{"plm", plmUrl}, {"down", "https://down.example/"}});
}

Answer ThreadedHost::AnswerOfServers(const SentRequest& request) {
  if (request.server.starts_with("https://down.example")) {
    return {0, {}, du::http::ErrorCode::NoConnection};
  }
  return server.AnswerTo(request.line);
}

namespace {

std::string RootDirs() {
  std::string names;
  ReadRootDirs([](const char* nickname, void* user) { *static_cast<std::string*>(user) += nickname; },
               &names);
  return names;
}

bool LinkContext() {
  std::string context;
  return GetLinkContext(uidOfD1, context) && context == "korvufenloom-vt://plm.example/vt/";
}

void WriteServers() {
  static std::atomic<bool> more = false;
  std::map<std::string, std::string> servers{{"plm", plmUrl}, {"down", "https://down.example/"}};
  // After the others in the order of the nicknames, so that the first ones stay the first.
  if (more.exchange(!more)) servers["the other"] = "https://other.example/";
  UpdateServerList(servers);
}

void WriteSettings() {
  static std::atomic<unsigned> next = 0;
  static const std::vector<std::pair<ConfigItem, const char*>> settings{
      {ConfigUriStem, "korvufenloom"},
      {ConfigUriStem, nullptr},
      {ConfigLegacyVfsPaths, "1"},
      {ConfigLegacyVfsPaths, ""},
      {ConfigAuthoringApplication, "MERIDOX"},
      {ConfigAuthoringApplication, ""},
      {ConfigAuthAppVersion, "310"},
      {ConfigAuthAppVersion, nullptr},
      {ConfigTempWorkspacePrefix, "FenloomTMP"},
      {ConfigTempWorkspacePrefix, ""},
      {ConfigTempWorkspaceDescription, "ours"},
      {ConfigTempWorkspaceDescription, ""},
      {ConfigBrowseDynamicDocuments, "true"},
      {ConfigBrowseDynamicDocuments, "1"},
      {ConfigBrowseCadDocuments, "false"},
      {ConfigBrowseCadDocuments, ""},
  };
  const auto& [item, value] = settings[next++ % settings.size()];
  SetAppConfig(item, value);
}

bool OneLogin(const char*) {
  return true;
}
bool OtherLogin(const char*) {
  return true;
}

void WriteLogin() {
  static std::atomic<bool> other = false;
  RegisterAuth(other.exchange(!other) ? OtherLogin : OneLogin);
}

bool RunHere(std::function<void()> task) {
  task();
  return true;
}

void WriteTaskRunner() {
  static std::atomic<bool> none = false;
  RegisterTaskRunner(none.exchange(!none) ? nullptr : RunHere);
}

// The session writes the server off that cannot be reached, and no other, and takes that with it.
void KeepSession() {
  const auto session = StartSession();
  std::string current;
  std::string latest;
  GetStatus("korvufenloom-vt://down.example/?id=D1", current, latest, nullptr);
}

}  // namespace

const std::vector<SilentQuestion>& SilentQuestions() {
  static const std::vector<SilentQuestion> questions{
      {"ReadRootDirs", [] { return RootDirs().starts_with("downplm"); }},
      {"IsVFSPath", [] { return IsVFSPath("korvufenloom-vfs://plm/a") && !IsVFSPath("//plm/a"); }},
      {"IsUID", [] { return IsUID(uidOfD1) && !IsUID("korvufenloom-vt://plm.example/vt/"); }},
      {"ParseUID", [] { return ParseUID(uidOfD1)->document == "D1" && !ParseUID("korvufenloom-vt://plm/"); }},
      {"WorkingCopyUID", [] { return WorkingCopyUID(uidOfD1).empty(); }},
      {"IsManaged", [] { return IsManaged(uidOfD1) && !IsManaged("other:x"); }},
      {"GetVFSLocationPrefix", [] { return GetVFSLocationPrefix() == std::string("korvufenloom-vfs"); }},
      {"CompareUIDsEqual",
       [] {
         return CompareUIDsEqual(uidOfD1, uidWithName) &&
                !CompareUIDsEqual(uidOfD1, "korvufenloom-vt://plm.example/vt/?id=D2");
       }},
      {"GetServerURL", [] { return GetServerURL(pathOfD1) == plmUrl && GetServerURL(uidOfD1) == plmUrl; }},
      {"GetServerNickname", [] { return GetServerNickname(uidOfD1) == "plm"; }},
      {"GetLinkContext", LinkContext},
      {"IsPathWritable", [] { return IsPathWritable(framesFolder) && !IsPathWritable("//plm/Products/"); }},
      {"IsCheckoutSupported", [] { return IsCheckoutSupported(uidOfD1); }},
      {"ShouldInvalidateCache", [] { return ShouldInvalidateCache(false) || true; }},
  };
  return questions;
}

const std::vector<Writer>& Writers() {
  static const std::vector<Writer> writers{
      {"UpdateServerList", WriteServers},
      {"SetAppConfig", WriteSettings},
      {"RegisterAuth", WriteLogin},
      {"RegisterTaskRunner", WriteTaskRunner},
      {"StartSession and release", KeepSession},
  };
  return writers;
}

}  // namespace vtdirect_test
