#pragma once

#include <memory>
#include <optional>
#include <string>

#include "base/settings.h"
#include "connection/vt_connection.h"

namespace lxservices::cms_interface::vantry {

/// What one operation on a server goes by, from its beginning to its end: the connection, the settings of the
/// moment it began, and the server's services, once they are asked for. It is what every flow is handed.
///
/// Made for each operation, which costs nothing, and used by the thread of that operation alone. It
/// holds a share of the connection, so the server's object may go meanwhile.
class ServerContext {
 public:
  /// Sends nothing.
  explicit ServerContext(std::shared_ptr<VtConnection> connection);
  /// Goes by these services and asks for none.
  ServerContext(std::shared_ptr<VtConnection> connection, const ServiceFlags& services);

  [[nodiscard]] const std::shared_ptr<VtConnection>& connection() const { return connection_; }
  [[nodiscard]] const std::shared_ptr<HttpConnection>& http() const { return connection_->http(); }
  [[nodiscard]] const Settings& settings() const { return *settings_; }

  /// Which services the server has. The first call of an operation settles what is not settled yet, by up to
  /// three GETs; the answer then holds for the rest of the operation, even when a question failed, so that
  /// one operation never changes its way. The next operation asks again what was not settled.
  [[nodiscard]] const ServiceFlags& Services();
  /// Makes the requests of Services here, where another request must not come before them.
  void SettleServices() { (void)Services(); }

  /// As of VtConnection.
  [[nodiscard]] std::string CsrfHeader() { return connection_->CsrfHeader(); }
  [[nodiscard]] std::string ODataWriteHeaders() { return connection_->ODataWriteHeaders(); }
  [[nodiscard]] std::shared_ptr<HttpConnection> MakeSideConnection(const std::string& url) const {
    return connection_->MakeSideConnection(url);
  }

  /// For a later operation that goes on from this one: with its services, and the settings of then.
  [[nodiscard]] ServerContext NextOperation() const;

 private:
  std::shared_ptr<VtConnection> connection_;
  std::shared_ptr<const Settings> settings_;
  std::optional<ServiceFlags> services_;
};

}  // namespace lxservices::cms_interface::vantry
