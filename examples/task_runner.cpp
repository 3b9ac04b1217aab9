// Fetches several documents on a thread of the host's own. The library starts none: it hands its work to the
// function that the host has registered.
//
//   task_runner http://127.0.0.1:8080/ /tmp '//plm/?id=D1001' '//plm/?id=D1002'
#include <vtdirect/vt_direct_manager.h>

#include <atomic>
#include <deque>
#include <functional>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace {

std::deque<std::function<void()>> tasks;

// Called on the thread that asked. True: the task will be run. False would refuse it, and nothing would be
// fetched.
bool TakeTask(std::function<void()> task) {
  tasks.push_back(std::move(task));
  return true;
}

// The last path of an address, as a local name.
std::string LocalName(const std::string& address) {
  std::string name = address;
  for (char& byte : name) {
    if (byte == '/' || byte == '?' || byte == ':' || byte == '=') byte = '_';
  }
  return name;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 4) {
    std::cerr << "usage: task_runner SERVER DIRECTORY ADDRESS...\n";
    return 2;
  }
  VtDirectManager::RegisterTaskRunner(TakeTask);
  VtDirectManager::UpdateServerList({{"plm", arguments[1]}});

  std::atomic<int> fetched{0};
  const std::vector<std::string> addresses(arguments + 3, arguments + count);
  for (const std::string& address : addresses) {
    const std::string file = std::string(arguments[2]) + "/" + LocalName(address);
    // Called on the worker's thread; StatusOk comes at most once for a document.
    const auto finished = [&fetched](VtDirectManager::StatusCode code, const char*) {
      if (code == VtDirectManager::StatusOk) ++fetched;
    };
    if (!VtDirectManager::GetFileAsync(address.c_str(), file.c_str(), finished, {})) {
      std::cerr << "not accepted: " << address << '\n';
    }
  }

  std::thread worker([] {
    for (; !tasks.empty(); tasks.pop_front()) tasks.front()();
  });
  worker.join();  // a host with a window goes on here, and is told by the callback
  std::cout << fetched << " of " << addresses.size() << '\n';
  return fetched == static_cast<int>(addresses.size()) ? 0 : 1;
}
