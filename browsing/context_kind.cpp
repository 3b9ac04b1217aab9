#include "browsing/context_kind.h"

namespace lxservices::cms_interface::vantry {
namespace {

struct KindRow {
  ContextKind kind;
  std::string_view restWord;
  std::string_view odataType;
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

std::string_view RestWordOf(ContextKind kind) {
  const KindRow* row = FindRow(kind);
  return row != nullptr ? row->restWord : std::string_view();
}

std::string_view ODataTypeOf(ContextKind kind) {
  const KindRow* row = FindRow(kind);
  return row != nullptr ? row->odataType : std::string_view();
}

ContextKind KindOfRestWord(std::string_view word) {
  for (const KindRow& row : kindTable) {
    if (word == row.restWord) return row.kind;
  }
  return ContextKind::None;
}

}  // namespace lxservices::cms_interface::vantry
