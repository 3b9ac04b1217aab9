#pragma once

#include <curl/curl.h>

#include <cstddef>
#include <string_view>

namespace vtdirect::platform {

/// A listener that sees what goes over the wire. curl has one trace function a handle, so all who want to see it
/// ask here.
class WireListener {
 public:
  WireListener() = default;
  WireListener(const WireListener&) = delete;
  WireListener& operator=(const WireListener&) = delete;
  virtual ~WireListener() = default;

  virtual void WireShows(curl_infotype type, std::string_view bytes) = 0;
};

/// Keeps a continuation line out of curl where there is nothing that it could continue: right after the status
/// line, where no server may send one. curl 7.88 joins such a line to the last header line of the handle's answer
/// before, whose memory is free by then.
///
/// curl shows a line before it takes it in, and to its trace function alone. There the blank at its start is
/// overwritten, which makes it a line of its own, and the exchange is ended when it arrives. The trace is on only
/// while such a line may come: curl formats all that it has to say for it, which is dear for a small request.
class FoldedStart {
 public:
  /// Registers the trace function on the handle, for good. The object must outlive the handle.
  void Attach(CURL* handle);
  /// Prepares the next exchange.
  void Start();
  /// Shows the listener too what curl traces, all of it, until null is given.
  void ShowTo(WireListener* listener);

  // What curl tells of the exchange, each to be told before anything else is done about it.

  /// A connection is made. A proxy on it may answer before the server is asked. curl keeps nothing of such an answer,
  /// and shows its lines to the trace function alone; one that begins so ends the exchange like a server's.
  void ConnectionBegins() { Watch(true); }
  /// The request goes out, on a connection that is ready.
  void RequestStarts() { Watch(false); }
  /// A line of the answer arrives, its status line included.
  void LineArrives(char* data, std::size_t size);

  /// True when such a line came.
  [[nodiscard]] bool Met() const { return met_; }

 private:
  static int OnTrace(CURL*, curl_infotype type, char* data, std::size_t size, void* self);

  void See(char* data, std::size_t size);
  void Watch(bool on);
  void SwitchTrace();

  CURL* handle_ = nullptr;
  WireListener* listener_ = nullptr;
  bool watches_ = false;
  bool traceIsOn_ = false;
  bool behindStatusLine_ = true;  ///< also where there is no status line at all
  bool met_ = false;
};

}  // namespace vtdirect::platform
