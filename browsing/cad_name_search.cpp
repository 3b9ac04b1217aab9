#include "browsing/cad_name_search.h"

#include <cstdlib>
#include <set>
#include <utility>
#include <vector>

#include "base/failure_trace.h"
#include "browsing/contexts.h"
#include "browsing/object_query.h"
#include "connection/url_escape.h"
#include "documents/reading/document_reads.h"

namespace lxservices::cms_interface::vantry {
namespace {

// Only the name is escaped; the blanks and the apostrophes of the filter go out as they are.
Result<std::vector<RestItem>> QueryByCadName(ServerContext& server, const std::string& cadName) {
  const FailureStep step("search by name");
  return QueryObjects(server, "vn.epm.EPMDocument", "number", "CADName eq '" + EscapeForUrl(cadName) + "'");
}

void TraceNoneFound(const FailureMark& mark, const std::string& cadName) {
  TracerFor(FollowsOr(mark, FailureKind::NotFound))(
      dp::TraceType::Error, "Failed find any document with CADName %s", cadName.c_str());
}

std::optional<DocumentRecord> ReadFound(ServerContext& server, const std::string& cadName,
                                        const std::string& id) {
  if (auto [status, record] = ReadDocument(server, id); status == Ok) return std::move(record);
  TracerFor(Follows())(dp::TraceType::Error, "Failed get document with CADName %s id %s", cadName.c_str(),
                       id.c_str());
  return std::nullopt;
}

// The numbers of the rows, each once and sorted by their bytes. A row without one names no document.
std::set<std::string> NumbersOf(const std::vector<RestItem>& rows) {
  std::set<std::string> numbers;
  for (const RestItem& row : rows) {
    const auto number = row.attributes.find("number");
    if (number != row.attributes.end()) numbers.insert(number->second);
  }
  return numbers;
}

FoundByCadName FindAmongNumbers(ServerContext& server, const std::set<std::string>& numbers,
                                const std::string& contextId) {
  FoundByCadName found;
  for (const std::string& number : numbers) {
    auto latest = FindLatestDocumentByNumber(server, number, contextId);
    if (!latest) continue;
    if (found.count == 0) found.record = std::move(*latest);
    ++found.count;
  }
  return found;
}

// The revisions as bytes, unlike where the newest version of a document is looked for: there a shorter text
// is the older one. The two differ on purpose: which document a path means hangs on this one.
bool IsOlder(const DocumentRecord& left, const DocumentRecord& right) {
  if (left.revision != right.revision) return left.revision < right.revision;
  return std::strtoll(left.iteration.c_str(), nullptr, 10) <
         std::strtoll(right.iteration.c_str(), nullptr, 10);
}

}  // namespace

std::optional<DocumentRecord> FindDocumentByCadName(ServerContext& server, const std::string& cadName) {
  const FailureStep step("find a document by its name");
  const FailureMark mark;
  const auto [status, rows] = QueryByCadName(server, cadName);
  if (status != Ok || rows.empty()) {
    TraceNoneFound(mark, cadName);
    return std::nullopt;
  }
  return ReadFound(server, cadName, rows.front().id);
}

FoundByCadName FindDocumentByCadNameInContext(ServerContext& server, const std::string& cadName,
                                              ContextKind kind, const std::string& contextName) {
  const FailureStep step("find a document by its name");
  const FailureMark mark;
  const auto [status, rows] = QueryByCadName(server, cadName);
  if (status != Ok) return {};
  if (rows.empty()) {
    TraceNoneFound(mark, cadName);
    return {};
  }
  if (rows.size() == 1) {
    auto only = ReadFound(server, cadName, rows.front().id);
    return only ? FoundByCadName{1, std::move(*only)} : FoundByCadName();
  }
  const auto context = FindContext(server, kind, contextName);
  if (!context) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Miss, "Failed to read dir %s\n",
                                                      contextName.c_str());
    return {};
  }
  FoundByCadName found = FindAmongNumbers(server, NumbersOf(rows), context->id);
  // Several numbers are worth a line and no failure: the smallest has been taken.
  if (found.count != 1) {
    const Reason reason =
        found.count == 0 ? FollowsOr(mark, FailureKind::NotFound) : Reason{FailureKind::Ambiguous};
    const auto aside = found.count > 1 ? std::make_unique<FailureAside>() : nullptr;
    TracerFor(reason)(dp::TraceType::Error, "Found %zu document with CADName %s", found.count,
                      cadName.c_str());
  }
  return found;
}

std::optional<DocumentRecord> FindLatestDocumentByNumber(ServerContext& server, const std::string& number,
                                                         const std::string& scope) {
  auto documents = SearchDocuments(server, number, scope);
  if (!documents || documents->empty()) return std::nullopt;
  DocumentRecord* best = &documents->front();
  for (DocumentRecord& document : *documents) {
    if (document.master.id != best->master.id) {
      TracerFor({FailureKind::Ambiguous})(dp::TraceType::Error, "Found multiple docs with the same number %s",
                                          number.c_str());
      return std::nullopt;
    }
    if (IsOlder(*best, document)) best = &document;
  }
  return std::move(*best);
}

}  // namespace lxservices::cms_interface::vantry
