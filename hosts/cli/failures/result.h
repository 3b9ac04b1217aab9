#pragma once

#include <utility>
#include <variant>

#include "hosts/cli/failures/failure.h"

namespace vtdirect_cli {

/// What a step gives: a value, or why there is none. Made from either.
template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : content_(std::in_place_index<0>, std::move(value)) {}
  Result(Failure failure) : content_(std::in_place_index<1>, std::move(failure)) {}

  /// Whether there is a value.
  explicit operator bool() const { return content_.index() == 0; }

  /// The value; to be called only if there is one.
  [[nodiscard]] const T& operator*() const { return std::get<0>(content_); }
  [[nodiscard]] T& operator*() { return std::get<0>(content_); }
  [[nodiscard]] const T* operator->() const { return &std::get<0>(content_); }
  [[nodiscard]] T* operator->() { return &std::get<0>(content_); }

  /// Why there is no value; to be called only if there is none.
  [[nodiscard]] const Failure& failure() const { return std::get<1>(content_); }
  [[nodiscard]] Failure& failure() { return std::get<1>(content_); }

 private:
  std::variant<T, Failure> content_;
};

}  // namespace vtdirect_cli
