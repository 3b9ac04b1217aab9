#pragma once

#include <optional>
#include <utility>

#include "base/status.h"

/// How an operation hands back what it found: a std::optional where there is one reason to have none, a Result
/// where callers tell the reasons apart.
namespace lxservices::cms_interface {

/// A status and, for Ok, what came of it.
template <typename Value>
struct [[nodiscard]] Result {
  Result(Status failure) : status(failure) {}
  Result(Value found) : status(Ok), value(std::move(found)) {}

  Status status;
  Value value{};  ///< as it was made for any status but Ok
};

/// For the operations that fill a record of their caller's: puts what was found into it.
/// @param target  left alone when nothing was found
/// @return whether something was found
template <typename Value>
[[nodiscard]] bool HandOver(std::optional<Value> found, Value& target) {
  if (found) target = std::move(*found);
  return found.has_value();
}

/// The same for a Result.
/// @return its status
template <typename Value>
Status HandOver(Result<Value> found, Value& target) {
  if (found.status == Ok) target = std::move(found.value);
  return found.status;
}

}  // namespace lxservices::cms_interface
