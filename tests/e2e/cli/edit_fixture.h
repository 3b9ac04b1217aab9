#pragma once

#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/cli/accident_fixture.h"

namespace vtdirect_test {

/// What the script in the place of an editor writes unless a test says otherwise.
inline constexpr const char* edited = "edited\n";

/// What `edit` does with a document, with a script in the place of an editor.
class Edit : public AccidentTest {
 protected:
  void SetUp() override {
    AccidentTest::SetUp();
    UseEditor("printf 'edited\\n' > \"$1\"");
  }

  void UseEditor(const std::string& script) {
    WriteHome("editor", "#!/bin/sh\n" + script + "\n", 0755);
    environment_["VISUAL"] = Home("editor");
  }

  // Stays open until Close. `script` is what it does then.
  [[nodiscard]] std::unique_ptr<Process> StartInOpenEditor(const std::string& script) {
    UseEditor("touch \"$HOME/begun\"; while [ ! -e \"$HOME/end\" ]; do sleep 0.02; done; " + script);
    auto edit = Start({"edit", forkPath});
    EXPECT_TRUE(WaitUntil([this] { return std::filesystem::exists(Home("begun")); }));
    return edit;
  }

  [[nodiscard]] ProcessResult Close(Process& edit) {
    WriteHome("end", "", 0644);
    return edit.Wait();
  }

  // Ends it while its editor is open.
  void EndBySignal(Process& edit) {
    edit.Signal(SIGTERM);
    EXPECT_EQ(edit.Wait().status, 143);
    WriteHome("end", "", 0644);
  }

  void Put(const std::string& content) {
    WriteFile(Here("f"), content);
    const ProcessResult result = Run({"put", "f", forkPath});
    EXPECT_EQ(result.status, 0) << result.err;
  }

  // The files that edits have left, with what they hold.
  [[nodiscard]] std::vector<std::string> KeptContents() const {
    std::vector<std::string> contents;
    const std::string edits = Home(".local/state/vtdirect/edits");
    if (!std::filesystem::exists(edits)) return contents;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(edits)) {
      if (entry.is_regular_file() && entry.path().parent_path().filename() == "content") {
        contents.push_back(ReadFile(entry.path()));
      }
    }
    return contents;
  }

  [[nodiscard]] std::string Newest() { return Run({"get", forkPath, "-o", "-"}).out; }
};

}  // namespace vtdirect_test
