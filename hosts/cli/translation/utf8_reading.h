#pragma once

#include <iconv.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "hosts/cli/translation/xliff_check.h"

namespace vtdirect_cli {

/// The encoding that the XML declaration at the beginning of a file names; empty for a file without one, and
/// for one whose declaration isn't in ASCII.
[[nodiscard]] std::string DeclaredEncoding(std::string_view beginning);

/// Hands an XML file to a parser. The parser knows a few encodings; a file in any other one that iconv knows
/// is converted to UTF-8 on the way. One thread.
class Utf8Reading {
 public:
  /// The function must outlive this object.
  explicit Utf8Reading(const ReadFunction& read) : read_(read) {}
  ~Utf8Reading();
  Utf8Reading(const Utf8Reading&) = delete;
  Utf8Reading& operator=(const Utf8Reading&) = delete;

  /// Reads the beginning. False when it can't be read.
  [[nodiscard]] bool Begin();
  /// Whether the parser gets UTF-8 whatever the declaration says.
  [[nodiscard]] bool converts() const { return converter_ != noConversion; }
  /// As a ReadFunction. Bytes that are none of the file's encoding become one that is no UTF-8, after which the
  /// file ends: the parser then tells the line.
  [[nodiscard]] std::ptrdiff_t Read(char* buffer, std::size_t size);

 private:
  static inline const iconv_t noConversion = reinterpret_cast<iconv_t>(-1);
  [[nodiscard]] std::ptrdiff_t ReadRaw(char* buffer, std::size_t size);
  [[nodiscard]] bool ConvertMore();
  void Convert();

  const ReadFunction& read_;
  iconv_t converter_ = noConversion;
  std::string raw_;        ///< read and not handed out or converted yet
  std::string converted_;  ///< not handed out yet
  bool ended_ = false;
};

}  // namespace vtdirect_cli
