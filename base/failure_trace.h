#pragma once

#include "base/failure_step.h"
#include "base/tracers.h"

namespace lxservices::cms_interface {

/// Reports why something failed and gives the tracer for the line that says it to people, so that no line is
/// written without its reason: `TracerFor(Follows())(dp::TraceType::Error, "Failed to ...", ...)`. Every
/// warning and error of the library is traced through this.
[[nodiscard]] inline dp::LXTracer TracerFor(const Reason& reason,
                                            const dp::LXTracer& tracer = VtDirectTracer()) {
  ReportReason(reason);
  return tracer;
}

}  // namespace lxservices::cms_interface
