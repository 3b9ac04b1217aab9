#include "hosts/cli/translation/xliff_frame.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include "hosts/cli/translation/bounded_xml.h"

namespace vtdirect_cli {
namespace {

constexpr unsigned deepest = 1000;
constexpr std::size_t longestQuote = 60;

constexpr std::string_view namespaces = "urn:oasis:names:tc:xliff:document:";
constexpr std::string_view versions[] = {"1.2", "2.0", "2.1", "2.2"};

// A name as a sentence can show it: it may be hostile, and of any length.
[[nodiscard]] std::string Quoted(std::string_view text) {
  if (text.size() <= longestQuote) return "\"" + std::string(text) + "\"";
  // A cut inside a character would leave a byte that means nothing.
  std::size_t end = longestQuote;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  return "\"" + std::string(text.substr(0, end)) + "...\"";
}

[[nodiscard]] std::string_view LocalName(std::string_view name) {
  const std::size_t end = name.rfind(namespaceEnd);
  return end == std::string_view::npos ? name : name.substr(end + 1);
}

[[nodiscard]] std::string_view NamespaceOf(std::string_view name) {
  const std::size_t end = name.rfind(namespaceEnd);
  return end == std::string_view::npos ? std::string_view() : name.substr(0, end);
}

[[nodiscard]] const char* Find(const XML_Char** attributes, const char* name) {
  for (; *attributes != nullptr; attributes += 2) {
    if (std::strcmp(*attributes, name) == 0) return attributes[1];
  }
  return nullptr;
}

// XLIFF 2.1 has kept the namespace of 2.0.
[[nodiscard]] bool IsNamespaceOf(std::string_view space, std::string_view version) {
  if (!space.starts_with(namespaces)) return false;
  const std::string_view last = space.substr(namespaces.size());
  return last == version || (version == "2.1" && last == "2.0");
}

}  // namespace

void XliffFrame::Watch(XML_Parser parser) {
  parser_ = parser;
  XML_SetUserData(parser, this);
  XML_SetElementHandler(parser, OnStart, OnEnd);
  XML_SetStartDoctypeDeclHandler(parser, OnDoctype);
}

void XliffFrame::OnStart(void* frame, const XML_Char* name, const XML_Char** attributes) {
  XliffFrame& self = *static_cast<XliffFrame*>(frame);
  if (self.fault_) return;
  ++self.depth_;
  if (self.depth_ == 1) return self.LookAtRoot(name, attributes);
  if (self.depth_ == 2 && LocalName(name) == "file" && NamespaceOf(name) == self.namespace_) {
    return self.LookAtFile(attributes);
  }
  if (self.depth_ > deepest) {
    self.Refuse("its elements are nested more than " + std::to_string(deepest) + " deep");
  }
}

void XliffFrame::OnEnd(void* frame, const XML_Char* /*name*/) {
  XliffFrame& self = *static_cast<XliffFrame*>(frame);
  if (self.fault_) return;
  if (self.depth_ == 1 && !self.hasFile_) return self.Refuse("it has no <file> in its <xliff>");
  --self.depth_;
}

// Entities are declared there, by which a small file can stand for a huge text or for other files.
void XliffFrame::OnDoctype(void* frame, const XML_Char* /*name*/, const XML_Char* /*system*/,
                           const XML_Char* /*publicId*/, int /*hasSubset*/) {
  static_cast<XliffFrame*>(frame)->Refuse(
      "it has a document type declaration (<!DOCTYPE>), which XLIFF does without");
}

void XliffFrame::LookAtRoot(const std::string& name, const XML_Char** attributes) {
  hasRoot_ = true;
  namespace_ = NamespaceOf(name);
  if (LocalName(name) != "xliff") {
    return Refuse("it is no XLIFF file: its outermost element is " + Quoted(LocalName(name)) +
                  " and not \"xliff\"");
  }
  const char* const version = Find(attributes, "version");
  if (version == nullptr) return Refuse("its <xliff> tells no version; 1.2 and 2.0 to 2.2 are taken");
  if (std::find(std::begin(versions), std::end(versions), version) == std::end(versions)) {
    return Refuse("its XLIFF version is " + Quoted(version) + "; 1.2 and 2.0 to 2.2 are taken");
  }
  if (!IsNamespaceOf(namespace_, version)) {
    const std::string found = namespace_.empty() ? "no namespace" : "the namespace " + Quoted(namespace_);
    return Refuse("its <xliff> has " + found + "; that of XLIFF " + version + " is \"" +
                  std::string(namespaces) + (std::strcmp(version, "2.1") == 0 ? "2.0" : version) + "\"");
  }
  form_ = std::strcmp(version, "1.2") == 0 ? Form::OnePointTwo : Form::TwoPointX;
  if (form_ == Form::TwoPointX) LookAtLanguage("xliff", "srcLang", attributes);
}

void XliffFrame::LookAtFile(const XML_Char** attributes) {
  hasFile_ = true;
  if (form_ == Form::OnePointTwo) LookAtLanguage("file", "source-language", attributes);
}

void XliffFrame::LookAtLanguage(const char* tag, const char* attribute, const XML_Char** attributes) {
  const char* const found = Find(attributes, attribute);
  const std::string where = "its <" + std::string(tag) + ">";
  if (found == nullptr || *found == '\0') {
    return Refuse(where + " tells no source language (" + attribute + ")");
  }
  if (LanguagesFit(found, language_)) return;
  Refuse(where + " has the source language " + Quoted(found) + " (" + attribute + "), and --language is " +
         Quoted(language_));
}

void XliffFrame::Refuse(std::string what) {
  fault_ = XliffFault{XML_GetCurrentLineNumber(parser_), std::move(what)};
  XML_StopParser(parser_, XML_FALSE);
}

std::optional<XliffFault> XliffFrame::Result() const {
  if (fault_) return fault_;
  if (XML_GetErrorCode(parser_) == XML_ERROR_NONE) return std::nullopt;
  return XliffFault{XML_GetCurrentLineNumber(parser_), ParserFault()};
}

std::string XliffFrame::ParserFault() const {
  const XML_Error error = XML_GetErrorCode(parser_);
  const std::string reason = XML_ErrorString(error);
  switch (error) {
    case XML_ERROR_NO_ELEMENTS:
      if (hasRoot_) return "it ends in the midst of its elements, as a file does that was cut off";
      return "it is empty, or holds nothing but what may come before XML";
    case XML_ERROR_UNCLOSED_TOKEN:
    case XML_ERROR_PARTIAL_CHAR:
    case XML_ERROR_UNCLOSED_CDATA_SECTION:
      return "it ends in the midst of what begins here, as a file does that was cut off (" + reason + ")";
    case XML_ERROR_NO_MEMORY:
      return "it has too long a tag, or too many different names, to be checked";
    case XML_ERROR_UNKNOWN_ENCODING:
    case XML_ERROR_INCORRECT_ENCODING:
      return "its encoding can't be read (" + reason + "); UTF-8 and UTF-16 can";
    default:
      return hasRoot_ ? "it is no well-formed XML (" + reason + ")" : "it is no XML file (" + reason + ")";
  }
}

}  // namespace vtdirect_cli
