#pragma once

#include <string>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/failures/result.h"

namespace vtdirect_cli {

/// What names the document whichever of its iterations is the newest, and whichever nickname its server has. An edit
/// that is gone on with later must be found after others have stored something. Makes a request for an address by id.
/// @param document  UID that the address leads to
/// @return a failure if the server could not tell: under another name an edit that is kept would not be found
[[nodiscard]] Result<std::string> LastingName(const std::string& address, AddressKind kind,
                                              const std::string& document);

/// What the file of an edit is called. Makes a request for a UID without a name.
/// @return a failure if the server could not tell, for the same reason
[[nodiscard]] Result<std::string> NameOfEditedFile(const std::string& address, const std::string& document);

}  // namespace vtdirect_cli
