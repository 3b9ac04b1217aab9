#pragma once

#include <string>

#include "tests/wire/translation/xliff_fixture.h"

namespace vtdirect_test {

/// What the server tells of an XLIFF document that was created or iterated.
inline constexpr const char* storedXliff =
    R"([{"id":"X2","revision":"A","iteration":"2","epmMaster":{"id":"M1","cadName":"main.xlf"},
         "cadContent":{"contentSections":[{"fileSize":5},{"fileSize":7}]},
         "derivedSourceDependencies":[{"asStoredChildName":"bolt","source":{"id":"D7"}}]}])";
/// The container that holds the cabinet K1.
inline const std::string cabinetAnswer = R"({"value":[{"ID":"C5","Name":"Gadget","Type":"Product",)"
                                         R"("Folders":[{"ID":"K1"}]}]})";
inline const std::string contextsAnswer =
    R"({"items":[{"id":"C5","attributes":{"name":"Gadget","type":"PRODUCT"}}]})";
inline const std::string folderAnswer =
    R"({"value":[{"ID":"C5","Folders":[{"ID":"F9","Name":"Sub","Location":"/Trans"}]}]})";

/// What an instruction says of the uploaded file.
inline const std::string textSection =
    R"("cadContent":{"contentSections":[{"category":"TEXT","fileName":"{$CAD_NAME}","streamId":901,)"
    R"("uploadInfo":{"encodedCCD":"r1"}}]})";

/// An attribute of an instruction.
inline std::string Attribute(const std::string& name, const std::string& value) {
  return R"({"parameterDefinition":{"parameterName":")" + name + R"(","attributeName":")" + name +
         R"(","valueType":"String"},"parameterValue":{"value":")" + value + R"("}})";
}

/// The body that creates the source XLIFF of the sample preferences; `target` is what names the folder.
inline std::string CreationBody(const std::string& target = R"(,"targetFolderId":"F9")") {
  return R"({"createInstructions":[{"epmDocument":{"epmMaster":{"category":"xml","cadName":"main.xlf",)"
         R"("authoringApplication":"SENTARIX"},)" +
         textSection + R"(,"authAppVersion":"7000","ndVersion":"J-01","typeId":"vn.Soft",)" +
         R"("fileBasedAttributes":[)" + Attribute("ZVK_DD_TRANSLATE", "no") + "," +
         Attribute("ZVK_DD_EXTENDED_DOC_TYPE", "XLIFF") + "," + Attribute("ZVK_DD_LANGUAGE", "de") + "]}" +
         target + R"(}],"contextId":"C5"})";
}

/// A test that uploads the local file "main.xlf" with the content "MAIN".
class XliffUploadTest : public XliffTest {
 protected:
  XliffUploadTest() { info.id = "before"; }

  bool Upload(const char* id = "D1", const char* language = "en") {
    return server.UploadSource(id, xliffPath.c_str(), language, info, {});
  }
  bool Update(const char* id = "D1", const char* language = "en") {
    return server.UpdateSource(id, xliffPath.c_str(), info, {}, language);
  }
  void ThenPreferences(const std::map<std::string, std::string>& preferences) {
    transport.Then(200, Preferences(preferences));
  }
  /// Nonce, ticket, upload, document and link.
  void ThenStored() {
    ThenNonce();
    transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, storedXliff).Then(200, linkedAnswer);
  }
  /// The requests for those.
  static Lines StoringLines() {
    return {Get(noncePath), Post(factoryPath), uploadLine, Post(documentsPath), Post(linkPath)};
  }
  /// The multipart body of the file.
  static std::string MultipartOfFile() { return Multipart("901:f1:901;", {{"f1", "main.xlf", "MAIN"}}); }

  std::string xliffPath = MakeLocal("main.xlf", "MAIN");
  lxservices::cms_interface::FileInfo info;
};

}  // namespace vtdirect_test
