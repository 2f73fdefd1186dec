// Messages of MHS as records of the server.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "backends/mhs/MhsInbox.h"
#include "codec/HeaderTable.h"
#include "mail/InstanceState.h"
#include "mail/LoadedMessage.h"
#include "ports/CodePage.h"

namespace quillon {

// The headers that a client has asked for: of unread messages or all, the oldest first, by the date
// of the message with dateSort, else by that of its file.
class MhsListing {
 public:
  MhsListing(const InstanceState& instance, const CodePage& codePage)
      : instance_(instance), codePage_(codePage) {}

  void Add(const std::string& name, const MhsHead& head, bool isRead);

  // As many as he wants.
  HeaderTable Take();

 private:
  struct Row {
    std::int64_t time;
    HeaderRecord record;
  };

  const InstanceState& instance_;
  const CodePage& codePage_;
  std::vector<Row> rows_;
};

// All but its files.
LoadedMessage LoadedMhsMessage(const SmfMessage& message, const std::string& dateFormat,
                               const CodePage& codePage);

}  // namespace quillon
