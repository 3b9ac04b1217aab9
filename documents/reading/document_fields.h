#pragma once

#include "documents/reading/document_records.h"
#include "documents/reading/record_fields.h"

/// Which member of the document service's JSON becomes which field.
namespace lxservices::cms_interface::vantry {

inline constexpr std::array masterFields{
    Plain<EpmMasterRecord, &EpmMasterRecord::id>("id"),
    Plain<EpmMasterRecord, &EpmMasterRecord::name>("name"),
    Plain<EpmMasterRecord, &EpmMasterRecord::number>("number"),
    Plain<EpmMasterRecord, &EpmMasterRecord::category>("category"),
    Plain<EpmMasterRecord, &EpmMasterRecord::subCategory>("subCategory"),
    Plain<EpmMasterRecord, &EpmMasterRecord::cadName>("cadName"),
    Plain<EpmMasterRecord, &EpmMasterRecord::authoringApplication>("authoringApplication")};

// A summary's tables, for a summary of its own and for that of a record.

template <typename Root>
inline constexpr std::array contextFields{Plain<Root, &Root::contextId>("id"),
                                          Plain<Root, &Root::contextName>("name"),
                                          Plain<Root, &Root::contextType>("type")};

template <typename Root>
inline constexpr std::array iterationStateFields{
    Plain<Root, &Root::isCheckout>("isCheckout"), Plain<Root, &Root::isCheckoutByYou>("isCheckoutByYou"),
    Plain<Root, &Root::isLatest>("isLatest"), Plain<Root, &Root::checkoutByUser>("checkoutByUser"),
    Plain<Root, &Root::checkoutToFolderName>("checkoutToFolderName")};

template <typename Root>
inline constexpr std::array baseFields{Plain<Root, &Root::id>("id"),
                                       Inside("context", contextFields<Root>),
                                       Plain<Root, &Root::revision>("revision"),
                                       Plain<Root, &Root::iteration>("iteration"),
                                       Plain<Root, &Root::authAppVersion>("authAppVersion"),
                                       Plain<Root, &Root::ndVersion>("ndVersion"),
                                       Inside("pdmIterationState", iterationStateFields<Root>),
                                       Plain<Root, &Root::isDerived>("isDerived")};

template <typename Root>
inline constexpr std::array masterOfDocument{Part<Root, &Root::master>("epmMaster", masterFields)};

template <typename Root>
inline constexpr auto summaryFields = Joined(baseFields<Root>, masterOfDocument<Root>);

using Dependency = DerivedSourceDependency;

inline constexpr std::array sourceFields{
    Plain<Dependency, &Dependency::sourceId>("id"),
    Part<Dependency, &Dependency::sourceMaster>("epmMaster", masterFields),
    Plain<Dependency, &Dependency::revision>("revision"),
    Plain<Dependency, &Dependency::iteration>("iteration"),
    Plain<Dependency, &Dependency::authAppVersion>("authAppVersion"),
    Plain<Dependency, &Dependency::ndVersion>("ndVersion"),
    Plain<Dependency, &Dependency::revNum>("revNum"),
    Plain<Dependency, &Dependency::isPlaceHolder>("isPlaceHolder"),
    Plain<Dependency, &Dependency::isDerived>("isDerived"),
    Plain<Dependency, &Dependency::hasCompleteDependencies>("hasCompleteDependencies")};

inline constexpr std::array dependencyFields{
    Plain<Dependency, &Dependency::asStoredChildName>("asStoredChildName"),
    Plain<Dependency, &Dependency::isDirect>("isDirect"), Inside("source", sourceFields)};

inline constexpr std::array receiptFields{Plain<ContentRecord, &ContentRecord::encodedCCD>("encodedCCD")};

inline constexpr std::array contentFields{
    Plain<ContentRecord, &ContentRecord::id>("id"),
    Plain<ContentRecord, &ContentRecord::category>("category"),
    Plain<ContentRecord, &ContentRecord::fileName>("fileName"),
    Plain<ContentRecord, &ContentRecord::isForwardable>("isForwardable"),
    Plain<ContentRecord, &ContentRecord::isStale>("isStale"),
    Plain<ContentRecord, &ContentRecord::isHidden>("isHidden"),
    Plain<ContentRecord, &ContentRecord::streamId>("streamId"),
    Plain<ContentRecord, &ContentRecord::contentUrl>("contentUrl"),
    Told<ContentRecord, &ContentRecord::fileSize, &ContentRecord::fileSizeTold>("fileSize"),
    Inside("uploadInfo", receiptFields)};

inline constexpr std::array definitionFields{
    Plain<FileBasedAttribute, &FileBasedAttribute::parameterName>("parameterName"),
    Plain<FileBasedAttribute, &FileBasedAttribute::attributeName>("attributeName"),
    Plain<FileBasedAttribute, &FileBasedAttribute::valueType>("valueType")};

inline constexpr std::array attributeValueFields{
    Plain<FileBasedAttribute, &FileBasedAttribute::value>("value")};

inline constexpr std::array attributeFields{Inside("parameterDefinition", definitionFields),
                                            Inside("parameterValue", attributeValueFields)};

inline constexpr std::array locationFields{Plain<DocumentRecord, &DocumentRecord::folderId>("id"),
                                           Plain<DocumentRecord, &DocumentRecord::folderName>("name"),
                                           Plain<DocumentRecord, &DocumentRecord::folderPath>("path")};

// Unlike every other list, the primary sections keep an empty record for an element that is no object: the
// indices of this list stay those of the server's.
inline constexpr std::array cadContentFields{
    Plain<DocumentRecord, &DocumentRecord::isSectioned>("isSectioned"),
    List<DocumentRecord, &DocumentRecord::contentSections>("contentSections", contentFields,
                                                           FieldKind::RecordsWithGaps)};

inline constexpr std::array ownFieldsOfRecord{
    Inside("locationFolder", locationFields),
    List<DocumentRecord, &DocumentRecord::dependencies>("derivedSourceDependencies", dependencyFields),
    Inside("cadContent", cadContentFields),
    List<DocumentRecord, &DocumentRecord::secondaryContents>("secondaryContents", contentFields),
    List<DocumentRecord, &DocumentRecord::fileBasedAttributes>("fileBasedAttributes", attributeFields)};

inline constexpr auto recordFields = Joined(summaryFields<DocumentRecord>, ownFieldsOfRecord);

inline constexpr std::array workspaceFields{
    Plain<WorkspaceRecord, &WorkspaceRecord::id>("id"),
    Plain<WorkspaceRecord, &WorkspaceRecord::name>("name"),
    Plain<WorkspaceRecord, &WorkspaceRecord::description>("description"),
    Plain<WorkspaceRecord, &WorkspaceRecord::contextId>("contextId")};

}  // namespace lxservices::cms_interface::vantry
