#pragma once

#include <string>

#include "tests/e2e/cli/server_document.h"
#include "tests/e2e/cli/vtdirect_fixture.h"

namespace vtdirect_test {

/// Storing documents, and looking at what the server holds afterwards.
class PutTest : public VtDirect {
 protected:
  /// Three times each byte, in an order in which CR LF and zero bytes come.
  [[nodiscard]] static std::string EveryByte() {
    std::string bytes;
    for (int i = 0; i < 768; ++i) bytes += static_cast<char>(i % 256);
    return bytes;
  }

  /// The content at an address, as `get` brings it.
  [[nodiscard]] std::string Content(const std::string& address) {
    const ProcessResult result = Run({"get", address, "-o", "-"});
    EXPECT_EQ(result.status, 0) << address << ": " << result.err;
    return result.out;
  }
};

}  // namespace vtdirect_test
