// A folder may hold a million documents: a row of its listing must not cost an allocation.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

#include "browsing/folder_contents_handler.h"
#include "connection/json_parsing.h"

namespace {

std::atomic<std::size_t> allocations{0};

}  // namespace

// Those of the whole program: the tests beside this one only count.
void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace lxservices::cms_interface::vantry {
namespace {

// Rows of which each text is too long to be kept in a string itself, with three versions and, in one of them,
// an escape.
std::string Page(int rows) {
  std::string page = R"({"value":[)";
  for (int row = 0; row < rows; ++row) {
    const std::string number = std::to_string(1'000'000'000 + row);
    if (row > 0) page += ',';
    page += R"({"ID":"OR:vn.doc.Document:)" + number + R"(","Name":"Housing of the pump )" + number +
            R"(","Number":"Number of the pump )" + number + R"(","CADName":"housing_of_the_pump_)" + number +
            R"(.prt","Versions":[{"Version":"the third one","ID":"OR:vn.doc.Document:3"},)" +
            R"({"Version":"the \u0073econd one","ID":"OR:vn.doc.Document:2"},)" +
            R"({"Version":"the first one","ID":"OR:vn.doc.Document:1"}]})";
  }
  return page + "]}";
}

std::size_t AllocationsOf(const std::string& page, std::size_t pieceSize) {
  std::size_t rows = 0;
  const std::size_t before = allocations;
  FolderContentsHandler handler({.details = true, .versions = true},
                                [&rows](const DirEntryInfoExt&) { ++rows; });
  JsonReader<FolderContentsHandler> reader(handler);
  for (std::size_t at = 0; at < page.size(); at += pieceSize) {
    EXPECT_TRUE(reader.Read(std::string_view(page).substr(at, pieceSize)));
  }
  EXPECT_TRUE(reader.Finish());
  const std::size_t made = allocations - before;
  EXPECT_GT(rows, 0U);
  return made;
}

TEST(ListingAllocations, DoNotGrowWithTheRows) {
  const std::string few = Page(10);
  const std::string many = Page(10'000);
  for (const std::size_t pieceSize : {std::size_t{0x10000}, std::size_t{1000}}) {
    const std::size_t ofFew = AllocationsOf(few, pieceSize);
    // What a piece cuts is put together in memory that grows a few times and is kept.
    EXPECT_LE(AllocationsOf(many, pieceSize), ofFew + 20) << pieceSize;
  }
}

}  // namespace
}  // namespace lxservices::cms_interface::vantry
