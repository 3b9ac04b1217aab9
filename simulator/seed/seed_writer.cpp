#include "simulator/seed/seed_writer.h"

#include <algorithm>

namespace vantry_sim {
std::string ContextOidFront(std::string_view kind) {
  std::string package(kind);
  std::transform(package.begin(), package.end(), package.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return "OR:vn." + package + "." + std::string(kind) + ":";
}

std::int64_t SeedWriter::AddUser(std::string_view name, std::string_view fullName) {
  database_.Prepare("INSERT INTO users(name, full_name) VALUES(?1, ?2)").Bind(name, fullName).Run();
  return database_.LastRowId();
}

std::int64_t SeedWriter::AddContext(int number, std::string_view kind, std::string_view name,
                                    std::string_view organization) {
  database_.Prepare("INSERT INTO contexts(oid, kind, name, organization) VALUES(?1, ?2, ?3, ?4)")
      .Bind(ContextOidFront(kind) + std::to_string(number), kind, name, organization)
      .Run();
  return database_.LastRowId();
}

std::int64_t SeedWriter::AddFolder(int number, std::int64_t context, std::int64_t parent,
                                   std::string_view name) {
  const std::string oid =
      (parent == 0 ? "OR:vn.folder.Cabinet:" : "OR:vn.folder.SubFolder:") + std::to_string(number);
  database_.Prepare("INSERT INTO folders(oid, context, parent, name) VALUES(?1, ?2, nullif(?3, 0), ?4)")
      .Bind(oid, context, parent, name)
      .Run();
  return database_.LastRowId();
}

std::int64_t SeedWriter::AddWorkspace(int number, std::int64_t context, std::int64_t owner,
                                      std::string_view name, std::string_view description) {
  database_
      .Prepare("INSERT INTO workspaces(oid, context, owner, name, description) VALUES(?1, ?2, ?3, ?4, ?5)")
      .Bind("W" + std::to_string(number), context, owner, name, description)
      .Run();
  return database_.LastRowId();
}

std::int64_t SeedWriter::AddMaster(std::int64_t number, const SeedMaster& master) {
  database_
      .Prepare(
          "INSERT INTO masters(oid, service, name, number, category, sub_category, cad_name, "
          "authoring_application, type_id) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)")
      .Bind("M" + std::to_string(number), master.service, master.name, master.number, master.category,
            master.subCategory, master.cadName, master.application, master.typeId)
      .Run();
  return database_.LastRowId();
}

std::int64_t SeedWriter::AddIteration(std::int64_t master, const SeedIteration& iteration) {
  database_
      .Prepare(
          "INSERT INTO iterations(oid, master, context, folder, workspace, revision, iteration, is_latest, "
          "auth_app_version, nd_version, service) VALUES(?1, ?2, ?3, nullif(?4, 0), nullif(?5, 0), ?6, ?7, "
          "?8, ?9, 'J-01', (SELECT service FROM masters WHERE id = ?2))")
      .Bind("D" + std::to_string(iteration.number), master, iteration.context, iteration.folder,
            iteration.workspace, iteration.revision, iteration.iteration, iteration.isLatest,
            iteration.authAppVersion)
      .Run();
  return database_.LastRowId();
}

std::int64_t SeedWriter::AddStream(std::int64_t number, std::string_view bytes) {
  contents_.Write(number, bytes);
  database_.Prepare("INSERT INTO streams(id, size) VALUES(?1, ?2)")
      .Bind(number, static_cast<std::int64_t>(bytes.size()))
      .Run();
  return number;
}

std::int64_t SeedWriter::AddGeneratedStream(std::int64_t number, std::uint64_t size) {
  contents_.Generate(number, size, number);
  database_.Prepare("INSERT INTO streams(id, size, generator) VALUES(?1, ?2, ?1)")
      .Bind(number, static_cast<std::int64_t>(size))
      .Run();
  return number;
}

void SeedWriter::AddContent(const SeedContent& content) {
  database_
      .Prepare(
          "INSERT INTO contents(oid, iteration, role, position, category, file_name, is_forwardable, "
          "is_stale, "
          "is_hidden, stream) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, 0, ?8, ?9)")
      .Bind("K" + std::to_string(++lastContent_), content.iteration, content.role, content.position,
            content.category, content.fileName, content.isForwardable, content.isHidden, content.stream)
      .Run();
}

void SeedWriter::AddAttribute(std::int64_t iteration, int position, std::string_view name,
                              std::string_view value) {
  database_
      .Prepare(
          "INSERT INTO attributes(iteration, position, parameter_name, attribute_name, value_type, value) "
          "VALUES(?1, ?2, ?3, ?3, 'String', ?4)")
      .Bind(iteration, position, name, value)
      .Run();
}

void SeedWriter::AddDependency(std::int64_t iteration, int position, std::string_view childName,
                               std::int64_t source) {
  database_
      .Prepare(
          "INSERT INTO dependencies(iteration, position, as_stored_child_name, is_direct, source, "
          "revision_number, "
          "is_place_holder, has_complete_dependencies) VALUES(?1, ?2, ?3, 1, ?4, 0, 0, 1)")
      .Bind(iteration, position, childName, source)
      .Run();
}

void SeedWriter::AddXliffLink(std::int64_t document, std::int64_t xliff) {
  database_.Prepare("INSERT INTO xliff_links(document, xliff) VALUES(?1, ?2)").Bind(document, xliff).Run();
}

void SeedWriter::AddTranslation(std::int64_t xliff, std::int64_t translated) {
  database_.Prepare("INSERT INTO translations(xliff, translated) VALUES(?1, ?2)")
      .Bind(xliff, translated)
      .Run();
}

void SeedWriter::AddCheckout(std::int64_t base, std::int64_t working, std::int64_t workspace,
                             std::int64_t user) {
  database_.Prepare("INSERT INTO checkouts(base, working, workspace, user) VALUES(?1, ?2, ?3, ?4)")
      .Bind(base, working, workspace, user)
      .Run();
}

void SeedWriter::AddWorkspaceDocument(std::int64_t workspace, std::int64_t iteration) {
  database_.Prepare("INSERT INTO workspace_documents(workspace, iteration) VALUES(?1, ?2)")
      .Bind(workspace, iteration)
      .Run();
}

}  // namespace vantry_sim
