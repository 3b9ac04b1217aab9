#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/store/content_store.h"
#include "simulator/store/database.h"

namespace vantry_sim {

/// A permission for one upload.
struct UploadTicket {
  std::string token;                            ///< is in the address that the bytes go to
  std::string masterUrl;                        ///< comes back in the upload as it is
  std::map<std::string, std::int64_t> streams;  ///< by the name of their part, in the order of their numbers
};

/// The most files of one ticket.
inline constexpr std::int64_t mostFilesOfATicket = 100;

/// Gives a ticket. Tickets older than a day are forgotten.
UploadTicket MakeTicket(Database& database, ContentStore& contents, std::string_view user, std::int64_t files,
                        std::string_view masterUrl);

/// The greatest number of a stream that the database knows, with those of tickets; 0 for none.
std::int64_t LastStream(Database& database);

/// Forgets all tickets, and uploads that no document has taken.
void ForgetUploads(Database& database);

/// The user's ticket with this token, as long as it hasn't been used.
std::optional<UploadTicket> FindTicket(Database& database, std::string_view token, std::string_view user);

/// A stream that was filled.
struct ReceivedStream {
  std::int64_t stream = 0;
  std::uint64_t size = 0;
  std::string partName;
};

/// Uses up a ticket and gives a receipt for each stream, in their order. To be called in a transaction, when
/// the bytes lie in the content store.
std::vector<std::string> AcceptUpload(Database& database, const UploadTicket& ticket, std::string_view user,
                                      const std::vector<ReceivedStream>& streams);

/// Gives a receipt for a stream that is there already. To be called in a transaction.
std::string GiveReceipt(Database& database, std::string_view user, std::int64_t stream);

/// Takes a receipt back, which can be done once. To be called in a transaction.
/// @return false for one that was never given for this stream and user, or that was used
bool TakeReceipt(Database& database, std::string_view user, std::int64_t stream, std::string_view receipt);

}  // namespace vantry_sim
