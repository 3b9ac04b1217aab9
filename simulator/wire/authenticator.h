#pragma once

#include <string>
#include <string_view>

#include "simulator/wire/digest.h"
#include "simulator/wire/messages.h"
#include "simulator/wire/user_directory.h"

namespace vantry_sim {

/// What a request says of who sends it.
struct Introduction {
  std::string_view method;         ///< as it is on the request line
  std::string_view target;         ///< the same
  std::string_view authorization;  ///< the header's value; empty without one
};

/// Decides who asks: by HTTP Basic, or Digest in its place, and by bearer tokens. Any thread.
class Authenticator {
 public:
  /// @param users outlive it. @param digest whether passwords are to come by Digest and never by Basic
  Authenticator(const UserDirectory& users, bool digest) : users_(users), digest_(digest) {}

  /// Who asks; empty for a refusal. An open server believes any name that Basic brings, and takes a request
  /// without one for openServerUser's.
  [[nodiscard]] std::string UserOf(const Introduction& introduction) const;

  /// The 401 with the ways to come in.
  [[nodiscard]] Response Challenge(std::string_view authorization) const;

 private:
  [[nodiscard]] std::string UserByDigest(const Introduction& introduction,
                                         std::string_view credentials) const;

  const UserDirectory& users_;
  const bool digest_;
  DigestNonces nonces_;
};

}  // namespace vantry_sim
