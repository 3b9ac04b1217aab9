#include "documents/storing/document_posting.h"

#include <array>

#include "tests/wire/documents/flow_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;

const std::string storePath = workspacesPath + "/W12/store";

class DocumentPosting : public FlowTest {
 protected:
  DocumentPosting() { ThenNonce(); }

  rapidjson::Value Json(const char* text) {
    rapidjson::Document parsed(&memory.GetAllocator());
    parsed.Parse(text);
    EXPECT_FALSE(parsed.HasParseError()) << text;
    rapidjson::Value value;
    value.Swap(parsed);
    return value;
  }
  Status PostDocuments(bool isCreate, const char* instructions, const char* resolutions = nullptr) {
    rapidjson::Value value = Json(instructions);
    rapidjson::Value resolution = resolutions != nullptr ? Json(resolutions) : rapidjson::Value();
    const auto kind = isCreate ? InstructionKind::Create : InstructionKind::Iterate;
    const Posting posting{memory.GetAllocator(), value, resolutions != nullptr ? &resolution : nullptr};
    return PostDocumentInstructions(Begin(connection), kind, posting, "C5", records);
  }
  Status Store(const char* instructions, const char* resolutions = nullptr) {
    rapidjson::Value value = Json(instructions);
    rapidjson::Value resolution = resolutions != nullptr ? Json(resolutions) : rapidjson::Value();
    const Posting posting{memory.GetAllocator(), value, resolutions != nullptr ? &resolution : nullptr};
    return PostStore(Begin(connection), posting, "W12", records);
  }
  [[nodiscard]] std::string SentBody() const { return transport.requests().back().body.value_or("no body"); }

  rapidjson::Document memory;
  std::array<DocumentRecord, 2> records;
};

TEST_F(DocumentPosting, WrapsAValueThatIsNoArray) {
  transport.Then(200, "[]").Then(200, "[]").Then(200, "[]");
  EXPECT_EQ(PostDocuments(true, R"({"a":1})"), Ok);
  EXPECT_EQ(transport.requests().back(),
            Write(documentsPath, R"({"createInstructions":[{"a":1}],"contextId":"C5"})"));
  EXPECT_EQ(PostDocuments(false, R"({"a":1})"), Ok);
  EXPECT_EQ(transport.requests().back(),
            Write(documentsPath, R"({"iterateInstructions":[{"a":1}],"contextId":"C5"})"));
  EXPECT_EQ(Store(R"({"a":1})"), Ok);
  EXPECT_EQ(transport.requests().back(), Write(storePath, R"({"storeInstructions":[{"a":1}]})"));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(DocumentPosting, SendsAnArrayAsItStands) {
  transport.Then(200, "[]").Then(200, "[]");
  EXPECT_EQ(PostDocuments(true, "[1,2]"), Ok);
  EXPECT_EQ(SentBody(), R"({"createInstructions":[1,2],"contextId":"C5"})");
  EXPECT_EQ(Store("[1,2]"), Ok);
  EXPECT_EQ(SentBody(), R"({"storeInstructions":[1,2]})");
}

TEST_F(DocumentPosting, SendsResolutionsThatThereAre) {
  for (int times = 0; times < 6; ++times) transport.Then(200, "[]");
  EXPECT_EQ(PostDocuments(false, "7", R"({"code":"c"})"), Ok);
  EXPECT_EQ(SentBody(),
            R"({"iterateInstructions":[7],"contextId":"C5","conflictResolutions":[{"code":"c"}]})");
  EXPECT_EQ(PostDocuments(false, "7", "[1,2]"), Ok);
  EXPECT_EQ(SentBody(), R"({"iterateInstructions":[7],"contextId":"C5","conflictResolutions":[1,2]})");
  EXPECT_EQ(PostDocuments(false, "7", "[]"), Ok);
  EXPECT_EQ(SentBody(), R"({"iterateInstructions":[7],"contextId":"C5"})");
  EXPECT_EQ(PostDocuments(false, "7", "null"), Ok);
  EXPECT_EQ(SentBody(), R"({"iterateInstructions":[7],"contextId":"C5"})");
  EXPECT_EQ(Store("7", R"({"code":"c"})"), Ok);
  EXPECT_EQ(SentBody(), R"({"storeInstructions":[7],"conflictResolutions":[{"code":"c"}]})");
  EXPECT_EQ(Store("7", "[]"), Ok);
  EXPECT_EQ(SentBody(), R"({"storeInstructions":[7]})");
}

TEST_F(DocumentPosting, ReadsAnswersUntilEitherEnds) {
  transport.Then(200, R"([{"id":"D1"}])")
      .Then(201, R"([{"id":"D1"},7,{"id":"D3"}])")
      .Then(200, R"([{"id":"D5"},{"id":"D6"}])");
  EXPECT_EQ(PostDocuments(true, "7"), Ok);
  EXPECT_EQ(records[0].id, "D1");
  EXPECT_EQ(records[1].id, "");
  records = {};
  EXPECT_EQ(PostDocuments(true, "7"), Ok);
  EXPECT_EQ(records[0].id, "D1");
  EXPECT_EQ(records[1].id, "");
  EXPECT_EQ(Store("7"), Ok);
  EXPECT_EQ(records[0].id, "D5");
  EXPECT_EQ(records[1].id, "D6");
}

TEST_F(DocumentPosting, TakesAnotherKindOfJsonAsASuccessWithoutDocuments) {
  transport.Then(200, R"({"id":"D1"})").Then(200, "7").Then(200, "null");
  EXPECT_EQ(PostDocuments(true, "7"), Ok);
  EXPECT_EQ(Store("7"), Ok);
  EXPECT_EQ(Store("7"), Ok);
  EXPECT_EQ(records[0].id, "");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(DocumentPosting, IsRefusedByABadStatusOrABodyThatIsNoJson) {
  transport.Then(409, "taken")
      .ThenFail(du::http::ErrorCode::TimedOut)
      .Then(200, "<html>")
      .Then(204)
      .Then(500, "boom")
      .Then(200, R"([{"id":)");
  for (int times = 0; times < 4; ++times) EXPECT_EQ(PostDocuments(true, "7"), Refused);
  for (int times = 0; times < 2; ++times) EXPECT_EQ(Store("7"), Refused);
  EXPECT_EQ(trace.lines(), (Traces{Error("Failed to update document with error 409 : taken\n"),
                                   Error("Failed to update document with error -1 : \n"),
                                   Error("Failed to update document with error 200 : \n"),
                                   Error("Failed to update document with error 204 : \n"),
                                   Error("Failed to update document with error 500 : boom\n"),
                                   Error("Failed to update document with error 200 : \n")}));
  EXPECT_EQ(records[0].id, "");
}

TEST_F(DocumentPosting, EscapesTheWorkspace) {
  transport.Then(200, "[]");
  rapidjson::Value value(7);
  EXPECT_EQ(PostStore(Begin(connection), {memory.GetAllocator(), value}, "OR:w/1 2", {}), Ok);
  EXPECT_EQ(transport.requests().back().line, Post(workspacesPath + "/OR%3Aw%2F1%202/store"));
}

TEST(DocumentPostingOfNothing, MakesNoRequest) {
  ScriptedTransport transport;
  const auto connection =
      std::make_shared<VtConnection>("https://plm.example/vt", [](const char*) { return false; });
  rapidjson::Document memory;
  for (auto* empty : {new rapidjson::Value(), new rapidjson::Value(rapidjson::kArrayType)}) {
    const std::unique_ptr<rapidjson::Value> owner(empty);
    rapidjson::Value other(*empty, memory.GetAllocator());
    EXPECT_EQ(PostDocumentInstructions(Begin(connection), InstructionKind::Create,
                                       {memory.GetAllocator(), *empty}, "C5", {}),
              NotFound);
    EXPECT_EQ(PostStore(Begin(connection), {memory.GetAllocator(), other}, "W", {}), NotFound);
  }
  EXPECT_THAT(transport.lines(), IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test
