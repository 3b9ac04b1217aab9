#include "simulator/wire/metadata.h"

namespace vantry_sim {
namespace {

/// A schema as it is put together: entity types first, its own version at the end.
class Schema {
 public:
  explicit Schema(std::string_view nameSpace) {
    text_ =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<edmx:Edmx xmlns:edmx=\"http://docs.oasis-open.org/odata/ns/edmx\" Version=\"4.0\">\n"
        "  <edmx:Reference "
        "Uri=\"http://docs.oasis-open.org/odata/odata/v4.0/os/vocabularies/Org.OData.Core.V1.xml\">\n"
        "    <edmx:Include Namespace=\"Org.OData.Core.V1\" Alias=\"Core\"/>\n"
        "  </edmx:Reference>\n"
        "  <edmx:DataServices>\n"
        "    <Schema xmlns=\"http://docs.oasis-open.org/odata/ns/edm\" Namespace=\"";
    text_.append(nameSpace).append("\">\n");
  }

  Schema& Entity(std::string_view name, std::string_view baseType) {
    text_.append("      <EntityType Name=\"").append(name);
    if (!baseType.empty()) text_.append("\" BaseType=\"").append(baseType);
    text_.append("\">\n");
    if (baseType.empty()) text_ += "        <Key>\n          <PropertyRef Name=\"ID\"/>\n        </Key>\n";
    return *this;
  }

  Schema& Property(std::string_view name, std::string_view type = "Edm.String") {
    return Member("Property", name, type);
  }

  Schema& Navigation(std::string_view name, std::string_view type) {
    return Member("NavigationProperty", name, type);
  }

  Schema& EndEntity() {
    text_ += "      </EntityType>\n";
    return *this;
  }

  Schema& EntitySet(std::string_view container, std::string_view set, std::string_view type) {
    text_.append("      <EntityContainer Name=\"")
        .append(container)
        .append("\">\n        <EntitySet Name=\"");
    text_.append(set).append("\" EntityType=\"").append(type).append("\"/>\n      </EntityContainer>\n");
    return *this;
  }

  std::string End(int version) {
    text_.append("      <Annotation Term=\"Core.Description\">\n        <String>")
        .append("Services of the product data management server")
        .append("</String>\n      </Annotation>\n");
    text_.append("      <Annotation Term=\"Core.SchemaVersion\">\n        <String>")
        .append(std::to_string(version))
        .append("</String>\n      </Annotation>\n");
    text_ += "    </Schema>\n  </edmx:DataServices>\n</edmx:Edmx>\n";
    return std::move(text_);
  }

 private:
  Schema& Member(std::string_view element, std::string_view name, std::string_view type) {
    text_.append("        <").append(element).append(" Name=\"").append(name);
    text_.append("\" Type=\"").append(type).append("\"/>\n");
    return *this;
  }

  std::string text_;
};

std::string DataAdmin(int version) {
  Schema schema("ZVK.DataAdmin");
  schema.Entity("Container", {}).Property("ID").Property("Name").Property("Description").Property("Type");
  schema.Navigation("Folders", "Collection(ZVK.DataAdmin.Folder)").EndEntity();
  for (const std::string_view name :
       {"ProductContainer", "LibraryContainer", "ProjectContainer", "Site", "OrganizationContainer"}) {
    schema.Entity(name, "ZVK.DataAdmin.Container").EndEntity();
  }
  schema.Entity("Folder", {}).Property("ID").Property("Name").Property("Description").Property("Location");
  schema.Navigation("Folders", "Collection(ZVK.DataAdmin.Folder)");
  // Folders know what they hold since the fourth schema.
  if (version >= 4) schema.Navigation("FolderContents", "Collection(ZVK.DataAdmin.FolderContent)");
  schema.EndEntity();
  if (version >= 4) {
    schema.Entity("FolderContent", {}).Property("ID").Property("Name").Property("Number").Property("Version");
    schema.Property("LastModified", "Edm.DateTimeOffset").EndEntity();
  }
  schema.EntitySet("DataAdminContainer", "Containers", "ZVK.DataAdmin.Container");
  return schema.End(version);
}

void DocumentProperties(Schema& schema, std::string_view nameProperty) {
  schema.Property("ID").Property(nameProperty).Property("Name").Property("Number").Property("Version");
  schema.Property("CheckOutStatus").Property("LastModified", "Edm.DateTimeOffset");
}

std::string DynamicDocMgmt(int version, bool translation) {
  Schema schema("ZVK.DynamicDocMgmt");
  schema.Entity("DynamicDocument", {});
  DocumentProperties(schema, "CADName");
  schema.Property("AuthoringLanguage").Property("ZVKDDEXTENDEDDOCTYPE");
  const char* const documents = "Collection(ZVK.DynamicDocMgmt.DynamicDocument)";
  if (version >= 2) schema.Navigation("Versions", documents);
  if (translation) schema.Navigation("Xliff", documents).Navigation("Translations", documents);
  schema.EndEntity();
  schema.EntitySet("DynamicDocMgmtContainer", "DynamicDocuments", "ZVK.DynamicDocMgmt.DynamicDocument");
  return schema.End(version);
}

std::string CadDocumentMgmt(int version) {
  Schema schema("ZVK.CADDocumentMgmt");
  schema.Entity("CADDocument", {});
  DocumentProperties(schema, "FileName");
  schema.Navigation("Versions", "Collection(ZVK.CADDocumentMgmt.CADDocument)").EndEntity();
  schema.EntitySet("CADDocumentMgmtContainer", "CADDocuments", "ZVK.CADDocumentMgmt.CADDocument");
  return schema.End(version);
}

int DataAdminVersion(Generation generation) {
  if (generation == Generation::Schema5) return 5;
  return generation == Generation::Schema4 ? 4 : 1;
}

}  // namespace

std::vector<ODataService> ServicesOf(Generation generation) {
  if (!HasOData(generation)) return {};
  std::vector<ODataService> services{
      {"ZVK", "Common", "Tokens and questions about the server itself", 0},
      {"DataAdmin", "Data Administration", "Containers and folders", DataAdminVersion(generation)},
      {"DynamicDocMgmt", "Dynamic Document Management", "Dynamic documents and their versions",
       generation == Generation::Schema1 ? 1 : 2},
      {"CADDocumentMgmt", "CAD Document Management", "CAD documents and their versions", 1},
  };
  if (HasVisualization(generation)) {
    services.push_back({"Visualization", "Visualization", "What viewers may count on", 0});
  }
  return services;
}

bool OffersVersion(Generation generation, std::string_view service, std::string_view digits) {
  if (digits.size() != 1 || digits[0] < '1' || digits[0] > '9') return false;
  for (const ODataService& known : ServicesOf(generation)) {
    if (known.id == service) return digits[0] - '0' <= known.schemaVersion;
  }
  return false;
}

std::optional<std::string> MetadataDocument(Generation generation, std::string_view service,
                                            bool translation) {
  for (const ODataService& known : ServicesOf(generation)) {
    if (known.id != service || known.schemaVersion == 0) continue;
    if (service == "DataAdmin") return DataAdmin(known.schemaVersion);
    if (service == "DynamicDocMgmt") return DynamicDocMgmt(known.schemaVersion, translation);
    if (service == "CADDocumentMgmt") return CadDocumentMgmt(known.schemaVersion);
  }
  return std::nullopt;
}

}  // namespace vantry_sim
