#include "public/source_links.h"

#include "tests/wire/public/path_search.h"
#include "tests/wire/public/uploads/upload_front_fixture.h"

// Every request after a document's links, and after the question whether it is still to be created, fails
// in every way.
namespace vtdirect_test {
namespace {

using namespace VtDirectManager;

std::string TextOf(const std::map<std::string, std::string>& links) {
  std::string text;
  for (const auto& [name, target] : links) text += name + " = " + target + ";";
  return text;
}

class LinksFailures : public UploadFrontTest {
 protected:
  void Walk(const std::vector<Step>& steps, const std::function<std::string()>& run, std::size_t first = 0) {
    const auto leftovers = [this] {
      Lines names = directory.Entries();
      std::erase(names, "local");
      return names;
    };
    WalkFailuresFrom({first, steps}, transport, trace, leftovers, [&] {
      UpdateServerList({});
      UpdateServerList({{"plm", plmUrl}});
      return run();
    });
  }
};

TEST_F(LinksFailures, OfADocumentsLinks) {
  const Answer document{200,
                        R"({"derivedSourceDependencies":[{"asStoredChildName":"a|x","source":{"id":"D7"}},
                                                          {"asStoredChildName":"b","source":{"id":"D8"}}]})"};
  const Answer first{200, R"({"epmMaster":{"cadName":"a 1.fnl"}})"};
  const Answer second{200, R"({"epmMaster":{"cadName":"b.fnl"}})"};
  const std::string linkA = "a%7cx = " + uidStem + "D7&file=/a%201.fnl;";
  const std::string linkB = "b = " + uidStem + "D8&file=/b.fnl;";
  const std::string other = "other = stays;";
  Walk({{DocumentLine("D1"), document, {other, {NotLocated("D1")}}, {other, {}}},
        {DocumentLine("D7"),
         first,
         {"a%7cx = ;" + linkB + other, {NotLocated("D7")}, {second}, {DocumentLine("D8")}},
         {"a%7cx = " + uidStem + "D7;" + linkB + other, {}, {second}, {DocumentLine("D8")}}},
        {DocumentLine("D8"),
         second,
         {linkA + "b = ;" + other, {NotLocated("D8")}},
         {linkA + "b = " + uidStem + "D8;" + other, {}}}},
       [] {
         std::map<std::string, std::string> links{{"other", "stays"}};
         GetSourceLinks(uidOfD1, links);
         return TextOf(links);
       });
}

// A link that cannot be followed is dropped with a warning.
TEST_F(LinksFailures, OfALinkByPath) {
  const Ending dropped{"",
                       {Warning("Failed to resolve " + searchedPath + " : link to bolt will be broken\n")}};
  Walk(SearchSteps({"D1", {"bolt = D1;", {}}, dropped}), [] {
    return TextOf(lxservices::cms_interface::ResolveSourceLinks(PlmTarget(), {{"bolt", searchedPath}}));
  });
}

TEST_F(LinksFailures, OfTheQuestionWhetherToCreate) {
  const TraceLine notFound = Error("Failed to find file " + std::string(uidOfD1));
  Walk({{DocumentLine("D1"),
         {200, R"({"cadContent":{"contentSections":[{"fileSize":1}]}})"},
         {"no", {NotLocated("D1"), notFound}},
         // A document that says nothing of its content has none.
         {"yes", {}}}},
       [] { return ShouldCreate(uidOfD1) ? std::string("yes") : std::string("no"); });
}

TEST_F(LinksFailures, OfTheQuestionWhetherToCreateByPath) {
  const Answer document{200, R"({"id":"D1","cadContent":{"contentSections":[{"fileSize":1}]}})"};
  const TraceLine notFound = Error("Failed to find file " + searchedPath);
  const std::vector<Step> search =
      SearchSteps({"D1", {"no", {}, {document}, {DocumentLine("D1")}}, {"no", {notFound}}});
  Walk(Join(search, {{DocumentLine("D1"),
                      document,
                      {"no", Join(MissingServices(), {NotLocated("D1"), notFound})},
                      {"yes", MissingServices()}}}),
       [] { return ShouldCreate(searchedPath.c_str()) ? std::string("yes") : std::string("no"); });
}

}  // namespace
}  // namespace vtdirect_test
