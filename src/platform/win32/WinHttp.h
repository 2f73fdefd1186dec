// HTTPS with the system's WinHTTP: its proxy settings, its trusted roots.
#pragma once

#include "ports/HttpsClient.h"

namespace quillon {

// Blocks; callable on any thread. For BackgroundHttps.
HttpsAnswer PostWithWinHttp(const HttpsForm& form);

}  // namespace quillon
