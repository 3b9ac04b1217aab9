#include "documents/storing/secondary_contents.h"

#include "platform/environment.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr std::string_view vcsCategory = "VCSINFO";

bool DiscardSecondaryContent() {
  static const bool discard = dp::Environment::Test("FENLOOM_DC_DISCARD_SEC_CONTENT");
  return discard;
}

ContentRecord MakeSection(std::string_view category, std::string fileName, const UploadedContent& content) {
  ContentRecord section;
  section.category = category;
  section.fileName = std::move(fileName);
  section.streamId = content.streamId;
  section.encodedCCD = content.encodedInfo;
  return section;
}

// Named by category and file name alone; the server takes the bytes from the iteration before. Metadata files
// describe one iteration and are never carried.
void CarryForward(const DocumentRecord& document, JsonAllocator& allocator, rapidjson::Value& contents) {
  for (const ContentRecord& content : document.secondaryContents) {
    if (!content.isForwardable || content.category == vcsCategory) continue;
    rapidjson::Value entry(rapidjson::kObjectType);
    entry.AddMember("category", MakeText(content.category, allocator), allocator);
    entry.AddMember("fileName", MakeText(content.fileName, allocator), allocator);
    contents.PushBack(entry, allocator);
  }
}

}  // namespace

rapidjson::Value MakeSecondaryContents(const InstructionParts& parts, const std::string& primaryFileName,
                                       JsonAllocator& allocator) {
  rapidjson::Value contents(rapidjson::kArrayType);
  // A creation doesn't ask for the switch, so a host may still set it after one.
  if (parts.document != nullptr && !DiscardSecondaryContent()) {
    CarryForward(*parts.document, allocator, contents);
  }
  if (parts.viewable != nullptr) {
    const ContentRecord section = MakeSection("VIEWABLE", primaryFileName + ".lxz", *parts.viewable);
    contents.PushBack(WriteContentSection(section, allocator), allocator);
  }
  if (parts.vcs != nullptr) {
    ContentRecord section = MakeSection(vcsCategory, "cad-metadata.json", *parts.vcs);
    section.isHidden = true;
    contents.PushBack(WriteContentSection(section, allocator), allocator);
  }
  return contents;
}

}  // namespace lxservices::cms_interface::vantry
