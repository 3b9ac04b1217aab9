// A document out of JSON: the same record comes of the text in memory, of the text in pieces and of a tree of
// all that is in it, by RapidJSON's own reader.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "connection/json_reader.h"
#include "documents/reading/document_reader.h"
#include "documents/reading/document_text.h"
#include "documents/reading/file_info.h"
#include "tests/support/rapidjson_reading.h"

using namespace lxservices::cms_interface::vantry;

namespace {

struct Outcome {
  bool isObject = false;
  DocumentRecord record;
  bool operator==(const Outcome&) const = default;
};

// What a text that is no object must leave as it is.
DocumentRecord Known() {
  DocumentRecord record;
  record.id = "known";
  record.contentSections.emplace_back().id = "known";
  return record;
}

Outcome ByTree(std::string_view text, const DocumentRecord& known) {
  Outcome outcome{false, known};
  rapidjson::Document document;
  bool isJson = false;
  auto generate = [&](rapidjson::Document& handler) {
    isJson = vtdirect_test::ReadByRapidJson(text, handler, maximumJsonDepth);
    return isJson;
  };
  document.Populate(generate);
  outcome.isObject = isJson && ReadDocumentRecord(document, outcome.record);
  WorkspaceRecord workspace;
  if (isJson) ReadWorkspace(document, workspace);
  return outcome;
}

Outcome InMemory(std::string_view text, const DocumentRecord* known) {
  Outcome outcome;
  outcome.isObject = ReadDocumentText(text, known, outcome.record);
  return outcome;
}

Outcome InPieces(std::string_view text, const DocumentRecord* known, std::size_t size) {
  Outcome outcome;
  const JsonPieces pieces = [&text, size] {
    const std::string_view piece = text.substr(0, size);
    text.remove_prefix(piece.size());
    return piece;
  };
  outcome.isObject = ReadDocumentText(pieces, known, outcome.record);
  return outcome;
}

void Expect(const Outcome& expected, const Outcome& outcome, const char* way) {
  if (outcome == expected) return;
  std::fprintf(stderr, "another record %s\n", way);
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const Outcome expected = ByTree(text, {});
  Expect(expected, InMemory(text, nullptr), "in memory");
  Expect(expected, InPieces(text, nullptr, 1), "in pieces of 1");
  Expect(expected, InPieces(text, nullptr, 1 + size / 3), "in three pieces");
  const DocumentRecord known = Known();
  const Outcome expectedOnTop = ByTree(text, known);
  Expect(expectedOnTop, InMemory(text, &known), "in memory on top of another");
  Expect(expectedOnTop, InPieces(text, &known, 7), "in pieces on top of another");
  (void)MakeFileInfo(expected.record);
  return 0;
}
