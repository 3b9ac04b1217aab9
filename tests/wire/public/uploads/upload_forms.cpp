#include "tests/wire/public/uploads/upload_forms.h"

#include <ostream>
#include <utility>

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;

std::function<void()> keptTask;
bool KeepTask(std::function<void()> task) {
  keptTask = std::move(task);
  return true;
}

}  // namespace

bool UploadForm::IsLater() const {
  return entry != UploadEntry::Upload && entry != UploadEntry::UploadOfAKind;
}

bool UploadForm::ChecksInByItself() const {
  return entry != UploadEntry::UploadOfAKind && entry != UploadEntry::UploadOfAKindAsync;
}

void PrintTo(const UploadForm& form, std::ostream* out) {
  *out << form.name;
}

std::string NameOfForm(const testing::TestParamInfo<UploadForm>& form) {
  return form.param.name;
}

const std::vector<UploadForm>& AllUploadForms() {
  static const std::vector<UploadForm> forms{
      {"Upload", UploadEntry::Upload},
      {"UploadOfAGeneralDocument", UploadEntry::UploadOfAKind, FileTypeGeneral},
      {"UploadOfAFenlet", UploadEntry::UploadOfAKind},
      {"UploadAsync", UploadEntry::UploadAsync},
      {"UploadAsyncOfAUgcDocument", UploadEntry::UploadOfAKindAsync, FileTypeUgc},
      {"UploadFenletAsync", UploadEntry::UploadFenletAsync},
  };
  return forms;
}

UploadFormTest::UploadFormTest() {
  WriteFile(viewablePath_, "VIEW");
  WriteFile(metadataPath_, "{}");
  RegisterTaskRunner(KeepTask);
}

int UploadFormTest::Files() const {
  return 1 + (Viewable().empty() ? 0 : 1) + (Metadata().empty() ? 0 : 1);
}

std::string UploadFormTest::Viewable() const {
  return GetParam().ChecksInByItself() ? viewablePath_ : std::string();
}

std::string UploadFormTest::Metadata() const {
  return GetParam().entry == UploadEntry::UploadFenletAsync ? metadataPath_ : std::string();
}

TraceLine UploadFormTest::StoringAt(const std::string& relativePath) const {
  return Information("Storing document (" + mainPath + " " + Viewable() + ") to (<" + Metadata() + "> - <" +
                     relativePath + ">)\n");
}

std::string UploadFormTest::ThreePaths() const {
  return "(" + mainPath + ", " + Viewable() + ", " + Metadata() + ")";
}

std::string UploadFormTest::Failed(int code) const {
  return (GetParam().IsLater() ? "true " : "false ") + std::to_string(code) + " (null);";
}

bool UploadFormTest::Call(const std::string& address, bool checkIn) {
  const char* path = address.c_str();
  const char* main = mainPath.c_str();
  const UploadFenletParams params{viewablePath_.c_str(), metadataPath_.c_str(), nullptr, nullptr};
  switch (GetParam().entry) {
    case UploadEntry::Upload:
      return Upload(path, main, params.viewablePath, noLinks, Status(), {}, nullptr, checkIn);
    case UploadEntry::UploadOfAKind:
      return Upload(GetParam().kind, path, main, Status(), {}, nullptr, checkIn);
    case UploadEntry::UploadAsync:
      return UploadAsync(path, main, params.viewablePath, noLinks, Status(), {}, nullptr, checkIn);
    case UploadEntry::UploadOfAKindAsync:
      return UploadAsync(GetParam().kind, path, main, Status(), {}, nullptr, checkIn);
    case UploadEntry::UploadFenletAsync:
      return UploadFenletAsync(path, main, params, Status(), {}, checkIn);
  }
  return false;
}

std::string UploadFormTest::Run(const std::string& address, bool checkIn) {
  statuses.clear();
  keptTask = {};
  const std::size_t before = trace.lines().size();
  std::string result = Call(address, checkIn) ? "true " : "false ";
  if (keptTask) {
    // Nothing of the transfer has begun.
    EXPECT_THAT(statuses, testing::IsEmpty());
    for (std::size_t index = before; index < trace.lines().size(); ++index) {
      EXPECT_FALSE(trace.lines()[index].text.starts_with("Storing")) << trace.lines()[index].text;
    }
    std::exchange(keptTask, {})();
  }
  for (const auto& status : statuses) result += status + ";";
  return result;
}

}  // namespace vtdirect_test
