#include "Migration/TsStoreModel.h"

#include <algorithm>

namespace {

using enum TsAttributeType;
using enum TsCardinality;

constexpr TsAttribute kAccountAttributes[] = {
    {"order", Number, "int32"},
    {"username", Text, "string"},
    {"nickname", Text, "string"},
    {"colorData", Data, "binary"},
    {"detectUnreadCountType", Boolean, "bool"},
    {"defaultInboxType", Number, "int16"},
    {"customInboxLabelName", Text, "string"},
    {"autoAuthenticate", Boolean, "bool"},
    {"unreadMessagesLocation", Number, "int16"},
    {"autoBCC", Text, "string"},
    {"notificationSound", Text, "string"},
    {"notificationUseGrowl", Boolean, "bool"},
    {"loadRapportivePlugin", Boolean, "bool"},
    {"loadClearbitConnectPlugin", Boolean, "bool"},
    {"loadBoomerangPlugin", Boolean, "bool"},
    {"loadStreakPlugin", Boolean, "bool"},
    {"loadAwayFindPlugin", Boolean, "bool"},
    {"loadRightInboxPlugin", Boolean, "bool"},
    {"isGmailChatBlocked", Boolean, "bool"},
    {"isGooglePlusBlocked", Boolean, "bool"},
    {"isGoogleDriveBlocked", Boolean, "bool"},
    {"isGoogleCalendarAlertsBlocked", Boolean, "bool"},
    {"useSignatures", Boolean, "bool"},
    {"signatureAboveQuotedText", Boolean, "bool"},
};

constexpr TsRelationship kAccountRelationships[] = {
    {"downloadItems", Many, "DownloadItem", "account", true},
    {"bookmarks", Many, "Bookmark", "account", true},
    {"signatures", Many, "Signature", "account", true},
};

constexpr TsAttribute kBookmarkAttributes[] = {
    {"order", Number, "int32"},
    {"title", Text, "string"},
    {"url", Text, "string"},
};

constexpr TsRelationship kBookmarkRelationships[] = {{"account", One, "Account", "bookmarks"}};

constexpr TsAttribute kSignatureAttributes[] = {
    {"email", Text, "string"},
    {"name", Text, "string"},
    {"useByDefault", Boolean, "bool"},
};

constexpr TsRelationship kSignatureRelationships[] = {{"account", One, "Account", "signatures"}};

constexpr TsAttribute kDownloadItemAttributes[] = {
    {"path", Text, "string"},
    {"createdAt", Date, "date"},
    {"bytesReceived", Number, "int64"},
    {"bytesExpected", Number, "int64"},
};

constexpr TsRelationship kDownloadItemRelationships[] = {{"account", One, "Account", "downloadItems"}};

constexpr TsEntity kAccountsModel[] = {
    {"Account", "TsAccount", kAccountAttributes, kAccountRelationships},
    {"Bookmark", "TsBookmark", kBookmarkAttributes, kBookmarkRelationships},
    {"DownloadItem", "TsDownloadItem", kDownloadItemAttributes, kDownloadItemRelationships},
    {"Signature", "TsSignature", kSignatureAttributes, kSignatureRelationships},
};

constexpr TsAttribute kWorkspaceStateAttributes[] = {
    {"active", Boolean, "bool"},
    {"lastUpdatedAt", Date, "date"},
};

constexpr TsRelationship kWorkspaceStateRelationships[] = {
    {"appStates", ManyOrdered, "GoogleAppState", "workspaceState", true},
};

constexpr TsAttribute kGoogleAppStateAttributes[] = {
    {"identifier", Text, "string"},
    {"url", Text, "string"},
};

constexpr TsRelationship kGoogleAppStateRelationships[] = {{"workspaceState", One, "WorkspaceState", "appStates"}};

constexpr TsEntity kWorkspaceStatesModel[] = {
    {"WorkspaceState", "TsWorkspaceState", kWorkspaceStateAttributes, kWorkspaceStateRelationships},
    {"GoogleAppState", "TsGoogleAppState", kGoogleAppStateAttributes, kGoogleAppStateRelationships},
};

const TsEntity* Find(std::span<const TsEntity> model, auto condition) {
  const auto found = std::find_if(model.begin(), model.end(), condition);
  return found != model.end() ? &*found : nullptr;
}

}  // namespace

std::span<const TsEntity> TsAccountsModel() { return kAccountsModel; }

std::span<const TsEntity> TsWorkspaceStatesModel() { return kWorkspaceStatesModel; }

const TsEntity* TsEntityNamed(std::span<const TsEntity> model, std::string_view name) {
  return Find(model, [&](const TsEntity& entity) { return entity.name == name; });
}

const TsEntity* TsEntityOfClass(std::string_view className) {
  const auto isOfClass = [&](const TsEntity& entity) { return entity.className == className; };
  const TsEntity* entity = Find(kAccountsModel, isOfClass);
  return entity != nullptr ? entity : Find(kWorkspaceStatesModel, isOfClass);
}
