#pragma once

#include "documents/reading/document_records.h"
#include "documents/reading/record_fields.h"

/// Which member of the document service's JSON becomes which field.
namespace lxservices::cms_interface::vantry {

inline constexpr auto masterFields =
    std::array{Plain<EpmMasterRecord, &EpmMasterRecord::id>("id"),
               Plain<EpmMasterRecord, &EpmMasterRecord::name>("name"),
               Plain<EpmMasterRecord, &EpmMasterRecord::number>("number"),
               Plain<EpmMasterRecord, &EpmMasterRecord::category>("category"),
               Plain<EpmMasterRecord, &EpmMasterRecord::subCategory>("subCategory"),
               Plain<EpmMasterRecord, &EpmMasterRecord::cadName>("cadName"),
               Plain<EpmMasterRecord, &EpmMasterRecord::authoringApplication>("authoringApplication")};

// A summary's tables, for a summary of its own and for that of a record.

template <typename Root>
inline constexpr auto contextFields =
    std::array{Plain<Root, &Root::contextId>("id"), Plain<Root, &Root::contextName>("name"),
               Plain<Root, &Root::contextType>("type")};

template <typename Root>
inline constexpr auto iterationStateFields = std::array{
    Plain<Root, &Root::isCheckout>("isCheckout"), Plain<Root, &Root::isCheckoutByYou>("isCheckoutByYou"),
    Plain<Root, &Root::isLatest>("isLatest"), Plain<Root, &Root::checkoutByUser>("checkoutByUser"),
    Plain<Root, &Root::checkoutToFolderName>("checkoutToFolderName")};

template <typename Root>
inline constexpr auto baseFields = std::array{Plain<Root, &Root::id>("id"),
                                              Inside("context", contextFields<Root>),
                                              Plain<Root, &Root::revision>("revision"),
                                              Plain<Root, &Root::iteration>("iteration"),
                                              Plain<Root, &Root::authAppVersion>("authAppVersion"),
                                              Plain<Root, &Root::ndVersion>("ndVersion"),
                                              Inside("pdmIterationState", iterationStateFields<Root>),
                                              Plain<Root, &Root::isDerived>("isDerived")};

template <typename Root>
inline constexpr auto masterOfDocument = std::array{Part<Root, &Root::master>("epmMaster", masterFields)};

template <typename Root>
inline constexpr auto summaryFields = Joined(baseFields<Root>, masterOfDocument<Root>);

using Dependency = DerivedSourceDependency;

inline constexpr auto sourceFields =
    std::array{Plain<Dependency, &Dependency::sourceId>("id"),
               Part<Dependency, &Dependency::sourceMaster>("epmMaster", masterFields),
               Plain<Dependency, &Dependency::revision>("revision"),
               Plain<Dependency, &Dependency::iteration>("iteration"),
               Plain<Dependency, &Dependency::authAppVersion>("authAppVersion"),
               Plain<Dependency, &Dependency::ndVersion>("ndVersion"),
               Plain<Dependency, &Dependency::revNum>("revNum"),
               Plain<Dependency, &Dependency::isPlaceHolder>("isPlaceHolder"),
               Plain<Dependency, &Dependency::isDerived>("isDerived"),
               Plain<Dependency, &Dependency::hasCompleteDependencies>("hasCompleteDependencies")};

inline constexpr auto dependencyFields =
    std::array{Plain<Dependency, &Dependency::asStoredChildName>("asStoredChildName"),
               Plain<Dependency, &Dependency::isDirect>("isDirect"), Inside("source", sourceFields)};

inline constexpr auto receiptFields =
    std::array{Plain<ContentRecord, &ContentRecord::encodedCCD>("encodedCCD")};

inline constexpr auto contentFields =
    std::array{Plain<ContentRecord, &ContentRecord::id>("id"),
               Plain<ContentRecord, &ContentRecord::category>("category"),
               Plain<ContentRecord, &ContentRecord::fileName>("fileName"),
               Plain<ContentRecord, &ContentRecord::isForwardable>("isForwardable"),
               Plain<ContentRecord, &ContentRecord::isStale>("isStale"),
               Plain<ContentRecord, &ContentRecord::isHidden>("isHidden"),
               Plain<ContentRecord, &ContentRecord::streamId>("streamId"),
               Plain<ContentRecord, &ContentRecord::contentUrl>("contentUrl"),
               Told<ContentRecord, &ContentRecord::fileSize, &ContentRecord::fileSizeTold>("fileSize"),
               Inside("uploadInfo", receiptFields)};

inline constexpr auto definitionFields =
    std::array{Plain<FileBasedAttribute, &FileBasedAttribute::parameterName>("parameterName"),
               Plain<FileBasedAttribute, &FileBasedAttribute::attributeName>("attributeName"),
               Plain<FileBasedAttribute, &FileBasedAttribute::valueType>("valueType")};

inline constexpr auto attributeValueFields =
    std::array{Plain<FileBasedAttribute, &FileBasedAttribute::value>("value")};

inline constexpr auto attributeFields = std::array{Inside("parameterDefinition", definitionFields),
                                                   Inside("parameterValue", attributeValueFields)};

inline constexpr auto locationFields = std::array{Plain<DocumentRecord, &DocumentRecord::folderId>("id"),
                                                  Plain<DocumentRecord, &DocumentRecord::folderName>("name"),
                                                  Plain<DocumentRecord, &DocumentRecord::folderPath>("path")};

// Unlike every other list, the primary sections keep an empty record for an element that is no object: the
// indices of this list stay those of the server's.
inline constexpr auto cadContentFields =
    std::array{Plain<DocumentRecord, &DocumentRecord::isSectioned>("isSectioned"),
               List<DocumentRecord, &DocumentRecord::contentSections>("contentSections", contentFields,
                                                                      FieldKind::RecordsWithGaps)};

inline constexpr auto ownFieldsOfRecord = std::array{
    Inside("locationFolder", locationFields),
    List<DocumentRecord, &DocumentRecord::dependencies>("derivedSourceDependencies", dependencyFields),
    Inside("cadContent", cadContentFields),
    List<DocumentRecord, &DocumentRecord::secondaryContents>("secondaryContents", contentFields),
    List<DocumentRecord, &DocumentRecord::fileBasedAttributes>("fileBasedAttributes", attributeFields)};

inline constexpr auto recordFields = Joined(summaryFields<DocumentRecord>, ownFieldsOfRecord);

inline constexpr auto workspaceFields =
    std::array{Plain<WorkspaceRecord, &WorkspaceRecord::id>("id"),
               Plain<WorkspaceRecord, &WorkspaceRecord::name>("name"),
               Plain<WorkspaceRecord, &WorkspaceRecord::description>("description"),
               Plain<WorkspaceRecord, &WorkspaceRecord::contextId>("contextId")};

}  // namespace lxservices::cms_interface::vantry
