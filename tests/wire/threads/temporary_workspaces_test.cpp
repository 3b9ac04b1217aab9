// Workspaces for checkouts that begin within one second, on several threads.

#include <gmock/gmock.h>

#include <barrier>
#include <set>

#include "documents/workspaces/temporary_workspace.h"
#include "documents/workspaces/workspace_name.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/together.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface::vantry;

/// A server that gives each name once, and answers a request for the list only when `waiting` of them are
/// there: all of them then see the list before any of them has created a second workspace.
class NamingServer {
 public:
  explicit NamingServer(int waiting) : allAsk_(waiting) {}

  Answer AnswerTo(const SentRequest& request) {
    if (request.line.starts_with("GET /vt/servlet/rest/v1/dkm/workspaces?")) return List();
    if (request.line == "POST /vt/servlet/rest/v1/dkm/workspaces") return Create(request.body.value_or(""));
    return {404, {}};
  }

 private:
  Answer List() {
    std::string rows;
    {
      const std::lock_guard lock(mutex_);
      for (const std::string& name : names_)
        rows += (rows.empty() ? "" : ",") + (R"({"name":")" + name + R"("})");
    }
    allAsk_.arrive_and_wait();
    return {200, "[" + rows + "]"};
  }
  Answer Create(const std::string& body) {
    const std::string name = body.substr(9, body.find('"', 9) - 9);  // {"name":"...
    const std::lock_guard lock(mutex_);
    if (!names_.insert(name).second) return {409, {}};
    return {200, R"({"id":"id of )" + name + R"("})"};
  }

  std::barrier<> allAsk_;
  std::mutex mutex_;
  std::set<std::string> names_;
};

TEST(TemporaryWorkspaces, OfOneSecondHaveNamesOfTheirOwn) {
  constexpr std::size_t count = 8;
  const TemporaryDirectory directory;
  ScriptedTransport transport;
  NamingServer server(count - 1);
  transport.AnswerBy([&](const SentRequest& request) { return server.AnswerTo(request); });
  const auto connection =
      std::make_shared<VtConnection>("https://plm.example/vt", [](const char*) { return false; });
  std::vector<std::string> ids(count);
  std::vector<std::function<void()>> actions;
  for (std::string& id : ids) {
    actions.emplace_back([&] {
      ServerContext operation(connection);
      id = CreateTemporaryWorkspace(operation, "C5", [] { return std::uint32_t{1}; });
    });
  }
  Together(actions);
  EXPECT_EQ(std::set<std::string>(ids.begin(), ids.end()).size(), count);
  for (const std::string& id : ids) EXPECT_NE(id, "");
}

// What this process has tried counts only while others are on their way.
TEST(TemporaryWorkspaces, MayTakeANameThatIsFreeAgain) {
  const TemporaryDirectory directory;
  ScriptedTransport transport;
  const auto connection =
      std::make_shared<VtConnection>("https://plm.example/vt", [](const char*) { return false; });
  const std::string taken = MakeWorkspaceName("FenloomTMP", 1);
  for (int round = 0; round < 2; ++round) {
    ServerContext operation(connection);
    transport.Then(404)
        .Then(409)
        .Then(200, R"([{"name":")" + taken + R"("}])")
        .Then(404)
        .Then(200, R"({"id":"W1"})");
    EXPECT_EQ(CreateTemporaryWorkspace(operation, "C5", [] { return std::uint32_t{1}; }), "W1");
    EXPECT_THAT(transport.requests().back().body.value_or(""), testing::HasSubstr("\"" + taken + "0\""));
  }
}

}  // namespace
}  // namespace vtdirect_test
