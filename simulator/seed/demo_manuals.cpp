#include <initializer_list>
#include <string>

#include "simulator/seed/seeds.h"
#include "simulator/store/xliff_preferences.h"

namespace vantry_sim {
namespace {

/// A text document with one iteration. Its stream has the document's number with a 0 behind it.
struct TextDocument {
  std::int64_t number = 0;  ///< of the id: 1028 gives D1028
  std::int64_t folder = 0;
  std::string_view name;
  std::string_view document_number;
  std::string_view cad_name;
  std::string_view language;
  std::string_view type_id = "";
  std::string_view extended_type = "";  ///< empty: none
  std::string_view text = {};
};

/// Row ids of what was added.
struct Added {
  std::int64_t master = 0;
  std::int64_t iteration = 0;
};

Added Add(SeedWriter& writer, std::int64_t context, const TextDocument& document) {
  Added added;
  added.master = writer.AddMaster(document.number + 1000, {.name = document.name,
                                                           .number = document.document_number,
                                                           .cad_name = document.cad_name,
                                                           .category = "xml",
                                                           .sub_category = "",
                                                           .application = "SENTARIX",
                                                           .type_id = document.type_id});
  added.iteration = writer.AddIteration(added.master, {.number = document.number,
                                                       .context = context,
                                                       .folder = document.folder,
                                                       .is_latest = true,
                                                       .auth_app_version = "7000"});
  writer.AddContent({.iteration = added.iteration,
                     .category = "TEXT",
                     .stream = writer.AddStream(document.number * 10, document.text)});
  writer.AddAttribute(added.iteration, 0, "ZVK_DD_LANGUAGE", document.language);
  if (!document.extended_type.empty())
    writer.AddAttribute(added.iteration, 1, "ZVK_DD_EXTENDED_DOC_TYPE", document.extended_type);
  return added;
}

/// One sentence of the welding manual.
struct Unit {
  std::string_view source;
  std::string_view target;  ///< empty: not translated
};

/// @param language that it was translated to; empty for the source
std::string Xliff(std::string_view language, std::initializer_list<Unit> units) {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<xliff xmlns=\"urn:oasis:names:tc:xliff:document:1.2\" version=\"1.2\">\n"
      "  <file original=\"welding manual.xml\" source-language=\"en\"";
  if (!language.empty()) text.append(" target-language=\"").append(language).append("\"");
  text += " datatype=\"xml\">\n    <body>\n";
  int number = 0;
  for (const Unit& unit : units) {
    text.append("      <trans-unit id=\"").append(std::to_string(++number)).append("\">\n");
    text.append("        <source xml:lang=\"en\">").append(unit.source).append("</source>\n");
    if (!unit.target.empty()) {
      text.append("        <target xml:lang=\"").append(language).append("\" state=\"translated\">");
      text.append(unit.target).append("</target>\n");
    }
    text += "      </trans-unit>\n";
  }
  return text + "    </body>\n  </file>\n</xliff>\n";
}

constexpr std::string_view kGloves = "Wear gloves.";
constexpr std::string_view kTubes = "Weld thin tubes with less than 80 A.";

void AddTranslated(SeedWriter& writer, const ManualPlaces& places, std::int64_t source,
                   const TextDocument& document, std::initializer_list<Unit> units) {
  TextDocument complete = document;
  const std::string text = Xliff(document.language, units);
  complete.folder = places.translations;
  complete.type_id = kXliffType;
  complete.text = text;
  writer.AddTranslation(source, Add(writer, places.context, complete).master);
}

void AddWeldingManual(SeedWriter& writer, const ManualPlaces& places) {
  const Added manual = Add(writer, places.context,
                           {.number = 1028,
                            .folder = places.frame,
                            .name = "Welding manual",
                            .document_number = "0000100028",
                            .cad_name = "welding manual.xml",
                            .language = "en",
                            .text = "<?xml version=\"1.0\"?>\n<manual><p>Wear gloves.</p>"
                                    "<p>Weld thin tubes with less than 80 A.</p></manual>\n"});
  const std::string text = Xliff({}, {{kGloves, {}}, {kTubes, {}}});
  const Added source = Add(writer, places.context,
                           {.number = 1029,
                            .folder = places.translations,
                            .name = "Welding manual, XLIFF",
                            .document_number = "0000100029",
                            .cad_name = "welding manual.xlf",
                            .language = "en",
                            .type_id = kXliffType,
                            .extended_type = "x-raomSource",
                            .text = text});
  writer.AddXliffLink(manual.iteration, source.iteration);
  AddTranslated(writer, places, source.master,
                {.number = 1030,
                 .name = "Welding manual, German",
                 .document_number = "0000100030",
                 .cad_name = "welding manual_de.xlf",
                 .language = "de",
                 .extended_type = "x-raomPublished"},
                {{kGloves, "Handschuhe tragen."}, {kTubes, "Dünne Rohre mit weniger als 80 A schweißen."}});
  AddTranslated(writer, places, source.master,
                {.number = 1031,
                 .name = "Welding manual, French",
                 .document_number = "0000100031",
                 .cad_name = "welding manual_fr.xlf",
                 .language = "fr",
                 .extended_type = "x-raomTranslated"},
                {{kGloves, "Porter des gants."}, {kTubes, "Souder les tubes minces avec moins de 80 A."}});
}

}  // namespace

void SeedDemoManuals(SeedWriter& writer, const ManualPlaces& places) {
  AddWeldingManual(writer, places);
  Add(writer, places.context,
      {.number = 1032,
       .folder = places.manuals,
       .name = "Chain manual",
       .document_number = "0000100032",
       .cad_name = "chain manual.xml",
       .language = "en",
       .text = "<?xml version=\"1.0\"?>\n<manual><p>Oil the chain every 200 km.</p></manual>\n"});
}

}  // namespace vantry_sim
