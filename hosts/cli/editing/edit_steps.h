#pragma once

#include <optional>
#include <string>

#include "hosts/cli/editing/kept_edit.h"
#include "hosts/cli/program/host.h"

/// The steps of an edit. Each is a command of this program, so that it looks, journals and asks afterwards as
/// that does. What it finds is its failure; nothing else is shown of it.
namespace vtdirect_cli {

/// What a command said that was a step.
struct StepResult {
  std::optional<Failure> failure;
  std::string uid;  ///< to go on with; empty when the step told none
};

/// The files of an edit.
struct EditedFiles {
  std::string content;
  std::string metadata;  ///< empty for none
};

/// `checkout ADDRESS --dry-run`.
[[nodiscard]] StepResult TryToCheckOut(Host& host, const std::string& address);

/// `checkout ADDRESS`.
[[nodiscard]] StepResult CheckOutToEdit(Host& host, const std::string& address);

/// `get ADDRESS -o FILE`: of a document that is checked out, its working copy.
[[nodiscard]] StepResult FetchToEdit(Host& host, const std::string& address, const std::string& file);

/// `put FILE ADDRESS`, with --checkin if asked for.
[[nodiscard]] StepResult StoreEdited(Host& host, const std::string& address, const EditedFiles& files,
                                     bool checkIn);

/// `checkin ADDRESS`.
[[nodiscard]] StepResult CheckInEdited(Host& host, const std::string& address);

/// `undo ADDRESS`.
[[nodiscard]] StepResult UndoUnedited(Host& host, const std::string& address);

}  // namespace vtdirect_cli
