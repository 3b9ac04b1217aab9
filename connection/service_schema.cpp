#include "connection/service_schema.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "base/failure_trace.h"
#include "base/tracers.h"
#include "connection/bounded_xml.h"
#include "connection/scoped_temp_path.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr int chunkSize = 512;
// Each chunk has the parser look at the token that is open from its beginning. Beyond this length, which no
// token of a schema comes near, a chunk is as long as what is there already, so that a long token costs no
// more than its length.
constexpr std::size_t longToken = 16 * 1024;
// A token that is still open after this many bytes makes a broken document.
constexpr std::size_t longestToken = 256 * 1024;
constexpr std::uint64_t longestDocument = std::uint64_t{64} << 20;
constexpr std::uint16_t failedDownload = 65535;
constexpr std::size_t fileBufferSize = 64 * 1024;
// A version is a small number; the text of a hostile document must not be collected without bound.
constexpr std::size_t maximumVersionText = 4096;

struct SchemaParseState {
  unsigned schemaDepth = 0;
  unsigned entityDepth = 0;
  unsigned annotationDepth = 0;
  unsigned stringDepth = 0;
  int entityIndex = -1;
  std::string text;
  SchemaQuery* query = nullptr;
  int* version = nullptr;
};

// The value of an attribute, or nothing. Attributes come as a null-terminated list of names and values.
const char* FindAttribute(const char** attributes, std::string_view name) {
  for (; attributes[0] != nullptr; attributes += 2) {
    if (attributes[0] == name) return attributes[1];
  }
  return nullptr;
}

int FindEntity(const SchemaQuery* query, const char* name) {
  if (query == nullptr || name == nullptr) return -1;
  for (std::size_t index = 0; index < query->size(); ++index) {
    if ((*query)[index].name == name) return static_cast<int>(index);
  }
  return -1;
}

void Mark(std::vector<MemberQuery>& members, const char** attributes) {
  const char* name = FindAttribute(attributes, "Name");
  if (name == nullptr) return;
  for (MemberQuery& member : members) {
    if (member.name == name) member.found = true;
  }
}

void StartSchemaChild(SchemaParseState& state, std::string_view name, const char** attributes) {
  if (name == "EntityType") {
    state.entityDepth = 1;
    state.entityIndex = FindEntity(state.query, FindAttribute(attributes, "Name"));
  } else if (name == "Annotation") {
    const char* term = FindAttribute(attributes, "Term");
    if (term != nullptr && std::string_view(term) == "Core.SchemaVersion") state.annotationDepth = 1;
  }
}

void StartEntityChild(SchemaParseState& state, std::string_view name, const char** attributes) {
  EntityQuery& entity = (*state.query)[static_cast<std::size_t>(state.entityIndex)];
  if (name == "Property") Mark(entity.properties, attributes);
  if (name == "NavigationProperty") Mark(entity.navigationProperties, attributes);
}

void StartElement(void* user, const char* name, const char** attributes) {
  auto& state = *static_cast<SchemaParseState*>(user);
  for (unsigned* depth : {&state.schemaDepth, &state.entityDepth, &state.annotationDepth}) {
    if (*depth != 0) ++*depth;
  }
  const std::string_view element = name;
  // A "Schema" starts a new count, but what follows still goes by the depths before that.
  const unsigned entityDepth = state.entityDepth;
  const unsigned annotationDepth = state.annotationDepth;
  if (element == "Schema") {
    state.schemaDepth = 1;
  } else if (state.schemaDepth == 2) {
    StartSchemaChild(state, element, attributes);
    return;
  }
  if (entityDepth == 2 && state.entityIndex >= 0) {
    StartEntityChild(state, element, attributes);
  } else if (annotationDepth == 2 && element == "String") {
    state.stringDepth = 1;
    state.text.clear();
  }
}

void CharacterData(void* user, const char* text, int length) {
  auto& state = *static_cast<SchemaParseState*>(user);
  if (state.annotationDepth == 0 || state.stringDepth == 0) return;
  const auto room = maximumVersionText - state.text.size();
  state.text.append(text, std::min(room, static_cast<std::size_t>(length)));
}

void EndElement(void* user, const char*) {
  auto& state = *static_cast<SchemaParseState*>(user);
  if (state.annotationDepth != 0 && state.stringDepth != 0) {
    if (state.version != nullptr) {
      *state.version = static_cast<int>(std::strtol(state.text.c_str(), nullptr, 10));
    }
    state.text.clear();
  }
  for (unsigned* depth :
       {&state.schemaDepth, &state.entityDepth, &state.annotationDepth, &state.stringDepth}) {
    if (*depth != 0) --*depth;
  }
}

using Parser = std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)>;

Parser MakeParser(SchemaParseState& state) {
  Parser parser(MakeBoundedXmlParser(), &XML_ParserFree);
  if (!parser) throw std::runtime_error("creating parser");
  XML_SetUserData(parser.get(), &state);
  XML_SetElementHandler(parser.get(), StartElement, EndElement);
  XML_SetCharacterDataHandler(parser.get(), CharacterData);
  return parser;
}

// How much of the token at the end of what was parsed has come: the document's length so far, less the place
// where the parser would go on.
class OpenToken {
 public:
  // To be told after each chunk.
  void Took(XML_Parser parser, int count) {
    parsed_ += count;
    // Nothing is known of it when nothing was parsed yet.
    if (const auto place = XML_GetCurrentByteIndex(parser); place >= 0) begin_ = place;
  }
  [[nodiscard]] std::size_t length() const { return static_cast<std::size_t>(parsed_ - begin_); }

 private:
  XML_Index parsed_ = 0;
  XML_Index begin_ = 0;
};

int NextChunkSize(const OpenToken& open) {
  return open.length() < longToken ? chunkSize : static_cast<int>(open.length());
}

// False for an XML error. The error of a chunk shows only when the buffer for the next one is asked for, and
// so an error in the last chunk goes unnoticed: a document that is broken at its very end counts as
// read, and is to go on counting so.
bool ParseDocument(std::istream& document, SchemaParseState& state) {
  const Parser parser = MakeParser(state);
  bool broken = false;
  OpenToken open;
  while (!document.eof()) {
    const int size = NextChunkSize(open);
    void* buffer = broken ? nullptr : XML_GetBuffer(parser.get(), size);
    if (buffer == nullptr) return false;
    document.read(static_cast<char*>(buffer), size);
    const auto count = static_cast<int>(document.gcount());
    broken = XML_ParseBuffer(parser.get(), count, document.eof()) == XML_STATUS_ERROR;
    open.Took(parser.get(), count);
    if (open.length() > longestToken) return false;
    if (document.bad()) break;
  }
  return true;
}

Status TraceBroken() {
  TracerFor({FailureKind::AnswerBroken}, CmsInterfaceTracer())(dp::TraceType::Error, "XML parse error");
  return Refused;
}

Status ParseTraced(std::istream& document, SchemaParseState& state) {
  bool parsed = false;
  try {
    parsed = ParseDocument(document, state);
  } catch (...) {
    parsed = false;
  }
  return parsed ? Ok : TraceBroken();
}

// So it is where the download was ended for its length. It would be no other one the next time.
bool IsAsLongAsMayBe(const std::string& path) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  return !error && size >= longestDocument;
}

}  // namespace

Status FetchSchema(VtConnection& connection, const char* path, SchemaQuery* query, int* version) {
  const FailureStep step("look for a service");
  const FailureAside aside;  // a service that cannot be seen is done without
  const ScopedTempPath file(MakeTempFile("vtmeta", "txt"));
  const auto status = connection.http()->DownloadDocumentTo(file.path().c_str(), path, longestDocument);
  if (status == failedDownload && IsAsLongAsMayBe(file.path())) return TraceBroken();
  if (status != 200) {
    CmsInterfaceTracer()(dp::TraceType::Information, "Failed to get schema info %s from server %s", path,
                         connection.http()->uri().c_str());
    return status == 404 ? NotFound : ServerError;
  }
  std::array<char, fileBufferSize> fileBuffer;
  std::ifstream document;
  document.rdbuf()->pubsetbuf(fileBuffer.data(), fileBuffer.size());
  document.open(file.path(), std::ios::binary);
  if (!document) return Ok;
  SchemaParseState state;
  state.query = query;
  state.version = version;
  return ParseTraced(document, state);
}

}  // namespace lxservices::cms_interface::vantry
