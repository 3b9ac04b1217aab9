#pragma once

#include <curl/curl.h>

/// The socket of a connection that curl keeps from one exchange to the next; CURL_SOCKET_BAD when it keeps none.
namespace vtdirect::platform {

/// True when something waits on it, or its end over TLS does. What a server sends between two requests would be
/// read as the answer to the second one, which may be for another document or another user of this process.
[[nodiscard]] bool HasUnaskedBytes(curl_socket_t socket);

/// Ends the connection: curl finds it dead and takes a fresh one, and the handle keeps all else that it knows.
///
/// Only told to take a fresh one, curl keeps the old one beside it until the fresh one is to be kept as well. A later
/// exchange, or the same one after a demand for authentication, could still go out over the old one.
void CutConnection(curl_socket_t socket);

}  // namespace vtdirect::platform
