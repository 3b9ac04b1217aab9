#include "browsing/containers.h"

#include "tests/wire/browsing/browsing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface::vantry;

class Containers : public BrowsingTest {};

constexpr const char* product = "ZVK.DataAdmin.ProductContainer";

TEST_F(Containers, AreFoundByNameAmongThoseOfAType) {
  transport.Then(200, R"({"value":[{"ID":"C100"}]})");
  EXPECT_EQ(FindContainerId(Begin(connection), "Gadget", product), "C100");
  EXPECT_EQ(transport.requests(), (Requests{OData("servlet/odata/v5/DataAdmin/Containers/"
                                                  "ZVK.DataAdmin.ProductContainer?$select=ID&$filter="
                                                  "Name%20eq%20%27Gadget%27")}));
}

TEST_F(Containers, AreFoundAmongAllWithoutAType) {
  transport.Then(200, R"({"value":[{"ID":"C1"}]})").Then(200, R"({"value":[{"ID":"C2"}]})");
  EXPECT_EQ(FindContainerId(Begin(connection), "O'Neill & Co", ""), "C1");
  EXPECT_EQ(FindContainerId(Begin(connection), "", ""), "C2");
  EXPECT_EQ(transport.requests(), (Requests{OData("servlet/odata/v5/DataAdmin/Containers?$select=ID&$filter="
                                                  "Name%20eq%20%27O%27Neill%20%26%20Co%27"),
                                            OData("servlet/odata/v5/DataAdmin/Containers?$select=ID&$filter="
                                                  "Name%20eq%20%27%27")}));
}

TEST_F(Containers, TwoOfOneNameAreNone) {
  transport.Then(200, R"({"value":[{"ID":"C1"},{"ID":"C2"}],"@odata.nextLink":"https://plm.example/x"})");
  EXPECT_EQ(FindContainerId(Begin(connection), "Gadget", product), "");
  EXPECT_EQ(transport.requests().size(), 1U);
}

TEST_F(Containers, TwoOfOneNameOnDifferentPagesAreNone) {
  transport.Then(200, R"({"value":[{"ID":"C1"}],"@odata.nextLink":"https://plm.example/vt/p2"})")
      .Then(200, R"({"value":[],"@odata.nextLink":"https://plm.example/vt/p3"})")
      .Then(200, R"({"value":[{"ID":"C2"}],"@odata.nextLink":"https://plm.example/vt/p4"})");
  EXPECT_EQ(FindContainerId(Begin(connection), "Gadget", product), "");
  EXPECT_EQ(transport.requests().size(), 3U);
}

TEST_F(Containers, OnlyObjectsWithATextIdCount) {
  transport.Then(200, R"({"value":[7,null,"C0",["C0"],{},{"ID":7},{"id":"C0"},{"ID":"C1"},{"ID":null}]})");
  EXPECT_EQ(FindContainerId(Begin(connection), "Gadget", product), "C1");
}

TEST_F(Containers, AnEmptyIdIsAContainerToo) {
  transport.Then(200, R"({"value":[{"ID":""},{"ID":"C2"}]})");
  EXPECT_EQ(FindContainerId(Begin(connection), "Gadget", product), "");
}

TEST_F(Containers, WhatAPageBeforeAFailureGaveStands) {
  transport.Then(200, R"({"value":[{"ID":"C1"}],"@odata.nextLink":"https://plm.example/vt/p2"})").Then(500);
  EXPECT_EQ(FindContainerId(Begin(connection), "Gadget", product), "C1");
}

TEST_F(Containers, NoAnswerIsNoContainer) {
  transport.Then(500).Then(200, "{").Then(200, "[]").Then(200, R"({"value":{"ID":"C1"}})");
  for (int answer = 0; answer < 4; ++answer)
    EXPECT_EQ(FindContainerId(Begin(connection), "Gadget", product), "");
}

TEST_F(Containers, AreListedAsDirectoriesWithTheirIds) {
  transport
      .Then(200, R"({"value":[{"ID":"C1","Name":"a|b"},{"ID":"C2"},{"Name":"x"},{"ID":7,"Name":"y"},3,
                 {"ID":"C3","Name":"Gadget"}],"@odata.nextLink":"https://other.example:8443/p?$skip=2"})")
      .Then(200, R"({"value":[{"ID":"C4","Name":"Last"}]})");
  EXPECT_TRUE(ListContainers(Begin(connection), product, Collect()));
  EXPECT_THAT(entries, ElementsAre("dir a|b id=C1", "dir Gadget id=C3", "dir Last id=C4"));
  EXPECT_EQ(transport.requests(),
            (Requests{OData("servlet/odata/v5/DataAdmin/Containers/ZVK.DataAdmin.ProductContainer"
                            "?$select=ID,Name"),
                      NextPage("https://other.example:8443", "/p?$skip=2")}));
}

TEST_F(Containers, WhatWasListedBeforeAFailureStays) {
  transport.Then(200, R"({"value":[{"ID":"C1","Name":"A"}],"@odata.nextLink":"https://plm.example/vt/p2"})")
      .Then(503);
  EXPECT_FALSE(ListContainers(Begin(connection), product, Collect()));
  EXPECT_THAT(entries, ElementsAre("dir A id=C1"));
}

}  // namespace
}  // namespace vtdirect_test
