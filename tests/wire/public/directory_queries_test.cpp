#include "tests/wire/public/public_fixture.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;

constexpr const char* gadget =
    R"({"items":[{"id":"OR:vn.Example:77","attributes":{"name":"Gadget","organizationReference.name":"Acme"}}]})";
constexpr const char* document =
    R"({"id":"D1","revision":"A","iteration":"1","epmMaster":{"name":"Gear","number":"0042","cadName":"a.lxz"}})";
constexpr const char* workspaces = R"([{"id":"W1","name":"mine"}])";
constexpr const char* workspacePath = "//plm/Products/Gadget/Workspaces/mine/";

using Entries = std::vector<std::string>;

void CollectName(const char* name, bool isFolder, void* user) {
  static_cast<Entries*>(user)->push_back(std::string(name) + (isFolder ? "/" : ""));
}

void CollectEntry(DirEntryExt& entry, void* user) {
  std::string text = std::string(entry.name) + (entry.isFolder ? "/" : "");
  if (entry.details != nullptr) {
    EXPECT_EQ(entry.details->reserved, nullptr);
    text.append(" (").append(entry.details->number).append(",").append(entry.details->name).append(")");
  }
  for (std::size_t index = 0; entry.versions != nullptr && entry.versions[index] != nullptr; ++index) {
    text.append(" ").append(entry.versions[index]).append(":").append(entry.versionIds[index]);
  }
  static_cast<Entries*>(user)->push_back(text);
}

ReadDirFlags Bits(unsigned bits) {
  return static_cast<ReadDirFlags>(bits);
}

class DirectoryQueries : public PublicTest {
 protected:
  // A walk to a document in a workspace that ends in no such document.
  void ScriptEmptyWorkspace() { transport.Then(200, gadget).Then(200, workspaces).Then(200, "[]"); }
  void ScriptWorkspaceWithDocument() {
    transport.Then(200, gadget).Then(200, workspaces).Then(200, std::string("[") + document + "]");
  }
  // A server of version 5, with the folder "Folders/" of the product "Gadget".
  void ScriptVersion5Folder() {
    transport
        .Then(200, R"(<Edmx><Schema><Annotation Term="Core.SchemaVersion"><String>5</String></Annotation>)"
                   "</Schema></Edmx>")
        .Then(404)
        .Then(404)
        .Then(200, R"({"value":[{"ID":"C1","Folders":[{"ID":"F1","Name":"Default"}]}]})");
  }
  void ScriptFolderContents() {
    transport.Then(200, R"({"value":[{"Name":"Sub"}]})")
        .Then(200, R"({"value":[{"CADName":"a|b","ID":"D2","Name":"Gear","Number":"0042",
                       "Versions":[{"Version":"A.1","ID":"D1"},{"Version":"A.2","ID":"D2"}]}]})");
  }

  Entries entries;
};

TEST_F(DirectoryQueries, ReadDirForwardsNameAndKind) {
  EXPECT_TRUE(ReadDir("korvufenloom-vfs://plm/", CollectName, &entries));
  EXPECT_TRUE(ReadDir("//plm/Products/Gadget/", CollectName, &entries));
  EXPECT_THAT(entries,
              ElementsAre("Products/", "Libraries/", "Projects/", "Sites/", "Folders/", "Workspaces/"));
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(DirectoryQueries, AUidListsItsServersRoot) {
  EXPECT_TRUE(ReadDir("korvufenloom-vt://plm.example/vt/?id=D1", CollectName, &entries));
  EXPECT_THAT(entries, ElementsAre("Products/", "Libraries/", "Projects/", "Sites/"));
}

TEST_F(DirectoryQueries, AnUnknownServerIsTracedByTheResolutionAlone) {
  EXPECT_FALSE(ReadDir("//nowhere/", CollectName, &entries));
  EXPECT_FALSE(ReadDirExt("//nowhere/", CollectEntry, &entries, Bits(3)));
  EXPECT_FALSE(ReadDir(static_cast<const char*>(nullptr), CollectName, &entries));
  const TraceLine line{3, "VtDirect", "Failed to connect to server path //nowhere/\n"};
  EXPECT_THAT(Traces(), ElementsAre(line, line));
}

TEST_F(DirectoryQueries, AFailedListingIsTracedAsARoutineMiss) {
  EXPECT_FALSE(ReadDir("//plm/Products", CollectName, &entries));
  EXPECT_FALSE(ReadDirExt("//plm/Nowhere/", CollectEntry, &entries, Bits(3)));
  EXPECT_THAT(Traces(), ElementsAre(TraceLine{1, "VtDirect", "Failed to read dir //plm/Products\n"},
                                    TraceLine{1, "VtDirect", "Failed to read dir //plm/Nowhere/\n"}));
}

TEST_F(DirectoryQueries, ReadDirExtHandsDetailsAndVersionsOn) {
  ScriptVersion5Folder();
  ScriptFolderContents();
  constexpr auto everything = ReadDirFiles | ReadDirFolders | ReadDirDetails | ReadDirVersions;
  EXPECT_TRUE(ReadDirExt("//plm/Products/Gadget/Folders/", CollectEntry, &entries, everything));
  EXPECT_THAT(entries, ElementsAre("Sub/", "a%7cb (0042,Gear) A.2:D2 A.1:D1"));
}

TEST_F(DirectoryQueries, FlagsAreCombinedByTheirOperators) {
  ReadDirFlags flags = ReadDirFiles | ReadDirDetails;
  EXPECT_EQ(flags, Bits(5));
  EXPECT_EQ(flags & ReadDirDetails, ReadDirDetails);
  EXPECT_FALSE(flags & ReadDirFolders);
  EXPECT_EQ(flags ^ ReadDirVersions, Bits(13));
  EXPECT_EQ(flags & ~ReadDirFiles, ReadDirDetails);
  EXPECT_EQ(flags |= ReadDirFolders, Bits(7));
  EXPECT_EQ(flags &= ReadDirFiles | ReadDirFolders, Bits(3));
  EXPECT_EQ(flags ^= ReadDirFiles, ReadDirFolders);
}

TEST_F(DirectoryQueries, FlagsGoThroughUnchanged) {
  EXPECT_TRUE(ReadDirExt("//plm/", CollectEntry, &entries, Bits(1)));
  EXPECT_THAT(entries, IsEmpty());
  EXPECT_TRUE(ReadDirExt("//plm/", CollectEntry, &entries, Bits(0xFFFFFFFFU)));
  EXPECT_EQ(entries.size(), 4U);
}

TEST_F(DirectoryQueries, AnOpenDirectoryIsReadAsOftenAsWantedWithoutTheWalk) {
  ScriptVersion5Folder();
  const DirHandle handle = OpenDir("//plm/Products/Gadget/Folders/");
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(transport.requests().size(), 4U);
  ScriptFolderContents();
  EXPECT_TRUE(ReadDir(handle, CollectEntry, &entries, Bits(8)));
  ScriptFolderContents();
  EXPECT_TRUE(ReadDir(handle, CollectEntry, &entries, Bits(0)));
  EXPECT_THAT(entries, ElementsAre("Sub/", "a%7cb A.2:D2 A.1:D1", "Sub/", "a%7cb"));
  EXPECT_EQ(transport.requests().size(), 8U);
}

TEST_F(DirectoryQueries, AnOpenDirectoryOutlivesTheServerList) {
  ScriptVersion5Folder();
  const DirHandle handle = OpenDir("//plm/Products/Gadget/Folders/");
  UpdateServerList({});
  ScriptFolderContents();
  EXPECT_TRUE(ReadDir(handle, CollectEntry, &entries, Bits(3)));
  EXPECT_EQ(entries.size(), 2U);
}

// What a walk delivers, and the last folder of it, which the next step is made into.
struct Walk {
  Entries entries;
  WalkedDir folder;
};

void CollectWalked(DirEntryExt& entry, const WalkedDir& folder, void* user) {
  auto* walk = static_cast<Walk*>(user);
  CollectEntry(entry, &walk->entries);
  EXPECT_EQ(folder != nullptr, entry.isFolder);
  if (folder != nullptr) walk->folder = folder;
}

TEST_F(DirectoryQueries, AWalkGoesOnByWhatItsListingsTell) {
  constexpr auto everything = ReadDirFiles | ReadDirFolders | ReadDirDetails | ReadDirVersions;
  ScriptVersion5Folder();
  Walk walk{{}, OpenWalk("//plm/Products/Gadget/Folders/")};
  ASSERT_NE(walk.folder, nullptr);
  UpdateServerList({});
  transport.Then(200, R"({"value":[{"ID":"F2","Name":"Sub","Folders":[]}]})")
      .Then(200, R"({"value":[{"CADName":"a|b","ID":"D2","Name":"Gear","Number":"0042",
                     "Versions":[{"Version":"A.1","ID":"D1"},{"Version":"A.2","ID":"D2"}]}]})");
  // The walk lets the directory go while it is listed.
  EXPECT_TRUE(ReadWalkedDir(walk.folder, CollectWalked, &walk, everything));
  EXPECT_THAT(walk.entries, ElementsAre("Sub/", "a%7cb (0042,Gear) A.2:D2 A.1:D1"));
  transport.Then(200, R"({"value":[{"CADName":"c","ID":"D3"}]})");
  EXPECT_TRUE(ReadWalkedDir(walk.folder, CollectWalked, &walk, ReadDirFiles | ReadDirFolders));
  EXPECT_EQ(walk.entries.back(), "c");
  EXPECT_EQ(transport.requests().size(), 7U);
}

TEST_F(DirectoryQueries, AWalkThatFailsIsNotTraced) {
  Walk walk;
  EXPECT_FALSE(ReadWalkedDir(nullptr, CollectWalked, &walk, Bits(3)));
  EXPECT_EQ(OpenWalk("//nowhere/"), nullptr);
  EXPECT_EQ(OpenWalk(nullptr), nullptr);
  EXPECT_EQ(OpenWalk("//plm/Nowhere/"), nullptr);
  ScriptVersion5Folder();
  const WalkedDir begun = OpenWalk("//plm/Products/Gadget/Folders/");
  transport.Then(503);
  EXPECT_FALSE(ReadWalkedDir(begun, CollectWalked, &walk, Bits(3)));
  EXPECT_THAT(walk.entries, IsEmpty());
  for (const TraceLine& line : Traces()) EXPECT_LE(line.type, 1);
}

TEST_F(DirectoryQueries, AFailedReadingOfAnOpenDirectoryIsNotTraced) {
  ScriptVersion5Folder();
  const DirHandle handle = OpenDir("//plm/Products/Gadget/Folders/");
  transport.Then(500);
  EXPECT_FALSE(ReadDir(handle, CollectEntry, &entries, Bits(3)));
  EXPECT_THAT(Traces(), IsEmpty());
}

TEST_F(DirectoryQueries, AnEmptyHandleReadsNothingAndTracesNothing) {
  const DirHandle none(nullptr, [](DirHandleData*) {});
  EXPECT_FALSE(ReadDir(none, CollectEntry, &entries, Bits(3)));
  const DirHandle notThere = OpenDir("//plm/Nowhere/");
  EXPECT_EQ(notThere, nullptr);
  EXPECT_FALSE(ReadDir(notThere, CollectEntry, &entries, Bits(3)));
  EXPECT_THAT(Traces(), IsEmpty());
}

TEST_F(DirectoryQueries, OpeningOnAnUnknownServerIsARoutineMiss) {
  EXPECT_EQ(OpenDir("//nowhere/"), nullptr);
  EXPECT_EQ(OpenDir(nullptr), nullptr);
  EXPECT_THAT(Traces(),
              ElementsAre(TraceLine{1, "VtDirect", "Failed to connect to server path //nowhere/\n"}));
}

TEST_F(DirectoryQueries, AnObjectExistsWhenItCanBeRead) {
  transport.Then(200, document);
  EXPECT_TRUE(FileOrFolderExists("korvufenloom-vt://plm.example/vt/?id=D1"));
  EXPECT_EQ(transport.lines(), (Entries{"GET /vt/servlet/rest/v1/dkm/documents/D1"}));
}

TEST_F(DirectoryQueries, ADirectoryExistsWhenItCanBeOpened) {
  EXPECT_TRUE(FileOrFolderExists("//plm/Products/Gadget/"));
  EXPECT_FALSE(FileOrFolderExists("//nowhere/Products/Gadget/"));
  EXPECT_FALSE(FileOrFolderExists(nullptr));
}

TEST_F(DirectoryQueries, AnObjectThatCannotBeReadIsTriedAsADirectory) {
  transport.Then(404);
  // The relative path of a UID is empty, and the server's root can always be opened.
  EXPECT_TRUE(FileOrFolderExists("korvufenloom-vt://plm.example/vt/?id=D1"));
}

TEST_F(DirectoryQueries, NeitherObjectNorDirectoryDoesNotExist) {
  ScriptRestServer();
  ScriptEmptyWorkspace();
  transport.Then(200, gadget).Then(200, workspaces);
  EXPECT_FALSE(FileOrFolderExists("//plm/Products/Gadget/Workspaces/mine/a.lxz"));
}

TEST_F(DirectoryQueries, ANameIsTakenByTheObjectAtThePath) {
  ScriptRestServer();
  ScriptWorkspaceWithDocument();
  transport.Then(200, document);
  EXPECT_FALSE(FileNameAvailable((std::string(workspacePath) + "a.lxz").c_str()));
  EXPECT_EQ(LinesFrom(6), (Entries{"GET /vt/servlet/rest/v1/dkm/documents/D1"}));
}

TEST_F(DirectoryQueries, ANameIsTakenByADocumentAnywhereOnTheServer) {
  ScriptRestServer();
  ScriptEmptyWorkspace();
  transport.Then(200, R"([{"id":"D7"}])").Then(200, document).Then(200, document).Then(200, "[]");
  EXPECT_FALSE(FileNameAvailable((std::string(workspacePath) + "b%7c.lxz").c_str()));
  // The name is asked for as it is in the path, still escaped.
  EXPECT_EQ(LinesFrom(6).front(),
            "GET /vt/servlet/rest/objects?typeId=vn.epm.EPMDocument&$select=number&$filter="
            "CADName eq 'b%257c.lxz'");
}

TEST_F(DirectoryQueries, ANameThatNoDocumentHasIsAvailable) {
  ScriptRestServer();
  ScriptEmptyWorkspace();
  transport.Then(200, "[]");
  EXPECT_TRUE(FileNameAvailable((std::string(workspacePath) + "b.lxz").c_str()));
}

TEST_F(DirectoryQueries, AnIdWhoseObjectCannotBeReadCountsAsNoObject) {
  ScriptRestServer();
  ScriptWorkspaceWithDocument();
  transport.Then(404).Then(200, "[]");
  EXPECT_TRUE(FileNameAvailable((std::string(workspacePath) + "a.lxz").c_str()));
}

TEST_F(DirectoryQueries, APathWithAQuestionMarkIsNotAvailable) {
  transport.Then(404);
  EXPECT_FALSE(FileNameAvailable("//plm/?id=D1"));
  EXPECT_EQ(transport.requests().size(), 1U);
}

TEST_F(DirectoryQueries, NothingIsAvailableOnAnUnknownServer) {
  EXPECT_FALSE(FileNameAvailable("//nowhere/Products/Gadget/Folders/a.lxz"));
  EXPECT_FALSE(FileNameAvailable(nullptr));
  EXPECT_THAT(transport.requests(), IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test
