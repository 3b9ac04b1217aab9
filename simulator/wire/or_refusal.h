#pragma once

#include <utility>
#include <variant>

#include "simulator/wire/messages.h"

namespace vantry_sim {

/// What was asked for, or the refusal that is answered instead.
template <typename Value>
class OrRefusal {
 public:
  // Either is what a function returns, so neither constructor is explicit.
  OrRefusal(Value value) : content_(std::move(value)) {}
  OrRefusal(Response refusal) : content_(std::move(refusal)) {}

  /// Whether there is a value.
  explicit operator bool() const { return std::holds_alternative<Value>(content_); }

  /// The value; to be asked for only when there is one.
  Value& operator*() { return std::get<Value>(content_); }
  /// A member of the value; to be asked for only when there is one.
  Value* operator->() { return &std::get<Value>(content_); }

  /// The refusal; to be asked for only when there is no value.
  Response TakeRefusal() { return std::move(std::get<Response>(content_)); }

 private:
  std::variant<Value, Response> content_;
};

}  // namespace vantry_sim
