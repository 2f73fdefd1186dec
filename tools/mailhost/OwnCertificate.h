// A certificate for hosts that are given none: for 127.0.0.1, localhost and mail.example.com, under
// a root of its own, both made anew each time.
#pragma once

#include "OpenSsl.h"

namespace mailhost {

struct OwnCertificate {
  KeyPtr key;
  CertificatePtr certificate;
  CertificatePtr root;
};

// Throws std::runtime_error.
OwnCertificate MakeOwnCertificate();

}  // namespace mailhost
