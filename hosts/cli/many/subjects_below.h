#pragma once

#include <string>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/many/subjects.h"

namespace vtdirect_cli {

/// The option of a command that takes folders for the documents in them.
/// @param help  one sentence; it has to live as long as the process
[[nodiscard]] OptionRow RecursiveOption(const char* help);

/// Which documents of a folder are meant. Those that were named themselves always are.
enum class OfFolders { All, CheckedOutHere };

/// Whether a subject is a folder. Makes requests for a path that may lead to either, as it is not closed by "/".
[[nodiscard]] bool IsFolder(const Subject& subject);

/// What is in a folder and below it. Makes requests.
/// @param address  its path, with a closing "/" or without
[[nodiscard]] RemoteTree TreeBelow(const std::string& address, Effort effort);

/// The subjects with each folder replaced by the documents in it and below it, by the bytes of their paths. A
/// document that comes twice by folders and patterns comes once. What could not be listed is a failure. Makes requests.
[[nodiscard]] Subjects WithDocumentsBelow(const Subjects& subjects, OfFolders ofFolders, Effort effort);

}  // namespace vtdirect_cli
