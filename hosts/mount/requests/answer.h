#pragma once

#include <memory>
#include <string>
#include <utility>

namespace vtdirect_mount {

/// What came of a question: a value that many can share, or why there is none.
template <typename Value>
struct Answer {
  int error = 0;  ///< error number for the program that asked; 0 with a value
  std::shared_ptr<const Value> value = nullptr;
  std::string words = {};  ///< more on the error, for the log
};

template <typename Value>
[[nodiscard]] Answer<Value> Found(Value value) {
  return {0, std::make_shared<const Value>(std::move(value)), {}};
}

}  // namespace vtdirect_mount
