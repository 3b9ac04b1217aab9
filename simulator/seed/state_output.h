#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace vantry_sim {

/// Writes one tree of values from front to back, in one of the forms of a state file.
class StateOutput {
 public:
  virtual ~StateOutput() = default;
  virtual void StartMap() = 0;
  virtual void EndMap() = 0;
  virtual void StartList() = 0;
  virtual void EndList() = 0;
  virtual void Key(std::string_view name) = 0;
  /// A text that is UTF-8 and holds no zero byte.
  virtual void Text(std::string_view value) = 0;
  virtual void Number(std::int64_t value) = 0;
  virtual void Flag(bool value) = 0;
  /// The text written so far; the output is used up.
  virtual std::string Take() = 0;

  void Member(std::string_view name, std::string_view value) {
    Key(name);
    Text(value);
  }
  /// The same, unless the value is what is meant without it.
  void MemberUnless(std::string_view name, std::string_view value, std::string_view otherwise) {
    if (value != otherwise) Member(name, value);
  }
};

std::unique_ptr<StateOutput> MakeYamlOutput();
std::unique_ptr<StateOutput> MakeJsonOutput();

}  // namespace vantry_sim
