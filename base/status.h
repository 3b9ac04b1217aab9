#pragma once

namespace lxservices::cms_interface {

/// Result code of the services, for callers that must tell failures apart.
enum [[nodiscard]] Status{
    Ok = 0,
    NotFound = 1,          ///< the thing asked for does not exist
    Refused = 2,           ///< the server answered, but not with success
    ServerError = 3,       ///< an HTTP failure other than 404 on a schema document
    ConnectionFailed = 4,  ///< transport failure, or a failed REST listing other than for want of credentials
    Unauthorized = 5,      ///< HTTP 401 on a REST listing
    Unsupported = 6,       ///< the server is of a release that is not supported
    TooLarge = 7,          ///< an upload above the server's size limit
};

}  // namespace lxservices::cms_interface
