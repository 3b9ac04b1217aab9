#include "tests/wire/public/uploads/upload_front_fixture.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;
using testing::IsEmpty;

class UploadPreparation : public UploadFrontTest {
 protected:
  bool UploadTo(const char* path) {
    return Upload(path, mainPath.c_str(), "", noLinks, Status(), {}, nullptr, false);
  }
};

TEST_F(UploadPreparation, OfAnAddressWithoutAServerIsTracedAndNotTold) {
  EXPECT_FALSE(UploadTo("//nowhere/Products/a"));
  EXPECT_FALSE(UploadTo("korvufenloom-vt://nowhere/?id=D1"));
  EXPECT_FALSE(UploadTo("a"));
  EXPECT_FALSE(UploadTo(nullptr));
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_THAT(statuses, IsEmpty());
  EXPECT_EQ(trace.lines(),
            (Traces{Error("Failed to connect to server path //nowhere/Products/a\n"),
                    Error("Failed to connect to server path korvufenloom-vt://nowhere/?id=D1\n"),
                    Error("Failed to connect to server path a\n")}));
}

TEST_F(UploadPreparation, OfAServerThatDoesNotAnswerIsTracedByItsUrlAndTold) {
  transport.Then(404).Then(500);
  EXPECT_FALSE(UploadTo(uidOfD1));
  transport.ThenFail(du::http::ErrorCode::NoConnection).ThenFail(du::http::ErrorCode::NoConnection);
  EXPECT_FALSE(UploadTo("//plm/Products/Gadget/Folders/a"));
  EXPECT_EQ(statuses, (Lines{"1 (null)", "1 (null)"}));
  EXPECT_EQ(Traced(), Traces(2, Error("Failed to connect to server path https://plm.example/vt/\n")));
}

TEST_F(UploadPreparation, NeverOverwritesThroughAPath) {
  ThenSchema();
  transport.Then(404).Then(404).Then(404);
  transport.Then(200, R"([{"id":"D1","attributes":{"number":"0042"}}])")
      .Then(200, R"({"id":"D1"})")
      .Then(200, R"({"id":"D1"})");
  EXPECT_FALSE(UploadTo("//plm/Products/Gadget/Folders/pump.fnl"));
  EXPECT_THAT(statuses, IsEmpty());
  EXPECT_EQ(Traced(), Traces{Error("File //plm/Products/Gadget/Folders/pump.fnl already exists\n")});
}

TEST_F(UploadPreparation, TakesAFoundDocumentThatCannotBeReadForNone) {
  ThenSchema();
  transport.Then(404).Then(404).Then(404);
  transport.Then(200, R"([{"id":"D1","attributes":{"number":"0042"}}])")
      .Then(200, R"({"id":"D1"})")
      .Then(404);
  transport.Then(200, R"({"items":[]})");
  EXPECT_FALSE(UploadTo("//plm/Products/Gadget/Folders/pump.fnl"));
  EXPECT_EQ(transport.lines().back(), Get("servlet/rest/v1/contexts?type=Product"));
  EXPECT_EQ(statuses, Lines{"7 (null)"});
}

TEST_F(UploadPreparation, TakesADocumentWhoseStateCannotBeReadForOneThatIsNotCheckedOut) {
  ThenSchema();
  transport.Then(500).Then(500);
  EXPECT_FALSE(UploadTo((uidStem + "D1001|W77|D1002|T").c_str()));
  // The iteration's own read, of the whole id.
  EXPECT_EQ(transport.lines().back(), DocumentLine("D1001%7CW77%7CD1002%7CT"));
  EXPECT_EQ(statuses, Lines{"8 (null)"});
}

// Such an address names no object, so it is a place for a new one; there is no context in it.
TEST_F(UploadPreparation, TakesAUidWithoutAnIdForAPath) {
  ThenSchema();
  transport.Then(404).Then(404).Then(404).Then(200, "[]");
  EXPECT_FALSE(UploadTo("korvufenloom-vt://plm.example/vt/?file=/a"));
  EXPECT_EQ(transport.lines().back(), Get("servlet/rest/v1/contexts"));
  EXPECT_EQ(statuses, Lines{"7 (null)"});
}

TEST_F(UploadPreparation, TellsOfAContentThatIsNullAndAsksNobody) {
  for (const auto& [path, code] : std::map<std::string, std::string>{
           {"//plm/Products/Gadget/Folders/a", "7 (null)"},
           {uidOfD1, "8 (null)"},
           {temporaryUid, "9 (null)"},
           {uidStem + "D2|W1", "9 (null)"},
       }) {
    statuses.clear();
    trace.Clear();
    EXPECT_FALSE(Upload(path.c_str(), nullptr, "", noLinks, Status(), {}, nullptr, false));
    EXPECT_FALSE(Upload(FileTypeGeneral, path.c_str(), nullptr, Status(), {}, nullptr, false));
    EXPECT_FALSE(UploadAsync(path.c_str(), nullptr, "", noLinks, Status(), {}, nullptr, false));
    EXPECT_FALSE(UploadAsync(FileTypeGeneral, path.c_str(), nullptr, Status(), {}, nullptr, false));
    EXPECT_FALSE(UploadFenletAsync(path.c_str(), nullptr, UploadFenletParams{}, Status(), {}, false));
    EXPECT_EQ(statuses, Lines(5, code)) << path;
    EXPECT_EQ(trace.lines(), Traces(5, Error("No local file to store at " + path + "\n")));
  }
  EXPECT_THAT(transport.lines(), IsEmpty());
}

TEST_F(UploadPreparation, OfNothingAtNoAddressIsSilent) {
  EXPECT_FALSE(Upload(nullptr, nullptr, nullptr, noLinks, Status(), {}, nullptr, false));
  EXPECT_FALSE(UploadFenletAsync(nullptr, nullptr, UploadFenletParams{}, Status(), {}, false));
  EXPECT_THAT(statuses, IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
  EXPECT_THAT(transport.lines(), IsEmpty());
}

TEST_F(UploadPreparation, TakesAViewableThatIsNullForNone) {
  for (const bool later : {false, true}) {
    SCOPED_TRACE(later);
    ThenPlainDocument();
    ThenIterate();
    const char* main = mainPath.c_str();
    EXPECT_TRUE(later ? UploadFenletAsync(uidOfD1, main, UploadFenletParams{}, Status(), {}, false)
                      : Upload(uidOfD1, main, nullptr, noLinks, Status(), {}, nullptr, false));
    UpdateServerList({});
    UpdateServerList({{"plm", plmUrl}});
  }
  EXPECT_EQ(statuses, Lines(2, "0 " + storedUid));
  EXPECT_EQ(Traced(), (Traces{Storing(), uploaded, Storing(), uploaded}));
}

}  // namespace
}  // namespace vtdirect_test
