#pragma once

#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "simulator/simulator.h"

namespace vantry_sim {

/// A data directory of its own for each test, and a simulator over it without any HTTP.
class SimulatorTest : public ::testing::Test {
 protected:
  SimulatorTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vantry-sim-test-XXXXXX").string();
    directory_ = mkdtemp(pattern.data());
    options_.dataDirectory = (directory_ / "data").string();
    // The large content's size matters to no test but those that set it.
    options_.seed.largeBytes = 4096;
  }

  ~SimulatorTest() override {
    simulator_.reset();
    std::filesystem::remove_all(directory_);
  }

  Simulator& Start() {
    simulator_.reset();
    simulator_ = std::make_unique<Simulator>(options_);
    return *simulator_;
  }

  Response Get(const std::string& target, const std::string& user = "anna", const std::string& prefer = {}) {
    if (!simulator_) Start();
    Request request;
    request.method = "GET";
    request.target = target;
    request.host = "sim.example:8080";
    request.user = user;
    request.prefer = prefer;
    Response response = simulator_->Handle(request);
    if (response.shared) response.body = *response.shared;
    return response;
  }

  rapidjson::Document GetJson(const std::string& target, const std::string& user = "anna") {
    const Response response = Get(target, user);
    EXPECT_EQ(response.status, 200) << target << "\n" << response.body;
    rapidjson::Document document;
    document.Parse(response.body.c_str());
    EXPECT_FALSE(document.HasParseError()) << response.body;
    return document;
  }

  /// The nonce, fetched as clients do it.
  std::string Nonce() {
    const auto answer = GetJson("/servlet/rest/security/csrf");
    return answer["items"][0]["attributes"]["nonce"].GetString();
  }

  /// A POST of JSON as clients send it.
  Response Post(const std::string& target, const std::string& body, const std::string& user = "anna") {
    return Write("POST", target, body, user);
  }

  /// A write of JSON with the nonce.
  Response Write(const std::string& method, const std::string& target, const std::string& body,
                 const std::string& user = "anna") {
    Request request;
    request.method = method;
    request.target = target;
    request.host = "sim.example:8080";
    request.user = user;
    request.nonce = Nonce();
    request.contentType = "application/json";
    request.body = body;
    return simulator_->Handle(request);
  }

  rapidjson::Document PostJson(const std::string& target, const std::string& body,
                               const std::string& user = "anna") {
    const Response response = Post(target, body, user);
    EXPECT_EQ(response.status, 200) << target << "\n" << response.body;
    rapidjson::Document document;
    document.Parse(response.body.c_str());
    EXPECT_FALSE(document.HasParseError()) << response.body;
    return document;
  }

  /// The status of a POST and the code of its refusal, such as "409 name-taken"; "200" for one that was done.
  std::string Outcome(const std::string& target, const std::string& body, const std::string& user = "anna") {
    return OutcomeOf(Post(target, body, user));
  }

  static std::string OutcomeOf(const Response& response) {
    rapidjson::Document reason;
    reason.Parse(response.body.c_str());
    if (response.status < 300 || !reason.IsObject()) return std::to_string(response.status);
    EXPECT_STRNE(reason["error"]["message"].GetString(), "");
    return std::to_string(response.status) + " " + reason["error"]["code"].GetString();
  }

  /// One member of each row of an OData list, in the order of the rows.
  std::vector<std::string> Column(const std::string& target, const char* member,
                                  const std::string& user = "anna") {
    const auto document = GetJson(target, user);
    std::vector<std::string> values;
    for (const auto& row : document["value"].GetArray()) {
      values.push_back(row.HasMember(member) ? row[member].GetString() : "(missing)");
    }
    return values;
  }

  static std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  std::filesystem::path directory_;
  Options options_;
  std::unique_ptr<Simulator> simulator_;
};

}  // namespace vantry_sim
