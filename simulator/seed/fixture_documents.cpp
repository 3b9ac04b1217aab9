#include "simulator/seed/fixture_documents.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <tuple>

#include "simulator/seed/fixture_defaults.h"
#include "simulator/wire/timestamp.h"

namespace vantry_sim {
namespace {

const std::vector<std::string_view> documentKeys{
    "id",          "name",     "number",         "cadName",   "service",   "category",     "subCategory",
    "application", "typeId",   "context",        "folder",    "workspace", "targetFolder", "translationOf",
    "versions",    "checkout", "version",        "content",   "contents",  "secondary",    "attributes",
    "dependsOn",   "xliff",    "authAppVersion", "ndVersion", "comment",   "modified",     "masterId"};

const std::vector<std::string_view> versionKeys{
    "id",        "version", "content",        "contents",  "secondary", "attributes",
    "dependsOn", "xliff",   "authAppVersion", "ndVersion", "comment",   "modified"};

const std::vector<std::string_view> checkoutKeys{
    "id",        "workspace", "content",        "contents",  "secondary", "attributes",
    "dependsOn", "xliff",     "authAppVersion", "ndVersion", "comment",   "modified"};

/// Revisions count A to Z and on with AA, and the longer one is the newer.
std::tuple<std::size_t, std::string, std::int64_t> SortKey(const FixtureVersion& version) {
  return {version.revision.size(), version.revision, version.iteration};
}

}  // namespace

void FixtureDocuments::Read(JsonValue documents, JsonValue workspaces) {
  ClaimAll(documents);
  std::vector<Ids> ids;
  for (const JsonValue document : documents) ids.push_back(MakeIds(document));
  std::size_t index = 0;
  for (const JsonValue document : documents) NameAll(document, ids[index++]);
  index = 0;
  for (const JsonValue document : documents) ReadDocument(document, ids[index++]);
  ReadWorkspaceDocuments(workspaces);
  CheckNames();
}

std::int64_t FixtureDocuments::LastNumber() const {
  return std::max(documentIds_.LastNumber(), versionIds_.LastNumber());
}

/// Ids that the file names come before those that are made up.
void FixtureDocuments::ClaimAll(JsonValue documents) {
  const auto claim = [this](FixtureIds& ids, JsonValue id) {
    if (const std::string text(id.Text()); !text.empty()) ids.Claim(text, id.Line(), problems_);
  };
  for (const JsonValue document : documents) {
    claim(documentIds_, document.Find("masterId"));
    claim(versionIds_, document.Find("id"));
    claim(versionIds_, document.Find("checkout").Find("id"));
    contents_.Claim(document);
    contents_.Claim(document.Find("checkout"));
    for (const JsonValue version : document.Find("versions")) {
      claim(versionIds_, version.Find("id"));
      contents_.Claim(version);
    }
  }
}

FixtureDocuments::Ids FixtureDocuments::MakeIds(JsonValue document) {
  const auto id = [this](JsonValue given) {
    const std::string text(given.Text());
    return text.empty() ? versionIds_.Make("D") : text;
  };
  Ids ids;
  for (const JsonValue version : document.Find("versions")) ids.versions.push_back(id(version.Find("id")));
  if (document.Find("versions").IsMissing()) ids.versions.push_back(id(document.Find("id")));
  if (!document.Find("checkout").IsMissing()) ids.checkout = id(document.Find("checkout").Find("id"));
  ids.document = document.Find("masterId").Text();
  if (ids.document.empty()) ids.document = documentIds_.Make("M");
  return ids;
}

void FixtureDocuments::NameAll(JsonValue document, const Ids& ids) {
  if (ids.versions.empty()) return;
  const Target latest{ids.versions.back(), ids.document};
  for (const std::string& version : ids.versions) ids_[version] = {version, ids.document};
  if (!ids.checkout.empty()) ids_[ids.checkout] = {ids.checkout, ids.document};
  ids_.emplace(ids.document, latest);
  for (const char* key : {"number", "cadName"}) {
    const auto text = ScalarText(document.Find(key));
    if (text && !text->empty()) Name(*text, latest);
  }
}

void FixtureDocuments::Name(const std::string& name, const Target& target) {
  const auto [entry, isNew] = named_.emplace(name, target);
  if (!isNew && entry->second.document != target.document) entry->second = {};
}

void FixtureDocuments::ReadDocument(JsonValue value, const Ids& ids) {
  const FixtureObject object(value, "a document", documentKeys, problems_);
  if (!value.IsObject()) return;
  FixtureDocument document;
  document.line = value.Line();
  document.id = ids.document;
  document.cadName = object.Required("cadName");
  document.name = object.Text("name", document.cadName);
  document.number = object.Text("number", ids.versions.empty() ? "" : ids.versions.back());
  document.service = object.Text("service", defaultService);
  if (document.service != "dynamic" && document.service != "cad")
    object.Problem("service", "must be dynamic or cad");
  document.category = object.Text("category", defaultCategory);
  document.subCategory = object.Text("subCategory", defaultSubCategory);
  document.application = object.Text("application", defaultApplication);
  document.typeId = object.Text("typeId");
  ReadPlace(object, document);
  if (const auto xliff = Find(object, "translationOf")) document.translationOf = xliff->document;
  ReadVersions(object, value, ids, document);
  if (object.Has("checkout")) ReadCheckout(object, ids, document);
  CheckOrder(document);
  fixture_.documents.push_back(std::move(document));
}

void FixtureDocuments::ReadPlace(const FixtureObject& object, FixtureDocument& document) {
  folder_.clear();
  workspace_.clear();
  targetFolder_.clear();
  const auto take = [&](const char* key, const std::optional<FixturePlace>& place, std::string& id) {
    if (!place) return;
    id = place->id;
    if (!document.context.empty() && document.context != place->context)
      object.Problem(key, "is of another context than what comes before it");
    document.context = place->context;
  };
  if (object.Has("context")) document.context = places_.Context(object, "context").value_or("");
  if (object.Has("folder")) take("folder", places_.Folder(object, "folder"), folder_);
  if (object.Has("workspace")) take("workspace", places_.Workspace(object, "workspace"), workspace_);
  if (object.Has("targetFolder")) take("targetFolder", places_.Folder(object, "targetFolder"), targetFolder_);
  if (!object.Has("context") && !object.Has("folder") && !object.Has("workspace"))
    object.Problem("folder", "is missing, or else a workspace that holds what was never checked in");
  if (object.Has("workspace") && object.Has("folder"))
    object.Problem("workspace",
                   "is for what was never checked in, which is in no folder; give it a targetFolder");
  if (object.Has("workspace") && object.Has("checkout"))
    object.Problem("checkout", "is for what was checked in once");
}

void FixtureDocuments::ReadVersions(const FixtureObject& object, JsonValue value, const Ids& ids,
                                    FixtureDocument& document) {
  if (!object.Has("versions")) {
    document.versions.push_back(ReadVersion(object, ids.versions.front(), document));
    ReadVersionText(object, document.versions.back());
    return;
  }
  for (const char* key : {"version", "id", "content", "contents", "secondary", "attributes", "dependsOn",
                          "xliff", "authAppVersion", "ndVersion", "comment", "modified"}) {
    if (object.Has(key)) object.Problem(key, "goes to one of its versions, since it has a list of them");
  }
  std::size_t index = 0;
  for (const JsonValue entry : value.Find("versions")) {
    const FixtureObject version(entry, "a version", versionKeys, problems_);
    document.versions.push_back(ReadVersion(version, ids.versions[index++], document));
    ReadVersionText(version, document.versions.back());
  }
  if (document.versions.empty()) object.Problem("versions", "must not be empty");
  if (!workspace_.empty() && document.versions.size() > 1)
    object.Problem("versions", "has more than one, and what was never checked in has one");
}

FixtureVersion FixtureDocuments::ReadVersion(const FixtureObject& object, const std::string& id,
                                             const FixtureDocument& document) {
  FixtureVersion version;
  version.line = object.line();
  version.id = id;
  version.folder = folder_;
  version.workspace = workspace_;
  version.targetFolder = targetFolder_;
  ReadFields(object, document, version);
  return version;
}

void FixtureDocuments::ReadFields(const FixtureObject& object, const FixtureDocument& document,
                                  FixtureVersion& version) {
  version.authAppVersion = object.Text("authAppVersion", defaultAuthAppVersion);
  version.ndVersion = object.Text("ndVersion", defaultNdVersion);
  version.comment = object.Text("comment");
  version.modified = object.Text("modified");
  if (!version.modified.empty() && !ReadTimestamp(version.modified))
    object.Problem("modified", "must be a time such as 2026-01-31T09:00:00Z");
  if (const auto xliff = Find(object, "xliff")) version.xliff = xliff->version;
  contents_.Read(object, document.subCategory, version);
  ReadAttributes(object, version);
  ReadDependencies(object, version);
}

/// A revision of capital letters, a point, and a number: B.12.
void FixtureDocuments::ReadVersionText(const FixtureObject& object, FixtureVersion& version) {
  const std::string text = object.Text("version", "A.1");
  const auto point = text.find('.');
  version.revision = text.substr(0, point);
  const std::string number = point == std::string::npos ? "" : text.substr(point + 1);
  const auto [end, code] = std::from_chars(number.data(), number.data() + number.size(), version.iteration);
  const bool letters = !version.revision.empty() && version.revision.size() <= 4 &&
                       version.revision.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string::npos;
  if (!letters || number.empty() || number.size() > 9 || code != std::errc() ||
      end != number.data() + number.size() || version.iteration < 1) {
    object.Problem("version", "must be letters, a point and a number, such as A.1");
  }
}

void FixtureDocuments::ReadCheckout(const FixtureObject& object, const Ids& ids, FixtureDocument& document) {
  const FixtureObject checkout(object.Value("checkout"), "a checkout", checkoutKeys, problems_);
  if (document.versions.empty()) return;
  const FixtureVersion& base = document.versions.back();
  FixtureVersion working;
  working.line = checkout.line();
  working.id = ids.checkout;
  working.revision = base.revision;
  working.iteration = base.iteration;
  working.folder = folder_;
  ReadFields(checkout, document, working);
  const auto workspace = places_.Workspace(checkout, "workspace");
  if (workspace) working.workspace = workspace->id;
  if (workspace && workspace->context != document.context)
    checkout.Problem("workspace", "is in another context than the document");
  document.checkout = std::move(working);
}

void FixtureDocuments::ReadAttributes(const FixtureObject& object, FixtureVersion& version) {
  const JsonValue value = object.Value("attributes");
  if (value.IsMissing()) return;
  if (!value.IsArray() && !value.IsObject())
    return object.Problem("attributes", "must be names and values, or a list");
  for (const JsonValue entry : value) {
    FixtureAttribute attribute;
    attribute.valueType = defaultValueType;
    if (value.IsArray()) {
      const FixtureObject one(entry, "an attribute", {"parameterName", "attributeName", "valueType", "value"},
                              problems_);
      attribute.parameterName = one.Required("parameterName");
      attribute.attributeName = one.Text("attributeName", attribute.parameterName);
      attribute.valueType = one.Text("valueType", defaultValueType);
      attribute.value = one.Text("value");
    } else {
      attribute.parameterName = attribute.attributeName = entry.Name();
      const auto text = ScalarText(entry);
      if (!text && !entry.IsNull()) problems_.Add(entry.Line(), attribute.parameterName + " must be a text");
      attribute.value = text.value_or("");
    }
    version.attributes.push_back(std::move(attribute));
  }
}

void FixtureDocuments::ReadDependencies(const FixtureObject& object, FixtureVersion& version) {
  for (const JsonValue entry : object.List("dependsOn")) {
    FixtureDependency dependency;
    if (const auto name = ScalarText(entry)) {
      const auto target = Find(*name, entry.Line());
      if (target) dependency.source = target->version;
      dependency.childName = *name;
    } else {
      const FixtureObject one(
          entry, "a dependency",
          {"source", "childName", "isDirect", "revNum", "isPlaceHolder", "hasCompleteDependencies"},
          problems_);
      if (const auto target = Find(one, "source")) dependency.source = target->version;
      dependency.childName = one.Text("childName", one.Required("source"));
      dependency.isDirect = one.Flag("isDirect", true);
      dependency.revisionNumber = one.Number("revNum").value_or(0);
      dependency.isPlaceHolder = one.Flag("isPlaceHolder", false);
      dependency.hasCompleteDependencies = one.Flag("hasCompleteDependencies", true);
    }
    version.dependencies.push_back(std::move(dependency));
  }
}

void FixtureDocuments::CheckOrder(const FixtureDocument& document) {
  for (std::size_t i = 1; i < document.versions.size(); ++i) {
    if (SortKey(document.versions[i - 1]) < SortKey(document.versions[i])) continue;
    problems_.Add(document.versions[i].line,
                  "the versions of " + document.cadName + " must be in their order");
  }
}

/// Of two documents of one name in a folder a client would find one alone, and the server refuses to make
/// them.
void FixtureDocuments::CheckNames() {
  std::set<std::pair<std::string, std::string>> names;
  for (const FixtureDocument& document : fixture_.documents) {
    if (document.versions.empty() || document.versions.back().folder.empty()) continue;
    if (!names.insert({document.versions.back().folder, document.cadName}).second)
      problems_.Add(document.line, "there is another document " + document.cadName + " in its folder");
  }
}

void FixtureDocuments::ReadWorkspaceDocuments(JsonValue workspaces) {
  std::size_t index = 0;
  for (const JsonValue value : workspaces) {
    if (index >= fixture_.workspaces.size()) return;
    FixtureWorkspace& workspace = fixture_.workspaces[index++];
    for (const JsonValue entry : value.Find("documents")) {
      const auto target = Find(ScalarText(entry).value_or("?"), entry.Line());
      if (target) workspace.documents.push_back(target->version);
    }
  }
}

/// What a member refers to; nothing, without a problem, where it is missing.
std::optional<FixtureDocuments::Target> FixtureDocuments::Find(const FixtureObject& from,
                                                               std::string_view key) {
  const std::string name = from.Text(key);
  return name.empty() ? std::nullopt : Find(name, from.Value(key).Line());
}

std::optional<FixtureDocuments::Target> FixtureDocuments::Find(const std::string& name, std::uint32_t line) {
  // An id is nobody else's, whatever numbers and names there are.
  if (const auto id = ids_.find(name); id != ids_.end()) return id->second;
  const auto found = named_.find(name);
  if (found == named_.end()) {
    problems_.Add(line, "there is no document " + name + " in this file");
  } else if (found->second.version.empty()) {
    problems_.Add(line, "there is more than one document " + name + ", so give an id");
  } else {
    return found->second;
  }
  return std::nullopt;
}

}  // namespace vantry_sim
