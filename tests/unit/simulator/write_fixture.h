#pragma once

#include <string>
#include <vector>

#include "simulator_fixture.h"

namespace vantry_sim {

inline const std::string trekkingContext = "OR:vn.product.Product:101";
inline const std::string workspacesPath = "/servlet/rest/v1/dkm/workspaces";
inline const std::string documentsPath = "/servlet/rest/v1/dkm/documents";

/// Bytes that were uploaded, and the receipt for them.
struct Uploaded {
  std::string stream;
  std::string receipt;
};

/// A simulator that is written to, with its uploads but without its HTTP.
class WriteTest : public SimulatorTest {
 protected:
  /// A ticket for so many files. The port in it is a made-up one.
  rapidjson::Document Ticket(int files, const std::string& user = "anna") {
    if (!simulator_) Start();
    simulator_->SetUploadPort(9);
    return PostJson("/servlet/rest/v1/content/creationFactory",
                    "{\n\"noOfFiles\":" + std::to_string(files) + "\n}", user);
  }

  /// The body that clients send for a ticket: it begins with CR LF and ends without.
  static std::string Body(const rapidjson::Document& ticket, const std::vector<std::string>& files) {
    const std::string line = "\r\n--BOUNDARY\r\n";
    std::string body = line + "Content-Disposition: form-data; name=\"Master_URL\"\r\n\r\n";
    body += ticket["masterUrl"].GetString();
    body += line + "Content-Disposition: form-data; name=\"CacheDescriptor_array\"\r\n\r\n";
    for (rapidjson::SizeType i = 0; i < files.size(); ++i) {
      const std::string stream = ticket["streamIds"][i].GetString();
      body += stream + ":" + ticket["fileNames"][i].GetString() + ":" + stream + ";";
    }
    for (rapidjson::SizeType i = 0; i < files.size(); ++i) {
      body += line + "Content-Type: application/octet-stream\r\nContent-Disposition: form-data; name=\"";
      body += ticket["fileNames"][i].GetString();
      body += "\"; filename=\"local \"name\".lxz\"\r\n\r\n" + files[i];
    }
    return body + "\r\n--BOUNDARY--";
  }

  /// Sends an upload, so many bytes at a time.
  Response Send(const rapidjson::Document& ticket, const std::string& body, const std::string& user = "anna",
                std::size_t step = 1000) {
    Request request;
    request.method = "POST";
    const std::string url = ticket["uploadUrl"].GetString();
    request.target = url.substr(url.find('/', 7));
    request.user = user;
    request.nonce = Nonce();
    request.contentType = "multipart/form-data; boundary=BOUNDARY";
    Response refusal;
    const auto upload = simulator_->BeginUpload(request, refusal);
    if (!upload) return refusal;
    for (std::size_t at = 0; at < body.size(); at += step)
      upload->Receive(std::string_view(body).substr(at, step));
    return simulator_->FinishUpload(*upload, request);
  }

  /// Uploads files and gives their receipts, in their order.
  std::vector<Uploaded> Upload(const std::vector<std::string>& files, const std::string& user = "anna") {
    const auto ticket = Ticket(static_cast<int>(files.size()), user);
    const Response response = Send(ticket, Body(ticket, files), user);
    EXPECT_EQ(response.status, 200) << response.body;
    rapidjson::Document answer;
    answer.Parse(response.body.c_str());
    std::vector<Uploaded> uploaded;
    for (const auto& info : answer["contentInfos"].GetArray()) {
      uploaded.push_back({std::to_string(info["streamId"].GetInt64()), info["encodedInfo"].GetString()});
    }
    return uploaded;
  }

  /// A section as clients write it.
  static std::string Section(const std::string& category, const std::string& fileName,
                             const Uploaded& uploaded, bool hidden = false) {
    return "{\"category\":\"" + category + "\",\"fileName\":\"" + fileName + "\"" +
           (hidden ? ",\"isHidden\":true" : "") + ",\"streamId\":" + uploaded.stream +
           ",\"uploadInfo\":{\"encodedCCD\":\"" + uploaded.receipt + "\"}}";
  }

  /// An instruction with one primary content. @param more members of epmDocument, each with a comma in front
  static std::string Instruction(const std::string& id, const std::string& cadName, const Uploaded& uploaded,
                                 const std::string& more = {}, const std::string& folder = {}) {
    std::string text = "{\"epmDocument\":{";
    if (!id.empty()) text += "\"id\":\"" + id + "\",";
    text += "\"epmMaster\":{\"category\":\"iso\",\"subCategory\":\"FENLET\",\"cadName\":\"" + cadName +
            "\",\"authoringApplication\":\"MERIDOX\"},\"cadContent\":{\"contentSections\":[" +
            Section("FENLET", "{$CAD_NAME}", uploaded) +
            "]},\"authAppVersion\":\"311\",\"ndVersion\":\"J-02\"" + more + "}";
    if (!folder.empty()) text += ",\"targetFolderId\":\"" + folder + "\"";
    return text + "}";
  }

  static std::string CreateBody(const std::string& instruction,
                                const std::string& context = trekkingContext) {
    return "{\"createInstructions\":[" + instruction + "],\"contextId\":\"" + context + "\"}";
  }

  static std::string IterateBody(const std::string& instruction, const std::string& resolutions = {},
                                 const std::string& context = trekkingContext) {
    return "{\"iterateInstructions\":[" + instruction + "],\"contextId\":\"" + context + "\"" +
           (resolutions.empty() ? "" : ",\"conflictResolutions\":" + resolutions) + "}";
  }

  static std::string StoreBody(const std::string& instruction, const std::string& resolutions = {}) {
    return "{\"storeInstructions\":[" + instruction + "]" +
           (resolutions.empty() ? "" : ",\"conflictResolutions\":" + resolutions) + "}";
  }

  static std::string Resolution(const std::string& code, const std::string& option, const std::string& type,
                                const std::string& id) {
    return "[{\"code\":\"" + code + "\",\"resolutionOption\":\"" + option +
           "\",\"appliedEntities\":[{\"type\":\"" + type + "\",\"field\":\"id\",\"value\":\"" + id + "\"}]}]";
  }
  static std::string CheckoutResolution(const std::string& master) {
    return Resolution("vn.epm.util.EPMConflictType.WORKASPACE_ADD_EXISTING_OBJECT",
                      "vn.epm.util.EPMResolutionType.WORKSPACE_SUBSTITUTE_EXISTING_OBJECT",
                      "vn.epm.EPMDocumentMaster", master);
  }
  static std::string CheckinResolution(const std::string& id) {
    return Resolution("com.zvk.vantry.udkm.common.conflict.UdkmConflictType.STALE_SEC_CONTENT",
                      "com.zvk.vantry.udkm.common.conflict.UdkmResolutionType.IGNORE_STALE_SEC_CONTENT",
                      "vn.epm.EPMDocument", id);
  }
  static std::string IterateResolution(const std::string& id) {
    return Resolution("vn.epm.upload.EPMUploadConflictType.IMAGE_HAS_REP_RULE_WITH_OTHER_VERSION_OF_ORIGINAL",
                      "vn.epm.upload.EPMUploadResolutionType.UPDATE_IMAGE_TO_NEW_VERSION",
                      "vn.epm.EPMDocument", id);
  }

  static std::string CheckoutBody(const std::string& id, const std::string& resolutions = {}) {
    return "{\"objIdList\":[\"" + id + "\"],\"dependenciesOption\":\"None\"" +
           (resolutions.empty() ? "" : ",\"conflictResolutions\":" + resolutions) + "}";
  }
  static std::string CheckinBody(const std::string& id, const std::string& more = {}) {
    return "{\"checkinInstructions\":[{\"id\":\"" + id + "\"}]" + more + "}";
  }

  /// Checks a document out and gives the working copy's id.
  std::string CheckOut(const std::string& workspace, const std::string& id,
                       const std::string& user = "anna") {
    const auto answer = PostJson(workspacesPath + "/" + workspace + "/checkout", CheckoutBody(id), user);
    return answer.IsArray() && !answer.Empty() ? answer[0]["id"].GetString() : "";
  }

  std::string ContentOf(const rapidjson::Value& section) {
    return ReadFile(directory_ / "data/content" / std::to_string(section["streamId"].GetInt64()));
  }

  static std::string VersionOf(const rapidjson::Value& document) {
    return std::string(document["revision"].GetString()) + "." + document["iteration"].GetString();
  }
};

}  // namespace vantry_sim
