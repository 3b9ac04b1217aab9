#pragma once

namespace lxservices::cms_interface::vantry {

class VtConnection;

/// Which OData services a server has. Found out on first use and kept for the life of the server object.
struct ServiceFlags {
  bool dataAdminPresent = false;   ///< "DataAdmin" answered with a readable schema
  bool folderContents = false;     ///< its version is at least 5, or 4 with folder contents in its schema
  bool dataAdminV5 = false;        ///< its version is at least 5
  bool dataAdminChecked = false;   ///< the "DataAdmin" question is settled
  bool dynamicDocPresent = false;  ///< "DynamicDocMgmt" answered
  bool dynamicDocV2 = false;       ///< its version is at least 2
  bool dynamicDocChecked = false;  ///< that question is settled
  bool cadDocPresent = false;      ///< "CADDocumentMgmt" answered
  bool cadDocChecked = false;      ///< that question is settled
  friend bool operator==(const ServiceFlags&, const ServiceFlags&) = default;
};

/// Settles what is not settled yet: up to three GETs on this thread, in the order of the fields.
///
/// A service that is missing or whose schema is broken is settled as not there. Any other failure settles
/// nothing and leaves the later services unasked; the next call starts at the service where this one stopped.
void EnsureServiceFlags(ServiceFlags& flags, VtConnection& connection);

}  // namespace lxservices::cms_interface::vantry
