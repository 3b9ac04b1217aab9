#include "simulator/seed/fixture_contents.h"

#include "simulator/seed/fixture_defaults.h"
#include "simulator/wire/authentication.h"

namespace vantry_sim {
namespace {

/// A slip of the finger must not fill a disk.
constexpr std::int64_t mostGenerated = 1'000'000'000'000;

}  // namespace

void FixtureContents::Claim(JsonValue version) {
  ClaimList(version.Find("contents"));
  ClaimList(version.Find("secondary"));
  const std::string id(version.Find("content").Find("id").Text());
  if (!id.empty()) ids_.Claim(id, version.Line(), problems_);
}

void FixtureContents::ClaimList(JsonValue list) {
  for (const JsonValue value : list) {
    if (const std::string id(value.Find("id").Text()); !id.empty()) ids_.Claim(id, value.Line(), problems_);
  }
}

void FixtureContents::Read(const FixtureObject& version, const std::string& category, FixtureVersion& out) {
  if (version.Has("content") && version.Has("contents"))
    version.Problem("content", "excludes contents: one is for a single file, the other for several");
  if (version.Has("content")) out.primary.push_back(ReadOne(version.Value("content"), category));
  for (const JsonValue value : version.List("contents")) out.primary.push_back(ReadOne(value, category));
  for (const JsonValue value : version.List("secondary"))
    out.secondary.push_back(ReadOne(value, std::string(defaultSecondaryCategory)));
}

FixtureContent FixtureContents::ReadOne(JsonValue value, const std::string& category) {
  FixtureContent content;
  content.category = category;
  content.fileName = defaultFileName;
  if (const auto text = ScalarText(value)) {
    content.bytes = TextBytes(*text, value.Line());
  } else {
    const FixtureObject object(value, "a content",
                               {"id", "category", "fileName", "isForwardable", "isStale", "isHidden", "text",
                                "base64", "file", "size", "generator", "stream"},
                               problems_);
    content.id = object.Text("id");
    content.category = object.Text("category", category);
    content.fileName = object.Text("fileName", defaultFileName);
    content.isForwardable = object.Flag("isForwardable", false);
    content.isStale = object.Flag("isStale", false);
    content.isHidden = object.Flag("isHidden", false);
    content.bytes = ReadBytes(object);
  }
  if (content.id.empty()) content.id = ids_.Make("K");
  return content;
}

FixtureBytes FixtureContents::ReadBytes(const FixtureObject& object) {
  FixtureBytes bytes;
  int forms = 0;
  for (const char* form : {"text", "base64", "file", "size"}) forms += object.Has(form) ? 1 : 0;
  if (forms > 1) object.Problem("size", "excludes text, base64 and file: a content has one of them");
  if (object.Has("text")) {
    bytes.kind = FixtureBytes::Kind::Inline;
    bytes.text = object.Text("text");
  } else if (object.Has("base64")) {
    auto decoded = DecodeBase64(object.Text("base64"));
    if (!decoded) object.Problem("base64", "is no base64");
    bytes.kind = FixtureBytes::Kind::Inline;
    bytes.text = decoded.value_or("");
  } else if (object.Has("file")) {
    bytes = FileBytes(object.Text("file"), object.Value("file").Line());
  } else if (object.Has("size")) {
    const std::int64_t size = object.Number("size").value_or(0);
    if (size > mostGenerated) object.Problem("size", "is more than a terabyte");
    bytes.kind = FixtureBytes::Kind::Generated;
    bytes.size = static_cast<std::uint64_t>(size);
    bytes.generator = object.Number("generator");
    if (bytes.generator == 0) object.Problem("generator", "must be above 0");
  }
  CheckStream(object, bytes);
  return bytes;
}

/// A number without bytes stands for those that the same number has elsewhere.
void FixtureContents::CheckStream(const FixtureObject& object, FixtureBytes& bytes) {
  bytes.stream = object.Number("stream");
  if (!bytes.stream) return;
  if (*bytes.stream == 0) object.Problem("stream", "must be above 0");
  if (bytes.kind != FixtureBytes::Kind::None) {
    streams_.insert(*bytes.stream);
  } else if (streams_.count(*bytes.stream) > 0) {
    bytes.kind = FixtureBytes::Kind::Stream;
  } else {
    object.Problem("stream", "has no bytes here or further up");
  }
}

/// Text as it is, or the name of a file after an "@".
FixtureBytes FixtureContents::TextBytes(const std::string& text, std::uint32_t line) {
  if (text.starts_with('@')) return FileBytes(text.substr(1), line);
  FixtureBytes bytes;
  bytes.kind = FixtureBytes::Kind::Inline;
  bytes.text = text;
  return bytes;
}

FixtureBytes FixtureContents::FileBytes(const std::string& name, std::uint32_t line) {
  FixtureBytes bytes;
  bytes.kind = FixtureBytes::Kind::File;
  bytes.file = sources_.directory / name;
  std::error_code error;
  if (!sources_.files) {
    problems_.Add(line,
                  "a state that comes by HTTP has no files beside it, so give the bytes as text or base64");
  } else if (name.empty() || !std::filesystem::is_regular_file(bytes.file, error)) {
    problems_.Add(line, "there is no file " + bytes.file.string());
  }
  return bytes;
}

}  // namespace vantry_sim
