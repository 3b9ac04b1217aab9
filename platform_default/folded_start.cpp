#include "platform_default/folded_start.h"

#include <string_view>

namespace vtdirect::platform {

void FoldedStart::Attach(CURL* handle) {
  curl_easy_setopt(handle, CURLOPT_DEBUGFUNCTION, &OnTrace);
  curl_easy_setopt(handle, CURLOPT_DEBUGDATA, this);
  curl_easy_setopt(handle, CURLOPT_VERBOSE, 1L);
}

int FoldedStart::OnTrace(CURL*, curl_infotype type, char* data, std::size_t size, void* self) {
  if (type != CURLINFO_HEADER_IN || size == 0) return 0;
  auto& start = *static_cast<FoldedStart*>(self);
  if (start.behindStatusLine_ && (*data == ' ' || *data == '\t')) {
    *data = 'x';
    start.met_ = true;
  }
  start.behindStatusLine_ = std::string_view(data, size).starts_with("HTTP/");
  return 0;
}

}  // namespace vtdirect::platform
