#include "hosts/cli/editing/edit_steps.h"

#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/output.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::string TextIn(const Record& record, const std::string& key) {
  for (const auto& [name, value] : record) {
    if (name == key && std::holds_alternative<std::string>(value)) return std::get<std::string>(value);
  }
  return {};
}

[[nodiscard]] StepResult Run(Host& host, const CommandRow& command, const Arguments& arguments) {
  const OutputHold hold(host.output());
  const ExitCode code = command.run(host, arguments);
  StepResult result{hold.held().failure, TextIn(hold.held().result, "uid")};
  // A signal is told by the step itself, at once.
  if (!result.failure && code == ExitCode::Interrupted) result.failure = InterruptedFailure();
  return result;
}

[[nodiscard]] Arguments AddressAlone(const std::string& address) {
  Arguments arguments;
  arguments.Set("ADDRESS", {address});
  return arguments;
}

}  // namespace

StepResult TryToCheckOut(Host& host, const std::string& address) {
  Arguments arguments = AddressAlone(address);
  arguments.Set("dry-run", {});
  return Run(host, CheckoutCommand(), arguments);
}

StepResult CheckOutToEdit(Host& host, const std::string& address) {
  return Run(host, CheckoutCommand(), AddressAlone(address));
}

StepResult FetchToEdit(Host& host, const std::string& address, const std::string& file) {
  Arguments arguments = AddressAlone(address);
  arguments.Set("output", {file});
  return Run(host, GetCommand(), arguments);
}

StepResult StoreEdited(Host& host, const std::string& address, const EditedFiles& files, bool checkIn) {
  Arguments arguments = AddressAlone(address);
  arguments.Set("FILE", {files.content});
  if (!files.metadata.empty()) arguments.Set("metadata", {files.metadata});
  if (checkIn) arguments.Set("checkin", {});
  return Run(host, PutCommand(), arguments);
}

StepResult CheckInEdited(Host& host, const std::string& address) {
  return Run(host, CheckinCommand(), AddressAlone(address));
}

StepResult UndoUnedited(Host& host, const std::string& address) {
  return Run(host, UndoCommand(), AddressAlone(address));
}

}  // namespace vtdirect_cli
