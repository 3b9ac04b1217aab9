#include "simulator/seed/fixture_tree.h"

#include <yaml-cpp/yaml.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>
#include <utility>

namespace vantry_sim {
namespace {

constexpr int deepest = 100;

/// Makes the nodes of a JSON text out of those of YAML.
class TreeBuilder {
 public:
  TreeBuilder(JsonStore& store, FixtureProblem& problem) : store_(store), problem_(problem) {}

  bool Build(const YAML::Node& root) { return Add(root, deepest) != failed; }

 private:
  static constexpr std::uint32_t failed = 0xFFFFFFFF;

  std::uint32_t Fail(const YAML::Node& node, std::string reason) {
    problem_ = {LineOf(node), std::move(reason)};
    return failed;
  }

  static std::uint32_t LineOf(const YAML::Node& node) {
    return node.Mark().line < 0 ? 0 : static_cast<std::uint32_t>(node.Mark().line + 1);
  }

  std::pair<std::uint32_t, std::uint32_t> Keep(const std::string& text) {
    const auto at = static_cast<std::uint32_t>(store_.texts.size());
    store_.texts += text;
    return {at, static_cast<std::uint32_t>(text.size())};
  }

  /// @return the index of the new node
  std::uint32_t Add(const YAML::Node& node, int depth) {
    if (depth == 0) return Fail(node, "this is nested too deeply");
    if (store_.nodes.size() >= mostJsonValues || store_.texts.size() > mostTextBytes)
      return Fail(node, "there are too many values");
    const auto index = static_cast<std::uint32_t>(store_.nodes.size());
    store_.nodes.emplace_back().line = LineOf(node);
    if (node.IsMap()) return AddMap(node, index, depth);
    if (node.IsSequence()) return AddSequence(node, index, depth);
    if (node.IsScalar()) AddScalar(node, index);
    return index;
  }

  std::uint32_t AddSequence(const YAML::Node& node, std::uint32_t index, int depth) {
    store_.nodes[index].kind = JsonKind::Array;
    std::uint32_t last = 0;
    for (const YAML::Node& item : node) {
      const std::uint32_t child = Add(item, depth - 1);
      if (child == failed) return failed;
      Attach(index, child, last);
    }
    return index;
  }

  std::uint32_t AddMap(const YAML::Node& node, std::uint32_t index, int depth) {
    store_.nodes[index].kind = JsonKind::Object;
    std::uint32_t last = 0;
    std::set<std::string> names;
    for (const auto& member : node) {
      if (!member.first.IsScalar()) return Fail(member.first, "a key must be a text");
      const std::string& name = member.first.Scalar();
      if (!names.insert(name).second) return Fail(member.first, "the key " + name + " comes twice");
      const std::uint32_t child = Add(member.second, depth - 1);
      if (child == failed) return failed;
      const auto place = Keep(name);
      store_.nodes[child].nameAt = place.first;
      store_.nodes[child].nameSize = place.second;
      // An empty value has no place of its own in the text.
      if (store_.nodes[child].line == 0) store_.nodes[child].line = LineOf(member.first);
      Attach(index, child, last);
    }
    return index;
  }

  void Attach(std::uint32_t parent, std::uint32_t child, std::uint32_t& last) {
    (last == 0 ? store_.nodes[parent].first : store_.nodes[last].next) = child;
    last = child;
    ++store_.nodes[parent].count;
  }

  /// Only a plain word can mean something else than a text: "?" is the tag of one that nothing was said of.
  void AddScalar(const YAML::Node& node, std::uint32_t index) {
    const std::string& text = node.Scalar();
    JsonStore::Node& made = store_.nodes[index];
    const bool plain = node.Tag() == "?";
    made.kind = JsonKind::Text;
    if (plain && (text == "true" || text == "false")) {
      made.kind = JsonKind::Boolean;
      made.boolean = text == "true";
    } else if (plain && IsJsonNumber(text)) {
      made.kind = JsonKind::Number;
    }
    const auto place = Keep(text);
    made.textAt = place.first;
    made.textSize = place.second;
  }

  static constexpr std::size_t mostTextBytes = 1'000'000'000;
  JsonStore& store_;
  FixtureProblem& problem_;
};

}  // namespace

std::string TextOf(const FixtureProblem& problem) {
  return problem.line == 0 ? problem.reason : "line " + std::to_string(problem.line) + ": " + problem.reason;
}

bool IsJsonNumber(std::string_view text) {
  const auto document = ReadJson(text);
  return document && document->Root().IsNumber() && document->Root().NumberText() == text;
}

std::optional<JsonDocument> ReadYaml(const std::string& text, FixtureProblem& problem) {
  try {
    auto store = std::make_unique<JsonStore>();
    const YAML::Node root = YAML::Load(text);
    if (!TreeBuilder(*store, problem).Build(root)) return std::nullopt;
    return JsonDocument(std::move(store));
  } catch (const YAML::Exception& error) {
    problem = {error.mark.line < 0 ? 0 : static_cast<std::uint32_t>(error.mark.line + 1), error.msg};
    return std::nullopt;
  }
}

std::optional<JsonDocument> ReadFixtureTree(const std::filesystem::path& file, FixtureProblem& problem) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    problem = {0, std::string("it cannot be read: ") + std::strerror(errno)};
    return std::nullopt;
  }
  const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  if (stream.bad()) {
    problem = {0, "it cannot be read"};
    return std::nullopt;
  }
  if (file.extension() != ".json") return ReadYaml(text, problem);
  JsonProblem json;
  auto document = ReadJson(text, &json, deepest);
  if (!document) problem = {json.line, json.reason};
  return document;
}

}  // namespace vantry_sim
