#pragma once

#include <map>
#include <optional>
#include <string>

#include "server/file_server.h"
#include "translation/xliff_server.h"

namespace vtdirect_test {

/// A translation service that refuses whatever it is asked: what it hands out is that it is there.
class FakeXliffServer final : public lxservices::cms_interface::XliffServer {
  using FileInfo = lxservices::cms_interface::FileInfo;
  using Progress = std::function<bool(std::size_t, std::size_t)>;
  using Document = lxservices::cms_interface::XliffDocumentRef;

 public:
  bool UploadSource(const char*, const char*, const char*, FileInfo&, Progress) override { return false; }
  bool UpdateSource(const char*, const char*, FileInfo&, Progress, const char*) override { return false; }
  bool GetSourceXliff(const char*, Document&) override { return false; }
  bool GetTranslations(const char*, Document&, std::map<std::string, std::string>&) override { return false; }
  bool GetDocumentLanguage(const char*, Document&) override { return false; }
  bool SetPublished(const char*) override { return false; }
};

/// A checkout service that refuses whatever it is asked.
class FakeCheckoutServer final : public lxservices::cms_interface::CheckoutServer {
  using FileInfo = lxservices::cms_interface::FileInfo;
  using State = lxservices::cms_interface::VtCheckoutState;
  using Checkouts = lxservices::cms_interface::TemporaryCheckouts;

 public:
  bool GetCheckoutState(const char*, State&) override { return false; }
  bool Checkout(const char*, FileInfo&) override { return false; }
  bool UndoCheckout(const char*, FileInfo&) override { return false; }
  lxservices::cms_interface::Status Store(const char*, const lxservices::cms_interface::DocumentUploadParams&,
                                          lxservices::cms_interface::ProgressFunction) override {
    return lxservices::cms_interface::Refused;
  }
  bool Checkin(const char*, FileInfo&) override { return false; }
  std::optional<Checkouts> FindTemporaryCheckoutsOf(const char*) override { return std::nullopt; }
  std::optional<Checkouts> FindTemporaryCheckoutsBelow(const char*) override { return std::nullopt; }
  bool VerifyCheckout(const char*, FileInfo&, State&) override { return false; }
};

}  // namespace vtdirect_test
