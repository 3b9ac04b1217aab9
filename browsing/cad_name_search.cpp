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
bool QueryByCadName(ServerContext& server, const std::string& cadName, std::vector<RestItem>& rows) {
  const FailureStep step("search by name");
  return QueryObjects(server, "vn.epm.EPMDocument", "number", "CADName eq '" + EscapeForUrl(cadName) + "'",
                      rows);
}

void TraceNoneFound(const FailureMark& mark, const std::string& cadName) {
  TracerFor(FollowsOr(mark, FailureKind::NotFound))(
      dp::TraceType::Error, "Failed find any document with CADName %s", cadName.c_str());
}

bool ReadFound(ServerContext& server, const std::string& cadName, const std::string& id,
               DocumentRecord& record) {
  if (ReadDocument(server, id, record) == Ok) return true;
  TracerFor(Follows())(dp::TraceType::Error, "Failed get document with CADName %s id %s", cadName.c_str(),
                       id.c_str());
  return false;
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

std::size_t FindAmongNumbers(ServerContext& server, const std::set<std::string>& numbers,
                             const std::string& contextId, DocumentRecord& record) {
  std::size_t count = 0;
  for (const std::string& number : numbers) {
    DocumentRecord found;
    if (!FindLatestDocumentByNumber(server, number, contextId.c_str(), found)) continue;
    if (count == 0) record = std::move(found);
    ++count;
  }
  return count;
}

// The revisions as bytes, unlike where the newest version of a document is looked for: there a shorter text
// is the older one. The two differ on purpose: which document a path means hangs on this one.
bool IsOlder(const DocumentRecord& left, const DocumentRecord& right) {
  if (left.revision != right.revision) return left.revision < right.revision;
  return std::strtoll(left.iteration.c_str(), nullptr, 10) <
         std::strtoll(right.iteration.c_str(), nullptr, 10);
}

}  // namespace

bool FindDocumentByCadName(ServerContext& server, const std::string& cadName, DocumentRecord& record) {
  const FailureStep step("find a document by its name");
  const FailureMark mark;
  std::vector<RestItem> rows;
  if (!QueryByCadName(server, cadName, rows) || rows.empty()) {
    TraceNoneFound(mark, cadName);
    return false;
  }
  return ReadFound(server, cadName, rows.front().id, record);
}

std::size_t FindDocumentByCadNameInContext(ServerContext& server, const std::string& cadName,
                                           ContextKind kind, const std::string& contextName,
                                           DocumentRecord& record) {
  const FailureStep step("find a document by its name");
  const FailureMark mark;
  std::vector<RestItem> rows;
  if (!QueryByCadName(server, cadName, rows)) return 0;
  if (rows.empty()) {
    TraceNoneFound(mark, cadName);
    return 0;
  }
  if (rows.size() == 1) return ReadFound(server, cadName, rows.front().id, record) ? 1 : 0;
  ContextRecord context;
  if (!FindContext(server, kind, contextName, context)) {
    TracerFor(FollowsOr(mark, FailureKind::NotFound))(dp::TraceType::Miss, "Failed to read dir %s\n",
                                                      contextName.c_str());
    return 0;
  }
  const std::size_t count = FindAmongNumbers(server, NumbersOf(rows), context.id, record);
  // Several numbers are worth a line and no failure: the smallest has been taken.
  if (count != 1) {
    const Reason reason =
        count == 0 ? FollowsOr(mark, FailureKind::NotFound) : Reason{FailureKind::Ambiguous};
    const auto aside = count > 1 ? std::make_unique<FailureAside>() : nullptr;
    TracerFor(reason)(dp::TraceType::Error, "Found %zu document with CADName %s", count, cadName.c_str());
  }
  return count;
}

bool FindLatestDocumentByNumber(ServerContext& server, const std::string& number, const char* scope,
                                DocumentRecord& record) {
  std::vector<DocumentRecord> documents;
  if (!SearchDocuments(server, number, documents, scope) || documents.empty()) return false;
  DocumentRecord* best = &documents.front();
  for (DocumentRecord& document : documents) {
    if (document.master.id != best->master.id) {
      TracerFor({FailureKind::Ambiguous})(dp::TraceType::Error, "Found multiple docs with the same number %s",
                                          number.c_str());
      return false;
    }
    if (IsOlder(*best, document)) best = &document;
  }
  record = std::move(*best);
  return true;
}

}  // namespace lxservices::cms_interface::vantry
