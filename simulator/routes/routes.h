#pragma once

#include "simulator/routes/service_context.h"
#include "simulator/wire/router.h"

namespace vantry_sim {

// Each adds one family of routes. The context outlives the router.

/// The gateway servlet that tells who the server is.
void AddIdentificationRoutes(Router& router, const ServiceContext& context);

/// The list of OData services and their $metadata. None for a generation without OData.
void AddMetadataRoutes(Router& router, const ServiceContext& context);

/// The nonce against cross-site request forgery, by REST and, where the generation has it, by OData.
void AddCsrfRoutes(Router& router, const ServiceContext& context);

/// Lists of contexts.
void AddContextRoutes(Router& router, const ServiceContext& context);

/// Documents by id, their versions, the search by number.
void AddDocumentRoutes(Router& router, const ServiceContext& context);

/// The query of objects by type and property.
void AddObjectRoutes(Router& router, const ServiceContext& context);

/// One folder by its path, through the publishing gateway.
void AddGatewayRoutes(Router& router, const ServiceContext& context);

/// Folders one level at a time, by REST.
void AddFolderRoutes(Router& router, const ServiceContext& context);

/// Containers, folder trees and folder contents by OData. None for a generation without OData.
void AddDataAdminRoutes(Router& router, const ServiceContext& context);

/// The searches for documents by OData. None for a generation without OData.
void AddSearchRoutes(Router& router, const ServiceContext& context);

/// Source XLIFF, translations and the type of a dynamic document by OData. None for a generation without
/// OData, and none without the translation add-on.
void AddTranslationRoutes(Router& router, const ServiceContext& context);

/// What an upload of XLIFF is to look like. None where AddTranslationRoutes adds none.
void AddXliffPreferenceRoutes(Router& router, const ServiceContext& context);

/// Workspaces of the asking user and their documents.
void AddWorkspaceRoutes(Router& router, const ServiceContext& context);

/// Making and deleting workspaces.
void AddWorkspaceWriteRoutes(Router& router, const ServiceContext& context);

/// Checkout, check-in, undo.
void AddCheckoutRoutes(Router& router, const ServiceContext& context);

/// Creating, iterating and storing documents.
void AddDocumentWriteRoutes(Router& router, const ServiceContext& context);

/// Tickets for uploads.
void AddCreationFactoryRoutes(Router& router, const ServiceContext& context);

/// Versions of the applications that write documents.
void AddApplicationVersionRoutes(Router& router, const ServiceContext& context);

/// The bytes of a stream.
void AddContentRoutes(Router& router, const ServiceContext& context);

/// What the server can do: installed assemblies and visualization features.
void AddFeatureRoutes(Router& router, const ServiceContext& context);

}  // namespace vantry_sim
