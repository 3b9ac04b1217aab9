#include "translation/xliff_context.h"

#include "base/result.h"
#include "tests/wire/translation/xliff_fixture.h"

namespace vtdirect_test {
namespace {

using lxservices::cms_interface::HandOver;
using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;

// A container with these folders, which are JSON already.
std::string Container(const std::string& id, const std::string& name, const std::string& type,
                      const std::string& folders = R"([{"ID":"K0"},{"ID":"K1"}])") {
  return R"({"ID":")" + id + R"(","Name":")" + name + R"(","Type":")" + type + R"(","Folders":)" + folders +
         "}";
}

std::string Context(const std::string& id, const std::string& name, const std::string& type) {
  return R"({"id":")" + id + R"(","attributes":{"name":")" + name + R"(","type":")" + type + R"("}})";
}

class ContextByCabinet : public XliffTest {
 protected:
  std::string Find(const std::string& type = "Product") {
    return FindContextByCabinet(Begin(connection), "Gadget", "K1", type);
  }
  std::string FindIn(const std::vector<std::string>& containers, const std::string& type = "Product") {
    transport.Then(200, Rows(containers));
    return Find(type);
  }
};

TEST_F(ContextByCabinet, IsFoundByOneODataRead) {
  EXPECT_EQ(FindIn({Container("C5", "Gadget", "Product")}), "C5");
  EXPECT_EQ(
      transport.requests(),
      (Requests{
          {serverUrl, "GET /vt/servlet/odata/v1/DataAdmin/Containers?$expand=Folders", readHeaders, {}}}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ContextByCabinet, IsTheOnlyOneWithTheCabinetWhateverItsNameAndType) {
  EXPECT_EQ(
      FindIn({Container("C4", "Gadget", "Product", R"([{"ID":"K0"}])"), Container("C5", "Other", "Library")}),
      "C5");
}

TEST_F(ContextByCabinet, IsNoneWithoutTheCabinet) {
  EXPECT_EQ(FindIn({}), "");
  EXPECT_EQ(FindIn({Container("C5", "Gadget", "Product", "[]"),
                    Container("C6", "Gadget", "Product", R"([{"ID":"k1"},{"ID":"K11"},{"ID":"K"}])")}),
            "");
}

TEST_F(ContextByCabinet, IsTheOneOfThatNameOfSeveral) {
  EXPECT_EQ(FindIn({Container("C5", "Other", "Product"), Container("C6", "Gadget", "Library"),
                    Container("C7", "gadget", "Product")}),
            "C6");
}

TEST_F(ContextByCabinet, IsNoneOfSeveralWithoutThatName) {
  EXPECT_EQ(FindIn({Container("C5", "Other", "Product"), Container("C6", "Another", "Product")}), "");
}

// Which of them was meant is in doubt even where the type tells them apart.
TEST_F(ContextByCabinet, IsNoneOfSeveralOfThatNameWhateverTheirTypes) {
  const std::string product = Container("C5", "Gadget", "Product");
  const std::string library = Container("C6", "Gadget", "Library");
  EXPECT_EQ(FindIn({product, library}), "");
  EXPECT_EQ(FindIn({product, library}, "LIBRARY"), "");
  EXPECT_EQ(FindIn({product, library}, "Site"), "");
  EXPECT_EQ(FindIn({product, Container("C7", "Gadget", "Product")}), "");
  EXPECT_EQ(FindIn({product, library, Container("C7", "Other", "Product")}), "");
}

TEST_F(ContextByCabinet, IsLookedForInAllPagesOverConnectionsOfTheirOwn) {
  transport.Then(200, Rows({Container("C5", "Other", "Product")}, "https://plm.example/vt/2"))
      .Then(200, R"({"value":7,"@odata.nextLink":"https://other.example/3"})")
      .Then(200, Rows({Container("C6", "Gadget", "Product")}));
  EXPECT_EQ(Find(), "C6");
  EXPECT_EQ(transport.requests(), (Requests{ReadPage(cabinetsPath), ReadLink("https://plm.example", "/vt/2"),
                                            ReadLink("https://other.example", "/3")}));
}

TEST_F(ContextByCabinet, IsWhatWasFoundBeforeAFailedPage) {
  const std::string first = Rows({Container("C5", "Other", "Product")}, "https://plm.example/vt/2");
  const std::vector<Answer> failures{{500, Rows({Container("C6", "Gadget", "Product")})},
                                     {0, "", du::http::ErrorCode::NoConnection},
                                     {200, "<html>"},
                                     {200, "[" + Rows({Container("C6", "Gadget", "Product")}) + "]"},
                                     {204, ""}};
  for (const Answer& failure : failures) {
    transport.Then(200, first).Then(failure);
    EXPECT_EQ(Find(), "C5");
    transport.Then(failure);
    EXPECT_EQ(Find(), "");
  }
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ContextByCabinet, TakesWhatAContainerDoesNotTellForEmpty) {
  const std::string nameless = R"({"ID":"C5","Folders":[{"ID":"K1"}]})";
  EXPECT_EQ(FindIn({nameless}), "C5");
  EXPECT_EQ(FindIn({nameless, Container("C6", "Gadget", "Product")}), "C6");
  EXPECT_EQ(FindIn({R"({"ID":"C5","Name":7,"Type":[],"Folders":[{"ID":"K1"}]})",
                    Container("C6", "Gadget", "Product")}),
            "C6");
  transport.Then(200, Rows({nameless, Container("C6", "Gadget", "Product")}));
  EXPECT_EQ(FindContextByCabinet(Begin(connection), "", "K1", "Product"), "C5");
}

// A container without an id is found like any other, and its id is empty.
TEST_F(ContextByCabinet, IsNoneForAContainerWithoutAnId) {
  const std::string anonymous = R"({"Name":"Gadget","Folders":[{"ID":"K1"}]})";
  EXPECT_EQ(FindIn({anonymous}), "");
  EXPECT_EQ(FindIn({anonymous, Container("C6", "Other", "Product")}), "");
  EXPECT_EQ(FindIn({anonymous, Container("C6", "Gadget", "Product")}), "");
}

TEST_F(ContextByCabinet, LooksOnlyAtTheContainersOwnFolders) {
  EXPECT_EQ(FindIn({Container("C5", "Gadget", "Product", R"([{"ID":"K0","Folders":[{"ID":"K1"}]}])")}), "");
}

TEST_F(ContextByCabinet, PassesOverWhatIsNoContainerAndNoFolder) {
  EXPECT_EQ(
      FindIn({"7", "null", "\"K1\"", "[]", "[{\"ID\":\"K1\"}]", "{}", R"({"ID":"C1","Folders":{"ID":"K1"}})",
              R"({"ID":"C2","Folders":"K1"})", R"({"ID":"C3","folders":[{"ID":"K1"}]})",
              Container("C4", "a", "b", R"([7,null,"K1",["K1"],{"Id":"K1"},{"ID":1},{"ID":["K1"]}])"),
              Container("C5", "a", "b", R"([7,{"ID":7},{"ID":"K1"}])")}),
      "C5");
}

class ContextByName : public XliffTest {
 protected:
  // "found" and the id, or "failed" and the id.
  std::string Find(const std::string& name, const std::string& type) {
    std::string id = "before";
    const bool read = HandOver(FindContextByName(Begin(connection), name, type), id);
    return (read ? "found " : "failed ") + id;
  }
  std::string FindIn(const std::vector<std::string>& contexts) {
    std::string text;
    for (const auto& context : contexts) text += (text.empty() ? "" : ",") + context;
    transport.Then(200, "{\"items\":[" + text + "]}");
    return Find("Gadget", "prOduct");
  }
};

TEST_F(ContextByName, IsFoundByOneRestRead) {
  EXPECT_EQ(FindIn({Context("C5", "Gadget", "Product")}), "found C5");
  EXPECT_EQ(transport.requests(), (Requests{Read("servlet/rest/v1/contexts")}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ContextByName, IsTheFirstOfThatNameAndOfThatTypeInAnyCase) {
  EXPECT_EQ(FindIn({Context("C1", "Gadget", "Library"), Context("C2", "gadget", "Product"),
                    Context("C3", "Gadget ", "Product"), Context("C4", "Gadget", "PRODUCT"),
                    Context("C5", "Gadget", "Product")}),
            "found C4");
}

TEST_F(ContextByName, IsNoneWhereNoneFits) {
  EXPECT_EQ(FindIn({}), "found ");
  EXPECT_EQ(FindIn({Context("C1", "Gadget", "Products"), Context("C2", "Other", "Product"), R"({"id":"C3"})",
                    R"({"id":"C4","attributes":{"name":"Gadget"}})",
                    R"({"id":"C5","attributes":{"type":"Product"}})",
                    R"({"id":"C6","attributes":{"name":7,"type":"Product"}})", "7", "null"}),
            "found ");
}

TEST_F(ContextByName, IsFoundInAListThatIsNotWrapped) {
  transport.Then(200, "[" + Context("C5", "Gadget", "Product") + "]");
  EXPECT_EQ(Find("Gadget", "Product"), "found C5");
}

TEST_F(ContextByName, IsNoneInAnAnswerThatIsNoList) {
  transport.Then(200, "<html>").Then(200, "{}").Then(200, R"({"items":{}})").Then(204);
  for (int turn = 0; turn < 4; ++turn) EXPECT_EQ(Find("Gadget", "Product"), "found ") << turn;
}

TEST_F(ContextByName, FailsWithTheRequest) {
  const std::string body = "{\"items\":[" + Context("C5", "Gadget", "Product") + "]}";
  transport.Then(500, body).Then(401, body).ThenFail(du::http::ErrorCode::TimedOut);
  for (int turn = 0; turn < 3; ++turn) EXPECT_EQ(Find("Gadget", "Product"), "failed before") << turn;
  EXPECT_THAT(trace.lines(), IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test
