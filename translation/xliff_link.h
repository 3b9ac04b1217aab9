#pragma once

#include <string>

#include "connection/rest_stream.h"
#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// Links an XLIFF document to the document that it translates: one POST on this thread.
/// @return whether the server says "Success"; a refusal and an answer that is no JSON are traced
[[nodiscard]] bool LinkXliffDocument(ServerContext& server, const std::string& sourceId,
                                     const std::string& xliffId);

/// Whether an OData action tells success: a JSON object whose "value" is the text "Success".
/// @param failure  what the trace line of a refusal, or of an answer that is no JSON, begins with
[[nodiscard]] bool ToldSuccess(RestStream& response, const std::string& failure);

}  // namespace lxservices::cms_interface::vantry
