#include "olemsg32/Errors.h"

#include <algorithm>
#include <array>

namespace desk {
namespace {

struct Row {
  MapiError error;
  const char* name;
};
constexpr std::array kNames{
    Row{MapiError::kNoSupport, "MAPI_E_NO_SUPPORT"},
    Row{MapiError::kInvalidEntryId, "MAPI_E_INVALID_ENTRYID"},
    Row{MapiError::kInvalidObject, "MAPI_E_INVALID_OBJECT"},
    Row{MapiError::kObjectDeleted, "MAPI_E_OBJECT_DELETED"},
    Row{MapiError::kNotFound, "MAPI_E_NOT_FOUND"},
    Row{MapiError::kLogonFailed, "MAPI_E_LOGON_FAILED"},
    Row{MapiError::kSessionLimit, "MAPI_E_SESSION_LIMIT"},
    Row{MapiError::kUserCancel, "MAPI_E_USER_CANCEL"},
    Row{MapiError::kDiskError, "MAPI_E_DISK_ERROR"},
    Row{MapiError::kTooComplex, "MAPI_E_TOO_COMPLEX"},
    Row{MapiError::kCollision, "MAPI_E_COLLISION"},
    Row{MapiError::kNotInitialized, "MAPI_E_NOT_INITIALIZED"},
    Row{MapiError::kNoRecipients, "MAPI_E_NO_RECIPIENTS"},
    Row{MapiError::kFolderCycle, "MAPI_E_FOLDER_CYCLE"},
    Row{MapiError::kAmbiguousRecipient, "MAPI_E_AMBIGUOUS_RECIP"},
    Row{MapiError::kCallFailed, "MAPI_E_CALL_FAILED"},
    Row{MapiError::kNoAccess, "MAPI_E_NO_ACCESS"},
    Row{MapiError::kInvalidParameter, "MAPI_E_INVALID_PARAMETER"},
};

}  // namespace

const char* NameOf(MapiError error) noexcept {
  const auto* row = std::ranges::find(kNames, error, &Row::error);
  return row == kNames.end() ? "Error" : row->name;
}

}  // namespace desk
