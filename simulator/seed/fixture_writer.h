#pragma once

#include <filesystem>
#include <string>

#include "simulator/seed/fixture.h"
#include "simulator/seed/state_output.h"

namespace vantry_sim {

/// How the bytes of contents are written.
struct FixtureBytesForm {
  enum class Kind {
    Inline,      ///< all of them in the text itself
    Beside,      ///< short texts in the text itself, the others as files in `directory`
    References,  ///< none of them: a content is written with the number of its stream
  };
  Kind kind = Kind::Inline;
  std::filesystem::path directory = {};  ///< made when the first file is written
  std::string prefix = {};               ///< what comes before the name of such a file in the text
};

/// Writes a state as ExportFixture gives it. @throws std::exception when a content cannot be read or written
void WriteFixture(StateOutput& out, const Fixture& fixture, const FixtureBytesForm& form);

/// Writes one document of it alone. @param fixture that it is of
void WriteFixtureDocument(StateOutput& out, const Fixture& fixture, const FixtureDocument& document,
                          const FixtureBytesForm& form);

}  // namespace vantry_sim
