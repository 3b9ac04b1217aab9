#include "simulator/wire/multipart_reader.h"

#include <gtest/gtest.h>

namespace vantry_sim {
namespace {

/// Writes down what it is given: "name|file|type[bytes]" for each part that ended.
class Recorder : public PartSink {
 public:
  bool BeginPart(const PartHead& head) override {
    open_ = head.name + "|" + head.fileName + "|" + head.type + "[";
    return ++begun_ != refuseAt_;
  }
  bool PartBytes(std::string_view bytes) override {
    open_ += bytes;
    return true;
  }
  bool EndPart() override {
    text_ += open_ + "]";
    return true;
  }
  void RefusePart(int number) { refuseAt_ = number; }
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  std::string text_;
  std::string open_;
  int begun_ = 0;
  int refuseAt_ = -1;
};

struct Read {
  std::string parts;
  bool finished = false;
  std::string problem;
};

Read ReadAll(const std::string& body, std::size_t step, const std::string& boundary = "B") {
  Recorder recorder;
  MultipartReader reader(boundary, recorder);
  for (std::size_t at = 0; at < body.size(); at += step) {
    if (!reader.Feed(std::string_view(body).substr(at, step))) break;
  }
  return {recorder.text(), reader.finished(), reader.problem()};
}

const std::string twoParts =
    "\r\n--B\r\nContent-Disposition: form-data; name=\"Master_URL\"\r\n\r\nhttp://h/m"
    "\r\n--B\r\nContent-Type: application/octet-stream\r\nContent-Disposition: form-data; name=\"f1\"; "
    "filename=\"a.lxz\"\r\n\r\nABC\r\n--B--";

TEST(MultipartReader, ReadsABodyThatBeginsWithALineEnd) {
  const Read read = ReadAll(twoParts, twoParts.size());
  EXPECT_TRUE(read.finished);
  EXPECT_EQ(read.parts, "Master_URL||[http://h/m]f1|a.lxz|application/octet-stream[ABC]");
}

TEST(MultipartReader, ReadsABodyThatBeginsWithItsBoundaryOrWithOtherText) {
  for (const char* front : {"", "preamble", "preamble\r\n", "--\r\n", "-", "\r"}) {
    const std::string body = front + (std::string(front).empty() ? twoParts.substr(2) : twoParts);
    const Read read = ReadAll(body, 3);
    EXPECT_TRUE(read.finished) << front;
    EXPECT_EQ(read.parts, "Master_URL||[http://h/m]f1|a.lxz|application/octet-stream[ABC]") << front;
  }
}

TEST(MultipartReader, ItMakesNoDifferenceHowTheBytesArrive) {
  const std::string whole = ReadAll(twoParts, twoParts.size()).parts;
  for (std::size_t step = 1; step < twoParts.size(); ++step) {
    const Read read = ReadAll(twoParts, step);
    EXPECT_TRUE(read.finished) << step;
    EXPECT_EQ(read.parts, whole) << step;
  }
}

TEST(MultipartReader, BytesMayLookLikeAlmostABoundary) {
  const std::string bytes = "\r\n\r\n--\r\n--A\r\n-\r--B\n--B\r\n--\r\n" + std::string("\0\xFF\r", 3);
  const std::string body =
      "--B\r\nContent-Disposition: form-data; name=\"f\"\r\n\r\n" + bytes + "\r\n--B--\r\nepilogue";
  for (std::size_t step = 1; step <= body.size(); ++step) {
    const Read read = ReadAll(body, step);
    EXPECT_TRUE(read.finished) << step;
    EXPECT_EQ(read.parts, "f||[" + bytes + "]") << step;
  }
}

TEST(MultipartReader, PartsMayBeEmptyAndHeadsToo) {
  const std::string body =
      "--B\r\nContent-Disposition: form-data; name=\"f\"\r\n\r\n\r\n--B \t\r\n\r\nx\r\n--B--";
  for (const std::size_t step : {std::size_t{1}, body.size()}) {
    const Read read = ReadAll(body, step);
    EXPECT_TRUE(read.finished);
    EXPECT_EQ(read.parts, "f||[]||[x]");
  }
}

TEST(MultipartReader, BodyCutAnywhereIsNotFinishedAndItsLastPartNotEnded) {
  for (std::size_t length = 0; length < twoParts.size(); ++length) {
    for (const std::size_t step : {std::size_t{1}, std::size_t{7}, twoParts.size()}) {
      const Read read = ReadAll(twoParts.substr(0, length), step);
      EXPECT_FALSE(read.finished) << length;
      EXPECT_TRUE(read.problem.empty()) << length << read.problem;
    }
  }
}

TEST(MultipartReader, BrokenBoundaryLinesAndHeadsAreRefused) {
  const std::pair<const char*, const char*> cases[] = {
      {"--Bx\r\n\r\n", "a boundary line goes on after the boundary"},
      {"--B\n\n", "a boundary line goes on after the boundary"},
      {"--B-\r\n", "a boundary line goes on after the boundary"},
      {"--B\r\nno colon\r\n\r\n", "the head of a part cannot be read"},
      {"--B\r\n: x\r\n\r\n", "the head of a part cannot be read"},
  };
  for (const auto& [body, problem] : cases) {
    for (const std::size_t step : {std::size_t{1}, std::size_t{1000}}) {
      EXPECT_EQ(ReadAll(std::string(body) + "more bytes", step).problem, problem) << body;
    }
  }
}

TEST(MultipartReader, EndlessHeadsAndBlanksAndPartsAreRefused) {
  const std::string longHead = "--B\r\nA: " + std::string(100'000, 'x');
  EXPECT_EQ(ReadAll(longHead, 1000).problem, "the head of a part is too long");
  EXPECT_EQ(ReadAll(longHead + "\r\n\r\n", longHead.size() + 4).problem, "the head of a part is too long");
  EXPECT_EQ(ReadAll("--B" + std::string(100'000, ' '), 1000).problem, "a boundary line has no end");
  std::string many;
  for (std::size_t i = 0; i <= MultipartReader::mostParts; ++i) many += "\r\n--B\r\n\r\n";
  EXPECT_EQ(ReadAll(many, 4096).problem, "the body has too many parts");
}

TEST(MultipartReader, WithoutABoundaryNothingIsRead) {
  EXPECT_EQ(ReadAll(twoParts, 10, "").problem, "the boundary is empty");
  const Read other = ReadAll(twoParts, 10, "other");
  EXPECT_FALSE(other.finished);
  EXPECT_EQ(other.parts, "");
}

TEST(MultipartReader, SinkThatRefusesEndsTheReadingWithoutAProblem) {
  Recorder recorder;
  recorder.RefusePart(2);
  MultipartReader reader("B", recorder);
  EXPECT_FALSE(reader.Feed(twoParts));
  EXPECT_FALSE(reader.Feed("more"));
  EXPECT_FALSE(reader.finished());
  EXPECT_EQ(reader.problem(), "");
  EXPECT_EQ(recorder.text(), "Master_URL||[http://h/m]");
}

TEST(MultipartReader, BoundaryIsReadFromTheContentType) {
  EXPECT_EQ(BoundaryOf("multipart/form-data; boundary=xx-Y"), "xx-Y");
  EXPECT_EQ(BoundaryOf("Multipart/Form-Data; charset=utf-8; Boundary=\"a b\"; x=y"), "a b");
  EXPECT_EQ(BoundaryOf("multipart/form-data; boundary=xx; charset=utf-8"), "xx");
  EXPECT_EQ(BoundaryOf("multipart/form-data"), "");
  EXPECT_EQ(BoundaryOf("multipart/form-data; boundary="), "");
  EXPECT_EQ(BoundaryOf("multipart/form-data; boundary=\"open"), "");
  EXPECT_EQ(BoundaryOf("application/json; boundary=x"), "");
  EXPECT_EQ(BoundaryOf("multipart/form-data; boundary=" + std::string(71, 'x')), "");
}

TEST(MultipartReader, FileNameKeepsItsQuotes) {
  PartHead head;
  ASSERT_TRUE(
      ParsePartHead("CONTENT-DISPOSITION: form-data; name=\"f1\"; filename=\"a \"b\".lxz\"\r\n", head));
  EXPECT_EQ(head.name, "f1");
  EXPECT_EQ(head.fileName, "a \"b\".lxz");
  PartHead onlyFile;
  ASSERT_TRUE(ParsePartHead("Content-Disposition: form-data; filename=\"x\"\r\n", onlyFile));
  EXPECT_EQ(onlyFile.name, "");
  PartHead broken;
  ASSERT_TRUE(ParsePartHead("Content-Disposition: form-data; name=\"\r\n", broken));
  EXPECT_EQ(broken.name, "");
}

}  // namespace
}  // namespace vantry_sim
