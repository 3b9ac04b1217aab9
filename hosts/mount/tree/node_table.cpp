#include "hosts/mount/tree/node_table.h"

#include <functional>
#include <utility>

namespace vtdirect_mount {

NodeTable::NodeTable(std::string rootAddress) {
  Node root;
  root.number = rootNumber;
  root.parent = rootNumber;
  root.address = std::move(rootAddress);
  held_[rootNumber] = {std::make_shared<const Node>(std::move(root)), 1};
}

std::string NodeTable::KeyOf(std::uint64_t parent, const std::string& name) {
  return std::to_string(parent) + "/" + name;
}

std::uint64_t NodeTable::LikelyNumber(NodeKind kind, const std::string& address) {
  const std::uint64_t number =
      std::hash<std::string>{}(address + static_cast<char>('0' + static_cast<int>(kind)));
  return number <= rootNumber ? rootNumber + 1 : number;
}

std::shared_ptr<const Node> NodeTable::Find(std::uint64_t number) const {
  const std::lock_guard lock(mutex_);
  const auto place = held_.find(number);
  return place == held_.end() ? nullptr : place->second.node;
}

std::shared_ptr<const Node> NodeTable::Enter(Node wanted) {
  const std::lock_guard lock(mutex_);
  const std::string key = KeyOf(wanted.parent, wanted.name);
  const auto known = byName_.find(key);
  if (known != byName_.end()) {
    Held& held = held_[known->second];
    if (held.node->kind == wanted.kind && held.node->address == wanted.address) {
      ++held.times;
      return held.node;
    }
  }
  wanted.number = LikelyNumber(wanted.kind, wanted.address);
  while (held_.contains(wanted.number) || wanted.number <= rootNumber) ++wanted.number;
  byName_[key] = wanted.number;
  Held& held = held_[wanted.number];
  held = {std::make_shared<const Node>(std::move(wanted)), 1};
  return held.node;
}

void NodeTable::Move(std::uint64_t parent, const std::string& name, const Node& wanted) {
  const std::lock_guard lock(mutex_);
  const auto place = byName_.find(KeyOf(parent, name));
  if (place == byName_.end()) return;
  const std::uint64_t number = place->second;
  byName_.erase(place);
  Node moved = *held_[number].node;
  moved.parent = wanted.parent;
  moved.name = wanted.name;
  moved.address = wanted.address;
  held_[number].node = std::make_shared<const Node>(std::move(moved));
  byName_[KeyOf(wanted.parent, wanted.name)] = number;
}

void NodeTable::Forget(std::uint64_t number, std::uint64_t times) {
  const std::lock_guard lock(mutex_);
  const auto place = held_.find(number);
  if (number == rootNumber || place == held_.end()) return;
  if (place->second.times > times) {
    place->second.times -= times;
    return;
  }
  const auto name = byName_.find(KeyOf(place->second.node->parent, place->second.node->name));
  if (name != byName_.end() && name->second == number) byName_.erase(name);
  held_.erase(place);
}

std::vector<std::shared_ptr<const Node>> NodeTable::All() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::shared_ptr<const Node>> nodes;
  nodes.reserve(held_.size());
  for (const auto& [number, held] : held_) {
    if (number != rootNumber) nodes.push_back(held.node);
  }
  return nodes;
}

}  // namespace vtdirect_mount
