#include <initializer_list>
#include <string>

#include "simulator/seed/seeds.h"
#include "simulator/store/xliff_preferences.h"

namespace vantry_sim {
namespace {

/// A text document with one iteration. Its stream has the document's number with a 0 after it.
struct TextDocument {
  std::int64_t number = 0;  ///< of the id: 1028 gives D1028
  std::int64_t folder = 0;
  std::string_view name;
  std::string_view documentNumber;
  std::string_view cadName;
  std::string_view language;
  std::string_view typeId = "";
  std::string_view extendedType = "";  ///< empty: none
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
                                                           .number = document.documentNumber,
                                                           .cadName = document.cadName,
                                                           .category = "xml",
                                                           .subCategory = "",
                                                           .application = "SENTARIX",
                                                           .typeId = document.typeId});
  added.iteration = writer.AddIteration(added.master, {.number = document.number,
                                                       .context = context,
                                                       .folder = document.folder,
                                                       .isLatest = true,
                                                       .authAppVersion = "7000"});
  writer.AddContent({.iteration = added.iteration,
                     .category = "TEXT",
                     .stream = writer.AddStream(document.number * 10, document.text)});
  writer.AddAttribute(added.iteration, 0, "ZVK_DD_LANGUAGE", document.language);
  if (!document.extendedType.empty())
    writer.AddAttribute(added.iteration, 1, "ZVK_DD_EXTENDED_DOC_TYPE", document.extendedType);
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

constexpr std::string_view gloves = "Wear gloves.";
constexpr std::string_view tubes = "Weld thin tubes with less than 80 A.";

void AddTranslated(SeedWriter& writer, const ManualPlaces& places, std::int64_t source,
                   const TextDocument& document, std::initializer_list<Unit> units) {
  TextDocument complete = document;
  const std::string text = Xliff(document.language, units);
  complete.folder = places.translations;
  complete.typeId = xliffType;
  complete.text = text;
  writer.AddTranslation(source, Add(writer, places.context, complete).master);
}

void AddWeldingManual(SeedWriter& writer, const ManualPlaces& places) {
  const Added manual = Add(writer, places.context,
                           {.number = 1028,
                            .folder = places.frame,
                            .name = "Welding manual",
                            .documentNumber = "0000100028",
                            .cadName = "welding manual.xml",
                            .language = "en",
                            .text = "<?xml version=\"1.0\"?>\n<manual><p>Wear gloves.</p>"
                                    "<p>Weld thin tubes with less than 80 A.</p></manual>\n"});
  const std::string text = Xliff({}, {{gloves, {}}, {tubes, {}}});
  const Added source = Add(writer, places.context,
                           {.number = 1029,
                            .folder = places.translations,
                            .name = "Welding manual, XLIFF",
                            .documentNumber = "0000100029",
                            .cadName = "welding manual.xlf",
                            .language = "en",
                            .typeId = xliffType,
                            .extendedType = "x-raomSource",
                            .text = text});
  writer.AddXliffLink(manual.iteration, source.iteration);
  AddTranslated(writer, places, source.master,
                {.number = 1030,
                 .name = "Welding manual, German",
                 .documentNumber = "0000100030",
                 .cadName = "welding manual_de.xlf",
                 .language = "de",
                 .extendedType = "x-raomPublished"},
                {{gloves, "Handschuhe tragen."}, {tubes, "Dünne Rohre mit weniger als 80 A schweißen."}});
  AddTranslated(writer, places, source.master,
                {.number = 1031,
                 .name = "Welding manual, French",
                 .documentNumber = "0000100031",
                 .cadName = "welding manual_fr.xlf",
                 .language = "fr",
                 .extendedType = "x-raomTranslated"},
                {{gloves, "Porter des gants."}, {tubes, "Souder les tubes minces avec moins de 80 A."}});
}

}  // namespace

void SeedDemoManuals(SeedWriter& writer, const ManualPlaces& places) {
  AddWeldingManual(writer, places);
  Add(writer, places.context,
      {.number = 1032,
       .folder = places.manuals,
       .name = "Chain manual",
       .documentNumber = "0000100032",
       .cadName = "chain manual.xml",
       .language = "en",
       .text = "<?xml version=\"1.0\"?>\n<manual><p>Oil the chain every 200 km.</p></manual>\n"});
}

}  // namespace vantry_sim
