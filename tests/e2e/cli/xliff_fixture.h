#pragma once

#include <rapidjson/document.h>

#include <sstream>
#include <string>

#include "tests/e2e/cli/server_document.h"
#include "tests/e2e/cli/vtdirect_fixture.h"

namespace vtdirect_test {

/// A file that is fit to be sent for English, which nothing else holds.
[[nodiscard]] inline std::string English(const std::string& text = "Oil the chain.") {
  return "<?xml version=\"1.0\"?>\n<xliff version=\"1.2\" "
         "xmlns=\"urn:oasis:names:tc:xliff:document:1.2\">\n"
         "<file original=\"chain\" source-language=\"en\" datatype=\"xml\"><body><trans-unit "
         "id=\"1\"><source>" +
         text + "</source></trans-unit></body></file>\n</xliff>\n";
}

/// The id of the source XLIFF that the server links to a document, read by nothing of the product; empty for
/// none.
[[nodiscard]] inline std::string XliffLinkOf(const Simulator& server, const std::string& id) {
  rapidjson::Document json;
  json.Parse(server.Get("/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('" + id + "')/Xliff").c_str());
  if (!json.IsObject() || !json.HasMember("value") || !json["value"].IsArray()) {
    ADD_FAILURE() << "no answer about the XLIFF of " << id;
    return {};
  }
  return json["value"].Empty() ? "" : json["value"][0]["ID"].GetString();
}

/// Translation: documents D1028, which has the source XLIFF D1029 with translations into German and French,
/// and D1032, which has none.
class XliffTest : public VtDirect {
 protected:
  static constexpr const char* manual = "//sim/?id=D1028";
  static constexpr const char* bareManual = "//sim/?id=D1032";

  void SetUp() override { WriteFile(Here("chain.xlf"), English()); }

  /// Sends "chain.xlf" from English.
  ProcessResult Put(const std::string& address) {
    return Run({"xliff", "put", address, "chain.xlf", "-l", "en"});
  }

  [[nodiscard]] std::string LinkOf(const std::string& id) const { return XliffLinkOf(server(), id); }

  /// The requests that the program has made which write, one a line.
  [[nodiscard]] std::string Writes() const {
    std::string out;
    std::istringstream log(server().Log());
    for (std::string line; std::getline(log, line);) {
      if (line.find("\"method\":\"GET\"") == std::string::npos) out += line + "\n";
    }
    return out;
  }
};

}  // namespace vtdirect_test
