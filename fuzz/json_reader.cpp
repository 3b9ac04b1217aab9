// The readers of JSON against RapidJSON's: every event and the result, of the whole text, of the text in
// pieces and, where it is plain, by the reader of plain texts.
#include "connection/json_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>

#include "connection/plain_json.h"
#include "tests/support/json_event_log.h"
#include "tests/support/rapidjson_reading.h"

using namespace lxservices::cms_interface::vantry;
using vtdirect_test::JsonEventLog;

namespace {

struct Outcome {
  bool read = false;
  std::string events;
};

constexpr std::size_t noLimit = std::numeric_limits<std::size_t>::max();

Outcome Expected(std::string_view text, std::size_t events) {
  JsonEventLog log(events);
  const bool read = vtdirect_test::ReadByRapidJson(text, log, maximumJsonDepth);
  return {read, log.text()};
}

// Cuts the text into pieces of that many bytes, the first of which is shorter.
Outcome InPieces(std::string_view text, std::size_t events, std::size_t first, std::size_t size) {
  JsonEventLog log(events);
  JsonReader<JsonEventLog> reader(log);
  bool goesOn = true;
  for (std::size_t next = first; goesOn && !text.empty(); next = size) {
    const std::string piece(text.substr(0, next));  // its own memory, so that a reader beyond its end is seen
    goesOn = reader.Read(piece);
    text.remove_prefix(std::min(next, text.size()));
  }
  return {goesOn && reader.Finish(), log.text()};
}

// A text that isn't plain may have made any events.
void ComparePlain(std::string_view text, const Outcome& expected) {
  JsonEventLog log;
  if (!PlainJson<JsonEventLog>(text, log).Read()) return;
  if (expected.read && log.text() == expected.events) return;
  std::fprintf(stderr, "as plain:\nexpected %d %s\nread     1 %s\n", expected.read, expected.events.c_str(),
               log.text().c_str());
  std::abort();
}

void Compare(const Outcome& expected, const Outcome& outcome, std::size_t size) {
  if (outcome.read == expected.read && outcome.events == expected.events) return;
  std::fprintf(stderr, "in pieces of %zu:\nexpected %d %s\nread     %d %s\n", size, expected.read,
               expected.events.c_str(), outcome.read, outcome.events.c_str());
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const Outcome expected = Expected(text, noLimit);
  ComparePlain(text, expected);
  Compare(expected, InPieces(text, noLimit, size, size), size);
  Compare(expected, InPieces(text, noLimit, 1, 1), 1);
  // Other cuts for each text: they follow from its length and its first byte.
  const std::size_t seed = size == 0 ? 0 : size * 31 + data[0];
  Compare(expected, InPieces(text, noLimit, seed % 7, 7), 7);
  Compare(expected, InPieces(text, noLimit, seed % (size + 1), size), size);
  const std::size_t events = seed % 17;
  Compare(Expected(text, events), InPieces(text, events, size, 5), 5);
  return 0;
}
