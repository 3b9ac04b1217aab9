#include "hosts/cli/translation/xliff_check.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "hosts/cli/translation/bounded_xml.h"
#include "hosts/cli/translation/utf8_reading.h"
#include "hosts/cli/translation/xliff_frame.h"

namespace vtdirect_cli {
namespace {

constexpr int pieceSize = 64 * 1024;

[[nodiscard]] char Folded(char c) {
  if (c == '_') return '-';
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Feeds the file to the parser until it ends, or a fault does.
[[nodiscard]] bool ReadAll(const ReadFunction& read, XML_Parser parser) {
  Utf8Reading reading(read);
  if (!reading.Begin()) return false;
  if (reading.converts()) XML_SetEncoding(parser, "UTF-8");
  for (;;) {
    void* const buffer = XML_GetBuffer(parser, pieceSize);
    if (buffer == nullptr) return true;
    const std::ptrdiff_t count = reading.Read(static_cast<char*>(buffer), pieceSize);
    if (count < 0) return false;
    if (XML_ParseBuffer(parser, static_cast<int>(count), count == 0) != XML_STATUS_OK || count == 0)
      return true;
  }
}

[[nodiscard]] std::ptrdiff_t ReadSome(int descriptor, char* buffer, std::size_t size, int& error) {
  for (;;) {
    const ssize_t count = read(descriptor, buffer, size);
    if (count >= 0) return count;
    if (errno == EINTR) continue;
    error = errno;
    return -1;
  }
}

}  // namespace

bool LanguagesFit(const std::string& one, const std::string& other) {
  const std::string& shorter = one.size() < other.size() ? one : other;
  const std::string& longer = one.size() < other.size() ? other : one;
  if (shorter.empty()) return longer.empty();
  const auto same = [](char a, char b) { return Folded(a) == Folded(b); };
  if (!std::equal(shorter.begin(), shorter.end(), longer.begin(), same)) return false;
  return longer.size() == shorter.size() || Folded(longer[shorter.size()]) == '-';
}

std::optional<XliffFault> CheckXliff(const ReadFunction& read, const std::string& language) {
  XliffFrame frame(language);
  const XmlParser parser = MakeBoundedXmlParser();
  if (parser == nullptr) return XliffFault{1, "it can't be checked: there is no memory for that"};
  frame.Watch(parser.get());
  if (!ReadAll(read, parser.get()))
    return XliffFault{XML_GetCurrentLineNumber(parser.get()), "it can't be read"};
  return frame.Result();
}

Result<std::optional<XliffFault>> CheckXliffFile(const std::string& path, const std::string& language) {
  const auto unreadable = [&path](int error) {
    return Failure{ExitCode::LocalFile, "cannot read " + path + ": " + std::strerror(error)};
  };
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return unreadable(errno);
  int error = 0;
  const auto fault =
      CheckXliff([descriptor, &error](char* buffer,
                                      std::size_t size) { return ReadSome(descriptor, buffer, size, error); },
                 language);
  close(descriptor);
  if (error != 0) return unreadable(error);
  return fault;
}

}  // namespace vtdirect_cli
