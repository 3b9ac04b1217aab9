#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "connection/vt_connection.h"
#include "tests/support/operation.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"
#include "tests/support/wire_words.h"

namespace vtdirect_test {

constexpr const char* serverUrl = "https://plm.example/vt";

/// A test with one connection to a scripted server, its traces and a temporary directory of its own.
class ConnectedTest : public testing::Test {
 protected:
  /// A read as the document service gets it.
  static SentRequest Read(const std::string& path) {
    return {serverUrl, "GET /vt/" + path, "Accept: application/json", {}};
  }

  TemporaryDirectory directory;
  TraceRecorder trace;
  ScriptedTransport transport;
  std::vector<std::string> askedFor;  ///< URLs that credentials were asked for
  std::shared_ptr<lxservices::cms_interface::vantry::VtConnection> connection =
      std::make_shared<lxservices::cms_interface::vantry::VtConnection>(serverUrl, [this](const char* url) {
        askedFor.emplace_back(url);
        return true;
      });
};

using Requests = std::vector<SentRequest>;

}  // namespace vtdirect_test
