#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/e2e/cli/simulator.h"

namespace vtdirect_test {

/// A secondary content, as the server tells it.
struct SecondaryContent {
  std::string category;
  std::string fileName;
  std::string bytes;
  bool hidden = false;
};

/// A document as the server tells it to `anna`, read by nothing of the product.
struct ServerDocument {
  std::string version;
  std::string name;      ///< file name
  std::string folder;    ///< empty for one that was never checked in
  std::string category;  ///< of the primary content
  std::string bytes;     ///< of the primary content
  std::string masterCategory;
  std::string application;
  std::string applicationVersion;
  std::string checkedOutBy;  ///< empty when it is not
  std::vector<SecondaryContent> secondary;
  std::map<std::string, std::string> attributes;
  std::map<std::string, std::string> sources;  ///< name of the link to the source's id
};

/// Reads a document by its id; fails the test when it isn't there.
[[nodiscard]] ServerDocument DocumentOf(const Simulator& server, const std::string& id);

/// The id of a document in a UID.
[[nodiscard]] std::string IdIn(const std::string& uid);

}  // namespace vtdirect_test
