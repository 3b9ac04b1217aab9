#include "platform/http.h"

// The destructors are here and not beside the transport, so that a program which brings a transport of its
// own still finds them.
namespace du::http {

Connection::~Connection() = default;
FileSource::~FileSource() = default;
FileSink::~FileSink() = default;

}  // namespace du::http
