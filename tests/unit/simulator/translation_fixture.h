#pragma once

#include <string>

#include "write_fixture.h"

namespace vantry_sim {

inline const std::string servicePath = "/servlet/odata/v1/DynamicDocMgmt/";
inline const std::string translationsFolder = "OR:vn.folder.SubFolder:218";
inline const std::string xliffSoftType = "vn.epm.EPMDocument|net.kettenblitz.XliffDocument";

/// A simulator with the translation add-on, asked as clients that upload, link and publish ask it.
class TranslationTest : public WriteTest {
 protected:
  static std::string DocumentTarget(const std::string& id) {
    return servicePath + "DynamicDocuments('" + id + "')";
  }

  /// Id and language of each source XLIFF of a document, such as "D1029 en".
  std::vector<std::string> Xliff(const std::string& id, const std::string& user = "anna") {
    const auto answer = GetJson(DocumentTarget(id) + "/Xliff", user);
    std::vector<std::string> rows;
    for (const auto& row : answer["value"].GetArray()) {
      rows.push_back(std::string(row["ID"].GetString()) + " " + row["AuthoringLanguage"].GetString());
    }
    return rows;
  }

  static std::string LinkBody(const std::string& source, const std::string& xliff) {
    return "{ \"oidForQ7zkDocument\":\"" + source + "\", \"oidForXliffDocument\":\"" + xliff + "\" }";
  }

  std::string Link(const std::string& source, const std::string& xliff, const std::string& user = "anna") {
    return Outcome(servicePath + "CreateXliffLink", LinkBody(source, xliff), user);
  }

  std::string Publish(const std::string& id, const std::string& user = "anna") {
    return OutcomeOf(
        Write("PATCH", DocumentTarget(id), "{ \"ZVKDDEXTENDEDDOCTYPE\":\"x-raomPublished\" }", user));
  }

  static std::string Attribute(const std::string& name, const std::string& value) {
    return "{\"parameterDefinition\":{\"parameterName\":\"" + name + "\",\"attributeName\":\"" + name +
           "\",\"valueType\":\"String\"},\"parameterValue\":{\"value\":\"" + value + "\"}}";
  }

  /// An instruction for a text document. @param members of epmDocument after its versions, each with a comma
  /// in front
  static std::string TextInstruction(const std::string& id, const std::string& cadName,
                                     const Uploaded& uploaded, const std::string& members,
                                     const std::string& folder = {}) {
    return "{\"epmDocument\":{" + (id.empty() ? "" : "\"id\":\"" + id + "\",") +
           "\"epmMaster\":{\"category\":\"xml\",\"cadName\":\"" + cadName +
           "\",\"authoringApplication\":\"SENTARIX\"},\"cadContent\":{\"contentSections\":[" +
           Section("TEXT", "{$CAD_NAME}", uploaded) +
           "]},\"authAppVersion\":\"7000\",\"ndVersion\":\"J-01\"" + members + "}" +
           (folder.empty() ? "" : ",\"targetFolderId\":\"" + folder + "\"") + "}";
  }

  /// Uploads a source XLIFF as the preferences for it say. @return its id
  std::string UploadXliff(const std::string& cadName, const std::string& text = "<xliff/>",
                          const std::string& type = xliffSoftType) {
    const std::string members = ",\"typeId\":\"" + type + "\",\"fileBasedAttributes\":[" +
                                Attribute("ZVK_DD_TRANSLATE", "yes") + "," +
                                Attribute("ZVK_DD_EXTENDED_DOC_TYPE", "x-raomSource") + "," +
                                Attribute("ZVK_DD_LANGUAGE", "en") + "]";
    const auto answer =
        PostJson(documentsPath,
                 CreateBody(TextInstruction("", cadName, Upload({text})[0], members, translationsFolder)));
    return answer.IsArray() ? answer[0]["id"].GetString() : "";
  }

  /// Makes the next iteration of a text document. @return its id
  std::string Iterate(const std::string& id, const std::string& cadName, const std::string& attributes) {
    const auto answer = PostJson(
        documentsPath, IterateBody(TextInstruction(id, cadName, Upload({"<xliff version=\"1.2\"/>"})[0],
                                                   ",\"fileBasedAttributes\":[" + attributes + "]")));
    return answer.IsArray() ? answer[0]["id"].GetString() : "";
  }
};

}  // namespace vantry_sim
