#include "tests/wire/public/path_search.h"

#include <algorithm>

namespace vtdirect_test {
namespace {

const Answer missing{404, ""};

struct Service {
  std::string line;
  TraceLine absence;
};

Service MakeService(const std::string& name) {
  const std::string path = "servlet/odata/" + name + "/$metadata";
  return {Get(path), {0, "CmsInterface", "Failed to get schema info " + path + " from server " + plmUrl}};
}

const std::vector<Service>& Services() {
  static const std::vector<Service> services{MakeService("DataAdmin"), MakeService("DynamicDocMgmt"),
                                             MakeService("CADDocumentMgmt")};
  return services;
}

Ending After(const Traces& traces, const std::vector<Answer>& answers, const Lines& lines, Ending rest) {
  rest.traces.insert(rest.traces.begin(), traces.begin(), traces.end());
  rest.answers.insert(rest.answers.begin(), answers.begin(), answers.end());
  rest.lines.insert(rest.lines.begin(), lines.begin(), lines.end());
  return rest;
}

class Search {
 public:
  explicit Search(const PathSearch& search)
      : search_(search),
        documentLine_(Get(documentsPath + "/" + search.id)),
        objects_{200, R"([{"id":")" + search.id + R"(","attributes":{"number":"0042"}}])"},
        document_{200, R"({"id":")" + search.id + R"("})"} {}

  [[nodiscard]] std::vector<Step> Steps() const {
    std::vector<Step> steps;
    for (std::size_t index = 0; index < Services().size(); ++index) steps.push_back(ServiceStep(index));
    steps.push_back(QueryStep());
    steps.push_back(ReadStep());
    return steps;
  }

 private:
  // A service that could not be asked for leaves those behind it unasked; one whose schema is broken at its
  // end counts as there, in its first version.
  [[nodiscard]] Step ServiceStep(std::size_t index) const {
    const Service& service = Services()[index];
    const auto place = MissingServices().begin() + static_cast<std::ptrdiff_t>(index);
    const Traces before(MissingServices().begin(), place);
    std::vector<Answer> answers;
    Lines lines;
    Traces traces = before;
    for (std::size_t later = index + 1; later < Services().size(); ++later) {
      answers.push_back(missing);
      lines.push_back(Services()[later].line);
      traces.push_back(Services()[later].absence);
    }
    answers.insert(answers.end(), {objects_, document_});
    lines.insert(lines.end(), {objectsLine, documentLine_});
    if (index == 1) {
      // With dynamic documents the latest version of what was found is asked for. The server has lost the
      // document by then, so that what was found is all that there is.
      answers.push_back(missing);
      lines.push_back(documentLine_);
      traces.push_back(NotLocated(search_.id));
    }
    return {service.line, missing,
            After(Join(before, {service.absence}), {objects_, document_}, {objectsLine, documentLine_},
                  search_.found),
            After(traces, answers, lines, search_.found)};
  }
  // The search is made twice.
  [[nodiscard]] Step QueryStep() const {
    const TraceLine notNamed = Error("Failed find any document with CADName pump.fnl");
    const Traces twice = Join(MissingServices(), {notNamed, noFile_, notNamed, noFile_, noPath_});
    return {objectsLine, objects_,
            After(Join(MissingServices(), {noFile_}), {objects_, document_}, {objectsLine, documentLine_},
                  search_.found),
            After(twice, {{200, "[]"}}, {objectsLine}, search_.nothing)};
  }
  [[nodiscard]] Step ReadStep() const {
    const Traces traces = Join(
        MissingServices(),
        {Error("Failed get document with CADName pump.fnl id " + search_.id), noFile_, noFile_, noPath_});
    return {documentLine_, document_, After(traces, {{500, ""}}, {objectsLine}, search_.nothing),
            After(MissingServices(), {objects_, document_}, {objectsLine, documentLine_}, search_.found)};
  }

  const PathSearch& search_;
  std::string documentLine_;
  Answer objects_;
  Answer document_;
  TraceLine noFile_ = Miss("Failed to find file pump.fnl");
  TraceLine noPath_ = Miss("Failed to find file Products/Gadget/Folders/pump.fnl");
};

}  // namespace

std::vector<Step> SearchSteps(const PathSearch& search) {
  return Search(search).Steps();
}

const Traces& MissingServices() {
  static const Traces traces{Services()[0].absence, Services()[1].absence, Services()[2].absence};
  return traces;
}

TraceLine NotLocated(const std::string& id) {
  return Error("Failed to locate document " + id + " on server\n");
}

}  // namespace vtdirect_test
