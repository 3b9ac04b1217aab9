#include "hosts/cli/work_folder/file_store.h"

namespace vtdirect_cli {
namespace {

constexpr std::int64_t form = 1;
constexpr const char* columns =
    "(path TEXT PRIMARY KEY, address TEXT, uid TEXT, version TEXT, size INTEGER, time INTEGER, sha256 TEXT)";

[[nodiscard]] SqlRow RowOf(const FolderFile& file) {
  return {file.path, file.address, file.uid, file.version, static_cast<std::int64_t>(file.size),
          file.time, file.sha256};
}

[[nodiscard]] FolderFile FileOf(const SqlRow& row) {
  return {TextIn(row, 0),
          TextIn(row, 1),
          TextIn(row, 2),
          TextIn(row, 3),
          static_cast<std::uint64_t>(NumberIn(row, 4)),
          NumberIn(row, 5),
          TextIn(row, 6)};
}

[[nodiscard]] std::string InsertInto(const std::string& table) {
  return "INSERT OR REPLACE INTO " + table + " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)";
}

}  // namespace

FileStore::Opening FileStore::Create(const std::string& file, const std::string& address,
                                     const std::string& server) {
  std::unique_ptr<FileStore> store(new FileStore(file));
  std::string fault = store->sql_.fault();
  if (fault.empty()) {
    fault = store->Change(
        {{std::string("CREATE TABLE IF NOT EXISTS files ") + columns, {}},
         {std::string("CREATE TABLE IF NOT EXISTS announced ") + columns, {}},
         {"CREATE TABLE IF NOT EXISTS folder (form INTEGER PRIMARY KEY, address TEXT, server TEXT)", {}},
         {"INSERT OR REPLACE INTO folder VALUES (?1, ?2, ?3)", {form, address, server}}});
  }
  if (fault.empty()) fault = store->ReadFolder();
  if (!fault.empty()) store.reset();
  return {std::move(store), fault};
}

FileStore::Opening FileStore::Open(const std::string& file) {
  std::unique_ptr<FileStore> store(new FileStore(file));
  std::string fault = store->sql_.fault();
  if (fault.empty()) fault = store->ReadFolder();
  if (!fault.empty()) store.reset();
  return {std::move(store), fault};
}

std::string FileStore::ReadFolder() {
  const auto rows = sql_.Run("SELECT form, address, server FROM folder");
  if (!rows) return sql_.fault();
  if (rows->size() != 1 || NumberIn(rows->front(), 0) != form) {
    return "it is not of the form that this vtdirect knows";
  }
  address_ = TextIn(rows->front(), 1);
  server_ = TextIn(rows->front(), 2);
  return {};
}

std::string FileStore::Change(const std::vector<std::pair<std::string, SqlRow>>& statements) {
  const std::lock_guard lock(mutex_);
  return sql_.RunTogether(statements) ? "" : sql_.fault();
}

std::optional<std::vector<FolderFile>> FileStore::Rows(const std::string& table) {
  const std::lock_guard lock(mutex_);
  const auto rows = sql_.Run("SELECT path, address, uid, version, size, time, sha256 FROM " + table);
  if (!rows) return std::nullopt;
  std::vector<FolderFile> files;
  for (const SqlRow& row : *rows) files.push_back(FileOf(row));
  return files;
}

std::optional<std::map<std::string, FolderFile>> FileStore::Files() {
  const auto rows = Rows("files");
  if (!rows) return std::nullopt;
  std::map<std::string, FolderFile> files;
  for (const FolderFile& file : *rows) files.emplace(file.path, file);
  return files;
}

std::string FileStore::Announce(const FolderFile& file) {
  return Change({{InsertInto("announced"), RowOf(file)}});
}

std::vector<FolderFile> FileStore::Announced() {
  return Rows("announced").value_or(std::vector<FolderFile>{});
}

std::string FileStore::Withdraw(const std::string& path) {
  return Change({{"DELETE FROM announced WHERE path = ?1", {path}}});
}

std::string FileStore::Keep(const FolderFile& file) {
  return Change({{InsertInto("files"), RowOf(file)}, {"DELETE FROM announced WHERE path = ?1", {file.path}}});
}

std::string FileStore::Forget(const std::string& path) {
  return Change({{"DELETE FROM files WHERE path = ?1", {path}}});
}

std::string FileStore::KeepTime(const FolderFile& file, std::int64_t time) {
  // Another process may have replaced the file and what is kept of it meanwhile.
  return Change(
      {{"UPDATE files SET time = ?3 WHERE path = ?1 AND sha256 = ?2", {file.path, file.sha256, time}}});
}

}  // namespace vtdirect_cli
