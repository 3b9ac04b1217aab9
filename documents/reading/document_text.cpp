#include "documents/reading/document_text.h"

#include "base/settings.h"
#include "connection/plain_json.h"
#include "documents/reading/document_fields.h"
#include "documents/reading/record_handler.h"

namespace lxservices::cms_interface::vantry {
namespace {

enum class Outcome { Object, NoObject, NoJson };

void StartAnew(const DocumentRecord* known, DocumentRecord& record) {
  record = known == nullptr ? DocumentRecord() : *known;
}

// `read` hands the events of the text to a handler. The record holds some of it when that fails.
template <typename Read>
Outcome Take(DocumentRecord& record, Read read) {
  RecordHandler handler(recordFields, &record);
  if (!read(handler)) return Outcome::NoJson;
  return handler.isObject() ? Outcome::Object : Outcome::NoObject;
}

}  // namespace

bool ReadDocumentText(std::string_view text, const DocumentRecord* known, DocumentRecord& record) {
  if (known != nullptr) record = *known;
  const auto settings = CurrentSettings();
  if (text.size() > settings->largestJson) return false;
  Outcome outcome = Take(record, [&](RecordHandler& handler) {
    return text.size() <= settings->longestJsonText && PlainJson<RecordHandler>(text, handler).Read();
  });
  if (outcome == Outcome::NoJson) {
    StartAnew(known, record);
    outcome = Take(record, [text](RecordHandler& handler) { return ReadJson(text, handler); });
  }
  if (outcome == Outcome::NoJson) StartAnew(known, record);
  return outcome == Outcome::Object;
}

bool ReadDocumentText(const JsonPieces& pieces, const DocumentRecord* known, DocumentRecord& record) {
  if (known != nullptr) record = *known;
  const Outcome outcome =
      Take(record, [&pieces](RecordHandler& handler) { return ReadBoundedJson(pieces, handler); });
  if (outcome == Outcome::NoJson) StartAnew(known, record);
  return outcome == Outcome::Object;
}

}  // namespace lxservices::cms_interface::vantry
