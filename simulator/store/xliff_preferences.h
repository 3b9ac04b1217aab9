#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/options.h"
#include "simulator/store/document_store.h"

namespace vantry_sim {

/// What a document must be made as to count as XLIFF.
inline constexpr std::string_view xliffType = "vn.epm.EPMDocument|net.kettenblitz.XliffDocument";

/// One thing that a client has to know before it uploads a source XLIFF.
struct XliffPreference {
  std::string_view name;
  std::string value;
};

/// Whether the server has a preference of this name, for any document and either way to name the folder.
bool IsXliffPreference(std::string_view name);

/// The preferences for the source XLIFF of a document. It goes to the folder `Translations` of the document's
/// context, and without such a folder to the context's root. Those that the options leave out are missing.
/// @param language that the source is written in
std::vector<XliffPreference> XliffPreferencesFor(Database& database, const Options& options,
                                                 const DocumentRow& document, const std::string& language);

/// The arguments of an OData function call, such as `a='1',b='2'`.
struct XliffQuestion {
  std::string document;  ///< id of the document that is to be translated
  std::string language;
};

/// Reads the arguments of XliffPreferences, in either order. An apostrophe inside a text is doubled.
/// @return nothing for anything but these two, each of them once and not empty
std::optional<XliffQuestion> ParseXliffQuestion(std::string_view arguments);

}  // namespace vantry_sim
