#include "documents/storing/multipart_file.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include "tests/support/temporary_directory.h"

namespace vtdirect_test {
namespace {

using lxservices::cms_interface::vantry::MultipartFile;

const std::string line = "\r\n--xxxxxxxxxxxxxxxxxxx-Fenloom-VtDirect-Upload-Boundary";

class MultipartBody : public testing::Test {
 protected:
  TemporaryDirectory directory;
  std::string path = directory.File("body");
};

TEST_F(MultipartBody, BeginsWithALineEndAndEndsWithoutOne) {
  MultipartFile body(path);
  ASSERT_TRUE(body.IsOpen());
  EXPECT_TRUE(body.Finish());
  EXPECT_EQ(ReadFile(path), line + "--");
}

TEST_F(MultipartBody, HoldsFieldsAndFilesByteForByte) {
  const std::string bytes("A\0\r\n--C", 7);
  WriteFile(directory.File("a b.lxz"), bytes);
  MultipartFile body(path);
  body.BeginField("Master_URL");
  body.AddText("one");
  body.AddText("two");
  body.AddFile(directory.File("a b.lxz").c_str(), "f1");
  EXPECT_TRUE(body.Finish());
  EXPECT_EQ(ReadFile(path), line + "\r\nContent-Disposition: form-data; name=\"Master_URL\"\r\n\r\nonetwo" +
                                line +
                                "\r\nContent-Type: application/octet-stream\r\n"
                                "Content-Disposition: form-data; name=\"f1\"; filename=\"a b.lxz\"\r\n\r\n" +
                                bytes + line + "--");
}

TEST_F(MultipartBody, LeavesOutAFileThatCannotBeOpened) {
  MultipartFile body(path);
  body.AddFile(directory.File("missing").c_str(), "f1");
  body.AddFile("", "f2");
  EXPECT_TRUE(body.Finish());
  EXPECT_EQ(ReadFile(path), line + "--");
}

TEST_F(MultipartBody, LeavesOutADirectory) {
  MultipartFile body(path);
  body.AddFile(directory.path().c_str(), "f1");
  EXPECT_TRUE(body.Finish());
  EXPECT_EQ(ReadFile(path), line + "--");
}

TEST_F(MultipartBody, HoldsAnEmptyFileAsAnEmptyPart) {
  WriteFile(directory.File("empty"), "");
  MultipartFile body(path);
  body.AddFile(directory.File("empty").c_str(), "f1");
  EXPECT_TRUE(body.Finish());
  EXPECT_EQ(ReadFile(path), line +
                                "\r\nContent-Type: application/octet-stream\r\n"
                                "Content-Disposition: form-data; name=\"f1\"; filename=\"empty\"\r\n\r\n" +
                                line + "--");
}

TEST_F(MultipartBody, CopiesAFileThatIsLongerThanItsBuffer) {
  std::string bytes(3 * 1024 * 1024 + 17, 'x');
  for (std::size_t index = 0; index < bytes.size(); index += 101) bytes[index] = static_cast<char>(index);
  WriteFile(directory.File("long"), bytes);
  MultipartFile body(path);
  body.AddFile(directory.File("long").c_str(), "f");
  EXPECT_TRUE(body.Finish());
  EXPECT_TRUE(ReadFile(path).ends_with("\r\n\r\n" + bytes + line + "--"));
}

TEST_F(MultipartBody, HoldsSeveralLongFilesOneBehindTheOther) {
  const std::string first(2 * 1024 * 1024 - 1, 'a');
  const std::string second(1024 * 1024 + 1, 'b');
  WriteFile(directory.File("first"), first);
  WriteFile(directory.File("second"), second);
  MultipartFile body(path);
  body.AddFile(directory.File("first").c_str(), "f1");
  body.AddFile(directory.File("second").c_str(), "f2");
  EXPECT_TRUE(body.Finish());
  const std::string head =
      line + "\r\nContent-Type: application/octet-stream\r\nContent-Disposition: form-data; name=";
  // Compared as a truth: a difference would print megabytes.
  EXPECT_TRUE(ReadFile(path) == head + "\"f1\"; filename=\"first\"\r\n\r\n" + first + head +
                                    "\"f2\"; filename=\"second\"\r\n\r\n" + second + line + "--");
}

// The boundary that a body was written with.
std::string BoundaryOf(const MultipartFile& body) {
  const std::string type = body.ContentType();
  const std::string before = "multipart/form-data; boundary=";
  EXPECT_TRUE(type.starts_with(before)) << type;
  return type.substr(before.size());
}

std::string PartOf(const std::string& boundary, const std::string& name, const std::string& bytes) {
  return "\r\n--" + boundary +
         "\r\nContent-Type: application/octet-stream\r\nContent-Disposition: form-data; name=\"" + name +
         "\"; filename=\"" + name + "\"\r\n\r\n" + bytes;
}

TEST_F(MultipartBody, KeepsItsBoundaryForAFileThatNamesItWithinALine) {
  WriteFile(directory.File("f"), "boundary=xxxxxxxxxxxxxxxxxxx-Fenloom-VtDirect-Upload-Boundary\r\n");
  MultipartFile body(path);
  body.AddFile(directory.File("f").c_str(), "f");
  EXPECT_TRUE(body.Finish());
  EXPECT_EQ(body.ContentType(),
            "multipart/form-data; boundary=xxxxxxxxxxxxxxxxxxx-Fenloom-VtDirect-Upload-Boundary");
}

TEST_F(MultipartBody, TakesAnotherBoundaryForAFileThatHoldsIt) {
  // Once across the end of the buffer, and once as the very first line.
  std::string late(1024 * 1024 - 20, 'x');
  late += line + "\r\nContent-Disposition: form-data; name=\"Master_URL\"\r\n\r\nelsewhere" + line + "--";
  for (const std::string& bytes : {late, line.substr(2), "a" + line}) {
    const std::string staged = directory.File("staged" + std::to_string(bytes.size()));
    WriteFile(directory.File("f"), bytes);
    WriteFile(directory.File("g"), "plain");
    MultipartFile body(staged);
    body.BeginField("Master_URL");
    body.AddText("m");
    body.AddFile(directory.File("f").c_str(), "f");
    body.AddFile(directory.File("g").c_str(), "g");
    EXPECT_TRUE(body.Finish());
    const std::string boundary = BoundaryOf(body);
    EXPECT_NE("\r\n--" + boundary, line);
    EXPECT_EQ(bytes.find(boundary), std::string::npos);
    EXPECT_TRUE(ReadFile(staged) == "\r\n--" + boundary +
                                        "\r\nContent-Disposition: form-data; name=\"Master_URL\"\r\n\r\nm" +
                                        PartOf(boundary, "f", bytes) + PartOf(boundary, "g", "plain") +
                                        "\r\n--" + boundary + "--");
  }
}

TEST_F(MultipartBody, IsNotOpenWhereNoFileCanBeMade) {
  EXPECT_FALSE(MultipartFile(directory.File("missing/body")).IsOpen());
  EXPECT_FALSE(MultipartFile("").IsOpen());
}

// A disk that was full for a while must not leave a body with a gap and a closing line: a server would take
// it for a whole one.
TEST_F(MultipartBody, LacksItsClosingLineWhenAByteDidNotReachTheDisk) {
  WriteFile(directory.File("long"), std::string(100'000, 'x'));
  WriteFile(directory.File("short"), "short");
  signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit small{50'000, before.rlim_max};
  MultipartFile body(path);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  body.AddFile(directory.File("long").c_str(), "f1");
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  body.AddFile(directory.File("short").c_str(), "f2");
  EXPECT_FALSE(body.Finish());
  const std::string written = ReadFile(path);
  EXPECT_TRUE(written.starts_with(line + "\r\nContent-Type"));
  EXPECT_EQ(written.find("short"), std::string::npos);
  EXPECT_FALSE(written.ends_with("--"));
}

// These kinds of file are on every Linux, and no other ones fail at will: the memory of a process has nothing
// at its beginning, and a setting of the kernel claims a page and ends within it.
class HalfReadFile : public MultipartBody, public testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Of, HalfReadFile,
                         testing::Values("/proc/self/mem", "/sys/devices/system/cpu/online"),
                         [](const auto& row) {
                           return row.index == 0 ? "AFaultyDisk" : "AFileCutMeanwhile";
                         });

TEST_P(HalfReadFile, LeavesTheBodyWithoutItsClosingLine) {
  WriteFile(directory.File("next"), "next");
  MultipartFile body(path);
  body.AddFile(GetParam(), "f1");
  body.AddFile(directory.File("next").c_str(), "f2");
  EXPECT_FALSE(body.Finish());
  const std::string written = ReadFile(path);
  EXPECT_TRUE(written.starts_with(line + "\r\nContent-Type")) << written;
  EXPECT_EQ(written.find("next"), std::string::npos);
  EXPECT_FALSE(written.ends_with("--"));
}

}  // namespace
}  // namespace vtdirect_test
