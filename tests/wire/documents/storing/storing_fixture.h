#pragma once

#include <string>

#include "documents/reading/file_info.h"
#include "documents/storing/upload_params.h"
#include "tests/wire/documents/flow_fixture.h"

namespace vtdirect_test {

/// What the server tells of a document that was stored.
inline constexpr const char* storedAnswer =
    R"([{"id":"D1002","revision":"A","iteration":"2","epmMaster":{"id":"M1","cadName":"pump.fnl"},
         "cadContent":{"contentSections":[{"fileSize":5},{"fileSize":7}]},
         "derivedSourceDependencies":[{"asStoredChildName":"bolt","source":{"id":"D7"}}]}])";

/// A test that stores the local file "main.fnl" with the content "MAIN".
class StoringTest : public FlowTest {
 protected:
  StoringTest() {
    params.mainPath = mainPath.c_str();
    info.id = "before";
  }

  std::string mainPath = MakeLocal("main.fnl", "MAIN");
  lxservices::cms_interface::DocumentUploadParams params;
  lxservices::cms_interface::FileInfo info;
};

}  // namespace vtdirect_test
