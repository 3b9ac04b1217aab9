// What is found in a schema document, and at which depth it counts.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "connection/service_schema.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"

namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

std::string Version(const std::string& content) {
  return R"(<Annotation Term="Core.SchemaVersion">)" + content + "</Annotation>";
}

class SchemaElements : public testing::Test {
 protected:
  // Reads a document whose "Schema" is where servers put it.
  void ReadSchema(const std::string& content) {
    ReadDocument(R"(<?xml version="1.0" encoding="utf-8"?>
<edmx:Edmx Version="4.0" xmlns:edmx="http://docs.oasis-open.org/odata/ns/edmx"><edmx:DataServices>
<Schema Namespace="ZVK" xmlns="http://docs.oasis-open.org/odata/ns/edm">)" +
                 content + "</Schema></edmx:DataServices></edmx:Edmx>");
  }

  void ReadDocument(const std::string& document) {
    version = -7;
    transport.Then(200, document);
    ASSERT_EQ(FetchSchema(connection, "servlet/odata/X/$metadata", &query, &version), Ok);
  }

  [[nodiscard]] bool FoundProperty(std::size_t entity = 0) const { return query[entity].properties[0].found; }
  [[nodiscard]] bool FoundNavigation(std::size_t entity = 0) const {
    return query[entity].navigationProperties[0].found;
  }

  vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::ScriptedTransport transport;
  VtConnection connection{"http://plm.example/vt", [](const char*) { return false; }};
  SchemaQuery query{{"Folder", {{"Name"}}, {{"FolderContents"}}}};
  static constexpr int none = -7;
  int version = none;
};

TEST_F(SchemaElements, TheVersionIsTheStringOfTheVersionAnnotation) {
  ReadSchema(Version("<String>4</String>"));
  EXPECT_EQ(version, 4);
}

TEST_F(SchemaElements, TheSchemaMayBeTheRoot) {
  ReadDocument("<Schema>" + Version("<String>4</String>") + "</Schema>");
  EXPECT_EQ(version, 4);
}

TEST_F(SchemaElements, AnAnnotationWithAnotherTermStartsNoVersion) {
  ReadSchema(R"(<Annotation Term="Core.Description"><String>4</String></Annotation>)"
             R"(<Annotation><String>5</String></Annotation>)"
             R"(<Annotation Term="core.schemaversion"><String>6</String></Annotation>)"
             R"(<Annotation Name="Core.SchemaVersion"><String>7</String></Annotation>)");
  EXPECT_EQ(version, none);
}

TEST_F(SchemaElements, TheTermIsFoundAmongOtherAttributes) {
  ReadSchema(R"(<Annotation Qualifier="q" Term="Core.SchemaVersion" x="y"><String>4</String></Annotation>)");
  EXPECT_EQ(version, 4);
}

TEST_F(SchemaElements, AnAnnotationElsewhereThanDirectlyInASchemaStartsNoVersion) {
  ReadSchema("<EntityContainer>" + Version("<String>4</String>") +
             "</EntityContainer><EntityType Name=\"Folder\">" + Version("<String>5</String>") +
             "</EntityType>");
  EXPECT_EQ(version, none);
  ReadDocument("<Edmx>" + Version("<String>6</String>") + "<Schema/>" + Version("<String>7</String>") +
               "</Edmx>");
  EXPECT_EQ(version, none);
}

TEST_F(SchemaElements, AStringDeeperInTheAnnotationIsIgnored) {
  ReadSchema(Version("<Collection><String>4</String></Collection>"));
  EXPECT_EQ(version, none);
}

TEST_F(SchemaElements, OnlyAStringElementCounts) {
  ReadSchema(Version("4<Int>5</Int><string>6</string>"));
  EXPECT_EQ(version, none);
  ReadSchema(R"(<Annotation Term="Core.SchemaVersion" String="4"/>)");
  EXPECT_EQ(version, none);
}

TEST_F(SchemaElements, OfSeveralVersionsTheLastWins) {
  ReadSchema(Version("<String>4</String><String>5</String>"));
  EXPECT_EQ(version, 5);
  ReadSchema(Version("<String>4</String>") + Version("<String>3</String>"));
  EXPECT_EQ(version, 3);
  ReadDocument("<E><Schema>" + Version("<String>4</String>") + "</Schema><Schema>" +
               Version("<String>2</String>") + "</Schema></E>");
  EXPECT_EQ(version, 2);
}

TEST_F(SchemaElements, AVersionAnnotationBehindAnotherAnnotationIsRead) {
  ReadSchema(R"(<Annotation Term="Core.Description"><String>9</String></Annotation>)" +
             Version("<String>4</String>") +
             R"(<Annotation Term="Core.LongDescription"><String>8</String></Annotation>)");
  EXPECT_EQ(version, 4);
}

TEST_F(SchemaElements, TheVersionIsReadAsTheCLibraryReadsNumbers) {
  ReadSchema(Version("<String> \n 12 </String>"));
  EXPECT_EQ(version, 12);
  ReadSchema(Version("<String>4.7</String>"));
  EXPECT_EQ(version, 4);
  ReadSchema(Version("<String>v4</String>"));
  EXPECT_EQ(version, 0);
  ReadSchema(Version("<String/>"));
  EXPECT_EQ(version, 0);
  ReadSchema(Version("<String>-3</String>"));
  EXPECT_EQ(version, -3);
}

TEST_F(SchemaElements, TheVersionIsReadFromAllItsPieces) {
  ReadSchema(Version("<String>1<!-- c -->2<![CDATA[3]]>&#52;</String>"));
  EXPECT_EQ(version, 1234);
}

TEST_F(SchemaElements, TheVersionIsReadAcrossTheEndOfAChunk) {
  for (std::size_t padding = 400; padding < 520; ++padding) {
    ReadDocument("<Schema>" + std::string(padding, ' ') + Version("<String>1234</String>") + "</Schema>");
    EXPECT_EQ(version, 1234) << padding;
  }
}

TEST_F(SchemaElements, AnElementInsideTheStringEndsIt) {
  ReadSchema(Version("<String>3<b/>7</String>"));
  EXPECT_EQ(version, 3);
  ReadSchema(Version("<String>3<b>4</b>7</String>"));
  EXPECT_EQ(version, 34);
}

TEST_F(SchemaElements, ANavigationPropertyOfTheSoughtTypeIsMarked) {
  ReadSchema(R"(<EntityType Name="Folder"><NavigationProperty Name="FolderContents"/></EntityType>)");
  EXPECT_TRUE(FoundNavigation());
  EXPECT_FALSE(FoundProperty());
  EXPECT_EQ(version, none);
}

TEST_F(SchemaElements, APropertyOfTheSoughtTypeIsMarked) {
  ReadSchema(R"(<EntityType Name="Folder"><Property Type="Edm.String" Name="Name"/></EntityType>)");
  EXPECT_TRUE(FoundProperty());
  EXPECT_FALSE(FoundNavigation());
}

TEST_F(SchemaElements, TheTwoKindsOfPropertyAreApart) {
  ReadSchema(R"(<EntityType Name="Folder"><Property Name="FolderContents"/><NavigationProperty Name="Name"/>)"
             R"(</EntityType>)");
  EXPECT_FALSE(FoundProperty());
  EXPECT_FALSE(FoundNavigation());
}

TEST_F(SchemaElements, MembersOfOtherNamesAndWithoutANameAreNotMarked) {
  ReadSchema(R"(<EntityType Name="Folder"><Property/><Property Name=""/><Property Name="name"/>)"
             R"(<Property Names="Name"/><NavigationProperty Name="FolderContent"/></EntityType>)");
  EXPECT_FALSE(FoundProperty());
  EXPECT_FALSE(FoundNavigation());
}

TEST_F(SchemaElements, MembersOfOtherTypesAreNotMarked) {
  ReadSchema(R"(<EntityType Name="Folders"><Property Name="Name"/></EntityType>)"
             R"(<EntityType><Property Name="Name"/></EntityType>)"
             R"(<ComplexType Name="Folder"><Property Name="Name"/></ComplexType>)"
             R"(<Property Name="Name"/>)");
  EXPECT_FALSE(FoundProperty());
}

TEST_F(SchemaElements, MembersBehindTheSoughtTypeAreNotMarked) {
  ReadSchema(
      R"(<EntityType Name="Folder"><Key/></EntityType><EntityType Name="Other"><Property Name="Name"/>)"
      R"(</EntityType><ComplexType><Property Name="Name"/></ComplexType>)");
  EXPECT_FALSE(FoundProperty());
}

TEST_F(SchemaElements, APropertyDeeperThanDirectlyInTheTypeIsNotMarked) {
  ReadSchema(R"(<EntityType Name="Folder"><Key><Property Name="Name"/></Key>)"
             R"(<Property Name="Other"><NavigationProperty Name="FolderContents"/></Property></EntityType>)");
  EXPECT_FALSE(FoundProperty());
  EXPECT_FALSE(FoundNavigation());
}

TEST_F(SchemaElements, APropertyBehindADeeperElementIsMarked) {
  ReadSchema(
      R"(<EntityType Name="Folder"><Key><PropertyRef Name="ID"/></Key><Property Name="Name"/></EntityType>)");
  EXPECT_TRUE(FoundProperty());
}

TEST_F(SchemaElements, ATypeElsewhereThanDirectlyInASchemaIsNotTheSoughtOne) {
  ReadDocument(R"(<E><EntityType Name="Folder"><Property Name="Name"/></EntityType><Schema><X>)"
               R"(<EntityType Name="Folder"><Property Name="Name"/></EntityType></X></Schema></E>)");
  EXPECT_FALSE(FoundProperty());
}

TEST_F(SchemaElements, EveryMemberOfThatNameIsMarked) {
  query = {{"Folder", {{"Name"}, {"Other"}, {"Name"}}, {}}};
  ReadSchema(R"(<EntityType Name="Folder"><Property Name="Name"/></EntityType>)");
  EXPECT_TRUE(query[0].properties[0].found);
  EXPECT_FALSE(query[0].properties[1].found);
  EXPECT_TRUE(query[0].properties[2].found);
}

TEST_F(SchemaElements, OfSeveralQueriesForOneTypeTheFirstIsMarked) {
  query = {{"Other", {{"Name"}}, {}}, {"Folder", {{"Name"}}, {}}, {"Folder", {{"Name"}}, {}}};
  ReadSchema(R"(<EntityType Name="Folder"><Property Name="Name"/></EntityType>)");
  EXPECT_FALSE(FoundProperty(0));
  EXPECT_TRUE(FoundProperty(1));
  EXPECT_FALSE(FoundProperty(2));
}

TEST_F(SchemaElements, SeveralTypesAreSoughtAtOnce) {
  query = {{"A", {{"x"}}, {}}, {"B", {{"x"}}, {}}};
  ReadSchema(R"(<EntityType Name="B"><Property Name="x"/></EntityType><EntityType Name="A"/>)");
  EXPECT_FALSE(FoundProperty(0));
  EXPECT_TRUE(FoundProperty(1));
}

TEST_F(SchemaElements, AQueryWithoutMembersIsHarmless) {
  query = {{"Folder", {}, {}}};
  ReadSchema(
      R"(<EntityType Name="Folder"><Property Name="Name"/><NavigationProperty Name="x"/></EntityType>)");
  query.clear();
  ReadSchema(R"(<EntityType Name="Folder"><Property Name="Name"/></EntityType>)" +
             Version("<String>4</String>"));
  EXPECT_EQ(version, 4);
}

TEST_F(SchemaElements, ASchemaInsideStartsANewCount) {
  ReadDocument(R"(<Schema><EntityType Name="Folder"><Schema>)" + Version("<String>4</String>") +
               R"(</Schema><Property Name="Name"/></EntityType>)" + Version("<String>5</String>") +
               "</Schema>");
  // Directly in the inner "Schema", so it counts.
  EXPECT_EQ(version, 4);
  // The count of the entity type went on meanwhile.
  EXPECT_TRUE(FoundProperty());
  // The outer "Schema" was forgotten with the end of the inner one, or the version would be 5.
}

TEST_F(SchemaElements, ASchemaDirectlyInASchemaStartsANewCount) {
  ReadDocument("<Schema><Schema>" + Version("<String>4</String>") + "</Schema>" +
               Version("<String>5</String>") + "</Schema>");
  EXPECT_EQ(version, 4);
}

TEST_F(SchemaElements, NamesWithAPrefixAreOtherNames) {
  ReadDocument("<e:Schema xmlns:e=\"x\">" + Version("<String>4</String>") + "</e:Schema>");
  EXPECT_EQ(version, none);
}

}  // namespace
