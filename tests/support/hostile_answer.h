#pragma once

#include <ostream>
#include <string>

namespace vtdirect_test {

/// A body that no server should send, and its name in the tests. Built by the test that needs it: the deep
/// ones are large.
struct HostileAnswer {
  const char* name;
  std::string (*body)();
};

inline void PrintTo(const HostileAnswer& answer, std::ostream* out) {
  *out << answer.name;
}

/// `open` as often as there are levels, and then `close` as often.
inline std::string Nested(const std::string& open, const std::string& close, int levels) {
  std::string text;
  for (int level = 0; level < levels; ++level) text += open;
  for (int level = 0; level < levels; ++level) text += close;
  return text;
}

}  // namespace vtdirect_test
