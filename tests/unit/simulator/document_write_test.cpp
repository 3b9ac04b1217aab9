#include "write_fixture.h"

namespace vantry_sim {
namespace {

const std::string frame = "OR:vn.folder.SubFolder:211";
const std::string bench = workspacesPath + "/W301";

class DocumentWriteTest : public WriteTest {
 protected:
  Uploaded One(const std::string& bytes = "bytes", const std::string& user = "anna") {
    return Upload({bytes}, user)[0];
  }
  rapidjson::Document Document(const std::string& id, const std::string& user = "anna") {
    return GetJson(documentsPath + "/" + id, user);
  }
};

TEST_F(DocumentWriteTest, NewDocumentStandsInItsFolderWithAllItWasGiven) {
  const auto files = Upload({"drawing", "viewable", "metadata"});
  const std::string more =
      ",\"secondaryContents\":[" + Section("VIEWABLE", "{$CAD_NAME}.lxz", files[1]) + "," +
      Section("VCSINFO", "cad-metadata.json", files[2], true) +
      "],\"isDerived\":true,\"derivedSourceDependencies\":[{\"asStoredChildName\":\"frame.lxz\",\"isDirect\":"
      "false,"
      "\"source\":{\"id\":\"D1002\",\"epmMaster\":{\"id\":\"M2002\",\"cadName\":\"frame.lxz\"}}}],"
      "\"fileBasedAttributes\":[{\"parameterDefinition\":{\"parameterName\":\"ZVK_DD_LANGUAGE\","
      "\"attributeName\":"
      "\"ZVK_DD_LANGUAGE\",\"valueType\":\"String\"},\"parameterValue\":{\"value\":\"de\"}}]";
  const auto answer = PostJson(documentsPath, CreateBody(Instruction("", "pump.fnl", files[0], more, frame)));
  ASSERT_EQ(answer.Size(), 1U);
  const std::string id = answer[0]["id"].GetString();
  const auto document = Document(id, "bruno");
  EXPECT_EQ(VersionOf(document), "A.1");
  EXPECT_STREQ(document["authAppVersion"].GetString(), "311");
  EXPECT_STREQ(document["ndVersion"].GetString(), "J-02");
  EXPECT_STREQ(document["epmMaster"]["cadName"].GetString(), "pump.fnl");
  EXPECT_STREQ(document["epmMaster"]["subCategory"].GetString(), "FENLET");
  EXPECT_STREQ(document["locationFolder"]["id"].GetString(), frame.c_str());
  EXPECT_TRUE(document["pdmIterationState"]["isLatest"].GetBool());

  const auto& primary = document["cadContent"]["contentSections"];
  ASSERT_EQ(primary.Size(), 1U);
  EXPECT_STREQ(primary[0]["fileName"].GetString(), "{$CAD_NAME}");
  EXPECT_EQ(ContentOf(primary[0]), "drawing");
  EXPECT_EQ(primary[0]["fileSize"].GetInt64(), 7);
  EXPECT_NE(std::string(primary[0]["contentUrl"][0].GetString()).find("/pump.fnl"), std::string::npos);

  const auto& secondary = document["secondaryContents"];
  ASSERT_EQ(secondary.Size(), 2U);
  EXPECT_STREQ(secondary[0]["fileName"].GetString(), "{$CAD_NAME}.lxz");
  EXPECT_TRUE(secondary[0]["isForwardable"].GetBool());
  EXPECT_FALSE(secondary[0]["isStale"].GetBool());
  EXPECT_STREQ(secondary[1]["category"].GetString(), "VCSINFO");
  EXPECT_TRUE(secondary[1]["isHidden"].GetBool());
  EXPECT_FALSE(secondary[1]["isForwardable"].GetBool());

  ASSERT_EQ(document["derivedSourceDependencies"].Size(), 1U);
  EXPECT_STREQ(document["derivedSourceDependencies"][0]["source"]["id"].GetString(), "D1002");
  EXPECT_STREQ(document["derivedSourceDependencies"][0]["asStoredChildName"].GetString(), "frame.lxz");
  EXPECT_STREQ(document["fileBasedAttributes"][0]["parameterValue"]["value"].GetString(), "de");
}

TEST_F(DocumentWriteTest, NewDocumentIsListedAtOnce) {
  const auto answer = PostJson(documentsPath, CreateBody(Instruction("", "neu.lxz", One(), {}, frame)));
  const auto ids = Column(
      "/servlet/odata/v5/DataAdmin/Containers('OR:vn.product.Product:101')/"
      "Folders('OR:vn.folder.Cabinet:201')"
      "/Folders('OR:vn.folder.SubFolder:211')/FolderContents/ZVK.DynamicDocMgmt.DynamicDocument",
      "ID");
  EXPECT_EQ(std::count(ids.begin(), ids.end(), answer[0]["id"].GetString()), 1);
}

TEST_F(DocumentWriteTest, WithoutAFolderANewDocumentGoesToTheRoot) {
  const auto answer = PostJson(documentsPath, CreateBody(Instruction("", "neu.lxz", One())));
  EXPECT_STREQ(answer[0]["locationFolder"]["id"].GetString(), "OR:vn.folder.Cabinet:201");
}

TEST_F(DocumentWriteTest, NameTakenInTheFolderIsRefusedAndTheReceiptStaysGood) {
  const Uploaded file = One();
  EXPECT_EQ(Outcome(documentsPath, CreateBody(Instruction("", "fork.lxz", file, {}, frame))),
            "409 name-taken");
  EXPECT_EQ(Outcome(documentsPath, CreateBody(Instruction("", "fork.lxz", file))), "200");
}

TEST_F(DocumentWriteTest, PlacesThatAreNotThereAreRefused) {
  const Uploaded file = One();
  EXPECT_EQ(Outcome(documentsPath, CreateBody(Instruction("", "n.lxz", file, {}, "unknown"))),
            "404 no-such-folder");
  EXPECT_EQ(
      Outcome(documentsPath, CreateBody(Instruction("", "n.lxz", file, {}, "OR:vn.folder.SubFolder:231"))),
      "404 no-such-folder");
  EXPECT_EQ(Outcome(documentsPath, CreateBody(Instruction("", "n.lxz", file), "unknown")),
            "404 no-such-context");
  EXPECT_EQ(Outcome(documentsPath, CreateBody(Instruction("D1001", "n.lxz", file))), "400 bad-body");
}

TEST_F(DocumentWriteTest, ReceiptIsGivenForOneStreamAndUserAndCountsOnce) {
  const auto files = Upload({"a", "b"});
  const auto create = [&](const Uploaded& file) { return CreateBody(Instruction("", "n.lxz", file)); };
  EXPECT_EQ(Outcome(documentsPath, create({files[0].stream, "made up"})), "409 unknown-receipt");
  EXPECT_EQ(Outcome(documentsPath, create({files[0].stream, ""})), "409 unknown-receipt");
  EXPECT_EQ(Outcome(documentsPath, create({"0", ""})), "409 unknown-receipt");
  EXPECT_EQ(Outcome(documentsPath, create({files[1].stream, files[0].receipt})), "409 unknown-receipt");
  EXPECT_EQ(Outcome(documentsPath, create({"10010", files[0].receipt})), "409 unknown-receipt");
  EXPECT_EQ(Outcome(documentsPath, create(files[0]), "bruno"), "409 unknown-receipt");
  EXPECT_EQ(Outcome(documentsPath, create(files[0])), "200");
  EXPECT_EQ(Outcome(documentsPath, CreateBody(Instruction("", "m.lxz", files[0]))), "409 unknown-receipt");
}

TEST_F(DocumentWriteTest, OneRefusedInstructionOfSeveralUndoesThemAll) {
  const auto files = Upload({"a", "b"});
  const std::string both =
      Instruction("", "one.lxz", files[0]) + "," + Instruction("", "fork.lxz", files[1], {}, frame);
  EXPECT_EQ(Outcome(documentsPath, CreateBody(both)), "409 name-taken");
  EXPECT_EQ(
      GetJson("/servlet/rest/objects?typeId=vn.epm.EPMDocument&$filter=CADName%20eq%20'one.lxz'").Size(), 0U);
  EXPECT_EQ(Outcome(documentsPath, CreateBody(Instruction("", "one.lxz", files[0]))), "200");
}

TEST_F(DocumentWriteTest, IterationFollowsTheLatestVersion) {
  const auto answer = PostJson(documentsPath, IterateBody(Instruction("D1003", "gear.lxz", One("new gear"))));
  const std::string id = answer[0]["id"].GetString();
  EXPECT_NE(id, "D1003");
  EXPECT_EQ(VersionOf(answer[0]), "B.3");
  EXPECT_EQ(ContentOf(answer[0]["cadContent"]["contentSections"][0]), "new gear");
  EXPECT_STREQ(answer[0]["epmMaster"]["number"].GetString(), "0000100003");
  EXPECT_FALSE(Document("D1003")["pdmIterationState"]["isLatest"].GetBool());
  EXPECT_EQ(ContentOf(Document("D1003")["cadContent"]["contentSections"][0]).rfind("FENLET DRAWING", 0), 0U);
  EXPECT_EQ(Outcome(documentsPath, IterateBody(Instruction("D1003", "gear.lxz", One()))), "409 not-latest");
}

TEST_F(DocumentWriteTest, IterationOfWhatAnybodyHasCheckedOutIsRefused) {
  EXPECT_EQ(Outcome(documentsPath, IterateBody(Instruction("D1015", "brake.lxz", One()))), "409 checked-out");
  EXPECT_EQ(Outcome(documentsPath, IterateBody(Instruction("D1016", "crank.lxz", One()))), "409 checked-out");
  EXPECT_EQ(Outcome(documentsPath, IterateBody(Instruction("D1026", "crank.lxz", One()))),
            "409 in-workspace");
}

TEST_F(DocumentWriteTest, IterationWantsItsOwnContextNameAndId) {
  const Uploaded file = One();
  EXPECT_EQ(Outcome(documentsPath,
                    IterateBody(Instruction("D1003", "gear.lxz", file), {}, "OR:vn.product.Product:102")),
            "409 other-context");
  EXPECT_EQ(Outcome(documentsPath, IterateBody(Instruction("D1003", "other.lxz", file))), "409 other-name");
  EXPECT_EQ(Outcome(documentsPath, IterateBody(Instruction("D9999", "gear.lxz", file))),
            "404 no-such-document");
  EXPECT_EQ(Outcome(documentsPath, IterateBody(Instruction("", "gear.lxz", file))), "404 no-such-document");
}

TEST_F(DocumentWriteTest, SourceOfAnotherDocumentIsIteratedWithAResolution) {
  // D1001 was made of D1002.
  const Uploaded file = One();
  EXPECT_EQ(Outcome(documentsPath, IterateBody(Instruction("D1002", "frame.lxz", file))),
            "409 unresolved-conflict");
  EXPECT_EQ(Outcome(documentsPath,
                    IterateBody(Instruction("D1002", "frame.lxz", file), IterateResolution("D1001"))),
            "409 unresolved-conflict");
  EXPECT_EQ(Outcome(documentsPath,
                    IterateBody(Instruction("D1002", "frame.lxz", file), IterateResolution("D1002"))),
            "200");
}

TEST_F(DocumentWriteTest, ForwardableContentIsCarriedByNameAndStale) {
  const std::string carry =
      ",\"secondaryContents\":[{\"category\":\"VIEWABLE\",\"fileName\":\"{$CAD_NAME}.lxz\"}]";
  const auto answer = PostJson(documentsPath, IterateBody(Instruction("D1001", "fork.lxz", One(), carry)));
  const auto& secondary = answer[0]["secondaryContents"];
  ASSERT_EQ(secondary.Size(), 1U);
  EXPECT_EQ(secondary[0]["streamId"].GetInt64(), 10011);
  EXPECT_TRUE(secondary[0]["isStale"].GetBool());
  EXPECT_TRUE(secondary[0]["isForwardable"].GetBool());
}

TEST_F(DocumentWriteTest, ContentThatComesAnewTakesThePlaceOfTheCarriedOne) {
  const Uploaded viewable = One();
  const std::string both = R"(,"secondaryContents":[{"category":"VIEWABLE","fileName":"{$CAD_NAME}.lxz"},)"
                           R"({"category":"VIEWABLE","fileName":"{$CAD_NAME}.lxz","streamId":)" +
                           viewable.stream + R"(,"uploadInfo":{"encodedCCD":")" + viewable.receipt +
                           R"("}}])";
  const auto answer = PostJson(documentsPath, IterateBody(Instruction("D1001", "fork.lxz", One(), both)));
  const auto& secondary = answer[0]["secondaryContents"];
  ASSERT_EQ(secondary.Size(), 1U);
  EXPECT_EQ(secondary[0]["streamId"].GetInt64(), std::stoll(viewable.stream));
  EXPECT_FALSE(secondary[0]["isStale"].GetBool());
  EXPECT_TRUE(secondary[0]["isForwardable"].GetBool());
}

TEST_F(DocumentWriteTest, WhatIsNotForwardableOrNotThereIsNotCarried) {
  const Uploaded file = One();
  for (const char* content : {R"({"category":"VCSINFO","fileName":"cad-metadata.json"})",
                              R"({"category":"VIEWABLE","fileName":"other"})"}) {
    const std::string carry = std::string(",\"secondaryContents\":[") + content + "]";
    EXPECT_EQ(Outcome(documentsPath, IterateBody(Instruction("D1001", "fork.lxz", file, carry))),
              "409 nothing-to-carry");
  }
  const auto answer = PostJson(documentsPath, IterateBody(Instruction("D1001", "fork.lxz", file)));
  EXPECT_EQ(answer[0]["secondaryContents"].Size(), 0U);
}

TEST_F(DocumentWriteTest, AttributesAndDependenciesStayUnlessTheyAreGiven) {
  const auto kept = PostJson(documentsPath, IterateBody(Instruction("D1001", "fork.lxz", One())));
  EXPECT_EQ(kept[0]["fileBasedAttributes"].Size(), 2U);
  EXPECT_EQ(kept[0]["derivedSourceDependencies"].Size(), 1U);
  const std::string replaced =
      ",\"isDerived\":false,\"fileBasedAttributes\":[{\"parameterDefinition\":{\"parameterName\":\"P\","
      "\"valueType\":"
      "\"String\"},\"parameterValue\":{\"value\":\"v\"}}]";
  const auto answer = PostJson(
      documentsPath, IterateBody(Instruction(kept[0]["id"].GetString(), "fork.lxz", One(), replaced)));
  ASSERT_EQ(answer[0]["fileBasedAttributes"].Size(), 1U);
  EXPECT_STREQ(answer[0]["fileBasedAttributes"][0]["parameterDefinition"]["parameterName"].GetString(), "P");
  EXPECT_EQ(answer[0]["derivedSourceDependencies"].Size(), 0U);
  EXPECT_FALSE(answer[0]["isDerived"].GetBool());
}

TEST_F(DocumentWriteTest, UnknownSourceIsRefused) {
  const std::string derived =
      ",\"isDerived\":true,\"derivedSourceDependencies\":[{\"asStoredChildName\":\"x\",\"source\":{\"id\":"
      "\"D9999\"}}]";
  EXPECT_EQ(Outcome(documentsPath, CreateBody(Instruction("", "n.lxz", One(), derived))),
            "409 unknown-source");
}

TEST_F(DocumentWriteTest, StoreReplacesWhatTheWorkingCopyHoldsAndKeepsItsId) {
  const std::string working = CheckOut("W301", "D1003");
  const auto stored = PostJson(bench + "/store", StoreBody(Instruction(working, "gear.lxz", One("stored"))));
  EXPECT_STREQ(stored[0]["id"].GetString(), working.c_str());
  EXPECT_EQ(VersionOf(stored[0]), "B.2");
  EXPECT_EQ(ContentOf(stored[0]["cadContent"]["contentSections"][0]), "stored");
  EXPECT_EQ(ContentOf(Document("D1003")["cadContent"]["contentSections"][0]).rfind("FENLET DRAWING", 0), 0U);

  const auto again =
      PostJson(bench + "/store", StoreBody(Instruction(working, "gear.lxz", One("stored again"))));
  EXPECT_EQ(ContentOf(again[0]["cadContent"]["contentSections"][0]), "stored again");
  const auto in = PostJson(bench + "/checkin", CheckinBody(working));
  EXPECT_EQ(VersionOf(in[0]), "B.3");
  EXPECT_EQ(ContentOf(Document(in[0]["id"].GetString(), "bruno")["cadContent"]["contentSections"][0]),
            "stored again");
}

TEST_F(DocumentWriteTest, StaleContentIsCheckedInWithAResolution) {
  const auto out = PostJson(bench + "/checkout", CheckoutBody("D1001", CheckoutResolution("M2001")));
  const std::string working = out[0]["id"].GetString();
  EXPECT_EQ(out[0]["secondaryContents"].Size(), 2U);
  EXPECT_EQ(out[0]["fileBasedAttributes"].Size(), 2U);
  const std::string carry =
      ",\"secondaryContents\":[{\"category\":\"VIEWABLE\",\"fileName\":\"{$CAD_NAME}.lxz\"}]";
  EXPECT_EQ(Outcome(bench + "/store", StoreBody(Instruction(working, "fork.lxz", One(), carry))), "200");
  EXPECT_EQ(Outcome(bench + "/checkin", CheckinBody(working)), "409 unresolved-conflict");
  EXPECT_EQ(Outcome(bench + "/checkin",
                    CheckinBody(working, ",\"conflictResolutions\":" + CheckinResolution("D1001"))),
            "409 unresolved-conflict");
  EXPECT_EQ(Outcome(bench + "/checkin",
                    CheckinBody(working, ",\"conflictResolutions\":" + CheckinResolution(working))),
            "200");
}

TEST_F(DocumentWriteTest, OnlyWorkingCopiesOfTheWorkspaceAreStored) {
  const Uploaded file = One();
  EXPECT_EQ(Outcome(bench + "/store", StoreBody(Instruction("D1003", "gear.lxz", file))),
            "409 not-checked-out");
  EXPECT_EQ(Outcome(bench + "/store", StoreBody(Instruction("D1001", "fork.lxz", file))),
            "409 not-checked-out");
  EXPECT_EQ(Outcome(workspacesPath + "/W303/store", StoreBody(Instruction("D1026", "crank.lxz", file))),
            "409 not-checked-out");
  EXPECT_EQ(Outcome(bench + "/store", StoreBody(Instruction("D1025", "brake.lxz", file))),
            "404 no-such-document");
  EXPECT_EQ(Outcome(workspacesPath + "/W302/store", StoreBody(Instruction("D1026", "crank.lxz", file))),
            "404 no-such-workspace");
  EXPECT_EQ(Outcome(bench + "/store", StoreBody(Instruction("D1026", "crank.lxz", file))), "200");
}

TEST_F(DocumentWriteTest, DocumentMadeInAWorkspaceGetsItsFolderAtTheFirstCheckin) {
  const auto made = PostJson(bench + "/store", StoreBody(Instruction("", "lamp.lxz", One(), {}, frame)));
  const std::string id = made[0]["id"].GetString();
  EXPECT_FALSE(made[0].HasMember("locationFolder"));
  EXPECT_FALSE(made[0]["pdmIterationState"]["isCheckout"].GetBool());
  EXPECT_EQ(Get(documentsPath + "/" + id, "bruno").status, 404);
  EXPECT_EQ(Outcome(bench + "/store", StoreBody(Instruction(id, "lamp.lxz", One("brighter")))), "200");
  const auto in = PostJson(bench + "/checkin", CheckinBody(id));
  EXPECT_EQ(VersionOf(in[0]), "A.1");
  EXPECT_STREQ(in[0]["locationFolder"]["id"].GetString(), frame.c_str());
  EXPECT_EQ(ContentOf(in[0]["cadContent"]["contentSections"][0]), "brighter");
}

TEST_F(DocumentWriteTest, NameTakenMeanwhileIsRefusedAtTheFirstCheckin) {
  const auto made = PostJson(bench + "/store", StoreBody(Instruction("", "lamp.lxz", One(), {}, frame)));
  EXPECT_EQ(
      Outcome(documentsPath, CreateBody(Instruction("", "lamp.lxz", One("b", "bruno"), {}, frame)), "bruno"),
      "200");
  EXPECT_EQ(Outcome(bench + "/checkin", CheckinBody(made[0]["id"].GetString())), "409 name-taken");
  EXPECT_EQ(Outcome(bench + "/store", StoreBody(Instruction("", "fork.lxz", One(), {}, frame))),
            "409 name-taken");
}

TEST_F(DocumentWriteTest, BodiesThatSayTooLittleOrTheWrongThingAreRefused) {
  const std::string ok = Instruction("", "n.lxz", {"1", "r"});
  const auto without = [&](const std::string& part, const std::string& with) {
    std::string text = ok;
    text.replace(text.find(part), part.size(), with);
    return CreateBody(text);
  };
  const std::vector<std::string> bodies{
      std::string("{}"),
      std::string("[]"),
      std::string("null"),
      CreateBody(""),
      CreateBody("7"),
      CreateBody("{}"),
      "{\"createInstructions\":[" + ok + "]}",
      "{\"createInstructions\":{},\"contextId\":\"x\"}",
      "{\"createInstructions\":[" + ok + "],\"iterateInstructions\":[" + ok + "],\"contextId\":\"x\"}",
      without("\"n.lxz\"", "\"\""),
      without("\"n.lxz\"", "7"),
      without("\"cadName\"", "\"other\""),
      without("\"contentSections\"", "\"other\""),
      without("\"streamId\":1", "\"streamId\":\"1\""),
      without("\"streamId\":1,", ""),
      without("\"uploadInfo\"", "\"other\""),
      without(",\"ndVersion\"", ",\"isDerived\":true,\"ndVersion\""),
      without(",\"ndVersion\"", ",\"fileBasedAttributes\":[{}],\"ndVersion\""),
      without(",\"ndVersion\"", ",\"secondaryContents\":[7],\"ndVersion\""),
      without("\"n.lxz\"", "\"n\\u0000.lxz\"")};
  for (const std::string& body : bodies) {
    EXPECT_EQ(Outcome(documentsPath, body), "400 bad-body") << body;
  }
}

TEST_F(DocumentWriteTest, AllThatWasWrittenOutlivesARestart) {
  const auto answer = PostJson(documentsPath, CreateBody(Instruction("", "neu.lxz", One("kept"))));
  const std::string id = answer[0]["id"].GetString();
  const std::string working = CheckOut("W301", "D1003");
  const Uploaded pending = One("pending");
  Start();
  EXPECT_EQ(ContentOf(Document(id)["cadContent"]["contentSections"][0]), "kept");
  EXPECT_TRUE(Document(working)["pdmIterationState"]["isCheckoutByYou"].GetBool());
  EXPECT_EQ(Outcome(documentsPath, CreateBody(Instruction("", "later.lxz", pending))), "200");
}

}  // namespace
}  // namespace vantry_sim
