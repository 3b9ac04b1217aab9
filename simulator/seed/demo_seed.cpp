#include <initializer_list>
#include <string>

#include "simulator/seed/seeds.h"

namespace vantry_sim {
namespace {

constexpr std::string_view kOrganization = "Kettenblitz";

/// Row ids of what the documents hang on.
struct Places {
  std::int64_t trekking = 0, cargo = 0, standard_parts = 0, materials = 0, launch = 0, retrofit = 0,
               north = 0, south = 0;
  std::int64_t trekking_root = 0, frame = 0, drivetrain = 0, chains = 0, sizes = 0, workshop = 0, jigs = 0;
  std::int64_t manuals = 0, translations = 0;
  std::int64_t cargo_root = 0, cargo_drive = 0;
  std::int64_t bolts = 0, lacquers = 0, launch_plans = 0, retrofit_root = 0, north_root = 0, south_root = 0;
  std::int64_t anna = 0, bruno = 0, anna_bench = 0, bruno_bench = 0;
};

/// One iteration of a document: the number of its id and its version.
struct Version {
  std::int64_t number;
  std::string_view revision;
  int iteration;
};

Places AddPlaces(SeedWriter& writer) {
  Places p;
  p.trekking = writer.AddContext(101, "Product", "Trekking Bike", kOrganization);
  p.cargo = writer.AddContext(102, "Product", "Lastenrad Größe L", kOrganization);
  p.standard_parts = writer.AddContext(103, "Library", "Standard Parts", kOrganization);
  p.materials = writer.AddContext(104, "Library", "Materials", kOrganization);
  p.launch = writer.AddContext(105, "Project", "Spring Launch", kOrganization);
  p.retrofit = writer.AddContext(106, "Project", "Umrüstung Nabendynamo", kOrganization);
  p.north = writer.AddContext(107, "Site", "Werk Nord", kOrganization);
  p.south = writer.AddContext(108, "Site", "Werk Süd", kOrganization);
  writer.AddContext(109, "Organization", kOrganization, kOrganization);

  p.trekking_root = writer.AddFolder(201, p.trekking, 0, "Default");
  p.frame = writer.AddFolder(211, p.trekking, p.trekking_root, "Frame");
  p.drivetrain = writer.AddFolder(212, p.trekking, p.trekking_root, "Drivetrain");
  p.chains = writer.AddFolder(213, p.trekking, p.drivetrain, "Chains");
  p.sizes = writer.AddFolder(214, p.trekking, p.trekking_root, "Größen & Maße");
  writer.AddFolder(216, p.trekking, p.trekking_root, "Nothing yet");
  p.manuals = writer.AddFolder(217, p.trekking, p.trekking_root, "Manuals");
  p.translations = writer.AddFolder(218, p.trekking, p.trekking_root, "Translations");
  p.workshop = writer.AddFolder(202, p.trekking, 0, "Workshop");
  p.jigs = writer.AddFolder(215, p.trekking, p.workshop, "Jigs");
  p.cargo_root = writer.AddFolder(203, p.cargo, 0, "Default");
  p.cargo_drive = writer.AddFolder(221, p.cargo, p.cargo_root, "Drivetrain");
  p.bolts =
      writer.AddFolder(231, p.standard_parts, writer.AddFolder(204, p.standard_parts, 0, "Default"), "Bolts");
  p.lacquers = writer.AddFolder(232, p.materials, writer.AddFolder(205, p.materials, 0, "Default"), "Lacke");
  p.launch_plans = writer.AddFolder(241, p.launch, writer.AddFolder(206, p.launch, 0, "Default"), "Plans");
  p.retrofit_root = writer.AddFolder(207, p.retrofit, 0, "Default");
  p.north_root = writer.AddFolder(208, p.north, 0, "Default");
  p.south_root = writer.AddFolder(209, p.south, 0, "Default");

  p.anna = writer.AddUser("anna", "Anna Berg");
  p.bruno = writer.AddUser("bruno", "Bruno Keil");
  p.anna_bench = writer.AddWorkspace(301, p.trekking, p.anna, "Anna's bench", "What Anna is working on");
  p.bruno_bench = writer.AddWorkspace(302, p.trekking, p.bruno, "Bruno", "Drive and brakes");
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
/// primary content has the document's number with a 0 behind it, that of the first secondary content a 1.
/// @return the row id of the latest iteration
std::int64_t AddDrawing(SeedWriter& writer, const SeedMaster& master, std::int64_t context,
                        std::int64_t folder, std::initializer_list<Version> versions) {
  const Version& latest = *(versions.end() - 1);
  const auto master_key = writer.AddMaster(latest.number + 1000, master);
  std::int64_t iteration = 0;
  for (const Version& version : versions) {
    iteration = writer.AddIteration(master_key, {.number = version.number,
                                                 .context = context,
                                                 .folder = folder,
                                                 .revision = version.revision,
                                                 .iteration = version.iteration,
                                                 .is_latest = version.number == latest.number});
    const auto stream = writer.AddStream(version.number * 10, Drawing(master.cad_name, version, 200));
    writer.AddContent({.iteration = iteration, .category = master.sub_category, .stream = stream});
  }
  return iteration;
}

void AddSecondaryContents(SeedWriter& writer, std::int64_t iteration, std::int64_t number) {
  writer.AddContent(
      {.iteration = iteration,
       .role = "secondary",
       .category = "VIEWABLE",
       .file_name = "{$CAD_NAME}.lxz",
       .is_forwardable = true,
       .stream = writer.AddStream(number * 10 + 1, "VIEWABLE of D" + std::to_string(number) + "\n")});
  writer.AddContent(
      {.iteration = iteration,
       .role = "secondary",
       .position = 1,
       .category = "VCSINFO",
       .file_name = "cad-metadata.json",
       .is_hidden = true,
       .stream = writer.AddStream(number * 10 + 2, "{\"commit\":\"4f1c\",\"branch\":\"main\"}\n")});
}

void AddFrameDocuments(SeedWriter& writer, const Places& p) {
  const auto frame = AddDrawing(writer, {.name = "Frame", .number = "0000100002", .cad_name = "frame.lxz"},
                                p.trekking, p.frame, {{1102, "A", 1}, {1202, "A", 2}, {1002, "A", 3}});
  const auto fork = AddDrawing(writer, {.name = "Fork", .number = "0000100001", .cad_name = "fork.lxz"},
                               p.trekking, p.frame, {{1101, "A", 1}, {1201, "A", 2}, {1001, "B", 1}});
  AddSecondaryContents(writer, fork, 1001);
  writer.AddAttribute(fork, 0, "ZVK_DD_LANGUAGE", "en");
  writer.AddAttribute(fork, 1, "ZVK_DD_PAINT", "Nachtblau");
  writer.AddDependency(fork, 0, "frame.lxz", frame);
  writer.AddWorkspaceDocument(p.anna_bench, fork);
}

void AddOddNames(SeedWriter& writer, const Places& p) {
  AddDrawing(writer, {.name = "Chain guard", .number = "0000100004", .cad_name = "chain guard 28 inch.lxz"},
             p.trekking, p.chains, {{1104, "A", 1}, {1004, "B", 1}});
  AddDrawing(writer,
             {.name = "Größentabelle", .number = "0000100005", .cad_name = "Größentabelle Rahmen.lxz"},
             p.trekking, p.sizes, {{1005, "A", 1}});
  AddDrawing(writer, {.name = "Bearing 1/2\"", .number = "0000 1000 06", .cad_name = "bearing 1/2\".lxz"},
             p.trekking, p.drivetrain, {{1006, "A", 1}});
  AddDrawing(writer, {.name = "All ten", .number = "0000100007", .cad_name = "odd|\\/<>:\"?*%name.lxz"},
             p.trekking, p.drivetrain, {{1107, "A", 1}, {1007, "A", 2}});
  AddDrawing(writer, {.name = "O'Ring", .number = "0000100008", .cad_name = "O'Ring 12mm.lxz"}, p.trekking,
             p.drivetrain, {{1008, "A", 1}});
}

void AddOddContents(SeedWriter& writer, const Places& p, std::uint64_t large_bytes) {
  const auto single = [&](std::int64_t number, const SeedMaster& master) {
    return writer.AddIteration(
        writer.AddMaster(number + 1000, master),
        {.number = number, .context = p.trekking, .folder = p.trekking_root, .is_latest = true});
  };
  const auto scan = single(1009, {.name = "Paint shop scan",
                                  .number = "0000100009",
                                  .cad_name = "paint shop scan.bin",
                                  .category = "OTHER",
                                  .sub_category = "OTHER"});
  writer.AddContent(
      {.iteration = scan, .category = "GENERAL", .stream = writer.AddGeneratedStream(10090, large_bytes)});

  const auto empty =
      single(1010, {.name = "Empty note", .number = "0000100010", .cad_name = "empty note.lxz"});
  writer.AddContent({.iteration = empty, .stream = writer.AddStream(10100, "")});

  single(1011, {.name = "Without content", .number = "0000100011", .cad_name = "no content.lxz"});

  const auto handlebar = single(1012, {.name = "Handlebar",
                                       .number = "0000100012",
                                       .cad_name = "handlebar.asm",
                                       .service = "cad",
                                       .category = "ASSEMBLY",
                                       .sub_category = "ASSEMBLY"});
  writer.AddContent(
      {.iteration = handlebar, .category = "GEOMETRY", .stream = writer.AddGeneratedStream(10120, 200'000)});
  writer.AddContent({.iteration = handlebar,
                     .position = 1,
                     .category = "APPEARANCE",
                     .file_name = "{$CAD_NAME}.colours",
                     .stream = writer.AddStream(10121, "handlebar nachtblau\n")});
}

void AddDrivetrain(SeedWriter& writer, const Places& p) {
  AddDrawing(writer, {.name = "Gear", .number = "0000100003", .cad_name = "gear.lxz"}, p.trekking,
             p.drivetrain, {{1103, "A", 1}, {1203, "A", 2}, {1303, "B", 1}, {1003, "B", 2}});
  // The same name in another product, and another document.
  AddDrawing(writer, {.name = "Gear for the cargo bike", .number = "0000200013", .cad_name = "gear.lxz"},
             p.cargo, p.cargo_drive, {{1013, "A", 1}});
  AddDrawing(writer, {.name = "Chain", .number = "0000100014", .cad_name = "chain.lxz"}, p.trekking, p.chains,
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

/// A document checked out to a workspace: the base stays in its folder, the working copy has the base's
/// version.
void AddCheckedOut(SeedWriter& writer, const Places& p, const SeedMaster& master, const Version& base,
                   std::int64_t working_number, std::int64_t workspace, std::int64_t user) {
  const auto master_key = writer.AddMaster(base.number + 1000, master);
  const auto base_key = writer.AddIteration(master_key, {.number = base.number,
                                                         .context = p.trekking,
                                                         .folder = p.drivetrain,
                                                         .revision = base.revision,
                                                         .iteration = base.iteration,
                                                         .is_latest = true});
  const auto working_key = writer.AddIteration(master_key, {.number = working_number,
                                                            .context = p.trekking,
                                                            .folder = p.drivetrain,
                                                            .workspace = workspace,
                                                            .revision = base.revision,
                                                            .iteration = base.iteration});
  const Version working{working_number, base.revision, base.iteration};
  writer.AddContent({.iteration = base_key,
                     .stream = writer.AddStream(base.number * 10, Drawing(master.cad_name, base, 200))});
  writer.AddContent(
      {.iteration = working_key,
       .stream = writer.AddStream(working_number * 10, Drawing(master.cad_name, working, 210))});
  writer.AddCheckout(base_key, working_key, workspace, user);
  writer.AddWorkspaceDocument(workspace, working_key);
}

void AddWork(SeedWriter& writer, const Places& p) {
  AddCheckedOut(writer, p, {.name = "Brake", .number = "0000100015", .cad_name = "brake.lxz"}, {1015, "A", 1},
                1025, p.bruno_bench, p.bruno);
  AddCheckedOut(writer, p, {.name = "Crank", .number = "0000100016", .cad_name = "crank.lxz"}, {1016, "A", 1},
                1026, p.anna_bench, p.anna);
  // Never checked in: it stands in no folder.
  const auto saddle = writer.AddIteration(
      writer.AddMaster(2017, {.name = "Saddle", .number = "0000100017", .cad_name = "saddle.lxz"}),
      {.number = 1017, .context = p.trekking, .workspace = p.anna_bench, .is_latest = true});
  writer.AddContent(
      {.iteration = saddle, .stream = writer.AddStream(10170, Drawing("saddle.lxz", {1017, "A", 1}, 50))});
  writer.AddWorkspaceDocument(p.anna_bench, saddle);
}

void AddElsewhere(SeedWriter& writer, const Places& p) {
  AddDrawing(writer, {.name = "Welding jig", .number = "0000100018", .cad_name = "welding jig.lxz"},
             p.trekking, p.jigs, {{1018, "A", 1}});
  AddDrawing(writer, {.name = "Workshop floor", .number = "0000100019", .cad_name = "floor.lxz"}, p.trekking,
             p.workshop, {{1019, "A", 1}});
  AddDrawing(writer, {.name = "Bolt M6", .number = "LIB-0001", .cad_name = "bolt M6.lxz"}, p.standard_parts,
             p.bolts, {{1020, "A", 1}});
  AddDrawing(writer, {.name = "Nachtblau", .number = "LIB-0002", .cad_name = "nachtblau.lxz"}, p.materials,
             p.lacquers, {{1021, "A", 1}});
  AddDrawing(writer, {.name = "Launch plan", .number = "PRJ-0001", .cad_name = "launch plan.lxz"}, p.launch,
             p.launch_plans, {{1122, "A", 1}, {1022, "A", 2}});
  AddDrawing(writer, {.name = "Hub dynamo", .number = "PRJ-0002", .cad_name = "nabendynamo.lxz"}, p.retrofit,
             p.retrofit_root, {{1023, "A", 1}});
  AddDrawing(writer, {.name = "Hall layout", .number = "SITE-0001", .cad_name = "hall layout.lxz"}, p.north,
             p.north_root, {{1024, "A", 1}});
  AddDrawing(writer, {.name = "Hallenplan", .number = "SITE-0002", .cad_name = "Hallenplan Süd.lxz"}, p.south,
             p.south_root, {{1027, "A", 1}});
}

}  // namespace

void SeedDemo(SeedWriter& writer, std::uint64_t large_bytes) {
  const Places places = AddPlaces(writer);
  AddFrameDocuments(writer, places);
  AddOddNames(writer, places);
  AddOddContents(writer, places, large_bytes);
  AddDrivetrain(writer, places);
  AddWork(writer, places);
  AddElsewhere(writer, places);
  SeedDemoManuals(writer, {.context = places.trekking,
                           .frame = places.frame,
                           .manuals = places.manuals,
                           .translations = places.translations});
}

}  // namespace vantry_sim
