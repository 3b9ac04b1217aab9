#include "simulator/wire/request_head.h"

#include <gtest/gtest.h>

namespace vantry_sim {
namespace {

TEST(RequestHead, IsReadInItsOrderAndSpelling) {
  const RequestHead head = ReadRequestHead(
      "GET /a?b=c d HTTP/1.1\r\nHOST:  h \r\nx-one: 1\r\nno colon\r\nX-One: 2\r\n\r\nBody: no\r\n");
  EXPECT_EQ(head.method, "GET");
  EXPECT_EQ(head.target, "/a?b=c d");
  const std::vector<std::pair<std::string, std::string>> headers{
      {"HOST", "h"}, {"x-one", "1"}, {"X-One", "2"}};
  EXPECT_EQ(head.headers, headers);
  EXPECT_EQ(head.Header("host"), "h");
  EXPECT_EQ(head.Header("X-ONE"), "1");
  EXPECT_EQ(head.Header("absent"), "");
}

TEST(RequestHead, HostileBytesAreReadWithoutAProblem) {
  for (const std::string& bytes :
       {std::string(), std::string("\n"), std::string(" "), std::string("GET"), std::string("\0\0\r\n", 4),
        std::string(1000, ' '), std::string(":\r\n:\r\n")}) {
    EXPECT_EQ(ReadRequestHead(bytes).target, "");
  }
}

TEST(RequestHead, EndIsTheEmptyLineOrALineThatIsNoRequest) {
  const std::string whole = "GET / HTTP/1.1\r\nA: b\r\n\r\n";
  EXPECT_EQ(FindHeadEnd(whole + "more").size, whole.size());
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(FindHeadEnd(whole.substr(0, size)).known) << size;
    // Bytes that were looked at before are not looked at again.
    EXPECT_EQ(FindHeadEnd(whole, size).size, whole.size()) << size;
  }
  EXPECT_EQ(FindHeadEnd("nonsense\r\nA: b").size, 10U);
  EXPECT_EQ(FindHeadEnd("GET / HTTP/9.9\r\n").size, 16U);
  EXPECT_EQ(FindHeadEnd("\r\nGET /").size, 2U);
  EXPECT_FALSE(FindHeadEnd("GET / HTTP/1.0\r\nA: b\n\n").known);
}

}  // namespace
}  // namespace vantry_sim
