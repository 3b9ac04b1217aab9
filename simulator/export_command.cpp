#include "simulator/export_command.h"

#include <fcntl.h>
#include <stdio.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "simulator/seed/fixture_export.h"
#include "simulator/seed/fixture_reader.h"
#include "simulator/seed/fixture_writer.h"
#include "simulator/store/data_directory.h"

namespace vantry_sim {
namespace {

/// Lets two names change places. @return whether they have
bool Exchange(const std::filesystem::path& one, const std::filesystem::path& other) {
  if (renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // A filesystem without that kind of rename.
  const std::filesystem::path aside = one.string() + ".old";
  if (rename(other.c_str(), aside.c_str()) != 0) return false;
  if (rename(one.c_str(), other.c_str()) == 0) return rename(aside.c_str(), one.c_str()) == 0;
  rename(aside.c_str(), other.c_str());
  return false;
}

bool IsThere(const std::filesystem::path& path) {
  return std::filesystem::exists(std::filesystem::symlink_status(path));
}

/// Whether an export can have made it: a file that has the number of a stream for its name.
bool IsContent(const std::filesystem::directory_entry& entry) {
  const std::string name = entry.path().filename().string();
  return entry.symlink_status().type() == std::filesystem::file_type::regular &&
         name.find_first_not_of("0123456789") == std::string::npos;
}

/// The contents beside a state. They are collected under another name, so that an older export stays whole until
/// there is all of the new one.
class FilesBeside {
 public:
  explicit FilesBeside(const std::filesystem::path& state)
      : files_(state.string() + ".files"), part_(files_.string() + ".part") {
    // One that was killed after the two had changed places has left the older contents there.
    if (IsThere(part_))
      throw std::runtime_error(part_.string() +
                               " is from an export that did not end, and may be the only copy of older "
                               "contents; move it away, or remove it");
  }
  FilesBeside(const FilesBeside&) = delete;
  FilesBeside& operator=(const FilesBeside&) = delete;
  ~FilesBeside() {
    std::error_code ignored;
    if (!holdsOlder_) std::filesystem::remove_all(part_, ignored);
  }

  [[nodiscard]] FixtureBytesForm Form() const {
    return {FixtureBytesForm::Kind::Beside, part_, files_.filename().string() + "/"};
  }

  /// @throws std::runtime_error if something in their place is from no export
  void RequireReplaceable() const {
    if (!IsThere(part_) || !IsThere(files_)) return;
    if (!std::filesystem::is_directory(std::filesystem::symlink_status(files_)))
      throw std::runtime_error(files_.string() + " is no directory; move it away, or name another file");
    for (const auto& entry : std::filesystem::directory_iterator(files_)) {
      if (!IsContent(entry))
        throw std::runtime_error(entry.path().string() +
                                 " is from no export, which would replace its directory; move it away, or "
                                 "name another file");
    }
  }

  /// Puts them in the place of the old ones, which `GiveBack` puts there again. @return whether it was possible
  [[nodiscard]] bool TakePlace() {
    // A state may have no content that goes beside it.
    if (!IsThere(part_)) return true;
    replaced_ = IsThere(files_);
    taken_ = replaced_ ? Exchange(part_, files_) : rename(part_.c_str(), files_.c_str()) == 0;
    return taken_;
  }

  void GiveBack() {
    if (!taken_) return;
    if (replaced_) {
      holdsOlder_ = !Exchange(part_, files_);
    } else {
      rename(files_.c_str(), part_.c_str());
    }
  }

 private:
  const std::filesystem::path files_;
  const std::filesystem::path part_;
  bool replaced_ = false;
  bool taken_ = false;
  bool holdsOlder_ = false;  ///< the older contents are under the other name, and could not be given back
};

void WriteWhole(const std::string& file, const std::string& text, FilesBeside& files) {
  // A reader never sees half of it.
  const std::string part = file + ".part";
  std::ofstream stream(part, std::ios::binary | std::ios::trunc);
  stream << text;
  stream.close();
  bool done = stream && files.TakePlace();
  if (done && rename(part.c_str(), file.c_str()) != 0) {
    files.GiveBack();
    done = false;
  }
  if (done) return;
  std::error_code ignored;
  std::filesystem::remove(part, ignored);
  throw std::runtime_error("cannot write " + file);
}

std::unique_ptr<StateOutput> MakeOutput(const ExportOptions& options) {
  return options.json ? MakeJsonOutput() : MakeYamlOutput();
}

void ExportIntoFile(const ExportOptions& options, const Fixture& fixture) {
  FilesBeside files(options.out);
  const auto out = MakeOutput(options);
  WriteFixture(*out, fixture, files.Form());
  files.RequireReplaceable();
  WriteWhole(options.out, out->Take(), files);
}

std::string Counted(std::size_t count, const char* one, const char* more) {
  return std::to_string(count) + " " + (count == 1 ? one : more);
}

}  // namespace

void ExportState(const ExportOptions& options) {
  const auto data = DataDirectory::OpenFilled(options.dataDirectory);
  const Fixture fixture = ExportFixture(data->database(), data->contents());
  if (!options.out.empty()) return ExportIntoFile(options, fixture);
  const auto out = MakeOutput(options);
  WriteFixture(*out, fixture, {});
  const std::string text = out->Take();
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
    throw std::runtime_error("cannot write to standard output");
}

int CheckState(const std::string& file) {
  std::vector<FixtureProblem> problems;
  const auto fixture = ReadFixtureFile(file, problems);
  if (!fixture) {
    std::fprintf(stderr, "%s\n", TextOf(problems, file).c_str());
    return 1;
  }
  std::size_t versions = 0;
  for (const FixtureDocument& document : fixture->documents) versions += document.versions.size();
  std::printf("%s: %s, %s, %s in %s, %s\n", file.c_str(),
              Counted(fixture->users.size(), "user", "users").c_str(),
              Counted(fixture->contexts.size(), "context", "contexts").c_str(),
              Counted(fixture->documents.size(), "document", "documents").c_str(),
              Counted(versions, "version", "versions").c_str(),
              Counted(fixture->workspaces.size(), "workspace", "workspaces").c_str());
  return 0;
}

}  // namespace vantry_sim
