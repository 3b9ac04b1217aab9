#include "tests/wire/public/uploads/upload_front_fixture.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;

constexpr const char* path = "//plm/Products/Gadget/Workspaces/Mine/pump.fnl";

class UploadingIntoAWorkspace : public UploadFrontTest {
 protected:
  // The server answers, and has a workspace without any document.
  void ThenNewNameThere() {
    const char* contexts = R"({"items":[{"id":"OR:vn.Product:5","attributes":{"name":"Gadget"}}]})";
    const char* workspaces = R"([{"id":"W12","name":"Mine"}])";
    ThenSchema();
    transport.Then(404).Then(404).Then(404);
    transport.Then(200, contexts).Then(200, workspaces).Then(200, "[]");
    transport.Then(200, contexts).Then(200, workspaces);
  }
};

TEST_F(UploadingIntoAWorkspace, AboveTheServersLimitTellsSo) {
  ThenNewNameThere();
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(Answer{413, "", du::http::ErrorCode::TooLarge});
  EXPECT_FALSE(Upload(path, mainPath.c_str(), "", noLinks, Status(), {}, nullptr, false));
  EXPECT_EQ(statuses, Lines{"11 (null)"});
}

TEST_F(UploadingIntoAWorkspace, TellsItsProgress) {
  ThenNewNameThere();
  ThenNonce();
  ThenUpload();
  transport.Then(200, storedDocument);
  std::size_t told = 0;
  const auto note = [&](std::size_t done, std::size_t) {
    told = done;
    return true;
  };
  EXPECT_TRUE(Upload(path, mainPath.c_str(), "", noLinks, Status(), note, nullptr, false));
  ASSERT_EQ(transport.lines().back(), Post(workspacesPath + "/W12/store"));
  EXPECT_EQ(told, transport.requests()[transport.requests().size() - 2].body->size());
}

TEST_F(UploadingIntoAWorkspace, EndsWhenTheHostSaysSo) {
  ThenNewNameThere();
  ThenNonce();
  transport.Then(200, Ticket(1));
  const auto refuse = [](std::size_t, std::size_t) { return false; };
  EXPECT_FALSE(Upload(path, mainPath.c_str(), "", noLinks, Status(), refuse, nullptr, false));
  EXPECT_EQ(transport.lines().back(), uploadLine);
  EXPECT_EQ(statuses, Lines{"7 (null)"});
}

}  // namespace
}  // namespace vtdirect_test
