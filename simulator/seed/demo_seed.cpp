#include <initializer_list>
#include <string>

#include "simulator/seed/seeds.h"

namespace vantry_sim {
namespace {

constexpr std::string_view organization = "Kettenblitz";

/// Row ids of what the documents hang on.
struct Places {
  std::int64_t trekking = 0, cargo = 0, standardParts = 0, materials = 0, launch = 0, retrofit = 0, north = 0,
               south = 0;
  std::int64_t trekkingRoot = 0, frame = 0, drivetrain = 0, chains = 0, sizes = 0, workshop = 0, jigs = 0;
  std::int64_t manuals = 0, translations = 0;
  std::int64_t cargoRoot = 0, cargoDrive = 0;
  std::int64_t bolts = 0, lacquers = 0, launchPlans = 0, retrofitRoot = 0, northRoot = 0, southRoot = 0;
  std::int64_t anna = 0, bruno = 0, annaBench = 0, brunoBench = 0;
};

/// One iteration of a document: the number of its id and its version.
struct Version {
  std::int64_t number;
  std::string_view revision;
  int iteration;
};

Places AddPlaces(SeedWriter& writer) {
  Places p;
  p.trekking = writer.AddContext(101, "Product", "Trekking Bike", organization);
  p.cargo = writer.AddContext(102, "Product", "Lastenrad Größe L", organization);
  p.standardParts = writer.AddContext(103, "Library", "Standard Parts", organization);
  p.materials = writer.AddContext(104, "Library", "Materials", organization);
  p.launch = writer.AddContext(105, "Project", "Spring Launch", organization);
  p.retrofit = writer.AddContext(106, "Project", "Umrüstung Nabendynamo", organization);
  p.north = writer.AddContext(107, "Site", "Werk Nord", organization);
  p.south = writer.AddContext(108, "Site", "Werk Süd", organization);
  writer.AddContext(109, "Organization", organization, organization);

  p.trekkingRoot = writer.AddFolder(201, p.trekking, 0, "Default");
  p.frame = writer.AddFolder(211, p.trekking, p.trekkingRoot, "Frame");
  p.drivetrain = writer.AddFolder(212, p.trekking, p.trekkingRoot, "Drivetrain");
  p.chains = writer.AddFolder(213, p.trekking, p.drivetrain, "Chains");
  p.sizes = writer.AddFolder(214, p.trekking, p.trekkingRoot, "Größen & Maße");
  writer.AddFolder(216, p.trekking, p.trekkingRoot, "Nothing yet");
  p.manuals = writer.AddFolder(217, p.trekking, p.trekkingRoot, "Manuals");
  p.translations = writer.AddFolder(218, p.trekking, p.trekkingRoot, "Translations");
  p.workshop = writer.AddFolder(202, p.trekking, 0, "Workshop");
  p.jigs = writer.AddFolder(215, p.trekking, p.workshop, "Jigs");
  p.cargoRoot = writer.AddFolder(203, p.cargo, 0, "Default");
  p.cargoDrive = writer.AddFolder(221, p.cargo, p.cargoRoot, "Drivetrain");
  p.bolts =
      writer.AddFolder(231, p.standardParts, writer.AddFolder(204, p.standardParts, 0, "Default"), "Bolts");
  p.lacquers = writer.AddFolder(232, p.materials, writer.AddFolder(205, p.materials, 0, "Default"), "Lacke");
  p.launchPlans = writer.AddFolder(241, p.launch, writer.AddFolder(206, p.launch, 0, "Default"), "Plans");
  p.retrofitRoot = writer.AddFolder(207, p.retrofit, 0, "Default");
  p.northRoot = writer.AddFolder(208, p.north, 0, "Default");
  p.southRoot = writer.AddFolder(209, p.south, 0, "Default");

  p.anna = writer.AddUser("anna", "Anna Berg");
  p.bruno = writer.AddUser("bruno", "Bruno Keil");
  p.annaBench = writer.AddWorkspace(301, p.trekking, p.anna, "Anna's bench", "What Anna is working on");
  p.brunoBench = writer.AddWorkspace(302, p.trekking, p.bruno, "Bruno", "Drive and brakes");
  writer.AddWorkspace(303, p.cargo, p.anna, "Größe L", "The long one");
  return p;
}

/// A drawing as the story has them: a head, and lines of coordinates, different for every version.
std::string Drawing(std::string_view name, const Version& version, int lines) {
  std::string text = "FENLET DRAWING\nname " + std::string(name) + "\nversion " +
                     std::string(version.revision) + "." + std::to_string(version.iteration) + "\n";
  for (int i = 0; i < lines; ++i) {
    const auto x = (version.number * 37 + i * 101) % 2000;
    const auto y = (version.number * 53 + i * 211) % 1200;
    text += "line " + std::to_string(i) + " to " + std::to_string(x) + " " + std::to_string(y) + "\n";
  }
  return text + "end\n";
}

/// Adds a dynamic document with a drawing for each version, the last of which is the latest. The stream of a
/// primary content has the document's number with a 0 after it, that of the first secondary content a 1.
/// @return the row id of the latest iteration
std::int64_t AddDrawing(SeedWriter& writer, const SeedMaster& master, std::int64_t context,
                        std::int64_t folder, std::initializer_list<Version> versions) {
  const Version& latest = *(versions.end() - 1);
  const auto masterKey = writer.AddMaster(latest.number + 1000, master);
  std::int64_t iteration = 0;
  for (const Version& version : versions) {
    iteration = writer.AddIteration(masterKey, {.number = version.number,
                                                .context = context,
                                                .folder = folder,
                                                .revision = version.revision,
                                                .iteration = version.iteration,
                                                .isLatest = version.number == latest.number});
    const auto stream = writer.AddStream(version.number * 10, Drawing(master.cadName, version, 200));
    writer.AddContent({.iteration = iteration, .category = master.subCategory, .stream = stream});
  }
  return iteration;
}

void AddSecondaryContents(SeedWriter& writer, std::int64_t iteration, std::int64_t number) {
  writer.AddContent(
      {.iteration = iteration,
       .role = "secondary",
       .category = "VIEWABLE",
       .fileName = "{$CAD_NAME}.lxz",
       .isForwardable = true,
       .stream = writer.AddStream(number * 10 + 1, "VIEWABLE of D" + std::to_string(number) + "\n")});
  writer.AddContent(
      {.iteration = iteration,
       .role = "secondary",
       .position = 1,
       .category = "VCSINFO",
       .fileName = "cad-metadata.json",
       .isHidden = true,
       .stream = writer.AddStream(number * 10 + 2, "{\"commit\":\"4f1c\",\"branch\":\"main\"}\n")});
}

void AddFrameDocuments(SeedWriter& writer, const Places& p) {
  const auto frame = AddDrawing(writer, {.name = "Frame", .number = "0000100002", .cadName = "frame.lxz"},
                                p.trekking, p.frame, {{1102, "A", 1}, {1202, "A", 2}, {1002, "A", 3}});
  const auto fork = AddDrawing(writer, {.name = "Fork", .number = "0000100001", .cadName = "fork.lxz"},
                               p.trekking, p.frame, {{1101, "A", 1}, {1201, "A", 2}, {1001, "B", 1}});
  AddSecondaryContents(writer, fork, 1001);
  writer.AddAttribute(fork, 0, "ZVK_DD_LANGUAGE", "en");
  writer.AddAttribute(fork, 1, "ZVK_DD_PAINT", "Nachtblau");
  writer.AddDependency(fork, 0, "frame.lxz", frame);
  writer.AddWorkspaceDocument(p.annaBench, fork);
}

void AddOddNames(SeedWriter& writer, const Places& p) {
  AddDrawing(writer, {.name = "Chain guard", .number = "0000100004", .cadName = "chain guard 28 inch.lxz"},
             p.trekking, p.chains, {{1104, "A", 1}, {1004, "B", 1}});
  AddDrawing(writer, {.name = "Größentabelle", .number = "0000100005", .cadName = "Größentabelle Rahmen.lxz"},
             p.trekking, p.sizes, {{1005, "A", 1}});
  AddDrawing(writer, {.name = "Bearing 1/2\"", .number = "0000 1000 06", .cadName = "bearing 1/2\".lxz"},
             p.trekking, p.drivetrain, {{1006, "A", 1}});
  AddDrawing(writer, {.name = "All ten", .number = "0000100007", .cadName = "odd|\\/<>:\"?*%name.lxz"},
             p.trekking, p.drivetrain, {{1107, "A", 1}, {1007, "A", 2}});
  AddDrawing(writer, {.name = "O'Ring", .number = "0000100008", .cadName = "O'Ring 12mm.lxz"}, p.trekking,
             p.drivetrain, {{1008, "A", 1}});
}

void AddOddContents(SeedWriter& writer, const Places& p, std::uint64_t largeBytes) {
  const auto single = [&](std::int64_t number, const SeedMaster& master) {
    return writer.AddIteration(
        writer.AddMaster(number + 1000, master),
        {.number = number, .context = p.trekking, .folder = p.trekkingRoot, .isLatest = true});
  };
  const auto scan = single(1009, {.name = "Paint shop scan",
                                  .number = "0000100009",
                                  .cadName = "paint shop scan.bin",
                                  .category = "OTHER",
                                  .subCategory = "OTHER"});
  writer.AddContent(
      {.iteration = scan, .category = "GENERAL", .stream = writer.AddGeneratedStream(10090, largeBytes)});

  const auto empty =
      single(1010, {.name = "Empty note", .number = "0000100010", .cadName = "empty note.lxz"});
  writer.AddContent({.iteration = empty, .stream = writer.AddStream(10100, "")});

  single(1011, {.name = "Without content", .number = "0000100011", .cadName = "no content.lxz"});

  const auto handlebar = single(1012, {.name = "Handlebar",
                                       .number = "0000100012",
                                       .cadName = "handlebar.asm",
                                       .service = "cad",
                                       .category = "ASSEMBLY",
                                       .subCategory = "ASSEMBLY"});
  writer.AddContent(
      {.iteration = handlebar, .category = "GEOMETRY", .stream = writer.AddGeneratedStream(10120, 200'000)});
  writer.AddContent({.iteration = handlebar,
                     .position = 1,
                     .category = "APPEARANCE",
                     .fileName = "{$CAD_NAME}.colours",
                     .stream = writer.AddStream(10121, "handlebar nachtblau\n")});
}

void AddDrivetrain(SeedWriter& writer, const Places& p) {
  AddDrawing(writer, {.name = "Gear", .number = "0000100003", .cadName = "gear.lxz"}, p.trekking,
             p.drivetrain, {{1103, "A", 1}, {1203, "A", 2}, {1303, "B", 1}, {1003, "B", 2}});
  // The same name in another product, and another document.
  AddDrawing(writer, {.name = "Gear for the cargo bike", .number = "0000200013", .cadName = "gear.lxz"},
             p.cargo, p.cargoDrive, {{1013, "A", 1}});
  AddDrawing(writer, {.name = "Chain", .number = "0000100014", .cadName = "chain.lxz"}, p.trekking, p.chains,
             {{1114, "A", 1},
              {1214, "A", 2},
              {1314, "A", 3},
              {1414, "A", 4},
              {1514, "A", 5},
              {1614, "A", 6},
              {1714, "A", 7},
              {1814, "A", 8},
              {1914, "A", 9},
              {1014, "A", 10}});
}

/// A working copy, where it is and whose it is.
struct SeedWorkingCopy {
  std::int64_t number = 0;
  std::int64_t workspace = 0;
  std::int64_t user = 0;
};

/// A document checked out to a workspace: the base stays in its folder, the working copy has the base's
/// version.
void AddCheckedOut(SeedWriter& writer, const Places& p, const SeedMaster& master, const Version& base,
                   const SeedWorkingCopy& copy) {
  const auto masterKey = writer.AddMaster(base.number + 1000, master);
  const auto baseKey = writer.AddIteration(masterKey, {.number = base.number,
                                                       .context = p.trekking,
                                                       .folder = p.drivetrain,
                                                       .revision = base.revision,
                                                       .iteration = base.iteration,
                                                       .isLatest = true});
  const auto workingKey = writer.AddIteration(masterKey, {.number = copy.number,
                                                          .context = p.trekking,
                                                          .folder = p.drivetrain,
                                                          .workspace = copy.workspace,
                                                          .revision = base.revision,
                                                          .iteration = base.iteration});
  const Version working{copy.number, base.revision, base.iteration};
  writer.AddContent({.iteration = baseKey,
                     .stream = writer.AddStream(base.number * 10, Drawing(master.cadName, base, 200))});
  writer.AddContent({.iteration = workingKey,
                     .stream = writer.AddStream(copy.number * 10, Drawing(master.cadName, working, 210))});
  writer.AddCheckout(baseKey, workingKey, copy.workspace, copy.user);
  writer.AddWorkspaceDocument(copy.workspace, workingKey);
}

void AddWork(SeedWriter& writer, const Places& p) {
  AddCheckedOut(writer, p, {.name = "Brake", .number = "0000100015", .cadName = "brake.lxz"}, {1015, "A", 1},
                {1025, p.brunoBench, p.bruno});
  AddCheckedOut(writer, p, {.name = "Crank", .number = "0000100016", .cadName = "crank.lxz"}, {1016, "A", 1},
                {1026, p.annaBench, p.anna});
  // Never checked in: it is in no folder.
  const auto saddle = writer.AddIteration(
      writer.AddMaster(2017, {.name = "Saddle", .number = "0000100017", .cadName = "saddle.lxz"}),
      {.number = 1017, .context = p.trekking, .workspace = p.annaBench, .isLatest = true});
  writer.AddContent(
      {.iteration = saddle, .stream = writer.AddStream(10170, Drawing("saddle.lxz", {1017, "A", 1}, 50))});
  writer.AddWorkspaceDocument(p.annaBench, saddle);
}

void AddElsewhere(SeedWriter& writer, const Places& p) {
  AddDrawing(writer, {.name = "Welding jig", .number = "0000100018", .cadName = "welding jig.lxz"},
             p.trekking, p.jigs, {{1018, "A", 1}});
  AddDrawing(writer, {.name = "Workshop floor", .number = "0000100019", .cadName = "floor.lxz"}, p.trekking,
             p.workshop, {{1019, "A", 1}});
  AddDrawing(writer, {.name = "Bolt M6", .number = "LIB-0001", .cadName = "bolt M6.lxz"}, p.standardParts,
             p.bolts, {{1020, "A", 1}});
  AddDrawing(writer, {.name = "Nachtblau", .number = "LIB-0002", .cadName = "nachtblau.lxz"}, p.materials,
             p.lacquers, {{1021, "A", 1}});
  AddDrawing(writer, {.name = "Launch plan", .number = "PRJ-0001", .cadName = "launch plan.lxz"}, p.launch,
             p.launchPlans, {{1122, "A", 1}, {1022, "A", 2}});
  AddDrawing(writer, {.name = "Hub dynamo", .number = "PRJ-0002", .cadName = "nabendynamo.lxz"}, p.retrofit,
             p.retrofitRoot, {{1023, "A", 1}});
  AddDrawing(writer, {.name = "Hall layout", .number = "SITE-0001", .cadName = "hall layout.lxz"}, p.north,
             p.northRoot, {{1024, "A", 1}});
  AddDrawing(writer, {.name = "Hallenplan", .number = "SITE-0002", .cadName = "Hallenplan Süd.lxz"}, p.south,
             p.southRoot, {{1027, "A", 1}});
}

}  // namespace

void SeedDemo(SeedWriter& writer, std::uint64_t largeBytes) {
  const Places places = AddPlaces(writer);
  AddFrameDocuments(writer, places);
  AddOddNames(writer, places);
  AddOddContents(writer, places, largeBytes);
  AddDrivetrain(writer, places);
  AddWork(writer, places);
  AddElsewhere(writer, places);
  SeedDemoManuals(writer, {.context = places.trekking,
                           .frame = places.frame,
                           .manuals = places.manuals,
                           .translations = places.translations});
}

}  // namespace vantry_sim
