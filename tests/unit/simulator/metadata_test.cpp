#include "simulator/wire/metadata.h"

#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

/// The text of the element String in the annotation of the schema's version.
std::string SchemaVersion(const std::optional<std::string>& document) {
  if (!document) return "none";
  const auto annotation = document->find("<Annotation Term=\"Core.SchemaVersion\">");
  if (annotation == std::string::npos) return "no annotation";
  const auto begin = document->find("<String>", annotation) + 8;
  return document->substr(begin, document->find("</String>", begin) - begin);
}

bool FolderHasContents(const std::string& document) {
  const auto folder = document.find("<EntityType Name=\"Folder\">");
  const auto end = document.find("</EntityType>", folder);
  return document.substr(folder, end - folder).find("<NavigationProperty Name=\"FolderContents\"") !=
         std::string::npos;
}

TEST(Metadata, EachGenerationHasItsSchemaVersions) {
  EXPECT_EQ(SchemaVersion(MetadataDocument(Generation::Schema1, "DataAdmin")), "1");
  EXPECT_EQ(SchemaVersion(MetadataDocument(Generation::Schema1, "DynamicDocMgmt")), "1");
  EXPECT_EQ(SchemaVersion(MetadataDocument(Generation::Schema1, "CADDocumentMgmt")), "1");
  EXPECT_EQ(SchemaVersion(MetadataDocument(Generation::Schema4, "DataAdmin")), "4");
  EXPECT_EQ(SchemaVersion(MetadataDocument(Generation::Schema4, "DynamicDocMgmt")), "2");
  EXPECT_EQ(SchemaVersion(MetadataDocument(Generation::Schema5, "DataAdmin")), "5");
  EXPECT_EQ(SchemaVersion(MetadataDocument(Generation::Schema5, "DynamicDocMgmt")), "2");
}

TEST(Metadata, FoldersKnowTheirContentsSinceTheFourthSchema) {
  EXPECT_FALSE(FolderHasContents(*MetadataDocument(Generation::Schema1, "DataAdmin")));
  EXPECT_TRUE(FolderHasContents(*MetadataDocument(Generation::Schema4, "DataAdmin")));
  EXPECT_TRUE(FolderHasContents(*MetadataDocument(Generation::Schema5, "DataAdmin")));
}

TEST(Metadata, GatewayHasNone) {
  for (const char* service : {"DataAdmin", "DynamicDocMgmt", "CADDocumentMgmt"}) {
    EXPECT_FALSE(MetadataDocument(Generation::Gateway, service)) << service;
  }
  EXPECT_FALSE(MetadataDocument(Generation::Schema5, "Unknown"));
}

TEST_F(SimulatorTest, GatewayAnswersNothingUnderOData) {
  options_.generation = Generation::Gateway;
  for (const char* path :
       {"/servlet/odata/", "/servlet/odata/DataAdmin/$metadata", "/servlet/odata/v1/ZVK/GetCSRFToken()",
        "/servlet/odata/v1/ZVK/IsAssemblyInstalled(assemblyName='kotia')",
        "/servlet/odata/v3/Visualization/GetHVDFeatures()"}) {
    EXPECT_EQ(Get(path).status, 404) << path;
  }
  EXPECT_EQ(Get("/servlet/rest/security/csrf").status, 200);
  EXPECT_EQ(Get("/servlet/rest/v1/contexts").status, 200);
}

TEST_F(SimulatorTest, MetadataIsReachedUnderADollarEscapedOrNot) {
  EXPECT_EQ(Get("/servlet/odata/DataAdmin/$metadata").contentType, "application/xml;charset=UTF-8");
  EXPECT_EQ(Get("/servlet/odata/DataAdmin/%24metadata").status, 200);
  EXPECT_EQ(Get("/servlet/odata/Unknown/$metadata").status, 404);
}

TEST_F(SimulatorTest, ServiceListIsABareArrayWithIds) {
  const auto services = GetJson("/servlet/odata/");
  ASSERT_TRUE(services.IsArray());
  bool found = false;
  for (const auto& service : services.GetArray()) {
    for (const char* member : {"path", "name", "description", "id"}) EXPECT_TRUE(service[member].IsString());
    found = found || std::string_view(service["id"].GetString()) == "DynamicDocMgmt";
  }
  EXPECT_TRUE(found);
}

}  // namespace
}  // namespace vantry_sim
