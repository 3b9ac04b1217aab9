#include "hosts/cli/http_log/har_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/http_log/har_document.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

// How every log of this program begins.
constexpr std::string_view beginning = "{\"log\":{\"version\":\"1.2\",\"creator\":{\"name\":\"vtdirect\"";

[[nodiscard]] Failure CannotRead(const std::string& path, int error) {
  return {ExitCode::LocalFile, "cannot read " + Printable(path) + ", which is there: " + std::strerror(error),
          "name another file for the log"};
}

// Empty files are taken as well: mktemp makes such.
[[nodiscard]] bool MayBeReplaced(std::string_view read) {
  return read.empty() || read == beginning;
}

// What the file at a path begins with, and its facts when it was read.
[[nodiscard]] Result<HarPlace> LookAt(const std::string& path, int descriptor) {
  struct stat facts = {};
  std::string text(beginning.size(), '\0');
  if (fstat(descriptor, &facts) != 0) return CannotRead(path, errno);
  const ssize_t count = pread(descriptor, text.data(), text.size(), 0);
  if (count < 0) return CannotRead(path, errno);
  text.resize(static_cast<std::size_t>(count));
  if (MayBeReplaced(text)) return HarPlace{path, facts};
  return Failure{ExitCode::Usage, Printable(path) + " is there and is no log of vtdirect; name another file"};
}

// A signal waits until the new file is there.
[[nodiscard]] int PutInto(const HarPlace& place, std::string_view text) {
  const InterruptionHold hold;
  DurableFile file(BehindLinks(place.path));
  if (file.error() != 0) return file.error();
  const int descriptor = open(file.path().c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) return errno;
  int error = WriteAll(descriptor, text);
  if (close(descriptor) != 0 && error == 0) error = errno;
  if (error != 0) return error;
  return file.Commit(DurableFile::Permissions::OfOwner, DurableFile::Condition::AsBefore, place.before);
}

[[nodiscard]] std::string WordsOf(int error) {
  if (error == EEXIST) return "a file has come to be there meanwhile, and is left as it is";
  if (error == ESTALE) return "it was changed meanwhile, and is left as it is";
  return std::strerror(error);
}

}  // namespace

Result<HarPlace> HarFile::PlaceFor(const std::string& path) {
  if (path.empty()) return Failure{ExitCode::Usage, "--log-http takes a file name"};
  struct stat facts = {};
  if (stat(path.c_str(), &facts) != 0) {
    if (errno == ENOENT) return HarPlace{path, std::nullopt};
    return CannotRead(path, errno);
  }
  // Asked before it is opened, since opening a pipe waits for its writer.
  if (!S_ISREG(facts.st_mode)) {
    return Failure{ExitCode::Usage, Printable(path) + " is no file; name another one"};
  }
  const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return CannotRead(path, errno);
  auto place = LookAt(path, descriptor);
  close(descriptor);
  return place;
}

HarFile::HarFile(HarPlace place, std::shared_ptr<const HttpLog> log)
    : place_(std::move(place)), log_(std::move(log)), atTheEnd_([this] { static_cast<void>(Put()); }) {}

std::string HarFile::Write() {
  const std::string fault = Put();
  atTheEnd_.Dismiss();
  return fault;
}

std::string HarFile::Put() const {
  const int error = PutInto(place_, HarDocument(log_->Seen(), SecretsOfEnvironment()));
  return error == 0 ? "" : "cannot write " + Printable(place_.path) + ": " + WordsOf(error);
}

}  // namespace vtdirect_cli
