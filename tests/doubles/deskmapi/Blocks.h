// What the provider hands out, until MAPIFreeBuffer: each a record with everything it points to.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "Records.h"
#include "desk/MapiDesk.h"

namespace deskmapi {

class Blocks {
 public:
  Blocks();
  ~Blocks();

  const MailRecord<char>* HandOut(const desk::Mail& mail);
  // The first of them; null when there are none.
  const PartyRecord<char>* HandOut(const std::vector<desk::Party>& parties);

  // False for what was never handed out, or is free already.
  bool Free(const void* record);
  std::size_t Count() const;

 private:
  struct Block;

  mutable std::mutex mutex_;
  std::map<const void*, std::unique_ptr<Block>> blocks_;
};

}  // namespace deskmapi
