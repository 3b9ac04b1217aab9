#pragma once

#include <memory>

#include "simulator/routes/service_context.h"
#include "simulator/store/upload_receiver.h"
#include "simulator/wire/messages.h"

namespace vantry_sim {

/// The address under which a ticket takes its upload, after the address of the upload port.
inline constexpr std::string_view uploadPath = "/servlet/content/upload/";

/// The receiver for an upload, by its address, its nonce and the boundary of its Content-Type.
/// @param request its `path` with the prefix still in front
/// @return null with `refusal` filled
std::unique_ptr<UploadReceiver> ReceiverFor(const ServiceContext& context, const Request& request,
                                            Response& refusal);

/// Makes received files streams and answers with their receipts. A ticket that was used meanwhile is refused.
Response StoreUpload(const ServiceContext& context, UploadReceiver& upload, const Request& request);

}  // namespace vantry_sim
