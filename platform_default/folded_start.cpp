#include "platform_default/folded_start.h"

#include <algorithm>
#include <string_view>
#include <utility>

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
  handle_ = handle;
  curl_easy_setopt(handle, CURLOPT_DEBUGFUNCTION, &OnTrace);
  curl_easy_setopt(handle, CURLOPT_DEBUGDATA, this);
}

void FoldedStart::Start() {
  behindStatusLine_ = true;
  met_ = false;
}

void FoldedStart::LineArrives(char* data, std::size_t size) {
  See(data, size);
  Watch(behindStatusLine_);
}

void FoldedStart::ShowTo(WireListener* listener) {
  listener_ = listener;
  SwitchTrace();
}

void FoldedStart::Watch(bool on) {
  watches_ = on;
  SwitchTrace();
}

void FoldedStart::SwitchTrace() {
  const bool on = watches_ || listener_ != nullptr;
  if (std::exchange(traceIsOn_, on) != on) curl_easy_setopt(handle_, CURLOPT_VERBOSE, on ? 1L : 0L);
}

void FoldedStart::See(char* data, std::size_t size) {
  if (size == 0) return;
  if (behindStatusLine_ && (*data == ' ' || *data == '\t')) {
    *data = 'x';
    met_ = true;
  }
  behindStatusLine_ = BeginsStatusLine({data, size});
}

int FoldedStart::OnTrace(CURL*, curl_infotype type, char* data, std::size_t size, void* self) {
  auto& folded = *static_cast<FoldedStart*>(self);
  if (type == CURLINFO_HEADER_IN) folded.See(data, size);
  try {
    if (folded.listener_ != nullptr) folded.listener_->WireShows(type, {data, size});
  } catch (...) {
    // For want of memory it is not recorded. Nothing may be thrown through curl.
  }
  return 0;
}

}  // namespace vtdirect::platform
