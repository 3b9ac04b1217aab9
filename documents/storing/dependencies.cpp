#include "documents/storing/dependencies.h"

#include <utility>

#include "base/checkout_id.h"
#include "base/status.h"
#include "documents/reading/document_reads.h"

namespace lxservices::cms_interface::vantry {
namespace {

// The first of the document's dependencies of that name that can be pointed at the child.
bool ReuseDependency(const std::shared_ptr<VtConnection>& connection, const std::string& name,
                     const std::string& id, const DependencyList& known,
                     DerivedSourceDependency& dependency) {
  for (const DerivedSourceDependency& entry : known) {
    if (entry.sourceMaster.cadName != name) continue;
    dependency = entry;
    if (FillDependencySource(connection, name, id, dependency)) return true;
  }
  return false;
}

}  // namespace

DependencyList ResolveDependencyMap(const std::shared_ptr<VtConnection>& connection,
                                    const DependencyMap& map) {
  DependencyList list;
  for (const auto& [name, id] : map) {
    DerivedSourceDependency dependency;
    if (ResolveDependency(connection, name, id, dependency)) list.push_back(std::move(dependency));
  }
  return list;
}

DependencyList MergeDependencyMap(const std::shared_ptr<VtConnection>& connection, const DependencyMap& map,
                                  const DependencyList& known) {
  DependencyList list;
  for (const auto& [name, id] : map) {
    DerivedSourceDependency dependency;
    if (ReuseDependency(connection, name, id, known, dependency) ||
        ResolveDependency(connection, name, id, dependency)) {
      list.push_back(std::move(dependency));
    }
  }
  return list;
}

bool ResolveDependency(const std::shared_ptr<VtConnection>& connection, const std::string& name,
                       const std::string& id, DerivedSourceDependency& dependency) {
  dependency = {};
  if (!FillDependencySource(connection, name, id, dependency)) return false;
  dependency.isPlaceHolder = false;
  dependency.hasCompleteDependencies = true;
  dependency.revNum = 0;
  return true;
}

bool FillDependencySource(const std::shared_ptr<VtConnection>& connection, const std::string& name,
                          const std::string& id, DerivedSourceDependency& dependency) {
  dependency.asStoredChildName = name;
  const std::string source = ParseCheckoutId(id.c_str()).field0;
  if (source == dependency.sourceId) return true;
  dependency.sourceId = source;
  DocumentRecord document;
  if (ReadDocument(connection, source, document) != Ok) return false;
  dependency.sourceMaster = document.master;
  dependency.revision = document.revision;
  dependency.iteration = document.iteration;
  dependency.authAppVersion = document.authAppVersion;
  dependency.ndVersion = document.ndVersion;
  dependency.isDerived = document.isDerived;
  return true;
}

}  // namespace lxservices::cms_interface::vantry
