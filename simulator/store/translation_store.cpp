#include "simulator/store/translation_store.h"

#include "simulator/store/attribute_store.h"
#include "simulator/store/xliff_preferences.h"

namespace vantry_sim {
namespace {

constexpr std::string_view extendedType = "ZVK_DD_EXTENDED_DOC_TYPE";

bool IsXliff(Database& database, const DocumentRow& document) {
  auto statement = database.Prepare("SELECT 1 FROM masters WHERE id = ?1 AND type_id = ?2");
  return statement.Bind(document.masterKey, xliffType).Step();
}

/// Id of a version of another document that some version of the XLIFF document is linked to; empty for none.
std::string OtherSourceOf(Database& database, const DocumentRow& document, const DocumentRow& xliff) {
  auto statement = database.Prepare(
      "SELECT s.oid FROM xliff_links l JOIN iterations x ON x.id = l.xliff JOIN iterations s ON s.id = "
      "l.document "
      "WHERE x.master = ?1 AND s.master <> ?2");
  return statement.Bind(xliff.masterKey, document.masterKey).Step() ? statement.Text(0) : std::string();
}

Refusal RefuseLink(Database& database, const DocumentRow& document, const DocumentRow& xliff) {
  const auto refuse = [](std::string_view code, const std::string& oid, const std::string& reason) {
    return ErrorResponse(409, code, oid + " " + reason);
  };
  if (document.masterKey == xliff.masterKey)
    return refuse("same-document", xliff.oid, "cannot be its own source XLIFF");
  if (!IsXliff(database, xliff)) return refuse("no-xliff", xliff.oid, "was not made as an XLIFF document");
  if (IsXliff(database, document)) return refuse("is-xliff", document.oid, "is an XLIFF document itself");
  if (xliff.workspaceKey) return refuse("in-workspace", xliff.oid, "is in a workspace");
  // Of two clients that bring a new iteration each, the later one's link stays.
  if (!xliff.isLatest) return refuse("not-latest", xliff.oid, "has a newer version");
  if (const std::string other = OtherSourceOf(database, document, xliff); !other.empty())
    return refuse("other-source", xliff.oid, "is the source XLIFF of " + other);
  return std::nullopt;
}

}  // namespace

OrRefusal<DocumentRow> FindDynamicDocument(Database& database, std::string_view oid, std::string_view user) {
  auto document = FindDocument(database, oid, user);
  if (document && document->service == "dynamic") return std::move(*document);
  return ErrorResponse(404, "no-such-document", "no dynamic document " + std::string(oid) + " for this user");
}

std::optional<std::int64_t> SourceXliffOf(Database& database, const DocumentRow& document) {
  // A working copy has the version of what it was taken from, and its own link counts first.
  auto statement = database.Prepare(
      "SELECT l.xliff FROM xliff_links l JOIN iterations s ON s.id = l.document "
      "WHERE s.master = ?1 AND (s.id = ?2 OR s.workspace IS NULL) "
      "AND s.version_key <= (SELECT version_key FROM iterations WHERE id = ?2) "
      "ORDER BY s.version_key DESC, s.id = ?2 DESC LIMIT 1");
  if (!statement.Bind(document.masterKey, document.key).Step()) return std::nullopt;
  return statement.Integer(0);
}

std::optional<std::int64_t> TranslatedXliffOf(Database& database, const DocumentRow& document) {
  if (IsXliff(database, document)) return document.masterKey;
  const auto xliff = SourceXliffOf(database, document);
  if (!xliff) return std::nullopt;
  auto statement = database.Prepare("SELECT master FROM iterations WHERE id = ?1");
  if (!statement.Bind(*xliff).Step()) return std::nullopt;
  return statement.Integer(0);
}

Refusal LinkXliff(Database& database, const DocumentRow& document, const DocumentRow& xliff) {
  if (auto refusal = RefuseLink(database, document, xliff)) return refusal;
  database
      .Prepare(
          "INSERT INTO xliff_links(document, xliff) VALUES(?1, ?2) "
          "ON CONFLICT(document) DO UPDATE SET xliff = excluded.xliff")
      .Bind(document.key, xliff.key)
      .Run();
  return std::nullopt;
}

Refusal SetExtendedType(Database& database, const DocumentRow& document, std::string_view type) {
  if (!document.workspaceKey && !document.checkoutUser.empty()) {
    return ErrorResponse(409, "checked-out", document.oid + " is checked out by " + document.checkoutUser);
  }
  if (!document.workspaceKey && !document.isLatest)
    return ErrorResponse(409, "not-latest", document.oid + " has a newer version");
  SetAttribute(database, document.key, extendedType, type);
  Touch(database, document.key);
  return std::nullopt;
}

}  // namespace vantry_sim
