#include <gmock/gmock.h>

#include "tests/e2e/cli/put_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using testing::StartsWith;

namespace vtdirect_test {
namespace {

const std::string forkAddress = "//sim/Products/Trekking Bike/Folders/Frame/fork.lxz";

// The looks that come before a document with a source link is stored, and behind it.
struct Look {
  const char* name;
  const char* request;
};

constexpr Look looks[] = {{"Schema", "GET */DataAdmin/$metadata"},
                          {"Container", "GET */DataAdmin/Containers/*"},
                          {"Folder", "GET */DataAdmin/Containers(*"},
                          {"Document", "GET *documents/D1001"},
                          {"Versions", "GET *documents/D1001/versions*"},
                          {"Source", "GET *documents/D1002"},
                          {"Nonce", "GET *csrf"},
                          {"Result", "GET *documents/D1000000*"}};

// An action by a name that can be that of a test.
struct Accident {
  const char* name;
  const char* action;
};

constexpr Accident accidents[] = {
    {"RefusedOnce", "503*1"}, {"Refused", "503"}, {"DroppedOnce", "drop*1"}, {"CutOnce", "cut:10*1"}};

using LookAndAccident = std::tuple<Look, Accident>;

std::string NameOf(const testing::TestParamInfo<LookAndAccident>& info) {
  return std::string(std::get<0>(info.param).name) + std::get<1>(info.param).name;
}

}  // namespace

class PutLooks : public PutTest, public testing::WithParamInterface<LookAndAccident> {};

INSTANTIATE_TEST_SUITE_P(Requests, PutLooks,
                         testing::Combine(testing::ValuesIn(looks), testing::ValuesIn(accidents)), NameOf);

// Either all is stored, the document's link included, or nothing is.
TEST_P(PutLooks, ThatFailLoseNothing) {
  const auto [look, accident] = GetParam();
  Serve({"--fault", std::string(look.request) + "=" + accident.action});
  WriteFile(Here("f"), "content");
  const ProcessResult result = Run({"put", "f", forkAddress});
  // A question that meets no fault.
  const std::string newest = server().Get(
      "/servlet/odata/v2/DynamicDocMgmt/DynamicDocuments?zvk.search.latestversion=true&$select=ID&"
      "$filter=CADName%20eq%20'fork.lxz'");
  if (result.status != 0) {
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, StartsWith("vtdirect: "));
    EXPECT_THAT(newest, HasSubstr("\"ID\":\"D1001\""));
    return;
  }
  const std::string id = IdIn(result.out);
  EXPECT_THAT(newest, HasSubstr("\"ID\":\"" + id + "\""));
  if (look.name == std::string("Result")) return;
  const ServerDocument document = DocumentOf(server(), id);
  EXPECT_EQ(document.bytes, "content");
  EXPECT_THAT(document.sources, ElementsAre(Pair("frame.lxz", "D1002")));
}

}  // namespace vtdirect_test
