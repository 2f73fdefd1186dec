// The object that a client registered for notification, called across COM.
#pragma once

#include <windows.h>
#include <memory>
#include <oaidl.h>

#include "mail/AsynchNotifier.h"
#include "platform/win32/ComPtr.h"

namespace quillon {

// Null when the object has no method AsynchNotification, or there is no object.
std::shared_ptr<NotificationObject> MakeNotificationObject(IDispatch* object);

}  // namespace quillon
