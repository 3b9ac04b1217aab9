#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "documents/reading/document_records.h"
#include "documents/storing/content_upload.h"
#include "documents/storing/document_writer.h"
#include "documents/storing/upload_params.h"

/// The JSON that tells the server what a new document or iteration consists of. Pure functions of their
/// records and of the settings.
namespace lxservices::cms_interface::vantry {

/// What a kind of document is stored with where the document itself says nothing.
struct KindDefaults {
  std::string_view category;  ///< of the primary section
  std::string_view fileName;  ///< of the primary section
  std::string_view masterCategory;
  std::string_view masterSubCategory;  ///< not written for a text document
  std::string_view ndVersion;
};

[[nodiscard]] const KindDefaults& DefaultsOf(DocumentKind kind);

/// An authoring application and its version.
struct AuthoringApplicationVersion {
  std::string application;
  std::string version;
};

/// All that an instruction is made of. Nothing is owned.
struct InstructionParts {
  DocumentKind kind = DocumentKind::Fenlet;
  const DocumentRecord* document = nullptr;  ///< null for a new document
  const rapidjson::Value* json = nullptr;    ///< the document as the server gave it, or null
  std::string_view name;                     ///< of a new document
  std::string_view folderId;                 ///< of a new document; may be empty
  const std::vector<DerivedSourceDependency>* dependencies = nullptr;  ///< null: those of the document
  const UploadedContent* main = nullptr;                               ///< null when nothing was reported
  const UploadedContent* viewable = nullptr;                           ///< null for none
  const UploadedContent* vcs = nullptr;                                ///< null for none
  std::string_view language;                                           ///< empty for none
  AuthoringApplicationVersion application;  ///< for a document that no other application wrote
};

/// The instruction: "epmDocument", and for a new document in a folder "targetFolderId".
[[nodiscard]] rapidjson::Value MakeInstruction(const InstructionParts& parts, JsonAllocator& allocator);

/// The primary section: category and file name of the document's first section, else the defaults.
[[nodiscard]] ContentRecord MakePrimarySection(const DocumentRecord* document, const UploadedContent* content,
                                               const KindDefaults& defaults);

/// "cadContent": an object with the one primary section.
[[nodiscard]] rapidjson::Value MakeCadContent(const ContentRecord& section, JsonAllocator& allocator);

/// The first text that is not empty.
[[nodiscard]] std::string_view FirstGiven(std::string_view text, std::string_view otherwise);

}  // namespace lxservices::cms_interface::vantry
