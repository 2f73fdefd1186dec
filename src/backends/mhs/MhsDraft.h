// The message that a client has composed, as files of MHS.
#pragma once

#include "backends/mhs/MhsAccount.h"
#include "mail/BackEnd.h"
#include "ports/CodePage.h"
#include "ports/FileSystem.h"
#include "ports/LocalClock.h"

namespace quillon {

struct MhsDraftPorts {
  FileSystem& files;
  const LocalClock& clock;
  const CodePage& codePage;
};

// Hands it over: one message for To and Cc, and one for each recipient in Bcc, who is in no other's
// sight. Throws MhsFailure, or ServerError 534; then nothing is left of it.
void SendMhsMessage(const MhsDraftPorts& ports, const MailRequest& request,
                    const MhsAccount& account);

}  // namespace quillon
