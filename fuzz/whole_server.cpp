// Exported functions, one after the other, on a server that is made of bytes. The first part of them names the
// calls and, by its first byte, the generation of the server; what follows is for support/hostile_server.h. What a
// call gives back does not count: it ends, harms no memory, and leaves no temporary file.
//
// Built with VTDIRECT_FUZZ_THREADS, that many threads make the same calls at once, each from another one on.
#include <cstdio>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <thread>

#include "fuzz/support/byte_server.h"
#include "fuzz/support/hostile_server.h"
#include "fuzz/support/input.h"
#include "platform/trace.h"
#include "public/outcome.h"
#include "public/vt_direct_manager.h"
#include "tests/wire/requests/counted_calls.h"

#ifndef VTDIRECT_FUZZ_THREADS
#define VTDIRECT_FUZZ_THREADS 1
#endif

namespace {

using vtdirect_test::CountedCall;

constexpr std::size_t threads = VTDIRECT_FUZZ_THREADS;
constexpr std::size_t mostCalls = 8;

const std::vector<CountedCall>& Calls() {
  static const std::vector<CountedCall> calls = [] {
    std::vector<CountedCall> all;
    for (const auto& [name, call] : vtdirect_test::CountedCalls()) all.push_back(call);
    for (const auto& [name, call] : vtdirect_test::SilentCalls()) {
      // These two would take the login and the task runner away that the target needs.
      if (name.starts_with("Register")) continue;
      all.push_back({[run = call] { return run(), true; }});
    }
    return all;
  }();
  return calls;
}

std::vector<const CountedCall*> CallsOf(std::string_view script) {
  std::vector<const CountedCall*> calls;
  for (const char byte : script.substr(0, mostCalls)) {
    calls.push_back(&Calls()[static_cast<unsigned char>(byte) % Calls().size()]);
  }
  return calls;
}

void SetUpHost() {
  dp::SetTraceHandler(
      [](const char*, const char*, dp::TraceType, const std::string& text) { vtdirect_fuzz::Look(text); });
  VtDirectManager::RegisterAuth([](const char*) { return true; });
  VtDirectManager::RegisterTaskRunner([](std::function<void()> task) {
    task();
    return true;
  });
  (void)vtdirect_test::LeftoversOfCalls();
}

void Run(const CountedCall& call) {
  const VtDirectManager::Outcome outcome;
  try {
    (void)call.run();
  } catch (const std::invalid_argument&) {  // a ticket whose stream ids are no numbers: hosts are told so
  } catch (const std::out_of_range&) {
  }
  for (const auto& failure : outcome.Entries()) vtdirect_fuzz::Look(failure.serverText);
}

void RunAll(const std::vector<const CountedCall*>& calls) {
  for (const CountedCall* call : calls) call->prepare();
  if constexpr (threads == 1) {
    for (const CountedCall* call : calls) Run(*call);
    return;
  }
  std::vector<std::jthread> running;
  for (std::size_t thread = 0; thread < threads; ++thread) {
    running.emplace_back([&calls, thread] {
      for (std::size_t at = 0; at < calls.size(); ++at) Run(*calls[(at + thread * 3) % calls.size()]);
    });
  }
}

// GetLocalFile leaves an empty directory where there is no name for the file, and hosts are told so.
bool IsKnownToStay(const std::filesystem::path& path) {
  std::error_code error;
  return path.filename().string().starts_with("fenloom-") && std::filesystem::remove(path, error);
}

void RequireNothingLeft() {
  bool left = false;
  for (const std::string& name : vtdirect_test::LeftoversOfCalls()) {
    if (IsKnownToStay(std::filesystem::temp_directory_path() / name)) continue;
    std::fprintf(stderr, "left behind: %s\n", name.c_str());
    left = true;
  }
  vtdirect_fuzz::Require(!left);
}

// The calls with a handle share one, which may hold an answer in a file for as long as it is open.
void CloseHandle(vtdirect_fuzz::HostileServer& server) {
  server.GoAway();
  vtdirect_test::CountedCalls().at({"ReadDir", "handle of a folder"}).prepare();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool isSetUp = (SetUpHost(), true);
  (void)isSetUp;
  std::string_view rest = vtdirect_fuzz::TextOf(data, size);
  std::string_view script = vtdirect_fuzz::TakePart(rest, vtdirect_fuzz::answerEnd);
  if (script.size() < 2) return 0;
  vtdirect_fuzz::HostileServer server(static_cast<vtdirect_test::Generation>(script.front() & 3), rest);
  script.remove_prefix(1);
  VtDirectManager::SetAppConfig(VtDirectManager::ConfigBrowseCadDocuments, nullptr);
  vtdirect_test::ListSampleServer(true);
  {
    const auto session = VtDirectManager::StartSession();
    RunAll(CallsOf(script));
  }
  CloseHandle(server);
  vtdirect_test::ListSampleServer(false);
  RequireNothingLeft();
  return 0;
}
