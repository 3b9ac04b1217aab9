#include "platform_default/folded_start.h"

#include <algorithm>
#include <string_view>

#include "platform_default/characters.h"

namespace vtdirect::platform {
namespace {

// curl takes capitals and small letters for the same. What came before can't be gone by: the empty line that ends an
// interim answer is not shown.
bool BeginsStatusLine(std::string_view line) {
  constexpr std::string_view beginning = "http/";
  return line.size() >= beginning.size() &&
         std::equal(beginning.begin(), beginning.end(), line.begin(),
                    [](char wanted, char byte) { return wanted == ToAsciiLower(byte); });
}

}  // namespace

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
  start.behindStatusLine_ = BeginsStatusLine({data, size});
  return 0;
}

}  // namespace vtdirect::platform
