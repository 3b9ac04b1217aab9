#include "simulator/store/iteration_writer.h"

#include <algorithm>

#include "simulator/store/upload_store.h"
#include "simulator/store/user_store.h"

namespace vantry_sim {
namespace {

/// A file of an iteration that is about to be written.
struct NewContent {
  std::string_view role;
  std::int64_t position = 0;
  std::string category;
  std::string fileName;
  bool isForwardable = false;
  bool isStale = false;
  bool isHidden = false;
  std::int64_t stream = 0;
};

void InsertContent(Database& database, std::int64_t iteration, const NewContent& content) {
  database
      .Prepare(
          "INSERT INTO contents(oid, iteration, role, position, category, file_name, is_forwardable, "
          "is_stale, "
          "is_hidden, stream) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, nullif(?10, 0))")
      .Bind("K" + std::to_string(NextNumber(database)), iteration, content.role, content.position,
            content.category, content.fileName, content.isForwardable, content.isStale, content.isHidden,
            content.stream)
      .Run();
}

Refusal UploadedContent(Database& database, std::string_view user, const ContentInstruction& instruction,
                        NewContent& content) {
  if (!TakeReceipt(database, user, *instruction.stream, instruction.receipt)) {
    return ErrorResponse(409, "unknown-receipt",
                         "stream " + std::to_string(*instruction.stream) + " has no receipt like this");
  }
  content.stream = *instruction.stream;
  // What only describes the one version is not for the next.
  content.isForwardable = content.role == "secondary" && instruction.category != "VCSINFO";
  content.isHidden = instruction.isHidden;
  return std::nullopt;
}

Refusal CarriedContent(const ContentInstruction& instruction, const std::vector<ContentRow>& before,
                       NewContent& content) {
  for (const ContentRow& old : before) {
    if (old.category != instruction.category || old.fileName != instruction.fileName || !old.isForwardable)
      continue;
    content.stream = old.stream.value_or(0);
    content.isForwardable = true;
    content.isStale = true;
    content.isHidden = old.isHidden;
    return std::nullopt;
  }
  return ErrorResponse(
      409, "nothing-to-carry",
      "the version before has no forwardable content " + instruction.category + " " + instruction.fileName);
}

/// Whether a content that is to be carried comes again in the same instructions: a version has one of each
/// category and name.
bool IsReplaced(const ContentInstruction& carried, const std::vector<ContentInstruction>& instructions) {
  return std::any_of(instructions.begin(), instructions.end(), [&](const ContentInstruction& other) {
    return other.stream && other.category == carried.category && other.fileName == carried.fileName;
  });
}

/// The contents of one role that an iteration gets.
struct NewContents {
  std::string_view role;
  const std::vector<ContentInstruction>& instructions;
  const std::vector<ContentRow>& before;  ///< those that may be carried over
};

Refusal WriteContents(Database& database, std::string_view user, std::int64_t iteration,
                      const NewContents& contents) {
  std::int64_t position = 0;
  for (const ContentInstruction& instruction : contents.instructions) {
    if (!instruction.stream && IsReplaced(instruction, contents.instructions)) continue;
    NewContent content{contents.role, position++, instruction.category, instruction.fileName};
    auto refusal = instruction.stream ? UploadedContent(database, user, instruction, content)
                                      : CarriedContent(instruction, contents.before, content);
    if (refusal) return refusal;
    InsertContent(database, iteration, content);
  }
  return std::nullopt;
}

void WriteAttributes(Database& database, const std::vector<AttributeInstruction>& attributes,
                     std::int64_t iteration) {
  std::int64_t position = 0;
  for (const AttributeInstruction& attribute : attributes) {
    database
        .Prepare(
            "INSERT INTO attributes(iteration, position, parameter_name, attribute_name, value_type, value) "
            "VALUES(?1, ?2, ?3, ?4, ?5, ?6)")
        .Bind(iteration, position++, attribute.parameterName, attribute.attributeName, attribute.valueType,
              attribute.value)
        .Run();
  }
}

Refusal WriteDependencies(Database& database, std::string_view user,
                          const std::vector<DependencyInstruction>& dependencies, std::int64_t iteration) {
  std::int64_t position = 0;
  for (const DependencyInstruction& dependency : dependencies) {
    const auto source = FindDocument(database, dependency.source, user);
    if (!source)
      return ErrorResponse(409, "unknown-source", "no document " + dependency.source + " to depend on");
    database
        .Prepare(
            "INSERT INTO dependencies(iteration, position, as_stored_child_name, is_direct, source, "
            "revision_number, is_place_holder, has_complete_dependencies) VALUES(?1, ?2, ?3, ?4, ?5, 0, 0, "
            "1)")
        .Bind(iteration, position++, dependency.asStoredChildName, dependency.isDirect, source->key)
        .Run();
  }
  return std::nullopt;
}

void CopyAttributes(Database& database, std::int64_t from, std::int64_t to) {
  database
      .Prepare(
          "INSERT INTO attributes SELECT ?2, position, parameter_name, attribute_name, value_type, value "
          "FROM attributes WHERE iteration = ?1")
      .Bind(from, to)
      .Run();
}

void CopyDependencies(Database& database, std::int64_t from, std::int64_t to) {
  database
      .Prepare(
          "INSERT INTO dependencies SELECT ?2, position, as_stored_child_name, is_direct, source, "
          "revision_number, "
          "is_place_holder, has_complete_dependencies FROM dependencies WHERE iteration = ?1")
      .Bind(from, to)
      .Run();
}

void DeleteFrom(Database& database, std::string_view table, std::int64_t iteration) {
  database.Prepare(std::string("DELETE FROM ").append(table).append(" WHERE iteration = ?1"))
      .Bind(iteration)
      .Run();
}

}  // namespace

std::int64_t InsertIteration(Database& database, const NewIteration& iteration) {
  database
      .Prepare(
          "INSERT INTO iterations(oid, master, context, folder, workspace, target_folder, revision, "
          "iteration, "
          "is_latest, auth_app_version, nd_version, service, modified) VALUES(?1, ?2, ?3, nullif(?4, 0), "
          "nullif(?5, 0), nullif(?6, 0), ?7, ?8, ?9, ?10, ?11, (SELECT service FROM masters WHERE id = ?2), "
          "server_time())")
      .Bind("D" + std::to_string(NextNumber(database)), iteration.master, iteration.context,
            iteration.folder.value_or(0), iteration.workspace.value_or(0), iteration.targetFolder.value_or(0),
            iteration.revision, iteration.iteration, iteration.isLatest, iteration.authAppVersion,
            iteration.ndVersion)
      .Run();
  return database.LastRowId();
}

void CopyParts(Database& database, std::int64_t from, std::int64_t to) {
  for (const auto& [role, word] :
       {std::pair(ContentRole::Primary, "primary"), std::pair(ContentRole::Secondary, "secondary")}) {
    std::int64_t position = 0;
    for (const ContentRow& content : ContentsOf(database, from, role)) {
      InsertContent(database, to,
                    {word, position++, content.category, content.fileName, content.isForwardable,
                     content.isStale, content.isHidden, content.stream.value_or(0)});
    }
  }
  CopyAttributes(database, from, to);
  CopyDependencies(database, from, to);
}

void DeleteParts(Database& database, std::int64_t iteration) {
  for (const std::string_view table : {"contents", "attributes", "dependencies"}) {
    DeleteFrom(database, table, iteration);
  }
}

Refusal WriteParts(Database& database, std::string_view user, const DocumentInstruction& instruction,
                   std::int64_t iteration, std::optional<std::int64_t> before) {
  const auto secondary =
      before ? ContentsOf(database, *before, ContentRole::Secondary) : std::vector<ContentRow>();
  const bool inPlace = before == iteration;
  DeleteFrom(database, "contents", iteration);
  if (auto refusal = WriteContents(database, user, iteration, {"primary", instruction.primary, {}}))
    return refusal;
  if (auto refusal =
          WriteContents(database, user, iteration, {"secondary", instruction.secondary, secondary})) {
    return refusal;
  }
  if (instruction.attributes) {
    DeleteFrom(database, "attributes", iteration);
    WriteAttributes(database, *instruction.attributes, iteration);
  } else if (before && !inPlace) {
    CopyAttributes(database, *before, iteration);
  }
  if (instruction.dependencies) {
    DeleteFrom(database, "dependencies", iteration);
    return WriteDependencies(database, user, *instruction.dependencies, iteration);
  }
  if (before && !inPlace) CopyDependencies(database, *before, iteration);
  return std::nullopt;
}

}  // namespace vantry_sim
