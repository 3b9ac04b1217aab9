#include "simulator/seed/state_output.h"

#include <yaml-cpp/yaml.h>

#include "simulator/seed/fixture_tree.h"
#include "simulator/wire/json.h"

namespace vantry_sim {
namespace {

/// Whether a block that begins with "|" gives the text back as it is: lines of printable characters, of which
/// the first doesn't begin and none ends with a blank, and one line feed at the end.
bool FitsABlock(std::string_view text) {
  if (text.size() < 2 || text.back() != '\n' || text[text.size() - 2] == '\n' || text.front() == ' ' ||
      text.front() == '\n') {
    return false;
  }
  char before = '\n';
  for (const char c : text) {
    if (c != '\n' && (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) >= 0x7F))
      return false;
    if (c == '\n' && before == ' ') return false;
    before = c;
  }
  return true;
}

/// Whether a reader of YAML could take a bare word for something else than a text.
bool NeedsQuotes(std::string_view text) {
  if (text.empty() || IsJsonNumber(text)) return true;
  for (const char* word :
       {"true", "false", "null", "~",  "yes", "no",   "on",    "off",  "y",   "n",  "True", "False",
        "Null", "Yes",   "No",   "On", "Off", "TRUE", "FALSE", "NULL", "YES", "NO", "ON",   "OFF"}) {
    if (text == word) return true;
  }
  return text.find_first_not_of("0123456789.+-_:eExXoO") == std::string_view::npos || text.front() == '@';
}

class YamlOutput final : public StateOutput {
 public:
  YamlOutput() { emitter_.SetIndent(2); }
  void StartMap() override { emitter_ << YAML::BeginMap; }
  void EndMap() override { emitter_ << YAML::EndMap; }
  void StartList() override { emitter_ << YAML::BeginSeq; }
  void EndList() override { emitter_ << YAML::EndSeq; }
  void Key(std::string_view name) override { emitter_ << YAML::Key << std::string(name) << YAML::Value; }
  void Text(std::string_view value) override {
    const std::string text(value);
    if (FitsABlock(text)) {
      emitter_ << YAML::Literal << text;
    } else if (NeedsQuotes(text)) {
      emitter_ << YAML::DoubleQuoted << text;
    } else {
      emitter_ << text;
    }
  }
  void Number(std::int64_t value) override { emitter_ << value; }
  void Flag(bool value) override { emitter_ << value; }
  std::string Take() override { return std::string(emitter_.c_str(), emitter_.size()) + "\n"; }

 private:
  YAML::Emitter emitter_;
};

class JsonOutput final : public StateOutput {
 public:
  void StartMap() override { json_.StartObject(); }
  void EndMap() override { json_.EndObject(); }
  void StartList() override { json_.StartArray(); }
  void EndList() override { json_.EndArray(); }
  void Key(std::string_view name) override { json_.Key(name); }
  void Text(std::string_view value) override { json_.String(value); }
  void Number(std::int64_t value) override { json_.Number(value); }
  void Flag(bool value) override { json_.Boolean(value); }
  std::string Take() override { return json_.Take(); }

 private:
  JsonText json_;
};

}  // namespace

std::unique_ptr<StateOutput> MakeYamlOutput() {
  return std::make_unique<YamlOutput>();
}

std::unique_ptr<StateOutput> MakeJsonOutput() {
  return std::make_unique<JsonOutput>();
}

}  // namespace vantry_sim
