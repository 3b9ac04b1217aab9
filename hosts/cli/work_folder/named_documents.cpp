#include "hosts/cli/work_folder/named_documents.h"

#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <string_view>

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/checkouts/newest_iteration.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/work_folder/fetching.h"

namespace vtdirect_cli {
namespace {

constexpr ArgumentName address("ADDRESS");

[[nodiscard]] bool TakesAddress(const CommandRow& command) {
  return std::any_of(command.operands.begin(), command.operands.end(),
                     [](const OperandRow& operand) { return operand.name == address; });
}

[[nodiscard]] std::optional<Failure> RefusalOfCheckin(const std::string& name, const FolderFile& file) {
  if (StateByBytes(name, file) != LocalState::Modified) return std::nullopt;
  return Failure{
      ExitCode::Failure,
      Printable(name) + " was changed here, and checkin does not send that; nothing was checked in",
      CommandToType("commit", name) + " stores and checks it in"};
}

[[nodiscard]] Failure RefusalOfEdit(const std::string& name) {
  return {ExitCode::Usage,
          Printable(name) +
              " is a file of this work folder, and edit works on a copy of its own; nothing was done",
          "edit the file here, then " + CommandToType("commit", name) + " sends it"};
}

// Without the look for a newer version that a commit takes, somebody's work could go.
[[nodiscard]] std::optional<Failure> RefusalOfPut(const Arguments& arguments, const std::string& name,
                                                  const FolderFile& file) {
  const std::vector<std::string> sources = arguments.All("FILE");
  const bool isItself = std::any_of(sources.begin(), sources.end(), [&file](const std::string& source) {
    const auto found = FindWorkFile(source);
    return found && found->path == file.path;
  });
  if (!isItself) return std::nullopt;
  return Failure{ExitCode::Usage, Printable(name) + " is a file of this work folder; nothing was sent",
                 CommandToType("commit", name) + " stores and checks it in"};
}

[[nodiscard]] std::optional<Failure> RefusalOf(const CommandRow& command, const Arguments& arguments,
                                               const std::string& name, const FolderFile& file) {
  const std::string_view word = command.name;
  if (word == "checkin") return RefusalOfCheckin(name, file);
  if (word == "edit") return RefusalOfEdit(name);
  if (word == "put") return RefusalOfPut(arguments, name, file);
  return std::nullopt;
}

// The file may be another one than what was stored in the working copy, from elsewhere or in a mount.
void KeepNewest(Host& host, WorkFolder& folder, const std::string& name, const FolderFile& file) {
  const auto newest = NewestUidOf(file.uid);
  if (!newest || AreSameUid(*newest, file.uid)) return;
  RemoteDocument document{file.path, file.address, *newest, {}};
  std::string unused;
  static_cast<void>(VtDirectManager::GetStatus(newest->c_str(), document.version, unused, nullptr));
  const FetchResult result = RecogniseFile(folder, {file.path, FileState::Both, true, file, document});
  if (result.end == FetchResult::End::Known) return;
  if (result.failure) {
    host.output().Warning(result.failure->Text() + "; \"vtdirect pull\" finds out whether " + name +
                          " is that version");
    return;
  }
  host.output().Note(name + " does not have the content of that version; \"vtdirect pull\" fetches it");
}

}  // namespace

std::optional<Failure> RefusalOfWorkFiles(const CommandRow& command, const Arguments& arguments) {
  if (!TakesAddress(command)) return std::nullopt;
  for (const std::string& name : arguments.All(address)) {
    const auto file = FindWorkFile(name);
    if (!file) continue;
    if (auto failure = RefusalOf(command, arguments, name, *file)) return failure;
  }
  return std::nullopt;
}

void KeepCheckedIn(Host& host, const CommandRow& command, const Arguments& arguments) {
  if (command.name != std::string_view("checkin") || arguments.Has("dry-run") || Interrupted()) return;
  for (const std::string& name : arguments.All(address)) {
    const auto file = FindWorkFile(name);
    if (!file) continue;
    const auto folder = WorkFolder::OpenHere();
    const auto failure = folder ? (*folder)->Lock() : folder.failure();
    if (failure) {
      host.output().Warning(name + " is checked in, and that is not kept here: " + failure->Text() +
                            "; vtdirect pull finds out by itself");
      continue;
    }
    KeepNewest(host, **folder, name, *file);
  }
}

}  // namespace vtdirect_cli
