#include "hosts/mount/tree/node_table.h"

#include <gtest/gtest.h>

namespace vtdirect_mount {
namespace {

Node Wanted(const std::string& name, NodeKind kind, const std::string& address) {
  Node node;
  node.parent = NodeTable::rootNumber;
  node.name = name;
  node.kind = kind;
  node.address = address;
  return node;
}

TEST(NodeTable, HasTheRoot) {
  const NodeTable table("//plm/");
  ASSERT_NE(table.Find(1), nullptr);
  EXPECT_EQ(table.Find(1)->address, "//plm/");
  EXPECT_EQ(table.Find(2), nullptr);
}

TEST(NodeTable, GivesANameOneNumberForAsLongAsItIsKnown) {
  NodeTable table("//plm/");
  const auto first = table.Enter(Wanted("a", NodeKind::Document, "//plm/a"));
  const auto again = table.Enter(Wanted("a", NodeKind::Document, "//plm/a"));
  EXPECT_EQ(first->number, again->number);
  table.Forget(first->number, 1);
  EXPECT_NE(table.Find(first->number), nullptr);
  table.Forget(first->number, 1);
  EXPECT_EQ(table.Find(first->number), nullptr);
}

TEST(NodeTable, GivesANameThatBecameSomethingElseAnotherNumber) {
  NodeTable table("//plm/");
  const auto document = table.Enter(Wanted("a", NodeKind::Document, "//plm/a"));
  const auto folder = table.Enter(Wanted("a", NodeKind::Folder, "//plm/a/"));
  EXPECT_NE(document->number, folder->number);
  // The kernel may still hold the old one.
  EXPECT_EQ(table.Find(document->number)->kind, NodeKind::Document);
  table.Forget(document->number, 1);
  EXPECT_EQ(table.Enter(Wanted("a", NodeKind::Folder, "//plm/a/"))->number, folder->number);
}

TEST(NodeTable, TellsTheNumberBeforehand) {
  NodeTable table("//plm/");
  const auto number = NodeTable::LikelyNumber(NodeKind::Document, "//plm/a");
  EXPECT_EQ(table.Enter(Wanted("a", NodeKind::Document, "//plm/a"))->number, number);
  // Under another name the same document is another file, so it has another number.
  EXPECT_NE(table.Enter(Wanted("b", NodeKind::Document, "//plm/a"))->number, number);
}

TEST(NodeTable, KeepsTheNumberOfWhatIsRenamed) {
  NodeTable table("//plm/");
  const auto before = table.Enter(Wanted("a~", NodeKind::Document, "//plm/a~"));
  const auto replaced = table.Enter(Wanted("a", NodeKind::Document, "//plm/a"));
  table.Move(NodeTable::rootNumber, "a~", Wanted("a", NodeKind::Document, "//plm/a"));
  EXPECT_EQ(table.Find(before->number)->address, "//plm/a");
  EXPECT_EQ(table.Enter(Wanted("a", NodeKind::Document, "//plm/a"))->number, before->number);
  // What had the name is known by its number until the kernel forgets it.
  table.Forget(replaced->number, 1);
  EXPECT_EQ(table.Find(replaced->number), nullptr);
  EXPECT_EQ(table.Enter(Wanted("a", NodeKind::Document, "//plm/a"))->number, before->number);
}

TEST(NodeTable, NeverForgetsTheRoot) {
  NodeTable table("//plm/");
  table.Forget(NodeTable::rootNumber, 1000);
  EXPECT_NE(table.Find(NodeTable::rootNumber), nullptr);
  EXPECT_TRUE(table.All().empty());
}

}  // namespace
}  // namespace vtdirect_mount
