#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/wire/documents/flow_fixture.h"
#include "translation/nrx_xliff_server.h"
#include "translation/xliff_preferences.h"

namespace vtdirect_test {

inline const std::string readHeaders =
    "OData-Version: 4.0\r\nOData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000\r\n"
    "Accept: application/json";
inline const std::string odataWriteHeaders =
    "Content-Type: application/json\r\nAccept: application/json\r\n"
    "OData-Version: 4.0\r\nOData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000\r\nX-Nonce: n-1";

inline const std::string tokenPath = "servlet/odata/v1/ZVK/GetCSRFToken()";
inline const std::string tokenAnswer = R"({"NonceKey":"X-Nonce","NonceValue":"n-1"})";
inline const std::string linkPath = "servlet/odata/v1/DynamicDocMgmt/CreateXliffLink";
inline const std::string linkedAnswer = R"({"value":"Success"})";
inline const std::string contextsPath = "servlet/rest/v1/contexts";
inline const std::string cabinetsPath = "servlet/odata/v1/DataAdmin/Containers?$expand=Folders";

/// Paths of a document in the translation service; the id must need no escaping.
std::string DynamicDocumentPath(const std::string& id);
std::string SourcePath(const std::string& id);
std::string TranslationsPath(const std::string& id);
std::string PreferencesPath(const std::string& id, const std::string& language);
/// The path of the folder search in the context "Gadget".
std::string FolderPath(int levels);

/// A row that names a document of the translation service.
std::string Reference(const std::string& id, const std::string& language);
/// An answer that tells these preferences.
std::string Preferences(const std::map<std::string, std::string>& values);
/// The body of a request that links two documents.
std::string LinkBody(const std::string& sourceId, const std::string& xliffId);

/// All that an upload needs by the name of the target's path: "/Trans/Sub" of the product "Gadget".
std::map<std::string, std::string> PathPreferences();
/// All that an upload needs by the cabinet K1 and the folder F9.
std::map<std::string, std::string> CabinetPreferences();

TraceLine XliffInformation(const std::string& text);
TraceLine XliffError(const std::string& text);

/// A test of the translation service, and the check that nothing stays behind. The search for a folder ends.
class XliffTest : public FlowTest {
 protected:
  XliffTest();

  /// A read of an OData page as the server gets it.
  static SentRequest ReadPage(const std::string& path) { return {serverUrl, Get(path), readHeaders, {}}; }
  /// A read of a further page, by its link.
  static SentRequest ReadLink(const std::string& server, const std::string& path) {
    return {server, "GET " + path, readHeaders, {}};
  }
  /// A write as the server gets it, with the nonce.
  static SentRequest ODataWrite(const std::string& line, const std::string& body) {
    return {serverUrl, line, odataWriteHeaders, body};
  }
  void ThenToken() { transport.Then(200, tokenAnswer); }
  /// From now on no temporary file can be made.
  void LoseTemporaryDirectory() const;
  [[nodiscard]] Lines LinesFrom(std::size_t first) const;

  lxservices::cms_interface::vantry::NrxXliffServer server{connection};
};

}  // namespace vtdirect_test
