#include "simulator/seed/fixture_writer.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>

#include "simulator/seed/fixture_defaults.h"
#include "simulator/wire/authentication.h"
#include "simulator/wire/utf8.h"

namespace vantry_sim {
namespace {

constexpr std::size_t longestInlineText = 2048;

std::string ReadAll(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return bytes;
}

bool IsText(std::string_view bytes) {
  return IsUtf8(bytes) && bytes.find('\0') == std::string_view::npos;
}

/// Names that stand for an id wherever the state refers to it: the id itself where a name has several.
class Names {
 public:
  explicit Names(const Fixture& fixture) {
    for (const FixtureContext& context : fixture.contexts) {
      Add(contexts_, context.name, context.id);
      for (const FixtureFolder& root : context.roots) AddFolder(context.name, root);
    }
    for (const FixtureWorkspace& workspace : fixture.workspaces)
      Add(workspaces_, workspace.name, workspace.id);
  }

  [[nodiscard]] std::string Context(const std::string& id) const { return Of(contexts_, id); }
  [[nodiscard]] std::string Folder(const std::string& id) const { return Of(folders_, id); }
  [[nodiscard]] std::string Workspace(const std::string& id) const { return Of(workspaces_, id); }

 private:
  struct Table {
    std::map<std::string, std::string> byId;
    std::map<std::string, int> uses;  ///< of names and of ids
  };
  static void Add(Table& table, const std::string& name, const std::string& id) {
    table.byId[id] = name;
    ++table.uses[name];
    if (name != id) ++table.uses[id];
  }
  void AddFolder(const std::string& path, const FixtureFolder& folder) {
    const std::string own = path + "/" + folder.name;
    Add(folders_, own, folder.id);
    for (const FixtureFolder& child : folder.folders) AddFolder(own, child);
  }
  static std::string Of(const Table& table, const std::string& id) {
    const auto found = table.byId.find(id);
    return found == table.byId.end() || table.uses.at(found->second) > 1 ? id : found->second;
  }

  Table contexts_, folders_, workspaces_;
};

class Writer {
 public:
  Writer(StateOutput& out, const Fixture& fixture, const FixtureBytesForm& form)
      : out_(out), fixture_(fixture), form_(form), names_(fixture) {}

  void Write() {
    out_.StartMap();
    List("users", fixture_.users, [this](const FixtureUser& user) { WriteUser(user); });
    List("contexts", fixture_.contexts, [this](const FixtureContext& context) { WriteContext(context); });
    List("workspaces", fixture_.workspaces, [this](const FixtureWorkspace& entry) { WriteWorkspace(entry); });
    List("documents", fixture_.documents,
         [this](const FixtureDocument& document) { WriteDocument(document); });
    if (!fixture_.applicationVersions.empty()) {
      List("applicationVersions", fixture_.applicationVersions, [this](const auto& entry) {
        out_.StartMap();
        out_.Member("application", entry.first);
        out_.Member("version", entry.second);
        out_.EndMap();
      });
    }
    if (fixture_.nextId > firstGivenId) {
      out_.Key("nextId");
      out_.Number(fixture_.nextId);
    }
    if (!fixture_.order.empty())
      List("order", fixture_.order, [this](const std::string& id) { out_.Text(id); });
    out_.EndMap();
  }

  void WriteDocument(const FixtureDocument& document) {
    const FixtureVersion& last = document.versions.back();
    const bool single = document.versions.size() == 1 && !document.checkout;
    out_.StartMap();
    if (single) out_.Member("id", last.id);
    out_.Member("masterId", document.id);
    out_.Member("cadName", document.cadName);
    out_.MemberUnless("name", document.name, document.cadName);
    out_.Member("number", document.number);
    out_.MemberUnless("service", document.service, defaultService);
    out_.MemberUnless("category", document.category, defaultCategory);
    out_.MemberUnless("subCategory", document.subCategory, defaultSubCategory);
    out_.MemberUnless("application", document.application, defaultApplication);
    out_.MemberUnless("typeId", document.typeId, "");
    WritePlace(document, last);
    out_.MemberUnless("translationOf", document.translationOf, "");
    if (single) {
      out_.Member("version", last.revision + "." + std::to_string(last.iteration));
      WriteFields(document, last);
    } else {
      List("versions", document.versions, [&](const FixtureVersion& version) {
        out_.StartMap();
        out_.Member("id", version.id);
        out_.Member("version", version.revision + "." + std::to_string(version.iteration));
        WriteFields(document, version);
        out_.EndMap();
      });
    }
    if (document.checkout) WriteCheckout(document, *document.checkout);
    out_.EndMap();
  }

 private:
  template <typename Entries, typename WriteOne>
  void List(std::string_view key, const Entries& entries, const WriteOne& write) {
    out_.Key(key);
    out_.StartList();
    for (const auto& entry : entries) write(entry);
    out_.EndList();
  }

  void WriteUser(const FixtureUser& user) {
    out_.StartMap();
    out_.Member("name", user.name);
    out_.MemberUnless("fullName", user.fullName, user.name);
    out_.EndMap();
  }

  void WriteContext(const FixtureContext& context) {
    out_.StartMap();
    out_.Member("id", context.id);
    out_.Member("kind", context.kind);
    out_.Member("name", context.name);
    out_.MemberUnless("organization", context.organization, defaultOrganization);
    WriteFolders(context.roots);
    out_.EndMap();
  }

  void WriteFolders(const std::vector<FixtureFolder>& folders) {
    List("folders", folders, [this](const FixtureFolder& folder) {
      out_.StartMap();
      out_.Member("id", folder.id);
      out_.Member("name", folder.name);
      if (!folder.folders.empty()) WriteFolders(folder.folders);
      out_.EndMap();
    });
  }

  void WriteWorkspace(const FixtureWorkspace& workspace) {
    out_.StartMap();
    out_.Member("id", workspace.id);
    out_.Member("name", workspace.name);
    out_.Member("owner", workspace.owner);
    out_.Member("context", names_.Context(workspace.context));
    out_.MemberUnless("description", workspace.description, "");
    if (!workspace.documents.empty())
      List("documents", workspace.documents, [this](const std::string& id) { out_.Text(id); });
    out_.EndMap();
  }

  void WritePlace(const FixtureDocument& document, const FixtureVersion& last) {
    if (!last.folder.empty()) {
      out_.Member("folder", names_.Folder(last.folder));
    } else if (!last.workspace.empty()) {
      out_.Member("workspace", names_.Workspace(last.workspace));
      if (!last.targetFolder.empty()) out_.Member("targetFolder", names_.Folder(last.targetFolder));
    } else {
      out_.Member("context", names_.Context(document.context));
    }
  }

  void WriteCheckout(const FixtureDocument& document, const FixtureVersion& working) {
    out_.Key("checkout");
    out_.StartMap();
    out_.Member("id", working.id);
    out_.Member("workspace", names_.Workspace(working.workspace));
    WriteFields(document, working);
    out_.EndMap();
  }

  void WriteFields(const FixtureDocument& document, const FixtureVersion& version) {
    out_.MemberUnless("authAppVersion", version.authAppVersion, defaultAuthAppVersion);
    out_.MemberUnless("ndVersion", version.ndVersion, defaultNdVersion);
    out_.MemberUnless("comment", version.comment, "");
    out_.MemberUnless("modified", version.modified, "");
    out_.MemberUnless("xliff", version.xliff, "");
    if (version.primary.size() == 1) {
      out_.Key("content");
      WriteContent(version.primary.front(), document.subCategory);
    } else if (!version.primary.empty()) {
      List("contents", version.primary,
           [&](const FixtureContent& content) { WriteContent(content, document.subCategory); });
    }
    if (!version.secondary.empty()) {
      List("secondary", version.secondary,
           [&](const FixtureContent& content) { WriteContent(content, defaultSecondaryCategory); });
    }
    if (!version.attributes.empty()) WriteAttributes(version.attributes);
    if (!version.dependencies.empty())
      List("dependsOn", version.dependencies,
           [this](const FixtureDependency& entry) { WriteDependency(entry); });
  }

  void WriteContent(const FixtureContent& content, std::string_view category) {
    out_.StartMap();
    out_.Member("id", content.id);
    out_.MemberUnless("category", content.category, category);
    out_.MemberUnless("fileName", content.fileName, defaultFileName);
    WriteFlag("isForwardable", content.isForwardable, false);
    WriteFlag("isStale", content.isStale, false);
    WriteFlag("isHidden", content.isHidden, false);
    WriteBytes(content.bytes);
    out_.EndMap();
  }

  void WriteFlag(std::string_view name, bool value, bool otherwise) {
    if (value == otherwise) return;
    out_.Key(name);
    out_.Flag(value);
  }

  void WriteNumber(std::string_view name, std::uint64_t value) {
    out_.Key(name);
    out_.Number(static_cast<std::int64_t>(value));
  }

  void WriteBytes(const FixtureBytes& bytes) {
    if (bytes.stream) WriteNumber("stream", static_cast<std::uint64_t>(*bytes.stream));
    if (form_.kind == FixtureBytesForm::Kind::References) return;
    if (bytes.kind == FixtureBytes::Kind::Generated) {
      WriteNumber("size", bytes.size);
      if (bytes.generator) WriteNumber("generator", static_cast<std::uint64_t>(*bytes.generator));
    } else if (bytes.kind == FixtureBytes::Kind::File) {
      WriteFile(bytes);
    }
  }

  void WriteFile(const FixtureBytes& bytes) {
    // A symbolic link in the place of a content may lead anywhere.
    if (std::filesystem::is_symlink(bytes.file))
      throw std::runtime_error(bytes.file.string() + " is a symbolic link and no content");
    const bool beside = form_.kind == FixtureBytesForm::Kind::Beside;
    if (beside && bytes.size > longestInlineText) return CopyBeside(bytes);
    const std::string all = ReadAll(bytes.file);
    if (IsText(all)) {
      out_.Member("text", all);
    } else if (beside) {
      CopyBeside(bytes);
    } else {
      out_.Member("base64", EncodeBase64(all));
    }
  }

  void CopyBeside(const FixtureBytes& bytes) {
    const std::string name = std::to_string(*bytes.stream);
    std::filesystem::create_directories(form_.directory);
    std::filesystem::copy_file(bytes.file, form_.directory / name,
                               std::filesystem::copy_options::overwrite_existing);
    out_.Member("file", form_.prefix + name);
  }

  /// Names and values where that says all, and a list otherwise.
  void WriteAttributes(const std::vector<FixtureAttribute>& attributes) {
    std::set<std::string> names;
    const bool simple =
        std::all_of(attributes.begin(), attributes.end(), [&](const FixtureAttribute& attribute) {
          return attribute.attributeName == attribute.parameterName &&
                 attribute.valueType == defaultValueType && names.insert(attribute.parameterName).second;
        });
    if (simple) {
      out_.Key("attributes");
      out_.StartMap();
      for (const FixtureAttribute& attribute : attributes)
        out_.Member(attribute.parameterName, attribute.value);
      out_.EndMap();
      return;
    }
    List("attributes", attributes, [this](const FixtureAttribute& attribute) {
      out_.StartMap();
      out_.Member("parameterName", attribute.parameterName);
      out_.MemberUnless("attributeName", attribute.attributeName, attribute.parameterName);
      out_.MemberUnless("valueType", attribute.valueType, defaultValueType);
      out_.Member("value", attribute.value);
      out_.EndMap();
    });
  }

  void WriteDependency(const FixtureDependency& dependency) {
    out_.StartMap();
    out_.Member("source", dependency.source);
    out_.MemberUnless("childName", dependency.childName, dependency.source);
    WriteFlag("isDirect", dependency.isDirect, true);
    if (dependency.revisionNumber != 0)
      WriteNumber("revNum", static_cast<std::uint64_t>(dependency.revisionNumber));
    WriteFlag("isPlaceHolder", dependency.isPlaceHolder, false);
    WriteFlag("hasCompleteDependencies", dependency.hasCompleteDependencies, true);
    out_.EndMap();
  }

  StateOutput& out_;
  const Fixture& fixture_;
  const FixtureBytesForm& form_;
  Names names_;
};

}  // namespace

void WriteFixture(StateOutput& out, const Fixture& fixture, const FixtureBytesForm& form) {
  Writer(out, fixture, form).Write();
}

void WriteFixtureDocument(StateOutput& out, const Fixture& fixture, const FixtureDocument& document,
                          const FixtureBytesForm& form) {
  Writer(out, fixture, form).WriteDocument(document);
}

}  // namespace vantry_sim
