#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace vtdirect_mount {

/// What a name of the tree leads to.
enum class NodeKind {
  Folder,        ///< a directory of the server
  Document,      ///< the newest iteration of a document
  VersionsRoot,  ///< ".versions" in a folder
  VersionsOf,    ///< ".versions/NAME", a directory
  VersionFile,   ///< ".versions/NAME/VERSION", one iteration
};

/// One name that the kernel knows. What it is never changes; a name that becomes something else gets another
/// node.
struct Node {
  std::uint64_t number = 0;  ///< inode number
  std::uint64_t parent = 0;
  std::string name;  ///< as shown
  NodeKind kind = NodeKind::Folder;
  /// Address on the server: of a folder with its closing "/". ".versions" has that of its folder,
  /// ".versions/NAME" that of the document, a version its UID.
  std::string address;
};

/// The nodes that the kernel knows, by their numbers. Any thread.
class NodeTable {
 public:
  /// The number of the root, as the kernel has it.
  static constexpr std::uint64_t rootNumber = 1;

  /// @param rootAddress  path of the directory that is mounted, with its closing "/"
  explicit NodeTable(std::string rootAddress);

  /// The node of a number; null when the kernel has forgotten it.
  [[nodiscard]] std::shared_ptr<const Node> Find(std::uint64_t number) const;

  /// The node of a name, which the kernel now holds once more. A new one when there is none yet, or when
  /// something else had that name.
  /// @param wanted  its number counts for nothing
  [[nodiscard]] std::shared_ptr<const Node> Enter(Node wanted);

  /// A name was given to what another name had: the number stays with what it is, and gets a new address.
  /// @param wanted  parent, name and address from now on
  void Move(std::uint64_t parent, const std::string& name, const Node& wanted);

  /// The kernel holds the node so many times less. The root stays.
  void Forget(std::uint64_t number, std::uint64_t times);

  /// All nodes but the root.
  [[nodiscard]] std::vector<std::shared_ptr<const Node>> All() const;

  /// The number that a node will have unless another one has it already, for listings.
  [[nodiscard]] static std::uint64_t LikelyNumber(NodeKind kind, const std::string& address);

 private:
  struct Held {
    std::shared_ptr<const Node> node;
    std::uint64_t times = 0;
  };

  [[nodiscard]] static std::string KeyOf(std::uint64_t parent, const std::string& name);

  mutable std::mutex mutex_;
  std::unordered_map<std::uint64_t, Held> held_;
  std::unordered_map<std::string, std::uint64_t> byName_;
};

}  // namespace vtdirect_mount
