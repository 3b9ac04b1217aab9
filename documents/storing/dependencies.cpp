#include "documents/storing/dependencies.h"

#include <utility>

#include "base/checkout_id.h"
#include "base/status.h"
#include "documents/reading/document_reads.h"

namespace lxservices::cms_interface::vantry {
namespace {

// The first of the document's dependencies of that name that can be pointed at the child.
std::optional<DerivedSourceDependency> ReuseDependency(ServerContext& server, const std::string& name,
                                                       const std::string& id, const DependencyList& known) {
  for (const DerivedSourceDependency& entry : known) {
    if (entry.sourceMaster.cadName != name) continue;
    if (auto dependency = FillDependencySource(server, name, id, entry)) return dependency;
  }
  return std::nullopt;
}

}  // namespace

DependencyList ResolveDependencyMap(ServerContext& server, const DependencyMap& map) {
  return MergeDependencyMap(server, map, {});
}

DependencyList MergeDependencyMap(ServerContext& server, const DependencyMap& map,
                                  const DependencyList& known) {
  DependencyList list;
  for (const auto& [name, id] : map) {
    auto dependency = ReuseDependency(server, name, id, known);
    if (!dependency) dependency = ResolveDependency(server, name, id);
    if (dependency) list.push_back(std::move(*dependency));
  }
  return list;
}

std::optional<DerivedSourceDependency> ResolveDependency(ServerContext& server, const std::string& name,
                                                         const std::string& id) {
  auto dependency = FillDependencySource(server, name, id, {});
  if (!dependency) return std::nullopt;
  dependency->isPlaceHolder = false;
  dependency->hasCompleteDependencies = true;
  dependency->revNum = 0;
  return dependency;
}

std::optional<DerivedSourceDependency> FillDependencySource(ServerContext& server, const std::string& name,
                                                            const std::string& id,
                                                            DerivedSourceDependency dependency) {
  dependency.asStoredChildName = name;
  const std::string source = ParseCheckoutId(id).document;
  if (source == dependency.sourceId) return dependency;
  dependency.sourceId = source;
  const auto [status, document] = ReadDocument(server, source);
  if (status != Ok) return std::nullopt;
  dependency.sourceMaster = document.master;
  dependency.revision = document.revision;
  dependency.iteration = document.iteration;
  dependency.authAppVersion = document.authAppVersion;
  dependency.ndVersion = document.ndVersion;
  dependency.isDerived = document.isDerived;
  return dependency;
}

}  // namespace lxservices::cms_interface::vantry
