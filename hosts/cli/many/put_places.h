#pragma once

#include <string>
#include <vector>

#include "hosts/cli/failures/failure.h"
#include "hosts/cli/many/local_tree.h"
#include "hosts/cli/work_folder/listed_folders.h"

namespace vtdirect_cli {

/// A local file, and the address that it is to be stored at.
struct PutPlace {
  std::string file;
  std::string address;
};

/// Where the files of a directory go.
struct PutPlaces {
  std::vector<PutPlace> places;   ///< by the bytes of the files' paths
  std::vector<Failure> failures;  ///< of the files that have no place, one for a folder with all below it
};

/// Finds the place of each file of a directory in the folder of the same path below a folder on a server, by the
/// names that `get -r` gives: the document that it would save as that file, or a new one. Lists each folder that
/// files go to, once, and those on the way to it. The files of a folder that is not on the server or could not be
/// listed have no place, and neither have those that would become one document. Makes requests, none of which
/// changes anything.
/// @param directory  that the tree was read from
/// @param address    of the folder on the server, with a closing "/"
[[nodiscard]] PutPlaces FindPutPlaces(const std::string& directory, const LocalTree& tree,
                                      const std::string& address, Effort effort);

}  // namespace vtdirect_cli
