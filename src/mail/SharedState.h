// What all Server instances of one process share: the message being composed or just loaded, the
// loaded headers, and the Internet settings.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "codec/Attachment.h"
#include "codec/HeaderTable.h"
#include "core/ShortBool.h"

namespace quillon {

// Flags of the property attachmentEncoding; others have no meaning here.
namespace attachment_encoding {
inline constexpr std::int16_t kMime = 2;           // else uuencode
inline constexpr std::int16_t kOneArchive = 64;    // all files packed into one
inline constexpr std::int16_t kArchiveEach = 128;  // each into one of its own; the one for all wins
}  // namespace attachment_encoding

// A body in another format than plain text, read from a file when the message is sent.
struct Alternative {
  std::string file;
  std::string contentType;
};

// An extra header of the client: goes out as "X-" + name + ": " + value, or without the "X-".
struct XHeader {
  std::string name;
  std::string value;
};

// The message being composed and the message last loaded live in the same buffers. Texts are UTF-8.
struct MessageBuffers {
  std::vector<std::string> to;
  std::vector<std::string> cc;
  std::vector<std::string> bcc;
  std::string subject;
  std::string body;
  std::string html;          // the client's own: is sent
  std::string receivedHtml;  // of the loaded message: is not, unless the client puts it
  std::vector<Attachment> attachments;
  std::vector<Alternative> alternatives;
  std::vector<XHeader> xHeaders;
  std::vector<XHeader> headers;  // with their whole names
  std::string from;
  std::string replyTo;
  std::string dateSent;
  ShortBool certify = kFalse;
  std::string auxiliaryText;
  std::vector<std::string> refusedRecipients;  // of the last Send
  std::string rawHeaders;  // header lines of the loaded message, each ending in CR LF
};

// Reset to these defaults whenever any Server is created.
struct InternetSettings {
  std::string characterSet = "us-ascii";
  std::int16_t progressBar = 7;
  std::int32_t progressBarThreshold = 10000;  // bytes
  std::int32_t timeoutConnect = 30000;        // milliseconds
  std::int32_t timeoutProtocol = 10000;       // milliseconds
  std::uint16_t smtpPort = 25;
  std::uint16_t popPort = 110;
  ShortBool suppressAlternatives = kFalse;

  // How long a blocked write may last, milliseconds.
  std::int32_t TimeoutSend() const noexcept { return timeoutProtocol - 1000; }
};

// Set through the reserved command property, kept for the life of the process.
struct ProcessSwitches {
  std::string temporaryDirectory;     // empty: the system's
  std::string envelopeRecipient;      // when not empty, the only RCPT TO address
  std::int32_t maximumBodyLines = 0;  // lines of text LoadMessage keeps; 0: all
  bool greetWithHelo = true;
  bool keepTemporaryFiles = false;  // those of a message that is sent
  std::int32_t blockSize = 0;       // bytes of text that are handed to the network at once; 0: any
  std::int32_t singleHeader = 0;    // the one message whose header is loaded, from 1 on; 0: all
};

// Where the headers have come from: what a record says of its message holds only there.
struct HeaderOrigin {
  std::string mailbox;        // as its back end names it
  std::uint64_t session = 0;  // as its back end counts them
};

// Of the last operation of Internet mail.
struct ConnectionReport {
  std::string tlsVersion;         // "TLS 1.2"; empty: the connection was not encrypted
  std::string serverCertificate;  // what there is to say of it, in lines
  std::string lastServerReply;    // every line, behind one with command, host and port
};

struct SharedState {
  std::int32_t instanceCount = 0;
  MessageBuffers message;
  HeaderTable headers;
  HeaderOrigin headerOrigin;
  InternetSettings internet;
  ConnectionReport connection;
  ProcessSwitches switches;
  std::int32_t ownerWindow = 0;
  std::int32_t dialerCount = 0;
  ShortBool errorDisplay = kFalse;  // that of the Server which put it last; Dialers follow it

  // The last Server goes. The next one finds everything as in a new process.
  void StartAnew() {
    SharedState anew;
    anew.dialerCount = dialerCount;
    if (dialerCount > 0) anew.errorDisplay = errorDisplay;
    *this = std::move(anew);
  }
  void DialerLeaves() noexcept {
    if (--dialerCount == 0 && instanceCount == 0) errorDisplay = kFalse;
  }
};

}  // namespace quillon
