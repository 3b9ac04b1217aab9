#include "simulator/store/database.h"

#include <unistd.h>

#include "simulator/store/schema.h"
#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

class DatabaseTest : public SimulatorTest {
 protected:
  std::string File() const { return (directory_ / "test.db").string(); }
};

TEST_F(DatabaseTest, TransactionWithoutCommitLeavesNothing) {
  Database database(File());
  database.Execute("CREATE TABLE t(x TEXT)");
  {
    Transaction transaction(database);
    database.Prepare("INSERT INTO t VALUES(?1)").Bind("a").Run();
  }
  auto count = database.Prepare("SELECT count(*) FROM t");
  ASSERT_TRUE(count.Step());
  EXPECT_EQ(count.Integer(0), 0);
}

TEST_F(DatabaseTest, ValuesNeverBecomeSql) {
  Database database(File());
  database.Execute("CREATE TABLE t(x TEXT)");
  const std::string hostile = "'); DROP TABLE t; --";
  database.Prepare("INSERT INTO t VALUES(?1)").Bind(hostile).Run();
  auto row = database.Prepare("SELECT x FROM t");
  ASSERT_TRUE(row.Step());
  EXPECT_EQ(row.Text(0), hostile);
  EXPECT_FALSE(row.Step());
}

TEST_F(DatabaseTest, SameStatementTextMayBeInUseTwice) {
  Database database(File());
  database.Execute("CREATE TABLE t(x INTEGER); INSERT INTO t VALUES(1), (2);");
  auto outer = database.Prepare("SELECT x FROM t ORDER BY x");
  ASSERT_TRUE(outer.Step());
  {
    auto inner = database.Prepare("SELECT x FROM t ORDER BY x");
    ASSERT_TRUE(inner.Step());
    EXPECT_EQ(inner.Integer(0), 1);
  }
  ASSERT_TRUE(outer.Step());
  EXPECT_EQ(outer.Integer(0), 2);
}

TEST_F(DatabaseTest, ReusedStatementForgetsItsValues) {
  Database database(File());
  { database.Prepare("SELECT ?1").Bind("left over").Step(); }
  auto again = database.Prepare("SELECT ?1");
  ASSERT_TRUE(again.Step());
  EXPECT_TRUE(again.IsNull(0));
}

TEST_F(DatabaseTest, FileOfANewerSimulatorIsRefused) {
  Database database(File());
  database.Execute("PRAGMA user_version = 1000");
  EXPECT_THROW(EnsureSchema(database), DatabaseError);
}

TEST_F(DatabaseTest, SchemaIsMadeOnceAndThenLeftAlone) {
  Database database(File());
  EnsureSchema(database);
  database.Execute("INSERT INTO facts VALUES('k', 'v')");
  EnsureSchema(database);
  auto row = database.Prepare("SELECT value FROM facts");
  EXPECT_TRUE(row.Step());
}

TEST_F(DatabaseTest, DirectoryFromBeforeTheLinksOfXliffIsTakenOver) {
  Start();
  simulator_.reset();
  {
    Database database((directory_ / "data/vantry-sim.db").string());
    database.Execute(
        "DROP TABLE xliff_links; DROP TABLE translations;"
        "CREATE TABLE translations(source INTEGER, language TEXT, xliff INTEGER, is_published INTEGER,"
        " PRIMARY KEY(source, language)) WITHOUT ROWID;"
        "CREATE INDEX translations_by_xliff ON translations(xliff);"
        "ALTER TABLE streams DROP COLUMN generator;"
        "PRAGMA user_version = 3;");
  }
  const std::string service = "/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('D1028')";
  EXPECT_EQ(GetJson(service + "/Xliff")["value"].Size(), 0U);
  EXPECT_EQ(GetJson(service + "?$expand=Translations")["Translations"].Size(), 0U);
}

}  // namespace
}  // namespace vantry_sim
