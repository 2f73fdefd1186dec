// What the records of a call mean to the engine, and what the engine's results become in them.
// Texts are UTF-8 outside and bytes of the wire inside; this is where they are converted.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "codec/HeaderTable.h"
#include "codec/TextReader.h"
#include "internet/MessageCollector.h"
#include "internet/OutgoingMessage.h"
#include "internet/PopSession.h"
#include "internet/SmtpSession.h"
#include "mail/BackEnd.h"
#include "ports/CodePage.h"

namespace quillon {

// What the header block says of the program that wrote it.
struct InternetProduct {
  std::string version;       // "X-Interface: Quillon OLE Server v" + version + " (32)"
  std::string specialBuild;  // "X-SpecialBuild: ", when not empty
};

// What the script says by the members that it always had; SectionMerge.h adds the rest.
SmtpSettings SmtpSettingsOf(const MailRequest& request, const CodePage& codePage);
PopSettings PopSettingsOf(const MailRequest& request, const CodePage& codePage);
// With an encoder the texts stay what they are until the message is composed.
OutgoingMessage MessageOf(const MailRequest& request, const InternetProduct& product,
                          const CodePage& codePage, const std::optional<TextEncoder>& encoder);

// The mailbox that the login data leads to.
std::string MailboxOf(const PopSettings& settings);

// What is known of the message at messageIndex; ServerError 533 when there is none, 532 when it is
// in another mailbox.
MessageKey CurrentMessage(const MailRequest& request, const PopSettings& settings,
                          const CodePage& codePage);

// The same of all messages that the one at messageIndex was sent in, in their order; none when it
// was sent as one, or one of them is not listed.
std::vector<MessageKey> PartsOfCurrent(const MailRequest& request, const TextReader& reader,
                                       const CodePage& codePage);

// How received header fields become texts: decoded, or as they came, in the ANSI code page.
struct HeaderReading {
  TextReader reader;
  bool raw = false;
};

// Makes a received message the current one.
void StoreMessage(SharedState& shared, MessageCollector& collector, const HeaderReading& reading);

// The table with texts in place of bytes.
HeaderTable TextTable(HeaderTable table, const HeaderReading& reading);

}  // namespace quillon
