#include "hosts/cli/doctor/examined_step.h"

namespace vtdirect_cli {

const char* WordOf(ExaminedStep::State state) {
  switch (state) {
    case ExaminedStep::State::Ok:
      return "ok";
    case ExaminedStep::State::Warning:
      return "warning";
    case ExaminedStep::State::Failed:
      return "failed";
    default:
      return "skipped";
  }
}

}  // namespace vtdirect_cli
