#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "connection/vt_connection.h"
#include "tests/wire/documents/connected_test.h"

namespace vtdirect_test {

using Connection = std::shared_ptr<lxservices::cms_interface::vantry::VtConnection>;

inline constexpr const char* nonceAnswer =
    R"({"items":[{"id":"csrf","attributes":{"nonce_key":"X-Nonce","nonce":"n-1"}}]})";
inline constexpr const char* writeHeaders =
    "Content-Type: application/json\r\nAccept: application/json\r\nX-Nonce: n-1";
inline constexpr const char* uploadHeaders =
    "Content-Type: multipart/form-data; boundary=xxxxxxxxxxxxxxxxxxx-Fenloom-VtDirect-Upload-Boundary\r\n"
    "Accept: application/json\r\nX-Nonce: n-1";

// The paths that several flows share.
inline const std::string noncePath = "servlet/rest/security/csrf";
inline const std::string factoryPath = "servlet/rest/v1/content/creationFactory";
inline const std::string registerPath = "servlet/rest/v1/dkm/registerauthappversions";
inline const std::string documentsPath = "servlet/rest/v1/dkm/documents";
inline const std::string workspacesPath = "servlet/rest/v1/dkm/workspaces";

/// The request that reads a document.
inline std::string DocumentLine(const std::string& id) {
  return Get(documentsPath + "/" + id);
}
/// The request for an operation of a workspace: "W77/checkout".
inline std::string WorkspaceLine(const std::string& operation) {
  return Post(workspacesPath + "/" + operation);
}

/// Where tickets of these tests send the upload: another host than the document service's.
inline const std::string uploadServer = "https://files.example:8443";
inline const std::string uploadLine = "POST /up/load?k=1";

/// A ticket for files whose part names are f1, f2, ... and whose streams are 901, 902, ...
std::string Ticket(int files);
/// The receipts for those streams: r1, r2, ...
std::string Receipts(int files);

/// One file of a multipart body.
struct Part {
  std::string name;
  std::string fileName;
  std::string bytes;
};
/// The multipart body of an upload with a ticket of Ticket().
std::string Multipart(const std::string& descriptors, const std::vector<Part>& files);

/// A test of a flow: local files to store, and the check that nothing stays behind, neither an answer that
/// nobody asked for nor a temporary file.
class FlowTest : public ConnectedTest {
 protected:
  FlowTest();
  ~FlowTest() override;

  /// A write of a JSON body as the document service gets it.
  static SentRequest Write(const std::string& path, const std::string& body) {
    return {serverUrl, Post(path), writeHeaders, body};
  }
  static SentRequest ReadNonce() { return Read(noncePath); }
  /// The path of a local file; the directory holds nothing but such files.
  [[nodiscard]] std::string Local(const std::string& name) const { return directory.File("local/" + name); }
  /// Writes a local file and gives its path.
  std::string MakeLocal(const std::string& name, const std::string& content) const;
  /// Temporary files that exist now.
  [[nodiscard]] Lines Leftovers() const;

  void ThenNonce() { transport.Then(200, nonceAnswer); }
  /// A connection of its own to the same server.
  [[nodiscard]] Connection NewConnection() const {
    return std::make_shared<lxservices::cms_interface::vantry::VtConnection>(
        serverUrl, [](const char*) { return false; });
  }
};

}  // namespace vtdirect_test
