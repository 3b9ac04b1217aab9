#include "documents/storing/auth_app_version.h"

#include <stdlib.h>

#include "base/settings.h"
#include "tests/wire/documents/flow_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;

// The directories that temporary files were asked for in, "(null)" for the platform's own.
Lines& AskedDirectories() {
  static Lines directories;
  return directories;
}

using AuthoringApplicationVersions = FlowTest;

TEST_F(AuthoringApplicationVersions, AreRegisteredByteForByte) {
  ThenNonce();
  transport.Then(204);
  EXPECT_EQ(RegisterAuthAppVersion(Begin(connection), "310"), "310");
  EXPECT_EQ(transport.requests(),
            (Requests{ReadNonce(), Write(registerPath,
                                         "[{ \"authoringApplication\":\"MERIDOX\", \"authAppVersion\":310, "
                                         "\"ndVersions\":[\"J-01\"] }]")}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(AuthoringApplicationVersions, AreRegisteredForTheHostsApplication) {
  SetAuthoringApplication("MYAPP");
  ThenNonce();
  transport.Then(204);
  EXPECT_EQ(RegisterAuthAppVersion(Begin(connection), "7"), "7");
  EXPECT_EQ(transport.requests().back().body,
            "[{ \"authoringApplication\":\"MYAPP\", \"authAppVersion\":7, \"ndVersions\":[\"J-01\"] }]");
}

TEST_F(AuthoringApplicationVersions, CountAsRegisteredFor204Alone) {
  ThenNonce();
  for (const int status : {200, 201, 203, 205, 400, 404, 500}) {
    transport.Then(status, "{}");
    EXPECT_EQ(RegisterAuthAppVersion(Begin(connection), "310"), "") << status;
  }
  transport.ThenFail(du::http::ErrorCode::NoConnection);
  EXPECT_EQ(RegisterAuthAppVersion(Begin(connection), "310"), "");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(AuthoringApplicationVersions, AreRegisteredOutOfAFileThatGoesBehindIt) {
  ThenNonce();
  Lines during;
  transport.Then({.status = 204, .body = "", .afterwards = [&] { during = Leftovers(); }});
  EXPECT_EQ(RegisterAuthAppVersion(Begin(connection), "310"), "310");
  ASSERT_EQ(during.size(), 1u);
  EXPECT_TRUE(during.front().starts_with("register") && during.front().ends_with(".json")) << during.front();
  EXPECT_THAT(Leftovers(), IsEmpty());
}

// A platform may keep the files of a null directory elsewhere than those of the directory that it names.
TEST_F(AuthoringApplicationVersions, AreRegisteredOutOfAFileWhereThePlatformWantsIt) {
  ThenNonce();
  transport.Then(204);
  AskedDirectories().clear();
  EXPECT_EQ(RegisterAuthAppVersion(Begin(connection), "310"), "310");
  EXPECT_EQ(AskedDirectories(), Lines{"(null)"});
}

TEST_F(AuthoringApplicationVersions, AreNotRegisteredWithoutAFileForTheBody) {
  setenv("TMPDIR", directory.File("missing").c_str(), 1);
  EXPECT_EQ(RegisterAuthAppVersion(Begin(connection), "310"), "");
  EXPECT_THAT(transport.lines(), IsEmpty());
}

TEST_F(AuthoringApplicationVersions, AreNotAskedForUnlessTheHostWantsOneRegistered) {
  EnsureAuthAppVersion(Begin(connection));
  EXPECT_EQ(connection->knowledge().AuthAppVersion(), "310");
  EXPECT_THAT(transport.lines(), IsEmpty());
}

TEST_F(AuthoringApplicationVersions, AreTheHostsWithoutARegistration) {
  SetAuthAppVersion("271");
  EnsureAuthAppVersion(Begin(connection));
  EXPECT_EQ(connection->knowledge().AuthAppVersion(), "271");
  EXPECT_THAT(transport.lines(), IsEmpty());
}

TEST_F(AuthoringApplicationVersions, AreRegisteredOnceAConnection) {
  SetAuthAppVersion("271");
  SetAuthAppVersionToRegister("300");
  ThenNonce();
  transport.Then(204);
  EnsureAuthAppVersion(Begin(connection));
  EnsureAuthAppVersion(Begin(connection));
  EXPECT_EQ(connection->knowledge().AuthAppVersion(), "300");
  EXPECT_EQ(transport.lines(), (Lines{Get(noncePath), Post(registerPath)}));
}

TEST_F(AuthoringApplicationVersions, FallBackOnceARegistrationFailed) {
  SetAuthAppVersion("271");
  SetAuthAppVersionToRegister("300");
  ThenNonce();
  transport.Then(200);
  EnsureAuthAppVersion(Begin(connection));
  EnsureAuthAppVersion(Begin(connection));
  EXPECT_EQ(connection->knowledge().AuthAppVersion(), "271");
  EXPECT_EQ(transport.requests().size(), 2u);
  SetAuthAppVersion("");
  const auto other = NewConnection();
  ThenNonce();
  transport.Then(500);
  EnsureAuthAppVersion(Begin(other));
  EXPECT_EQ(other->knowledge().AuthAppVersion(), "310");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

}  // namespace

void NoteAskedDirectory(const char* directory) {
  AskedDirectories().emplace_back(directory != nullptr ? directory : "(null)");
}

}  // namespace vtdirect_test

// The linker sends the platform's MkTempFile through here (see CMakeLists.txt).
extern "C" {
std::string __real__ZN2du10FileSystem10MkTempFileB5cxx11EPKcS2_S2_(const char*, const char*, const char*);
std::string __wrap__ZN2du10FileSystem10MkTempFileB5cxx11EPKcS2_S2_(const char* directory, const char* stem,
                                                                   const char* extension) {
  vtdirect_test::NoteAskedDirectory(directory);
  return __real__ZN2du10FileSystem10MkTempFileB5cxx11EPKcS2_S2_(directory, stem, extension);
}
}
