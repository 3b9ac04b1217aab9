#pragma once

#include "platform/trace.h"

/// The tracers of the library, each made on the spot for one line. Hosts filter by these names.
namespace lxservices::cms_interface {

[[nodiscard]] inline dp::LXTracer VtDirectTracer() {
  return {"fenlet", "VtDirect"};
}
[[nodiscard]] inline dp::LXTracer VtDirectUtilsTracer() {
  return {"fenlet", "VtDirectUtils"};
}
[[nodiscard]] inline dp::LXTracer CmsInterfaceTracer() {
  return {"fenlet", "CmsInterface"};
}
[[nodiscard]] inline dp::LXTracer VtDirectXliffTracer() {
  return {"fenlet", "VtDirectXliff"};
}

}  // namespace lxservices::cms_interface
