#include "tests/e2e/cli/checkout_fixture.h"

#include <rapidjson/document.h>

#include <filesystem>

namespace vtdirect_test {

void CheckoutTest::Restart(std::vector<std::string> options) {
  const std::string authority = server().authority();
  options.insert(options.end(), {"--port", authority.substr(authority.rfind(':') + 1)});
  Serve(options);
}

std::string CheckoutTest::CheckOut(const std::string& address) {
  const ProcessResult result = Run({"checkout", address});
  EXPECT_EQ(result.status, 0) << result.err;
  return result.out.substr(0, result.out.find('\n'));
}

ProcessResult CheckoutTest::RunElsewhere(const std::vector<std::string>& words) {
  environment_["XDG_STATE_HOME"] = Home("elsewhere");
  ProcessResult result = Run(words);
  environment_.erase("XDG_STATE_HOME");
  return result;
}

std::string CheckoutTest::Book() const {
  return std::filesystem::exists(BookPath()) ? ReadFile(BookPath()) : "";
}

std::string CheckoutTest::HolderOf(const std::string& id) const {
  const std::string answer = server().Get("/servlet/rest/v1/dkm/documents/" + id);
  rapidjson::Document json;
  json.Parse(answer.c_str());
  if (json.HasParseError() || !json.IsObject() || !json.HasMember("pdmIterationState")) {
    ADD_FAILURE() << "no document " << id << ": " << answer;
    return {};
  }
  const auto& state = json["pdmIterationState"];
  const bool held = state.HasMember("checkoutByUser") && state["checkoutByUser"].IsString();
  return held ? state["checkoutByUser"].GetString() : "";
}

std::size_t CheckoutTest::TemporaryWorkspaces() const {
  const std::string answer =
      server().Get("/servlet/rest/v1/dkm/workspaces?contextId=OR%3Avn.product.Product%3A101");
  EXPECT_NE(answer.find("Anna's bench"), std::string::npos) << answer;
  std::size_t count = 0;
  for (std::size_t at = 0; (at = answer.find("FenloomTMP", at)) != std::string::npos; ++at) ++count;
  return count;
}

std::string CheckoutTest::TemporaryUid(const std::string& id, const std::string& name) const {
  return "korvufenloom-vt://" + server().authority() + "/\\?id=" + id + "\\|W[0-9]+\\|D[0-9]+\\|T&file=/" +
         name;
}

}  // namespace vtdirect_test
