#pragma once

#include <string>
#include <vector>

#include "tests/wire/public/path_search.h"
#include "tests/wire/public/uploads/upload_forms.h"

namespace vtdirect_test {

/// A step that a flow takes; its failures are told of apart.
struct WalkedRequest {
  std::string line;
  Answer answer;
};
using Flow = std::vector<WalkedRequest>;

/// What the flow around a transfer traces.
struct TransferTraces {
  Traces before;  ///< up to the transfer
  Traces after;   ///< from a transfer that succeeded on
};

/// How a flow ends whose transfer fails.
struct TransferFailure {
  int code = 0;   ///< its status
  TraceLine end;  ///< the last line that it traces
};

/// Walks flows of the exported uploads, each time with a server object that remembers nothing, and with a
/// version that the host wants registered.
class UploadWalkTest : public UploadFormTest {
 protected:
  UploadWalkTest();

  /// What a flow does from one of its requests on.
  static Ending GoesOn(const Flow& flow, std::size_t from, const std::string& result, const Traces& traces);
  /// The same after a nonce that was not given: it is asked for again before the next request that carries
  /// it.
  static Ending GoesOnWithoutNonce(const Flow& flow, std::size_t nonceAt, const std::string& result,
                                   const Traces& traces);

  /// The requests between a document's reading and its posting: nonce, ticket, upload and registration.
  [[nodiscard]] Flow TransferFlow() const;
  /// The steps of TransferFlow() within the flow, which begin at `first`, and of the posting after them.
  /// @param success  result of the flow
  [[nodiscard]] std::vector<Step> TransferSteps(const Flow& flow, std::size_t first,
                                                const std::string& success, const TransferTraces& traces,
                                                const TransferFailure& failure) const;

  /// A server that cannot be probed in one way is probed in the other. A schema that is broken in its last
  /// piece counts as read, so only a refusal leads here.
  static Ending NotProbed();

  /// Walks the steps from `first` on.
  void Walk(const std::vector<Step>& steps, const std::string& address, bool checkIn = false,
            std::size_t first = 0);
};

inline Flow Join(Flow first, const Flow& second) {
  return Appended(std::move(first), second);
}

inline const Answer walkedNonce{200, nonceAnswer};
inline const Answer walkedStored{200, storedDocument};
inline const Answer walkedSchema{200, "<Schema/>"};
inline const Answer walkedNoList{200, "[]"};
inline const Answer walkedNoService{404, ""};

}  // namespace vtdirect_test
