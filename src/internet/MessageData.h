// A message on its way out, in the sections that the session tells apart.
#pragma once

#include "net/SocketWriter.h"

namespace quillon {

class MessageData : public DataSource {
 public:
  enum class Section { Text, Alternatives, Attachments };

  // What the next Fill gives bytes of; it never goes beyond that section. After a Fill that failed,
  // the section that it failed in.
  virtual Section Current() const = 0;
  // The next Fill begins anew.
  virtual void Rewind() = 0;
  // Whether there are bytes in it beyond ASCII.
  virtual bool IsEightBit() const = 0;
};

}  // namespace quillon
