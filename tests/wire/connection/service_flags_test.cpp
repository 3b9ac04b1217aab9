#include "connection/service_flags.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <optional>
#include <string>

#include "connection/vt_connection.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using vtdirect_test::SentRequest;
using vtdirect_test::TraceLine;

const std::string server = "http://plm.example/vt";
constexpr const char* dataAdminLine = "GET /vt/servlet/odata/DataAdmin/$metadata";
constexpr const char* dynamicDocLine = "GET /vt/servlet/odata/DynamicDocMgmt/$metadata";
constexpr const char* cadDocLine = "GET /vt/servlet/odata/CADDocumentMgmt/$metadata";
const std::string folderContents =
    R"(<EntityType Name="Folder"><NavigationProperty Name="FolderContents"/></EntityType>)";
const std::string brokenSchema = "<a></b>" + std::string(600, ' ');

std::string Schema(int version, const std::string& content = {}) {
  return "<Schema>" + content + R"(<Annotation Term="Core.SchemaVersion"><String>)" +
         std::to_string(version) + "</String></Annotation></Schema>";
}

class ServiceFlagsTest : public testing::Test {
 protected:
  ~ServiceFlagsTest() override { EXPECT_THAT(directory.Entries(), IsEmpty()); }

  void Ensure() { EnsureServiceFlags(flags, connection); }

  // The flags of a server whose "DataAdmin" has this schema and which has no other service.
  ServiceFlags WithDataAdmin(const std::string& schema) {
    transport.Then(200, schema).Then(404).Then(404);
    ServiceFlags found;
    EnsureServiceFlags(found, connection);
    return found;
  }

  // The flags of a server whose "DynamicDocMgmt" has this schema and which has no other service.
  ServiceFlags WithDynamicDoc(const std::string& schema) {
    transport.Then(404).Then(200, schema).Then(404);
    ServiceFlags found;
    EnsureServiceFlags(found, connection);
    return found;
  }

  vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::TraceRecorder trace;
  vtdirect_test::ScriptedTransport transport;
  VtConnection connection{server, [](const char*) { return false; }};
  ServiceFlags flags;
};

// What is settled when no service is there.
ServiceFlags AllChecked() {
  ServiceFlags flags;
  flags.dataAdminChecked = true;
  flags.dynamicDocChecked = true;
  flags.cadDocChecked = true;
  return flags;
}

TEST_F(ServiceFlagsTest, AreAllFalseAtFirst) {
  EXPECT_FALSE(flags.dataAdminPresent || flags.folderContents || flags.dataAdminV5 || flags.dataAdminChecked);
  EXPECT_FALSE(flags.dynamicDocPresent || flags.dynamicDocV2 || flags.dynamicDocChecked);
  EXPECT_FALSE(flags.cadDocPresent || flags.cadDocChecked);
}

TEST_F(ServiceFlagsTest, AreAskedForInOrderWithoutHeaders) {
  transport.Then(200, Schema(5)).Then(200, Schema(2)).Then(200, Schema(1));
  Ensure();
  EXPECT_THAT(transport.requests(), ElementsAre(SentRequest{server, dataAdminLine, "", std::nullopt},
                                                SentRequest{server, dynamicDocLine, "", std::nullopt},
                                                SentRequest{server, cadDocLine, "", std::nullopt}));
  const ServiceFlags all{true, true, true, true, true, true, true, true, true};
  EXPECT_EQ(flags, all);
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ServiceFlagsTest, OnceSettledNothingIsAskedAgain) {
  transport.Then(200, Schema(5)).Then(404).Then(200, Schema(1));
  Ensure();
  const ServiceFlags before = flags;
  Ensure();
  EXPECT_EQ(flags, before);
  EXPECT_EQ(transport.requests().size(), 3U);
}

TEST_F(ServiceFlagsTest, AServerWithoutServicesIsSettledAsSuch) {
  transport.Then(404).Then(404).Then(404);
  Ensure();
  EXPECT_EQ(flags, AllChecked());
  EXPECT_THAT(
      trace.lines(),
      ElementsAre(
          TraceLine{0, "CmsInterface",
                    "Failed to get schema info servlet/odata/DataAdmin/$metadata from server " + server},
          TraceLine{0, "CmsInterface",
                    "Failed to get schema info servlet/odata/DynamicDocMgmt/$metadata from server " + server},
          TraceLine{
              0, "CmsInterface",
              "Failed to get schema info servlet/odata/CADDocumentMgmt/$metadata from server " + server}));
}

TEST_F(ServiceFlagsTest, ABrokenSchemaIsSettledAsNotThere) {
  transport.Then(200, brokenSchema).Then(200, brokenSchema).Then(200, brokenSchema);
  Ensure();
  EXPECT_EQ(flags, AllChecked());
}

TEST_F(ServiceFlagsTest, DataAdminVersion4HasFolderContentsAsItsSchemaTells) {
  ServiceFlags expected = AllChecked();
  expected.dataAdminPresent = true;
  EXPECT_EQ(WithDataAdmin(Schema(4)), expected);
  expected.folderContents = true;
  EXPECT_EQ(WithDataAdmin(Schema(4, folderContents)), expected);
}

TEST_F(ServiceFlagsTest, DataAdminBelowVersion4HasNoFolderContentsWhateverItsSchemaTells) {
  ServiceFlags expected = AllChecked();
  expected.dataAdminPresent = true;
  for (const int version : {-1, 0, 1, 3}) {
    EXPECT_EQ(WithDataAdmin(Schema(version, folderContents)), expected) << version;
  }
}

TEST_F(ServiceFlagsTest, DataAdminFromVersion5HasFolderContentsWhateverItsSchemaTells) {
  ServiceFlags expected = AllChecked();
  expected.dataAdminPresent = true;
  expected.folderContents = true;
  expected.dataAdminV5 = true;
  EXPECT_EQ(WithDataAdmin(Schema(5)), expected);
  EXPECT_EQ(WithDataAdmin(Schema(6, folderContents)), expected);
}

TEST_F(ServiceFlagsTest, FolderContentsOfAnotherTypeOrKindDoNotCount) {
  EXPECT_FALSE(
      WithDataAdmin(Schema(4, R"(<EntityType Name="Folder"><Property Name="FolderContents"/></EntityType>)"))
          .folderContents);
  EXPECT_FALSE(
      WithDataAdmin(
          Schema(4, R"(<EntityType Name="Cabinet"><NavigationProperty Name="FolderContents"/></EntityType>)"))
          .folderContents);
}

TEST_F(ServiceFlagsTest, ASchemaWithoutAVersionIsThereAndNothingMore) {
  ServiceFlags expected = AllChecked();
  expected.dataAdminPresent = true;
  EXPECT_EQ(WithDataAdmin("<Schema>" + folderContents + "</Schema>"), expected);
  expected = AllChecked();
  expected.dynamicDocPresent = true;
  EXPECT_EQ(WithDynamicDoc("<Schema/>"), expected);
}

TEST_F(ServiceFlagsTest, AnEmptySchemaIsThereAndNothingMore) {
  ServiceFlags expected = AllChecked();
  expected.dataAdminPresent = true;
  EXPECT_EQ(WithDataAdmin(""), expected);
}

TEST_F(ServiceFlagsTest, DynamicDocumentsHaveTheirSecondFormFromVersion2) {
  ServiceFlags expected = AllChecked();
  expected.dynamicDocPresent = true;
  EXPECT_EQ(WithDynamicDoc(Schema(1)), expected);
  expected.dynamicDocV2 = true;
  EXPECT_EQ(WithDynamicDoc(Schema(2)), expected);
  EXPECT_EQ(WithDynamicDoc(Schema(3)), expected);
}

TEST_F(ServiceFlagsTest, TheVersionOfCadDocumentsPlaysNoPart) {
  for (const char* schema : {"", "<Schema/>"}) {
    transport.Then(404).Then(404).Then(200, schema);
    ServiceFlags found;
    EnsureServiceFlags(found, connection);
    ServiceFlags expected = AllChecked();
    expected.cadDocPresent = true;
    EXPECT_EQ(found, expected);
  }
}

TEST_F(ServiceFlagsTest, AFailureAtTheFirstServiceLeavesAllFieldsAndAsksNoOther) {
  for (const int status : {500, 401, 302, 503}) {
    transport.ClearRequests();
    transport.Then(status);
    Ensure();
    EXPECT_EQ(flags, ServiceFlags{}) << status;
    EXPECT_THAT(transport.lines(), ElementsAre(dataAdminLine)) << status;
  }
  transport.ClearRequests();
  transport.ThenFail(du::http::ErrorCode::TimedOut);
  Ensure();
  EXPECT_EQ(flags, ServiceFlags{});
  EXPECT_THAT(transport.lines(), ElementsAre(dataAdminLine));
}

TEST_F(ServiceFlagsTest, TheNextCallStartsAtTheServiceWhereThisOneStopped) {
  transport.Then(200, Schema(5)).Then(500);
  Ensure();
  EXPECT_THAT(transport.lines(), ElementsAre(dataAdminLine, dynamicDocLine));
  const ServiceFlags afterFirst{true, true, true, true, false, false, false, false, false};
  EXPECT_EQ(flags, afterFirst);

  transport.ClearRequests();
  transport.Then(200, Schema(2)).ThenFail(du::http::ErrorCode::NoConnection);
  Ensure();
  EXPECT_THAT(transport.lines(), ElementsAre(dynamicDocLine, cadDocLine));
  const ServiceFlags afterSecond{true, true, true, true, true, true, true, false, false};
  EXPECT_EQ(flags, afterSecond);

  transport.ClearRequests();
  transport.Then(404);
  Ensure();
  EXPECT_THAT(transport.lines(), ElementsAre(cadDocLine));
  const ServiceFlags afterThird{true, true, true, true, true, true, true, false, true};
  EXPECT_EQ(flags, afterThird);

  transport.ClearRequests();
  Ensure();
  EXPECT_THAT(transport.lines(), IsEmpty());
}

TEST_F(ServiceFlagsTest, AnUnreachableServerIsAskedAgain) {
  transport.ThenFail(du::http::ErrorCode::NoConnection).Then(404).Then(404).Then(404);
  Ensure();
  Ensure();
  EXPECT_THAT(transport.lines(), ElementsAre(dataAdminLine, dataAdminLine, dynamicDocLine, cadDocLine));
  EXPECT_EQ(flags, AllChecked());
}

TEST_F(ServiceFlagsTest, ASwitchTakesDataAdminForMissing) {
  setenv("FENLOOM_DC_FORCE_NO_DATAADMIN", "1", 1);
  transport.Then(200, Schema(2)).Then(200, Schema(1));
  Ensure();
  EXPECT_THAT(transport.lines(), ElementsAre(dynamicDocLine, cadDocLine));
  const ServiceFlags expected{false, false, false, true, true, true, true, true, true};
  EXPECT_EQ(flags, expected);
  Ensure();
  EXPECT_EQ(flags, expected);
}

TEST_F(ServiceFlagsTest, ASwitchTakesDynamicDocumentsForMissing) {
  setenv("FENLOOM_DC_FORCE_NO_DYNAMICDOCMGMT", "1", 1);
  transport.Then(200, Schema(5)).Then(200, Schema(1));
  Ensure();
  EXPECT_THAT(transport.lines(), ElementsAre(dataAdminLine, cadDocLine));
  const ServiceFlags expected{true, true, true, true, false, false, true, true, true};
  EXPECT_EQ(flags, expected);
}

TEST_F(ServiceFlagsTest, ASwitchTakesCadDocumentsForMissing) {
  setenv("FENLOOM_DC_FORCE_NO_CADDOCMGMT", "1", 1);
  transport.Then(200, Schema(5)).Then(200, Schema(2));
  Ensure();
  EXPECT_THAT(transport.lines(), ElementsAre(dataAdminLine, dynamicDocLine));
  const ServiceFlags expected{true, true, true, true, true, true, true, false, true};
  EXPECT_EQ(flags, expected);
}

TEST_F(ServiceFlagsTest, WithAllSwitchesNothingIsAsked) {
  setenv("FENLOOM_DC_FORCE_NO_DATAADMIN", "yes", 1);
  setenv("FENLOOM_DC_FORCE_NO_DYNAMICDOCMGMT", "0", 1);
  setenv("FENLOOM_DC_FORCE_NO_CADDOCMGMT", "false", 1);
  Ensure();
  EXPECT_THAT(transport.requests(), IsEmpty());
  EXPECT_EQ(flags, AllChecked());
}

TEST_F(ServiceFlagsTest, AnEmptySwitchIsNotSet) {
  setenv("FENLOOM_DC_FORCE_NO_DATAADMIN", "", 1);
  transport.Then(404).Then(404).Then(404);
  Ensure();
  EXPECT_EQ(transport.requests().size(), 3U);
}

TEST_F(ServiceFlagsTest, TheSwitchesAreReadOnceInAProcess) {
  transport.Then(404).Then(404).Then(404);
  Ensure();
  setenv("FENLOOM_DC_FORCE_NO_DATAADMIN", "1", 1);
  setenv("FENLOOM_DC_FORCE_NO_DYNAMICDOCMGMT", "1", 1);
  setenv("FENLOOM_DC_FORCE_NO_CADDOCMGMT", "1", 1);
  transport.ClearRequests();
  transport.Then(404).Then(404).Then(404);
  ServiceFlags others;
  EnsureServiceFlags(others, connection);
  EXPECT_EQ(transport.requests().size(), 3U);
}

TEST_F(ServiceFlagsTest, EachServersFlagsAreItsOwn) {
  transport.Then(404).Then(404).Then(404).Then(200, Schema(5)).Then(404).Then(404);
  Ensure();
  ServiceFlags others;
  VtConnection other("http://other.example", [](const char*) { return false; });
  EnsureServiceFlags(others, other);
  EXPECT_FALSE(flags.dataAdminPresent);
  EXPECT_TRUE(others.dataAdminPresent);
}

}  // namespace
