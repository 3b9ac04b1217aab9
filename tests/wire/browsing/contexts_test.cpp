#include "browsing/contexts.h"

#include "base/result.h"
#include "browsing/object_query.h"
#include "tests/wire/browsing/browsing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

class Contexts : public BrowsingTest {
 protected:
  static ServiceFlags Version5() {
    ServiceFlags services;
    services.dataAdminV5 = true;
    return services;
  }
};

constexpr const char* gadget =
    R"({"items":[{"id":"OR:vn.Example:76","attributes":{"name":"Widget"}},
        {"id":"OR:vn.Example:77","attributes":{"name":"Gadget","organizationReference.name":"Acme"}},
        {"id":"OR:vn.Example:78","attributes":{"name":"Gadget","organizationReference.name":"Second"}}]})";

TEST_F(Contexts, AreReadByTheWordOfTheirKind) {
  transport.Then(200, gadget);
  std::vector<RestItem> rows;
  EXPECT_EQ(HandOver(ListContextsByKind(Begin(connection), "Product"), rows), Ok);
  EXPECT_EQ(rows.size(), 3U);
  EXPECT_EQ(transport.requests(), Requests{Rest("servlet/rest/v1/contexts?type=Product")});
}

TEST_F(Contexts, AWordIsEscaped) {
  transport.Then(401);
  EXPECT_EQ(ListContextsByKind(Begin(connection), "a b&c").status, Unauthorized);
  EXPECT_EQ(transport.requests(), Requests{Rest("servlet/rest/v1/contexts?type=a%20b%26c")});
}

TEST_F(Contexts, TheFirstOfANameIsFound) {
  transport.Then(200, gadget);
  ContextRecord record;
  EXPECT_TRUE(HandOver(FindContext(Begin(connection), ContextKind::Library, "Gadget"), record));
  EXPECT_EQ(record.id, "OR:vn.Example:77");
  EXPECT_EQ(record.name, "Gadget");
  EXPECT_EQ(record.typeClass, "vn.Example");
  EXPECT_EQ(record.organization, "Acme");
  EXPECT_EQ(transport.requests(), Requests{Rest("servlet/rest/v1/contexts?type=Library")});
}

TEST_F(Contexts, WithoutAKindAllAreLookedThrough) {
  transport.Then(200, gadget).Then(200, gadget);
  ContextRecord record;
  EXPECT_TRUE(HandOver(FindContext(Begin(connection), ContextKind::None, "Widget"), record));
  EXPECT_EQ(record.organization, "");
  EXPECT_TRUE(HandOver(FindContext(Begin(connection), static_cast<ContextKind>(6), "Widget"), record));
  EXPECT_EQ(transport.requests(),
            (Requests{Rest("servlet/rest/v1/contexts"), Rest("servlet/rest/v1/contexts")}));
}

TEST_F(Contexts, AnIdWithoutTwoColonsCountsAsNotFound) {
  for (const char* id : {"abc", "a:b", "a::b", ""}) {
    transport.Then(200, std::string(R"({"items":[{"id":")") + id + R"(","attributes":{"name":"Gadget"}},
        {"id":"OR:vn.Example:77","attributes":{"name":"Gadget"}}]})");
    ContextRecord record;
    record.id = "untouched:vn.Old:1";
    EXPECT_FALSE(HandOver(FindContext(Begin(connection), ContextKind::Product, "Gadget"), record)) << id;
    EXPECT_EQ(record.id, "untouched:vn.Old:1");
  }
}

TEST_F(Contexts, TheTypeClassReachesFromTheFirstColonToTheLast) {
  transport.Then(200, R"({"items":[{"id":"OR:vn:Example:77","attributes":{"name":"Gadget"}}]})");
  ContextRecord record;
  EXPECT_TRUE(HandOver(FindContext(Begin(connection), ContextKind::Site, "Gadget"), record));
  EXPECT_EQ(record.typeClass, "vn:Example");
}

TEST_F(Contexts, ARowWithoutANameComparesAsEmpty) {
  transport.Then(200, R"({"items":[{"id":"OR:vn.Example:1"}]})");
  ContextRecord record;
  EXPECT_TRUE(HandOver(FindContext(Begin(connection), ContextKind::Product, ""), record));
}

TEST_F(Contexts, AnUnknownNameOrAFailureFindsNothing) {
  transport.Then(200, gadget).Then(500).Then(200, "no json").Then(200, R"({"items":{}})");
  ContextRecord record;
  for (int answer = 0; answer < 4; ++answer) {
    EXPECT_FALSE(HandOver(FindContext(Begin(connection), ContextKind::Product, "gadget"), record));
  }
  EXPECT_EQ(record.id, "");
  EXPECT_EQ(record.name, "");
}

TEST_F(Contexts, TheirIdComesByRestBelowVersion5) {
  transport.Then(200, gadget).Then(404);
  EXPECT_EQ(ResolveContextId(Begin(connection, ServiceFlags()), ContextKind::Project, "Gadget"),
            "OR:vn.Example:77");
  EXPECT_EQ(ResolveContextId(Begin(connection, ServiceFlags()), ContextKind::Project, "Gadget"), "");
  EXPECT_EQ(transport.requests(), (Requests{Rest("servlet/rest/v1/contexts?type=Project"),
                                            Rest("servlet/rest/v1/contexts?type=Project")}));
}

TEST_F(Contexts, TheirIdComesByODataInVersion5) {
  transport.Then(200, R"({"value":[{"ID":"C100"}]})");
  EXPECT_EQ(ResolveContextId(Begin(connection, Version5()), ContextKind::Site, "Gadget"), "C100");
  EXPECT_EQ(ResolveContextId(Begin(connection, Version5()), ContextKind::None, "Gadget"), "");
  EXPECT_EQ(transport.requests(), Requests{OData("servlet/odata/v5/DataAdmin/Containers/ZVK.DataAdmin.Site"
                                                 "?$select=ID&$filter=Name%20eq%20%27Gadget%27")});
}

TEST_F(Contexts, AreNotAskedForWithoutTheBitForDirectories) {
  EXPECT_TRUE(ListContexts(Begin(connection, ServiceFlags()), ContextKind::Product, Collect(), Bits(1)));
  EXPECT_TRUE(ListContexts(Begin(connection, Version5()), ContextKind::None, Collect(), Bits(13)));
  EXPECT_THAT(entries, IsEmpty());
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(Contexts, AreListedByRestBelowVersion5) {
  transport.Then(200, R"({"items":[{"id":"I1","attributes":{"name":"a|b"}},{"id":"I2"},7]})");
  EXPECT_TRUE(ListContexts(Begin(connection, ServiceFlags()), ContextKind::Product, Collect(), Bits(2)));
  EXPECT_THAT(entries, ElementsAre("dir a|b id=I1", "dir  id=I2", "dir  id="));
  EXPECT_EQ(transport.requests(), Requests{Rest("servlet/rest/v1/contexts?type=Product")});
}

TEST_F(Contexts, ARefusedListIsAFailure) {
  transport.Then(401);
  EXPECT_FALSE(ListContexts(Begin(connection, ServiceFlags()), ContextKind::Product, Collect(), Bits(3)));
}

TEST_F(Contexts, AreListedByODataInVersion5) {
  transport.Then(200, R"({"value":[{"ID":"C1","Name":"Gadget"}]})");
  EXPECT_TRUE(ListContexts(Begin(connection, Version5()), ContextKind::Library, Collect(), Bits(3)));
  EXPECT_FALSE(ListContexts(Begin(connection, Version5()), ContextKind::None, Collect(), Bits(3)));
  EXPECT_THAT(entries, ElementsAre("dir Gadget id=C1"));
  EXPECT_EQ(transport.requests(), Requests{OData("servlet/odata/v5/DataAdmin/Containers/"
                                                 "ZVK.DataAdmin.LibraryContainer?$select=ID,Name")});
}

TEST_F(Contexts, ObjectsAreQueriedWithSelectAndFilterAsTheyStand) {
  transport.Then(200, R"([{"id":"E1","attributes":{"number":"0042"}}])").Then(200, "[]");
  std::vector<RestItem> rows;
  EXPECT_EQ(HandOver(QueryObjects(Begin(connection), "vn.epm.EPMDocument", "number", "CADName eq 'gear.lxz'"),
                     rows),
            Ok);
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0].id, "E1");
  EXPECT_EQ(rows[0].attributes.at("number"), "0042");
  EXPECT_EQ(HandOver(QueryObjects(Begin(connection), "a b", "", ""), rows), Ok);
  EXPECT_EQ(transport.requests(),
            (Requests{Rest("servlet/rest/objects?typeId=vn.epm.EPMDocument&$select=number&$filter="
                           "CADName eq 'gear.lxz'"),
                      Rest("servlet/rest/objects?typeId=a%20b")}));
}

TEST_F(Contexts, AWrappedAnswerToAnObjectQueryGivesNoRows) {
  transport.Then(200, R"({"items":[{"id":"E1"}]})").Then(500);
  std::vector<RestItem> rows;
  EXPECT_EQ(HandOver(QueryObjects(Begin(connection), "t", "", ""), rows), Ok);
  EXPECT_THAT(rows, IsEmpty());
  EXPECT_NE(HandOver(QueryObjects(Begin(connection), "t", "", ""), rows), Ok);
}

}  // namespace
}  // namespace vtdirect_test
