#pragma once

#include <expat.h>

#include <cstdint>
#include <optional>
#include <string>

#include "hosts/cli/translation/xliff_check.h"

namespace vtdirect_cli {

/// Follows the tags of a file as a parser meets them, and tells what keeps it from being an XLIFF.
class XliffFrame {
 public:
  /// @param language  what every source language has to fit
  explicit XliffFrame(std::string language) : language_(std::move(language)) {}
  XliffFrame(const XliffFrame&) = delete;
  XliffFrame& operator=(const XliffFrame&) = delete;

  /// Has the parser tell of its tags. It is kept, and has to live until `Result` was asked.
  void Watch(XML_Parser parser);

  /// What the parser met, when it has ended.
  [[nodiscard]] std::optional<XliffFault> Result() const;

 private:
  enum class Form { Unknown, OnePointTwo, TwoPointX };

  static void OnStart(void* frame, const XML_Char* name, const XML_Char** attributes);
  static void OnEnd(void* frame, const XML_Char* name);
  static void OnDoctype(void* frame, const XML_Char* name, const XML_Char* system, const XML_Char* publicId,
                        int hasSubset);

  void LookAtRoot(const std::string& name, const XML_Char** attributes);
  void LookAtFile(const XML_Char** attributes);
  void LookAtLanguage(const char* tag, const char* attribute, const XML_Char** attributes);
  void Refuse(std::string what);
  [[nodiscard]] std::string ParserFault() const;

  std::string language_;
  XML_Parser parser_ = nullptr;
  Form form_ = Form::Unknown;
  std::string namespace_;
  unsigned depth_ = 0;
  bool hasRoot_ = false;
  bool hasFile_ = false;
  std::optional<XliffFault> fault_;
};

}  // namespace vtdirect_cli
