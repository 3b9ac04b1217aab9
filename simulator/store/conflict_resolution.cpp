#include "simulator/store/conflict_resolution.h"

#include <array>

#include "simulator/wire/json_members.h"

namespace vantry_sim {
namespace {

struct Form {
  Conflict conflict;
  std::string_view code;
  std::string_view option;
  std::string_view type;
};

/// The words as they go over the wire. The first code is spelled "WORKASPACE" there: clients send it so, and
/// a server that took the other spelling would refuse them all.
constexpr std::array<Form, 3> forms{{
    {Conflict::AlreadyInWorkspace, "vn.epm.util.EPMConflictType.WORKASPACE_ADD_EXISTING_OBJECT",
     "vn.epm.util.EPMResolutionType.WORKSPACE_SUBSTITUTE_EXISTING_OBJECT", "vn.epm.EPMDocumentMaster"},
    {Conflict::StaleContent, "com.zvk.vantry.udkm.common.conflict.UdkmConflictType.STALE_SEC_CONTENT",
     "com.zvk.vantry.udkm.common.conflict.UdkmResolutionType.IGNORE_STALE_SEC_CONTENT", "vn.epm.EPMDocument"},
    {Conflict::OtherVersionUsed,
     "vn.epm.upload.EPMUploadConflictType.IMAGE_HAS_REP_RULE_WITH_OTHER_VERSION_OF_ORIGINAL",
     "vn.epm.upload.EPMUploadResolutionType.UPDATE_IMAGE_TO_NEW_VERSION", "vn.epm.EPMDocument"},
}};

Response BadResolution(std::string_view reason) {
  return ErrorResponse(400, "bad-resolution", "conflictResolutions: " + std::string(reason));
}

}  // namespace

Refusal Resolutions::Read(JsonValue body) {
  std::string problem;
  const JsonValue list = JsonMembers(body, problem).Array("conflictResolutions");
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  for (const JsonValue value : list) {
    if (auto refusal = ReadOne(value)) return refusal;
  }
  return std::nullopt;
}

Refusal Resolutions::ReadOne(JsonValue value) {
  std::string problem, code, option;
  JsonMembers members(value, problem);
  members.Text("code", code, Presence::Required).Text("resolutionOption", option, Presence::Required);
  const JsonValue entities = members.Array("appliedEntities", Presence::Required);
  if (!problem.empty()) return BadResolution(problem);
  for (const Form& form : forms) {
    if (form.code != code || form.option != option) continue;
    for (const JsonValue entity : entities) {
      std::string type, field, id;
      JsonMembers(entity, problem)
          .Text("type", type, Presence::Required)
          .Text("field", field, Presence::Required)
          .Text("value", id);
      if (!problem.empty()) return BadResolution(problem);
      if (type != form.type || field != "id")
        return BadResolution("this conflict is about the id of another type");
      entries_.push_back({form.conflict, std::move(id)});
    }
    return std::nullopt;
  }
  return BadResolution("this server knows no such pair of code and resolutionOption");
}

Resolutions Resolutions::OfAll() {
  Resolutions resolutions;
  resolutions.all_ = true;
  return resolutions;
}

bool Resolutions::Resolve(Conflict conflict, std::string_view id) const {
  if (all_) return true;
  for (const Entry& entry : entries_) {
    if (entry.conflict == conflict && entry.id == id) return true;
  }
  return false;
}

Response Resolutions::Unresolved(Conflict conflict, std::string_view id) {
  for (const Form& form : forms) {
    if (form.conflict != conflict) continue;
    return ErrorResponse(409, "unresolved-conflict",
                         std::string(form.code) + " for " + std::string(form.type) + " " + std::string(id) +
                             " needs a resolution");
  }
  return ErrorResponse(409, "unresolved-conflict", "a conflict needs a resolution");
}

}  // namespace vantry_sim
