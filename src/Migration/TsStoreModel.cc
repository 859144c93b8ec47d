#include "Migration/TsStoreModel.h"

#include <algorithm>
#include <iterator>

#include "Base/TextPieces.h"

namespace {

using enum TsAttributeType;

constexpr TsAttribute kAccount[] = {{"order", Int32},
                                    {"username", Text},
                                    {"nickname", Text},
                                    {"colorData", Data},
                                    {"detectUnreadCountType", Boolean},
                                    {"defaultInboxType", Int16},
                                    {"customInboxLabelName", Text},
                                    {"autoAuthenticate", Boolean},
                                    {"unreadMessagesLocation", Int16},
                                    {"autoBCC", Text},
                                    {"notificationSound", Text},
                                    {"notificationUseGrowl", Boolean},
                                    {"loadRapportivePlugin", Boolean},
                                    {"loadClearbitConnectPlugin", Boolean},
                                    {"loadBoomerangPlugin", Boolean},
                                    {"loadStreakPlugin", Boolean},
                                    {"loadAwayFindPlugin", Boolean},
                                    {"loadRightInboxPlugin", Boolean},
                                    {"isGmailChatBlocked", Boolean},
                                    {"isGooglePlusBlocked", Boolean},
                                    {"isGoogleDriveBlocked", Boolean},
                                    {"isGoogleCalendarAlertsBlocked", Boolean},
                                    {"useSignatures", Boolean},
                                    {"signatureAboveQuotedText", Boolean}};
constexpr TsRelationship kOfAccount[] = {{"downloadItems", "DownloadItem", "account", true},
                                         {"bookmarks", "Bookmark", "account", true},
                                         {"signatures", "Signature", "account", true}};

constexpr TsAttribute kBookmark[] = {{"order", Int32}, {"title", Text}, {"url", Text}};
constexpr TsRelationship kOfBookmark[] = {{"account", "Account", "bookmarks"}};

constexpr TsAttribute kSignature[] = {{"email", Text}, {"name", Text}, {"useByDefault", Boolean}};
constexpr TsRelationship kOfSignature[] = {{"account", "Account", "signatures"}};

constexpr TsAttribute kDownloadItem[] = {
    {"path", Text}, {"createdAt", Date}, {"bytesReceived", Int64}, {"bytesExpected", Int64}};
constexpr TsRelationship kOfDownloadItem[] = {{"account", "Account", "downloadItems"}};

constexpr TsAttribute kWorkspaceState[] = {{"active", Boolean}, {"lastUpdatedAt", Date}};
constexpr TsRelationship kOfWorkspaceState[] = {{"appStates", "GoogleAppState", "workspaceState", true}};

constexpr TsAttribute kGoogleAppState[] = {{"identifier", Text}, {"url", Text}};
constexpr TsRelationship kOfGoogleAppState[] = {{"workspaceState", "WorkspaceState", "appStates"}};

constexpr TsEntity kEntities[] = {{"Account", kAccount, kOfAccount},
                                  {"Bookmark", kBookmark, kOfBookmark},
                                  {"Signature", kSignature, kOfSignature},
                                  {"DownloadItem", kDownloadItem, kOfDownloadItem},
                                  {"WorkspaceState", kWorkspaceState, kOfWorkspaceState},
                                  {"GoogleAppState", kGoogleAppState, kOfGoogleAppState}};

}  // namespace

bool TsIsSameName(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return ToLower(x) == ToLower(y); });
}

const TsEntity* TsEntityNamed(std::string_view name) {
  const auto* found = std::find_if(std::begin(kEntities), std::end(kEntities),
                                   [&](const TsEntity& entity) { return TsIsSameName(entity.name, name); });
  return found != std::end(kEntities) ? found : nullptr;
}
