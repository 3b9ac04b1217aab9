#include <gmock/gmock.h>

#include "tests/e2e/cli/xliff_fixture.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace vtdirect_test {

class XliffGeneration : public XliffTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Generations, XliffGeneration, testing::Values("schema1", "schema4", "schema5"));

TEST_F(XliffTest, PrintsTheSourceXliffAndItsLanguage) {
  Serve();
  const ProcessResult result = Run({"xliff", "source", manual});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, server().Uid("D1029") + "&file=/welding%20manual.xlf\ten\n");
  EXPECT_EQ(result.err, "");
  const ProcessResult none = Run({"xliff", "source", bareManual});
  EXPECT_EQ(none.status, 6);
  EXPECT_EQ(none.out, "");
  EXPECT_EQ(
      none.err,
      "vtdirect: the server shows no source XLIFF for //sim/?id=D1032; \"vtdirect xliff put\" sends one\n");
}

TEST_P(XliffGeneration, ListsTranslationsByLanguage) {
  Serve({"--generation", GetParam(), "--page-size", "1", "--page-port", "0"});
  const ProcessResult result = Run({"xliff", "list", manual});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "de\t" + server().Uid("D1030") + "&file=/welding%20manual_de.xlf\n" + "fr\t" +
                            server().Uid("D1031") + "&file=/welding%20manual_fr.xlf\n");
  EXPECT_EQ(result.err, "");
}

TEST_P(XliffGeneration, MarksATranslationAsPublished) {
  Serve({"--generation", GetParam()});
  EXPECT_EQ(DocumentOf(server(), "D1031").attributes.at("ZVK_DD_EXTENDED_DOC_TYPE"), "x-raomTranslated");
  const ProcessResult result = Run({"xliff", "publish", "//sim/?id=D1031"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, server().Uid("D1031") + "&file=/welding%20manual_fr.xlf\n");
  EXPECT_EQ(result.err, "vtdirect: //sim/?id=D1031 is marked as published\n");
  EXPECT_EQ(DocumentOf(server(), "D1031").attributes.at("ZVK_DD_EXTENDED_DOC_TYPE"), "x-raomPublished");
}

TEST_P(XliffGeneration, SendsAFirstXliffAndUpdatesIt) {
  Serve({"--generation", GetParam()});
  EXPECT_EQ(Put(bareManual).status, 0);
  const std::string first = LinkOf("D1032");
  EXPECT_EQ(DocumentOf(server(), first).bytes, English());
  WriteFile(Here("chain.xlf"), English("Oil it again."));
  EXPECT_EQ(Put(bareManual).status, 0);
  EXPECT_NE(LinkOf("D1032"), first);
  EXPECT_EQ(DocumentOf(server(), LinkOf("D1032")).bytes, English("Oil it again."));
}

TEST_F(XliffTest, ListsNoTranslations) {
  Serve();
  const ProcessResult result = Run({"xliff", "list", bareManual});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "vtdirect: //sim/?id=D1032 has no translations\n");
  const ProcessResult get = Run({"xliff", "get", bareManual, "-l", "de"});
  EXPECT_EQ(get.status, 6);
  EXPECT_EQ(get.err, "vtdirect: //sim/?id=D1032 has no translations\n");
}

TEST_F(XliffTest, ListsWhatItCanReadAndSaysThatThereIsMore) {
  Serve({"--fault", "GET *documents/D1030*=500"});
  const ProcessResult result = Run({"xliff", "list", manual});
  EXPECT_EQ(result.status, 11);
  EXPECT_EQ(result.out, "fr\t" + server().Uid("D1031") + "&file=/welding%20manual_fr.xlf\n");
  EXPECT_THAT(result.err,
              HasSubstr("the list of the translations of //sim/?id=D1028 is incomplete: the server has "
                        "more than the 1 that could be read"));
  EXPECT_EQ(Run({"xliff", "get", manual, "-l", "fr", "-o", "copy"}).status, 0);
  const ProcessResult missing = Run({"xliff", "get", manual, "-l", "de"});
  EXPECT_EQ(missing.status, 11);
  EXPECT_THAT(missing.err, HasSubstr("; \"de\" is not among fr"));
  EXPECT_THAT(HereNames(), ElementsAre("chain.xlf", "copy"));
}

TEST_F(XliffTest, DownloadsATranslationByteForByte) {
  Serve();
  const std::string german = server().Get("/servlet/rest/v1/content/streams/10300/x");
  ASSERT_THAT(german, HasSubstr("Handschuhe tragen."));
  const ProcessResult result = Run({"xliff", "get", manual, "--language", "de", "-o", "copy"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "vtdirect: saved copy, " + std::to_string(german.size()) + " bytes\n");
  EXPECT_EQ(ReadFile(Here("copy")), german);
  EXPECT_EQ(Run({"xliff", "get", manual, "-l", "DE", "-o", "-"}).out, german);
  EXPECT_EQ(Run({"xliff", "get", manual, "-l", "fr"}).status, 0);
  EXPECT_EQ(ReadFile(Here("welding manual_fr.xlf")),
            server().Get("/servlet/rest/v1/content/streams/10310/x"));
  EXPECT_EQ(Run({"xliff", "get", manual, "-l", "fr", "-n"}).status, 8);
  EXPECT_THAT(HereNames(), ElementsAre("chain.xlf", "copy", "welding manual_fr.xlf"));
}

TEST_F(XliffTest, NamesTheLanguagesThatThereAre) {
  Serve();
  const ProcessResult result = Run({"xliff", "get", manual, "-l", "it"});
  EXPECT_EQ(result.status, 6);
  EXPECT_EQ(result.err, "vtdirect: //sim/?id=D1028 has no translation into \"it\"; it has de, fr\n");
  EXPECT_THAT(HereNames(), ElementsAre("chain.xlf"));
}

TEST_F(XliffTest, LeavesWhatStoodThereWhenADownloadBreaksOff) {
  Serve({"--fault", "GET *content/streams/10300*=cut:20"});
  WriteFile(Here("copy"), "before");
  EXPECT_EQ(Run({"xliff", "get", "-f", manual, "-l", "de", "-o", "copy"}).status, 7);
  EXPECT_EQ(ReadFile(Here("copy")), "before");
  EXPECT_THAT(HereNames(), ElementsAre("chain.xlf", "copy"));
}

TEST_F(XliffTest, TellsJsonOfAnUpdate) {
  Serve();
  const ProcessResult result = Run({"--json", "xliff", "put", manual, "chain.xlf", "-l", "en"});
  EXPECT_EQ(result.out,
            "{\"schema\":2,\"command\":\"xliff put\",\"address\":\"//sim/?id=D1028\",\"uid\":\"" +
                server().Uid(LinkOf("D1028")) +
                "&file=/welding%20manual.xlf\",\"file\":\"chain.xlf\",\"language\":\"en\",\"action\":"
                "\"updated\"}\n");
  EXPECT_EQ(result.err, "");
}

}  // namespace vtdirect_test
