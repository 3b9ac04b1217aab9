#pragma once

#include <string>

#include "raw_client.h"

namespace vantry_sim {

/// The text or number after the first member of this name; empty without one.
std::string Member(const std::string& json, const std::string& name);

/// The bytes and the name of the n-th document: every number has others.
std::string BytesOf(int number);
std::string NameOf(int number);

/// Everything that the server shows of the n-th document, under this id, must be there in full.
void ExpectWhole(RawClient& client, const std::string& id, int number);

/// A ticket for the bytes of one document, and the request that uploads them.
struct UploadPlan {
  int port = 0;
  std::string head;  ///< up to the Content-Length, which the caller adds with an empty line
  std::string front;
  std::string end;
  std::string stream;
};

/// Writes for as long as the server is there. What it gives is empty when the server didn't say that it was
/// done.
class WritingClient {
 public:
  explicit WritingClient(int port);

  /// Makes the n-th document. @return its id
  std::string Make(int number);

  /// Checks a document out to Anna's bench, and in again. @return the new iteration's id
  std::string CheckOutAndIn(const std::string& id);

  /// Asks for a ticket. @return no port without one
  UploadPlan Plan();

 private:
  std::string Upload(const UploadPlan& plan, const std::string& bytes);

  RawClient main_;
  std::string nonce_;
  std::string json_;
};

}  // namespace vantry_sim
