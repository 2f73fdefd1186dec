// HTTPS with libcurl.
#pragma once

#include <string>

#include "ports/HttpsClient.h"

namespace quillon {

// Blocks; callable on any thread. For BackgroundHttps. `roots` is a file of the only certificates
// that are trusted, in PEM; empty: the system's.
HttpsAnswer PostWithCurl(const HttpsForm& form, const std::string& roots);

}  // namespace quillon
