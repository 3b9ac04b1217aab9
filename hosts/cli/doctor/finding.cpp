#include "hosts/cli/doctor/finding.h"

namespace vtdirect_cli {

const char* WordOf(Finding::State state) {
  switch (state) {
    case Finding::State::Ok:
      return "ok";
    case Finding::State::Warning:
      return "warning";
    case Finding::State::Failed:
      return "failed";
    default:
      return "skipped";
  }
}

}  // namespace vtdirect_cli
