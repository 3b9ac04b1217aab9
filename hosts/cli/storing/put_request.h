#pragma once

#include <vtdirect/vt_direct_manager.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/storing/local_source.h"

namespace vtdirect_cli {

/// Source links: a name, escaped as in a path, to the address of the document.
using SourceLinks = std::map<std::string, std::string>;

/// What a user asks of `put`.
struct PutRequest {
  std::string address;  ///< as it was given
  AddressKind kind{};
  VtDirectManager::FileType type = VtDirectManager::FileTypeFenlet;
  LocalSource content;
  std::optional<LocalSource> viewable;
  std::optional<LocalSource> metadata;
  std::string language;  ///< empty for none
  SourceLinks links;     ///< an empty address takes the link away
  bool checkIn = false;
  bool force = false;

  /// Every file that is to be sent.
  [[nodiscard]] std::vector<LocalSource> Sources() const;
};

/// Reads the arguments and looks at the local files. Makes no request.
/// @return a failure for what can't be meant, a server that isn't listed, and a file that can't be sent
[[nodiscard]] Result<PutRequest> ReadPutRequest(const Arguments& arguments);

/// Takes "NAME=ADDRESS" apart. A name may hold "=" as well as an address does, so they are parted where an
/// address begins, or at a closing "=" when there is none.
/// @return a failure for anything else
[[nodiscard]] Result<SourceLinks::value_type> ReadLink(const std::string& argument);

}  // namespace vtdirect_cli
