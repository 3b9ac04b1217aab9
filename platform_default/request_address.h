#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>
#include <string_view>

namespace vtdirect::platform {

/// Tells a handle of libcurl where its requests go, by URLs that are taken apart already. With a text alone, curl
/// takes it apart for each request, and puts it together again byte by byte: a fifth of its work for a small answer.
class RequestAddress {
 public:
  /// Makes the URL that of the handle's next request; makes none itself. What can't be taken apart is left to curl,
  /// which refuses it in its own words.
  /// @param handle  keeps using this object, which must outlive it
  /// @param url     a zero byte follows it; is copied
  void Give(CURL* handle, std::string_view url);

 private:
  struct Closer {
    void operator()(CURLU* parts) const { curl_url_cleanup(parts); }
  };

  [[nodiscard]] bool TakeApart(std::string_view url);
  [[nodiscard]] bool ChangeTarget(std::string_view url);
  [[nodiscard]] bool SetPath(const char* path);
  /// @param query  null for none
  [[nodiscard]] bool SetQuery(const char* query);

  std::unique_ptr<CURLU, Closer> parts_;  ///< one for all, since the handle may still have it
  CURLU* given_ = nullptr;                ///< what the handle has
  std::string origin_;                    ///< of `parts_`, as it was written; empty without any
  bool hasQuery_ = true;                  ///< of `parts_`: whether there may be one
};

}  // namespace vtdirect::platform
