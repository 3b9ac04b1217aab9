// Source XLIFF uploaded and linked, and documents published.
#include "translation_fixture.h"

namespace vantry_sim {
namespace {

using Texts = std::vector<std::string>;

/// The values of the attributes with this name.
Texts AttributesNamed(const rapidjson::Document& document, const std::string& name) {
  Texts values;
  for (const auto& attribute : document["fileBasedAttributes"].GetArray()) {
    if (attribute["parameterDefinition"]["parameterName"].GetString() == name)
      values.push_back(attribute["parameterValue"]["value"].GetString());
  }
  return values;
}

TEST_F(TranslationTest, UploadedXliffIsFoundOnceItIsLinked) {
  const std::string xliff = UploadXliff("chain manual.xlf", "<xliff>text</xliff>");
  EXPECT_EQ(Xliff("D1032"), Texts{});
  const auto answer = PostJson(servicePath + "CreateXliffLink", LinkBody("D1032", xliff));
  EXPECT_STREQ(answer["value"].GetString(), "Success");
  EXPECT_EQ(Xliff("D1032"), Texts{xliff + " en"});

  const auto document = GetJson(documentsPath + "/" + xliff);
  EXPECT_STREQ(document["locationFolder"]["path"].GetString(), "/Trekking Bike/Translations");
  EXPECT_STREQ(document["epmMaster"]["authoringApplication"].GetString(), "SENTARIX");
  EXPECT_STREQ(document["epmMaster"]["category"].GetString(), "xml");
  EXPECT_EQ(AttributesNamed(document, "ZVK_DD_TRANSLATE"), Texts{"yes"});
  EXPECT_EQ(AttributesNamed(document, "ZVK_DD_EXTENDED_DOC_TYPE"), Texts{"x-raomSource"});
  EXPECT_EQ(ContentOf(document["cadContent"]["contentSections"][0]), "<xliff>text</xliff>");
}

TEST_F(TranslationTest, LinkOutlivesARestartAndEverybodySeesIt) {
  const std::string xliff = UploadXliff("chain manual.xlf");
  ASSERT_EQ(Link("D1032", xliff), "200");
  Start();
  EXPECT_EQ(Xliff("D1032", "bruno"), Texts{xliff + " en"});
}

TEST_F(TranslationTest, NewIterationOfTheXliffIsSeenOnceItIsLinkedAnew) {
  const std::string next = Iterate(
      "D1029", "welding manual.xlf",
      Attribute("ZVK_DD_EXTENDED_DOC_TYPE", "x-raomSource") + "," + Attribute("ZVK_DD_LANGUAGE", "en-GB"));
  EXPECT_NE(next, "D1029");
  EXPECT_EQ(Xliff("D1028"), Texts{"D1029 en"});
  EXPECT_EQ(Link("D1028", "D1029"), "409 not-latest");
  EXPECT_EQ(Link("D1028", next), "200");
  EXPECT_EQ(Xliff("D1028"), Texts{next + " en-GB"});
  // The translations came of the document and not of one iteration.
  EXPECT_EQ(GetJson(DocumentTarget("D1028") + "?$expand=Translations")["Translations"].Size(), 2U);
}

TEST_F(TranslationTest, NewIterationOfTheSourceKeepsTheLinkUntilItHasItsOwn) {
  const std::string source = Iterate("D1028", "welding manual.xml", Attribute("ZVK_DD_LANGUAGE", "en"));
  EXPECT_EQ(Xliff(source), Texts{"D1029 en"});
  const std::string other = UploadXliff("second.xlf");
  ASSERT_EQ(Link(source, other), "200");
  EXPECT_EQ(Xliff(source), Texts{other + " en"});
  EXPECT_EQ(Xliff("D1028"), Texts{"D1029 en"});
}

TEST_F(TranslationTest, WorkingCopyHasALinkOfItsOwnWhichGoesWithIt) {
  const std::string xliff = UploadXliff("chain manual.xlf");
  const std::string working = CheckOut("W301", "D1032");
  ASSERT_EQ(Link(working, xliff), "200");
  EXPECT_EQ(Xliff(working), Texts{xliff + " en"});
  EXPECT_EQ(Xliff("D1032"), Texts{});
  EXPECT_EQ(Outcome(workspacesPath + "/W301/undocheckout", "{\"objIdList\":[\"" + working + "\"]}"), "200");
  EXPECT_EQ(Xliff("D1032"), Texts{});

  const std::string again = CheckOut("W302", "D1032", "bruno");
  ASSERT_EQ(Link(again, xliff, "bruno"), "200");
  const auto checkedIn = PostJson(workspacesPath + "/W302/checkin", CheckinBody(again), "bruno");
  EXPECT_EQ(Xliff(checkedIn[0]["id"].GetString()), Texts{xliff + " en"});
}

TEST_F(TranslationTest, LinkThatCannotStandIsRefused) {
  EXPECT_EQ(Link("unknown", "D1029"), "404 no-such-document");
  EXPECT_EQ(Link("D1028", "unknown"), "404 no-such-document");
  EXPECT_EQ(Link("D1012", "D1029"), "404 no-such-document");
  EXPECT_EQ(Link("D1025", "D1029"), "404 no-such-document");  // bruno's working copy
  EXPECT_EQ(Link("D1028", "D1028"), "409 same-document");
  EXPECT_EQ(Link("D1029", "D1029"), "409 same-document");
  EXPECT_EQ(Link("D1001", "D1101"), "409 same-document");
  EXPECT_EQ(Link("D1028", "D1001"), "409 no-xliff");
  EXPECT_EQ(Link("D1028", "D1032"), "409 no-xliff");
  EXPECT_EQ(Link("D1029", "D1030"), "409 is-xliff");
  EXPECT_EQ(Link("D1032", "D1029"), "409 other-source");
  EXPECT_EQ(Link("D1032", UploadXliff("other.xlf", "<xliff/>", "vn.epm.EPMDocument")), "409 no-xliff");
  EXPECT_EQ(Link("D1028", CheckOut("W301", "D1029")), "409 in-workspace");
  EXPECT_EQ(Xliff("D1028"), Texts{"D1029 en"});
  EXPECT_EQ(Xliff("D1032"), Texts{});
}

TEST_F(TranslationTest, LinkBodyMustNameTwoDocuments) {
  const std::string target = servicePath + "CreateXliffLink";
  for (const char* body :
       {"{}", "[]", "{\"oidForQ7zkDocument\":\"D1028\"}", "{\"oidForXliffDocument\":\"D1029\"}",
        "{\"oidForQ7zkDocument\":\"D1028\",\"oidForXliffDocument\":1029}",
        "{\"oidForQ7zkDocument\":\"\",\"oidForXliffDocument\":\"D1029\"}"}) {
    EXPECT_EQ(Outcome(target, body), "400 bad-body") << body;
  }
  // A client that doesn't escape a quote in an id.
  EXPECT_EQ(Outcome(target, LinkBody("D\"1028", "D1029")), "400 broken-json");
  EXPECT_EQ(Get(target).status, 405);
}

TEST_F(TranslationTest, PublishedDocumentKeepsItsIdAndTellsItsType) {
  ASSERT_STREQ(GetJson(DocumentTarget("D1031"))["ZVKDDEXTENDEDDOCTYPE"].GetString(), "x-raomTranslated");
  const Response response =
      Write("PATCH", DocumentTarget("D1031"), "{ \"ZVKDDEXTENDEDDOCTYPE\":\"x-raomPublished\" }");
  EXPECT_EQ(response.status, 204);
  EXPECT_EQ(response.body, "");
  Start();
  EXPECT_STREQ(GetJson(DocumentTarget("D1031"))["ZVKDDEXTENDEDDOCTYPE"].GetString(), "x-raomPublished");
  const auto document = GetJson(documentsPath + "/D1031", "bruno");
  EXPECT_EQ(AttributesNamed(document, "ZVK_DD_EXTENDED_DOC_TYPE"), Texts{"x-raomPublished"});
  EXPECT_EQ(AttributesNamed(document, "ZVK_DD_LANGUAGE"), Texts{"fr"});
  EXPECT_EQ(VersionOf(document), "A.1");
}

TEST_F(TranslationTest, DocumentWithoutATypeGetsOneBehindItsOtherAttributes) {
  EXPECT_EQ(Publish("D1001"), "204");
  const auto document = GetJson(documentsPath + "/D1001");
  ASSERT_EQ(document["fileBasedAttributes"].Size(), 3U);
  EXPECT_STREQ(document["fileBasedAttributes"][2]["parameterValue"]["value"].GetString(), "x-raomPublished");
  // A document without any attribute.
  EXPECT_EQ(Publish("D1003"), "204");
  EXPECT_EQ(GetJson(documentsPath + "/D1003")["fileBasedAttributes"].Size(), 1U);
}

TEST_F(TranslationTest, ChangeThatCannotBeMadeIsRefused) {
  EXPECT_EQ(Publish("unknown"), "404 no-such-document");
  EXPECT_EQ(Publish("D1012"), "404 no-such-document");
  EXPECT_EQ(Publish("D1025"), "404 no-such-document");
  EXPECT_EQ(Publish("D1101"), "409 not-latest");
  EXPECT_EQ(Publish("D1015"), "409 checked-out");  // by bruno
  EXPECT_EQ(Publish("D1016"), "409 checked-out");  // by anna herself, whose working copy is D1026
  EXPECT_EQ(Publish("D1026"), "204");
  EXPECT_EQ(Publish("D1026", "bruno"), "404 no-such-document");
}

TEST_F(TranslationTest, ChangeIsOneTextAndNothingElse) {
  const auto patch = [this](const std::string& body) {
    return OutcomeOf(Write("PATCH", DocumentTarget("D1031"), body));
  };
  EXPECT_EQ(patch("{}"), "400 bad-body");
  EXPECT_EQ(patch("[]"), "400 bad-body");
  EXPECT_EQ(patch("\"x\""), "400 bad-body");
  EXPECT_EQ(patch("{\"ZVKDDEXTENDEDDOCTYPE\":1}"), "400 bad-body");
  EXPECT_EQ(patch("{\"ZVKDDEXTENDEDDOCTYPE\":\"\"}"), "400 bad-body");
  EXPECT_EQ(patch("{\"ZVKDDEXTENDEDDOCTYPE\":\"x\",\"Name\":\"y\"}"), "400 bad-body");
  EXPECT_EQ(patch("{"), "400 broken-json");
  EXPECT_STREQ(GetJson(DocumentTarget("D1031"))["ZVKDDEXTENDEDDOCTYPE"].GetString(), "x-raomTranslated");
}

TEST_F(TranslationTest, WritesByODataNeedTheNonceAndJson) {
  const std::string nonce = Nonce();
  const std::pair<const char*, std::string> writes[] = {{"POST", servicePath + "CreateXliffLink"},
                                                        {"PATCH", DocumentTarget("D1031")}};
  for (const auto& [method, target] : writes) {
    Request request;
    request.method = method;
    request.target = target;
    request.user = "anna";
    request.contentType = "application/json";
    request.body = "{}";
    EXPECT_EQ(simulator_->Handle(request).status, 403) << target;
    request.nonce = nonce + "x";
    EXPECT_EQ(simulator_->Handle(request).status, 403) << target;
    request.nonce = nonce;
    EXPECT_EQ(simulator_->Handle(request).status, 400) << target;
    request.contentType = "text/plain";
    EXPECT_EQ(simulator_->Handle(request).status, 415) << target;
  }
}

}  // namespace
}  // namespace vantry_sim
