#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/wire/documents/failing_steps.h"
#include "tests/wire/public/listed_server.h"

namespace vtdirect_test {

/// Where the searches of these tests look.
inline const std::string searchedPath = "//plm/Products/Gadget/Folders/pump.fnl";
inline const std::string objectsLine =
    Get("servlet/rest/objects?typeId=vn.epm.EPMDocument&$select=number&$filter=CADName eq 'pump.fnl'");

/// What a flow does after the search for the document of `searchedPath`.
struct PathSearch {
  std::string id;  ///< of the document, which is in no workspace
  Ending found;    ///< the rest of the flow; its traces come after those of the search
  Ending nothing;  ///< the same when nothing was found
};

/// The five steps of the search on a server that has none of the services that a schema tells of: the
/// schemas, the query by name, the reading of what it found.
std::vector<Step> SearchSteps(const PathSearch& search);
/// What the search traces when it goes well: that the services are not there.
const Traces& MissingServices();

TraceLine NotLocated(const std::string& id);

inline std::vector<Step> Join(std::vector<Step> first, const std::vector<Step>& second) {
  return Appended(std::move(first), second);
}

}  // namespace vtdirect_test
