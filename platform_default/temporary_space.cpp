#include "platform_default/temporary_space.h"

#include <sys/statvfs.h>

#include <atomic>

#include "platform/trace.h"

namespace vtdirect::platform {
namespace {

std::atomic<std::uint64_t> largest{std::uint64_t{4} << 30};

/// A file system that does not tell how large it is has as much as is asked for.
bool FileSystemHas(int descriptor, std::size_t count) {
  struct statvfs facts = {};
  if (::fstatvfs(descriptor, &facts) != 0 || facts.f_blocks == 0) return true;
  return LeavesEnough(static_cast<std::uint64_t>(facts.f_bavail) * facts.f_frsize, count);
}

}  // namespace

void SetLargestTemporaryFile(std::uint64_t bytes) {
  largest = bytes;
}

bool MayGrow(int descriptor, std::uint64_t length, std::size_t count) {
  const std::uint64_t most = largest;
  const dp::LXTracer tracer("fenlet", "Transport");
  if (length > most || most - length < count) {
    tracer(dp::TraceType::Error) << "An answer is longer than the " << most
                                 << " bytes that its temporary file may have (largestTemporaryFile).\n";
    return false;
  }
  if (!FileSystemHas(descriptor, count)) {
    tracer(dp::TraceType::Error) << "An answer would take the last " << leftOfFileSystem
                                 << " bytes of the file system of temporary files.\n";
    return false;
  }
  return true;
}

}  // namespace vtdirect::platform
