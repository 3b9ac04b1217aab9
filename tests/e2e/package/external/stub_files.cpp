// The rest of a platform that a host might bring: addresses, silent tracing, and files that are never there.
#include <vtdirect/platform/environment.h>
#include <vtdirect/platform/files.h>
#include <vtdirect/platform/localizer.h>
#include <vtdirect/platform/trace.h>
#include <vtdirect/platform/uri.h>

#include <cstdlib>

namespace du {
namespace {

// Enough of an address for "http://host/path" and the two address families with it.
struct Range {
  std::size_t begin = std::string::npos;
  std::size_t length = 0;
};

Range Find(const std::string& uri, URIPart part) {
  const std::size_t colon = uri.find(':');
  if (part == URIPart::Scheme && colon != std::string::npos) return {0, colon};
  const std::size_t slashes = uri.find("//");
  if (slashes == std::string::npos) return {};
  const std::size_t host = slashes + 2;
  const std::size_t hostEnd = std::min(uri.find_first_of("/?#", host), uri.size());
  const std::size_t pathEnd = std::min(uri.find_first_of("?#", hostEnd), uri.size());
  if (part == URIPart::Host) return {host, hostEnd - host};
  if (part == URIPart::Path && pathEnd > hostEnd) return {hostEnd, pathEnd - hostEnd};
  if (part == URIPart::Query && pathEnd < uri.size()) return {pathEnd + 1, uri.size() - pathEnd - 1};
  return {};
}

}  // namespace

std::string GetURIPart(const std::string& uri, URIPart part) {
  const Range range = Find(uri, part);
  return range.begin == std::string::npos ? std::string() : uri.substr(range.begin, range.length);
}
std::pair<std::size_t, std::size_t> GetURIPartPosCount(const std::string& uri, URIPart part) {
  const Range range = Find(uri, part);
  return {range.begin, range.length};
}
void URI_Escape(std::string* out, const std::string& in, std::size_t position, std::size_t count) {
  *out = position > in.size() ? std::string() : std::string(in.substr(position, count));
}
void URI_Unescape(std::string* out, std::size_t position, const std::string& in) {
  *out = position > in.size() ? std::string() : std::string(in.substr(position));
}

FileSpec::FileSpec() = default;
FileSpec::FileSpec(const char*) {}
FileSpec::FileSpec(const std::string&) {}
void FileSpec::SetLocation(const std::string&) {}
void FileSpec::SetFile(const std::string& name) {
  file_ = name;
}
void FileSpec::SetDirPath(const std::string&) {}
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
  return GetFile(path);
}

namespace FileSystem {
std::string GetTempDir(bool) {
  return "/nonexistent";
}
std::string MkTempFile(const char*, const char*, const char*) {
  return {};
}
std::string MkTempDir(const char*) {
  return {};
}
int Unlink(const char*, bool) {
  return -1;
}
bool DeletePath(const std::string&, bool) {
  return false;
}
std::FILE* lxfopen(const char*, const char*) {
  return nullptr;
}
}  // namespace FileSystem

Localizer::Localizer(const char* catalogue) : catalogue_(catalogue) {}
std::string Localizer::LocalizeMessage(const char* key, ActionOnFailure) {
  return key;
}

}  // namespace du

namespace dp {

bool Environment::Test(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0';
}
std::string Environment::Get(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

LXTracer::LXTracer(const char* area, const char* name) : area_(area), name_(name) {}
void LXTracer::operator()(TraceType, const char*, ...) const {}
TraceFormatter LXTracer::operator()(TraceType type) const {
  return TraceFormatter(area_, name_, type, false);
}
TraceFormatter::TraceFormatter(const char* area, const char* name, TraceType type, bool)
    : area_(area), name_(name), type_(type) {}
TraceFormatter::TraceFormatter(TraceFormatter&&) noexcept = default;
TraceFormatter::~TraceFormatter() = default;

}  // namespace dp
