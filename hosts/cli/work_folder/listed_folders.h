#pragma once

#include <vtdirect/vt_direct_manager.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/failures/failure.h"
#include "hosts/cli/work_folder/local_names.h"

namespace vtdirect_cli {

/// A folder of a server and what its listing told.
struct ListedFolder {
  std::string address;                   ///< with a closing "/"
  std::string name;                      ///< as the server has it
  VtDirectManager::WalkedDir directory;  ///< how a walk came to it; empty: it is looked up by its address

  std::vector<ListedDocument> documents;
  std::vector<std::unique_ptr<ListedFolder>> folders;
  std::optional<Failure> failure;  ///< why it could not be listed; then what came of it does not count
};

/// How many folders are listed at a time, and how often one is listed again whose listing broke off.
struct Effort {
  Effort(unsigned threadCount, unsigned retryCount = 0) : threads(threadCount), retries(retryCount) {}
  unsigned threads;
  unsigned retries;
};

/// Questions that have nothing to do with the listing of a tree, and are asked on its threads whenever no folder
/// waits: not before the server has been asked for something, and only if the tree is there.
struct SideTasks {
  std::size_t count = 0;
  std::function<void(std::size_t number)> run = {};  ///< called on several threads at one time
};

/// Lists a folder and all below it, several folders at a time, each as soon as the listing above it has told of
/// it. Nobody is asked for a password by two of them at once, since the first one goes alone. Makes requests.
/// What a signal has kept from being listed has a failure of that kind.
void ListTree(ListedFolder& start, Effort effort, const SideTasks& beside = {});

/// Lists one folder, without what is below it. Makes requests.
void ListFolder(ListedFolder& folder, unsigned retries);

}  // namespace vtdirect_cli
