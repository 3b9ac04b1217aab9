#include "browsing/context_kind.h"

#include <string_view>

namespace lxservices::cms_interface::vantry {
namespace {

struct KindRow {
  ContextKind kind;
  const char* restWord;
  const char* odataType;
};

constexpr KindRow kindTable[] = {
    {ContextKind::Product, "Product", "ZVK.DataAdmin.ProductContainer"},
    {ContextKind::Library, "Library", "ZVK.DataAdmin.LibraryContainer"},
    {ContextKind::Project, "Project", "ZVK.DataAdmin.ProjectContainer"},
    // The one type that is not called a container.
    {ContextKind::Site, "Site", "ZVK.DataAdmin.Site"},
    {ContextKind::Organization, "Organization", "ZVK.DataAdmin.OrganizationContainer"},
};

const KindRow* FindRow(ContextKind kind) {
  for (const KindRow& row : kindTable) {
    if (row.kind == kind) return &row;
  }
  return nullptr;
}

}  // namespace

const char* RestWordOf(ContextKind kind) {
  const KindRow* row = FindRow(kind);
  return row != nullptr ? row->restWord : nullptr;
}

const char* ODataTypeOf(ContextKind kind) {
  const KindRow* row = FindRow(kind);
  return row != nullptr ? row->odataType : nullptr;
}

ContextKind KindOfRestWord(const char* word) {
  if (word == nullptr) return ContextKind::None;
  for (const KindRow& row : kindTable) {
    if (std::string_view(word) == row.restWord) return row.kind;
  }
  return ContextKind::None;
}

}  // namespace lxservices::cms_interface::vantry
