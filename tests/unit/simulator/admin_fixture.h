#pragma once

#include "simulator/admin/admin_api.h"
#include "write_fixture.h"

namespace vantry_sim {

/// A simulator that is controlled, without its HTTP.
class AdminTest : public WriteTest {
 protected:
  AdminTest() { options_.adminPort = 0; }

  Response Admin(const std::string& method, const std::string& target, const std::string& body = {},
                 const std::string& type = "application/json") {
    if (!simulator_) Start();
    if (!admin_ || of_ != simulator_.get()) admin_ = std::make_unique<AdminApi>(*simulator_);
    of_ = simulator_.get();
    Request request;
    request.method = method;
    request.target = target;
    request.host = "127.0.0.1:1";
    request.body = body;
    request.contentType = type;
    return admin_->Handle(request);
  }

  rapidjson::Document AdminJson(const std::string& method, const std::string& target,
                                const std::string& body = {}) {
    const Response response = Admin(method, target, body);
    EXPECT_LT(response.status, 300) << method << " " << target << "\n" << response.body;
    rapidjson::Document document;
    document.Parse(response.body.c_str());
    EXPECT_FALSE(document.HasParseError()) << response.body;
    return document;
  }

  std::string AdminOutcome(const std::string& method, const std::string& target,
                           const std::string& body = {}) {
    return OutcomeOf(Admin(method, target, body));
  }

  std::unique_ptr<AdminApi> admin_;
  const Simulator* of_ = nullptr;
};

}  // namespace vantry_sim
