#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "public/manager_state.h"
#include "public/path_resolution.h"
#include "public/vt_direct_manager.h"
#include "server/file_server.h"
#include "tests/support/operation.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/server_table_access.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"
#include "tests/support/wire_words.h"

namespace vtdirect_test {

using Requests = std::vector<SentRequest>;

constexpr const char* plmUrl = "https://plm.example/vt/";
constexpr const char* uidOfD1 = "korvufenloom-vt://plm.example/vt/?id=D1";
constexpr const char* documentLine = "GET /vt/servlet/rest/v1/dkm/documents/D1";
constexpr const char* contentUrl = "https://files.example:8443/store/f1?t=7";
constexpr const char* documentJson =
    R"({"id":"D1","revision":"B","iteration":"3",
        "epmMaster":{"name":"Fork","number":"0042","cadName":"fork 1.lxz"},
        "cadContent":{"contentSections":[
          {"id":"S1","streamId":17,"fileName":"{$CAD_NAME}","fileSize":5,
           "contentUrl":["https://files.example:8443/store/f1?t=7"]}]}})";

/// A test with the real server "plm" in the host's list, on a scripted transport.
class ListedServerTest : public testing::Test {
 protected:
  ListedServerTest() { VtDirectManager::UpdateServerList({{"plm", plmUrl}}); }

  static std::shared_ptr<lxservices::cms_interface::FileServer> Plm() {
    return TableNow().servers.at("korvufenloom-vt://plm.example/vt/");
  }
  static lxservices::cms_interface::PathTarget PlmTarget() {
    return lxservices::cms_interface::ResolveTarget("//plm/", {}, 0);
  }
  static Lines Nicknames() {
    Lines nicknames;
    for (const auto& entry : TableNow().nicknames) nicknames.push_back(entry.first);
    return nicknames;
  }
  // An OData schema document without a version.
  void ThenSchema() { transport.Then(200, "<Schema/>"); }
  VtDirectManager::StatusCallback Status() {
    return [this](VtDirectManager::StatusCode code, const char* text) {
      statuses.push_back(std::to_string(code) + " " + (text != nullptr ? text : "(null)"));
    };
  }

  TemporaryDirectory directory;
  TraceRecorder trace;
  ScriptedTransport transport;
  Lines statuses;
};

}  // namespace vtdirect_test
