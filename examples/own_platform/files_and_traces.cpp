// Files, texts, environment variables and traces.
#include <unistd.h>
#include <vtdirect/platform/environment.h>
#include <vtdirect/platform/files.h>
#include <vtdirect/platform/localizer.h>
#include <vtdirect/platform/trace.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <vector>

namespace du {

FileSpec::FileSpec() = default;
FileSpec::FileSpec(const char* path) : FileSpec(std::string(path == nullptr ? "" : path)) {}
FileSpec::FileSpec(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash != std::string::npos) SetDirPath(path.substr(0, slash + 1));
  file_ = slash == std::string::npos ? path : path.substr(slash + 1);
}
void FileSpec::SetLocation(const std::string& directory) {
  SetDirPath(directory);
}
void FileSpec::SetFile(const std::string& name) {
  file_ = name;
}
void FileSpec::SetDirPath(const std::string& path) {
  absolute_ = !path.empty() && path.front() == '/';
  directories_.clear();
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    if (end > begin) directories_.push_back(path.substr(begin, end - begin));
    begin = end + 1;
  }
}
std::size_t FileSpec::DirCount() const {
  return directories_.size();
}
std::list<std::string>::const_iterator FileSpec::DirBegin() const {
  return directories_.begin();
}
std::list<std::string>::const_iterator FileSpec::DirEnd() const {
  return directories_.end();
}
bool FileSpec::GetFile(std::string* name) const {
  *name = file_;
  return !file_.empty();
}
bool FileSpec::GetFileSpec(std::string* path) const {
  *path = absolute_ ? "/" : "";
  for (const std::string& directory : directories_) *path += directory + "/";
  *path += file_;
  return !path->empty();
}

namespace FileSystem {

std::string GetTempDir(bool) {
  std::error_code error;
  const std::string directory = std::filesystem::temp_directory_path(error).string();
  return error ? "/tmp" : directory;
}
// Both make what nobody else can have made before, for its owner alone.
std::string MkTempFile(const char* directory, const char* stem, const char* extension) {
  const std::string suffix = "." + std::string(extension == nullptr ? "" : extension);
  std::string path = (directory == nullptr ? GetTempDir(true) : std::string(directory)) + "/" +
                     (stem == nullptr ? "" : stem) + "XXXXXX" + suffix;
  const int descriptor = mkstemps(path.data(), static_cast<int>(suffix.size()));
  if (descriptor < 0) return {};
  close(descriptor);
  return path;
}
std::string MkTempDir(const char* stem) {
  std::string path = GetTempDir(true) + "/" + (stem == nullptr ? "" : stem) + "XXXXXX";
  return mkdtemp(path.data()) == nullptr ? std::string() : path;
}
int Unlink(const char* path, bool) {
  return unlink(path);
}
bool DeletePath(const std::string& path, bool) {
  std::error_code error;
  std::filesystem::remove_all(path, error);
  return !error;
}
std::FILE* lxfopen(const char* path, const char* mode) {
  return path == nullptr || *path == '\0' ? nullptr : std::fopen(path, mode);
}

}  // namespace FileSystem

// This host speaks English, and the keys of the words in paths end in the English ones:
// "VantryVFSPathProducts".
Localizer::Localizer(const char* catalogue) : catalogue_(catalogue) {}
std::string Localizer::LocalizeMessage(const char* key, ActionOnFailure) {
  const std::string prefix = "VantryVFSPath";
  const std::string text = key;
  return text.compare(0, prefix.size(), prefix) == 0 ? text.substr(prefix.size()) : text;
}
void SetCatalogueDirectory(const std::string&) {}

}  // namespace du

namespace dp {

bool Environment::Test(const char* name) {
  return !Get(name).empty();
}
std::string Environment::Get(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

// Warnings and errors go to standard error; this host drops the rest.
LXTracer::LXTracer(const char* area, const char* name) : area_(area), name_(name) {}
void LXTracer::operator()(TraceType type, const char* format, ...) const {
  std::va_list arguments, again;
  va_start(arguments, format);
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::vector<char> text(length < 0 ? 1 : static_cast<std::size_t>(length) + 1);
  std::vsnprintf(text.data(), text.size(), format, again);
  va_end(again);
  va_end(arguments);
  (*this)(type) << text.data();
}
TraceFormatter LXTracer::operator()(TraceType type) const {
  return {area_, name_, type, type == TraceType::Warning || type == TraceType::Error};
}
TraceFormatter::TraceFormatter(const char* area, const char* name, TraceType type, bool enabled)
    : area_(area), name_(name), type_(type) {
  if (enabled) text_ = std::make_unique<std::ostringstream>();
}
TraceFormatter::TraceFormatter(TraceFormatter&&) noexcept = default;
TraceFormatter::~TraceFormatter() {
  if (text_) std::cerr << text_->str();
}

}  // namespace dp
