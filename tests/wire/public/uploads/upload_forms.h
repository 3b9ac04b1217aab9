#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/wire/public/uploads/upload_front_fixture.h"

namespace vtdirect_test {

enum class UploadEntry { Upload, UploadOfAKind, UploadAsync, UploadOfAKindAsync, UploadFenletAsync };

/// One of the exported uploads with a kind of document.
struct UploadForm {
  const char* name;
  UploadEntry entry;
  VtDirectManager::FileType kind = VtDirectManager::FileTypeFenlet;

  /// Whether the transfer is left to the host's task runner.
  [[nodiscard]] bool IsLater() const;
  /// Whether a temporary checkout is checked in after its store without being asked for.
  [[nodiscard]] bool ChecksInByItself() const;
  /// The version of such a document's application is never negotiated.
  [[nodiscard]] bool RegistersNothing() const { return kind == VtDirectManager::FileTypeUgc; }
};
void PrintTo(const UploadForm& form, std::ostream* out);
std::string NameOfForm(const testing::TestParamInfo<UploadForm>& form);

/// Every entry, and every kind of document at least once.
const std::vector<UploadForm>& AllUploadForms();

/// A test of every exported upload. The host's task runner keeps a task until the entry has returned.
class UploadFormTest : public UploadFrontTest, public testing::WithParamInterface<UploadForm> {
 protected:
  UploadFormTest();

  /// How many local files the form hands over.
  [[nodiscard]] int Files() const;
  /// What an entry traces at the beginning of its transfer, and how a document service names the files.
  [[nodiscard]] TraceLine StoringAt(const std::string& relativePath) const;
  [[nodiscard]] std::string ThreePaths() const;

  /// Calls the entry, and then the task when it left one. Gives "true" or "false", and all statuses after
  /// it.
  std::string Run(const std::string& address, bool checkIn);

  /// The results as Run gives them.
  static std::string Done(const std::string& uid) { return "true 0 " + uid + ";"; }
  /// A transfer that failed; an entry that left it to a task has returned by then.
  [[nodiscard]] std::string Failed(int code) const;
  /// A refusal before the transfer.
  static std::string NotPrepared(const std::string& status) { return "false " + status; }

 private:
  [[nodiscard]] std::string Viewable() const;
  [[nodiscard]] std::string Metadata() const;
  bool Call(const std::string& address, bool checkIn);

  std::string viewablePath_ = directory.File("local/view.lxz");
  std::string metadataPath_ = directory.File("local/meta.json");
};

}  // namespace vtdirect_test
