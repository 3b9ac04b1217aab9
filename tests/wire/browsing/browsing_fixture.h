#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "connection/vt_connection.h"
#include "server/file_server.h"
#include "tests/support/operation.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace vtdirect_test {

inline constexpr const char* serverUrl = "https://plm.example/vt";

/// A listed entry in one text: "dir NAME", "file NAME", then " id=ID" unless the id is null, " (NUMBER,NAME)"
/// with details, " versions=V1:ID1,V2:ID2" with versions.
std::string EntryText(const lxservices::cms_interface::DirEntryInfoExt& entry);

/// The three requests by which a server tells what it has, and its answers.
enum class Generation {
  Rest,     ///< no OData service at all
  Schema3,  ///< folders by OData, but not their contents
  Schema4,  ///< folder contents
  Schema5,  ///< folder contents with versions, contexts by OData
};

/// A test with a connection to a scripted server. Nothing of the listing may be traced, and nothing may be
/// left behind: both are checked at the end.
class BrowsingTest : public testing::Test {
 protected:
  BrowsingTest();
  void TearDown() override;

  /// A server object that knows nothing yet.
  void SetUpServer();
  /// Answers the three questions for what the server has.
  void ScriptServices(Generation generation);
  /// The requests of ScriptServices.
  static std::vector<SentRequest> ServiceRequests();

  static SentRequest Rest(const std::string& path);
  static SentRequest OData(const std::string& path);
  /// A page after a next link: the URL's part before the path, and the rest.
  static SentRequest NextPage(const std::string& server, const std::string& path);

  /// Collects what is delivered.
  lxservices::cms_interface::DirEntryCallback Collect();
  using Flags = lxservices::cms_interface::FileServer::ReadDirFlags;
  static Flags Bits(unsigned bits) { return static_cast<Flags>(bits); }

  TemporaryDirectory directory;
  TraceRecorder trace;
  ScriptedTransport transport;
  std::shared_ptr<lxservices::cms_interface::vantry::VtConnection> connection =
      std::make_shared<lxservices::cms_interface::vantry::VtConnection>(serverUrl,
                                                                        [](const char*) { return false; });
  std::shared_ptr<lxservices::cms_interface::FileServer> server;
  std::vector<std::string> entries;
};

using Requests = std::vector<SentRequest>;
using Entries = std::vector<std::string>;
using testing::ElementsAre;
using testing::IsEmpty;

/// The requests of several steps in one list.
Requests Joined(std::initializer_list<Requests> parts);

}  // namespace vtdirect_test
