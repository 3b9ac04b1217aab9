#pragma once

#include "tests/wire/public/path_search.h"

namespace vtdirect_test {

/// A test of an exported operation whose every request fails in every way.
class FrontWalkTest : public ListedServerTest {
 protected:
  ~FrontWalkTest() override {
    EXPECT_EQ(transport.unanswered(), 0u) << "answers that nobody asked for";
    EXPECT_THAT(directory.Entries(), testing::IsEmpty()) << "files left behind";
  }
  void Walk(const std::vector<Step>& steps, const std::function<std::string()>& run, std::size_t first = 0) {
    WalkFailuresFrom(
        {first, steps}, transport, trace, [this] { return directory.Entries(); },
        [&] {
          // A server object that remembers nothing.
          VtDirectManager::UpdateServerList({});
          VtDirectManager::UpdateServerList({{"plm", plmUrl}});
          return run();
        });
  }
};

}  // namespace vtdirect_test
