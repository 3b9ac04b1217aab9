#include "simulator/store/upload_store.h"

#include "simulator/store/user_store.h"
#include "simulator/wire/random_text.h"

namespace vantry_sim {
namespace {

void ForgetTicket(Database& database, std::int64_t ticket) {
  database.Prepare("DELETE FROM ticket_streams WHERE ticket = ?1").Bind(ticket).Run();
  database.Prepare("DELETE FROM tickets WHERE id = ?1").Bind(ticket).Run();
}

void ForgetOldTickets(Database& database) {
  std::vector<std::int64_t> old;
  auto statement = database.Prepare("SELECT id FROM tickets WHERE created < server_seconds() - 86400");
  while (statement.Step()) old.push_back(statement.Integer(0));
  for (const std::int64_t ticket : old) ForgetTicket(database, ticket);
}

}  // namespace

std::int64_t LastStream(Database& database) {
  auto statement = database.Prepare(
      "SELECT max(ifnull((SELECT max(id) FROM streams), 0), ifnull((SELECT max(stream) FROM ticket_streams), "
      "0))");
  return statement.Step() ? statement.Integer(0) : 0;
}

void ForgetUploads(Database& database) {
  database.Execute("DELETE FROM ticket_streams; DELETE FROM tickets; DELETE FROM uploads;");
}

UploadTicket MakeTicket(Database& database, ContentStore& contents, std::string_view user, std::int64_t files,
                        std::string_view masterUrl) {
  ForgetOldTickets(database);
  UploadTicket ticket{RandomHexadecimal(), std::string(masterUrl), {}};
  database
      .Prepare("INSERT INTO tickets(token, user, master_url, created) VALUES(?1, ?2, ?3, server_seconds())")
      .Bind(ticket.token, UserKey(database, user), masterUrl)
      .Run();
  const std::int64_t key = database.LastRowId();
  for (std::int64_t i = 0; i < files; ++i) {
    const std::int64_t stream = contents.NextStream();
    const std::string name = "file" + std::to_string(stream);
    database.Prepare("INSERT INTO ticket_streams(ticket, stream, file_name) VALUES(?1, ?2, ?3)")
        .Bind(key, stream, name)
        .Run();
    ticket.streams.emplace(name, stream);
  }
  return ticket;
}

std::optional<UploadTicket> FindTicket(Database& database, std::string_view token, std::string_view user) {
  auto statement = database.Prepare(
      "SELECT t.token, t.master_url, s.file_name, s.stream FROM tickets t "
      "JOIN ticket_streams s ON s.ticket = t.id JOIN users u ON u.id = t.user WHERE t.token = ?1 AND u.name "
      "= ?2");
  statement.Bind(token, user);
  std::optional<UploadTicket> ticket;
  while (statement.Step()) {
    if (!ticket) ticket = UploadTicket{statement.Text(0), statement.Text(1), {}};
    ticket->streams.emplace(statement.Text(2), statement.Integer(3));
  }
  return ticket;
}

std::vector<std::string> AcceptUpload(Database& database, const UploadTicket& ticket, std::string_view user,
                                      const std::vector<ReceivedStream>& streams) {
  const std::int64_t userKey = UserKey(database, user);
  std::vector<std::string> receipts;
  for (const ReceivedStream& received : streams) {
    receipts.push_back(RandomHexadecimal());
    database.Prepare("INSERT INTO streams(id, size) VALUES(?1, ?2)")
        .Bind(received.stream, received.size)
        .Run();
    database.Prepare("INSERT INTO uploads(stream, user, receipt, file_name) VALUES(?1, ?2, ?3, ?4)")
        .Bind(received.stream, userKey, receipts.back(), received.partName)
        .Run();
  }
  auto statement = database.Prepare("SELECT id FROM tickets WHERE token = ?1");
  if (statement.Bind(ticket.token).Step()) ForgetTicket(database, statement.Integer(0));
  return receipts;
}

std::string GiveReceipt(Database& database, std::string_view user, std::int64_t stream) {
  std::string receipt = RandomHexadecimal();
  database.Prepare("INSERT OR REPLACE INTO uploads(stream, user, receipt, file_name) VALUES(?1, ?2, ?3, '')")
      .Bind(stream, UserKey(database, user), receipt)
      .Run();
  return receipt;
}

bool TakeReceipt(Database& database, std::string_view user, std::int64_t stream, std::string_view receipt) {
  auto statement = database.Prepare(
      "DELETE FROM uploads WHERE stream = ?1 AND receipt = ?2 AND user = ?3 RETURNING stream");
  const bool taken = statement.Bind(stream, receipt, UserKey(database, user)).Step();
  if (taken) statement.Run();
  return taken;
}

}  // namespace vantry_sim
