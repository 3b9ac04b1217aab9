#include "documents/workspaces/temporary_workspace.h"

#include <algorithm>
#include <ctime>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

#include "base/failure_trace.h"
#include "base/step_words.h"
#include "connection/url_escape.h"
#include "documents/reading/document_reader.h"
#include "documents/storing/document_writer.h"
#include "documents/storing/json_post.h"
#include "documents/workspaces/workspace_name.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr int nameTries = 16;

bool IsTaken(const WorkspaceList& workspaces, const std::string& name) {
  return std::any_of(workspaces.begin(), workspaces.end(),
                     [&name](const WorkspaceRecord& workspace) { return workspace.name == name; });
}

/// The names that the operations of this process try, while there are any. Of several that begin within one
/// second all but one are refused, and see the same list: without this they would all take the same next
/// name.
class TriedNames {
 public:
  TriedNames() {
    const std::lock_guard lock(Shared().mutex);
    ++Shared().operations;
  }
  // What one operation has created may be missing from the list of another that goes on.
  ~TriedNames() {
    const std::lock_guard lock(Shared().mutex);
    if (--Shared().operations == 0) Shared().names.clear();
  }
  TriedNames(const TriedNames&) = delete;
  TriedNames& operator=(const TriedNames&) = delete;

  // Whether nobody else tries the name; from now on this operation does.
  [[nodiscard]] bool Take(const std::string& name) {
    const std::lock_guard lock(Shared().mutex);
    return Shared().names.insert(name).second;
  }

 private:
  struct State {
    std::mutex mutex;
    int operations = 0;
    std::set<std::string> names;
  };
  static State& Shared() {
    static State state;
    return state;
  }
};

// A name that no workspace in the list has; empty when none is found. The generator draws from the second of
// the call, so its tries are worth something only when a second passes between them; the numbered names
// after them do not depend on that.
std::string FindFreeName(const WorkspaceList& workspaces, std::string_view prefix, Clock clock,
                         TriedNames& tried) {
  for (int tries = 0; tries < nameTries; ++tries) {
    std::string name = MakeWorkspaceName(prefix, clock());
    if (!IsTaken(workspaces, name) && tried.Take(name)) return name;
  }
  const std::string stem = MakeWorkspaceName(prefix, clock());
  for (int number = 0; number < nameTries; ++number) {
    std::string name = stem + std::to_string(number);
    if (!IsTaken(workspaces, name) && tried.Take(name)) return name;
  }
  return {};
}

}  // namespace

std::optional<WorkspaceRecord> CreateWorkspace(ServerContext& server, const std::string& contextId,
                                               const std::string& name,
                                               const std::optional<std::string>& description) {
  const FailureStep step(stepCreateWorkspace);
  rapidjson::Document body(rapidjson::kObjectType);
  auto& allocator = body.GetAllocator();
  body.AddMember("name", MakeText(name, allocator), allocator);
  body.AddMember("contextId", MakeText(contextId, allocator), allocator);
  if (description) body.AddMember("description", MakeText(*description, allocator), allocator);
  JsonPost post(server, "servlet/rest/v1/dkm/workspaces", body);
  if (!post.response().succeeded()) return std::nullopt;
  WorkspaceRecord workspace;
  rapidjson::Document answer;
  if (ParseJsonResponse(post.response(), answer) && !ReadWorkspace(answer, workspace)) {
    post.response().ReportBroken();
  }
  return workspace;
}

bool DeleteWorkspace(ServerContext& server, const std::string& workspaceId) {
  const FailureStep step(stepDeleteWorkspace);
  const std::string path = "servlet/rest/v1/dkm/workspaces/" + EscapeForUrl(workspaceId) + "/delete";
  JsonPost post(server, path, rapidjson::Value(rapidjson::kArrayType));
  return post.response().succeeded();
}

void DeleteTemporaryWorkspace(ServerContext& server, const std::string& workspaceId) {
  const FailureAside aside;  // the document is checked in, or its checkout has failed or ended, all the same
  if (DeleteWorkspace(server, workspaceId)) return;
  TracerFor(Follows())(dp::TraceType::Error, "Failed to delete temporary workspace %s\n",
                       workspaceId.c_str());
}

std::uint32_t SystemSeconds() {
  return static_cast<std::uint32_t>(std::time(nullptr));
}

std::string CreateTemporaryWorkspace(ServerContext& server, const std::string& contextId, Clock clock) {
  const std::string& prefix = server.settings().temporaryWorkspacePrefix;
  const std::string& description = server.settings().temporaryWorkspaceDescription;
  TriedNames tried;
  std::string name = MakeWorkspaceName(prefix, clock());
  (void)tried.Take(name);
  if (const auto workspace = CreateWorkspace(server, contextId, name, description)) return workspace->id;
  const WorkspaceList workspaces = ListWorkspaces(server, contextId).value_or(WorkspaceList());
  // The name was free, so the refusal had another reason, and another name would be refused as well.
  if (!IsTaken(workspaces, name)) return {};
  name = FindFreeName(workspaces, prefix, clock, tried);
  if (name.empty()) return {};
  return CreateWorkspace(server, contextId, name, description).value_or(WorkspaceRecord()).id;
}

}  // namespace lxservices::cms_interface::vantry
