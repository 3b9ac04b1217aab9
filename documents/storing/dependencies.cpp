#include "documents/storing/dependencies.h"

#include <utility>

#include "base/checkout_id.h"
#include "base/status.h"
#include "documents/reading/document_reads.h"

namespace lxservices::cms_interface::vantry {
namespace {

// The first of the document's dependencies of that name that can be pointed at the child.
bool ReuseDependency(ServerContext& server, const std::string& name, const std::string& id,
                     const DependencyList& known, DerivedSourceDependency& dependency) {
  for (const DerivedSourceDependency& entry : known) {
    if (entry.sourceMaster.cadName != name) continue;
    dependency = entry;
    if (FillDependencySource(server, name, id, dependency)) return true;
  }
  return false;
}

}  // namespace

DependencyList ResolveDependencyMap(ServerContext& server, const DependencyMap& map) {
  DependencyList list;
  for (const auto& [name, id] : map) {
    DerivedSourceDependency dependency;
    if (ResolveDependency(server, name, id, dependency)) list.push_back(std::move(dependency));
  }
  return list;
}

DependencyList MergeDependencyMap(ServerContext& server, const DependencyMap& map,
                                  const DependencyList& known) {
  DependencyList list;
  for (const auto& [name, id] : map) {
    DerivedSourceDependency dependency;
    if (ReuseDependency(server, name, id, known, dependency) ||
        ResolveDependency(server, name, id, dependency)) {
      list.push_back(std::move(dependency));
    }
  }
  return list;
}

bool ResolveDependency(ServerContext& server, const std::string& name, const std::string& id,
                       DerivedSourceDependency& dependency) {
  dependency = {};
  if (!FillDependencySource(server, name, id, dependency)) return false;
  dependency.isPlaceHolder = false;
  dependency.hasCompleteDependencies = true;
  dependency.revNum = 0;
  return true;
}

bool FillDependencySource(ServerContext& server, const std::string& name, const std::string& id,
                          DerivedSourceDependency& dependency) {
  dependency.asStoredChildName = name;
  const std::string source = ParseCheckoutId(id.c_str()).field0;
  if (source == dependency.sourceId) return true;
  dependency.sourceId = source;
  DocumentRecord document;
  if (ReadDocument(server, source, document) != Ok) return false;
  dependency.sourceMaster = document.master;
  dependency.revision = document.revision;
  dependency.iteration = document.iteration;
  dependency.authAppVersion = document.authAppVersion;
  dependency.ndVersion = document.ndVersion;
  dependency.isDerived = document.isDerived;
  return true;
}

}  // namespace lxservices::cms_interface::vantry
