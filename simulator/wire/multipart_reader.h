#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vantry_sim {

/// The head of one part of a multipart body.
struct PartHead {
  std::string name;      ///< of the form field; empty when none was given
  std::string fileName;  ///< empty when none was given
  std::string type;      ///< its Content-Type; empty when none was given
};

/// Takes the parts of a multipart body as they come. A false result ends the reading.
class PartSink {
 public:
  virtual ~PartSink() = default;
  virtual bool BeginPart(const PartHead& head) = 0;
  virtual bool PartBytes(std::string_view bytes) = 0;
  virtual bool EndPart() = 0;
};

/// Reads a multipart body piece by piece and holds no more of it than a part's head or the length of a
/// boundary.
///
/// What comes before the first boundary line is skipped, so that a body may begin with the CR LF that
/// belongs to it, and what comes after the last one too. Lines end in CR LF and in nothing else.
class MultipartReader {
 public:
  /// @param boundary as the Content-Type names it. @param sink outlives the reader
  MultipartReader(std::string_view boundary, PartSink& sink);

  /// Reads on. @return false when the body is broken or the sink has refused, and from then on
  bool Feed(std::string_view bytes);

  /// Whether the body has come to its end properly.
  [[nodiscard]] bool finished() const { return state_ == State::Epilogue; }

  /// What is wrong with the body; empty while nothing is, and when it was the sink that refused.
  [[nodiscard]] const std::string& problem() const { return problem_; }

  /// The most that a part's head may have.
  static constexpr std::size_t mostHeadBytes = 8 * 1024;
  /// The most parts of a body.
  static constexpr std::size_t mostParts = 1000;

 private:
  enum class State { Preamble, BoundaryEnd, Head, Bytes, Epilogue, Broken };
  bool Step();
  /// What becomes of the bytes before a boundary.
  enum class BytesRead { Drop, Keep };
  bool ReadToBoundary(BytesRead bytes);
  bool ReadBoundaryEnd();
  bool ReadHead();
  bool Break(std::string problem);
  bool Refused();

  std::string delimiter_;  ///< CR LF, two hyphens and the boundary
  PartSink& sink_;
  std::string pending_;  ///< what was fed and not yet read
  State state_ = State::Preamble;
  std::size_t parts_ = 0;
  std::string problem_;
};

/// The boundary that a Content-Type of `multipart/form-data` names; empty for any other text, and for a
/// boundary that is longer than 70 characters.
std::string BoundaryOf(std::string_view contentType);

/// Reads the lines of a part's head, each with CR LF after it.
/// @return false for a line without a colon
bool ParsePartHead(std::string_view lines, PartHead& head);

}  // namespace vantry_sim
