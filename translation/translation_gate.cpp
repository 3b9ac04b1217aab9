#include "translation/translation_gate.h"

#include "base/failure_step.h"
#include "base/tracers.h"
#include "connection/odata_services.h"
#include "connection/server_information.h"
#include "platform/environment.h"

namespace lxservices::cms_interface::vantry {
namespace {

void TraceTooOld(const ServerVersion& version) {
  VtDirectXliffTracer()(dp::TraceType::Information)
      << "Server version: " << FormatServerVersion(version)
      << " not supported for KOT translation integration, at least: "
      << FormatServerVersion(MinimumTranslationVersion) << " is required - this feature will be disabled";
}

// Both lines say that translation is not available, and the gate opens all the same: they inform and do
// not close it. "doe" is the line's own wording.
void TraceWhatIsMissing(ServerContext& server) {
  if (!IsAssemblyInstalled(*server.connection(), "kotia")) {
    VtDirectXliffTracer()(dp::TraceType::Information)
        << "Cannot determine if KOT is installed on the server: KOT translation integration not available";
  }
  if (!HasODataDomain(*server.connection(), "DynamicDocMgmt")) {
    VtDirectXliffTracer()(dp::TraceType::Information)
        << "The required NRX APIs doe not appear to be available on this server: KOT translation integration "
           "not available";
  }
}

}  // namespace

bool TranslationGate(ServerContext& server) {
  const FailureStep step("ask whether the server translates");
  if (!dp::Environment::Get("FENLOOM_FORCE_NRX_XLIFF_ENABLE").empty()) return true;
  ServerVersion version;
  if (GetServerVersion(*server.http(), version) != Ok) return false;
  if (version < MinimumTranslationVersion) {
    ReportReason({FailureKind::ServiceMissing});
    TraceTooOld(version);
    return false;
  }
  TraceWhatIsMissing(server);
  return true;
}

}  // namespace lxservices::cms_interface::vantry
