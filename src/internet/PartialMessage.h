// A message that was sent in several (RFC 2046, 5.2.2) is put together again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "codec/HeaderTable.h"
#include "codec/TextReader.h"
#include "internet/PopSession.h"

namespace quillon {

// The parts of the message that this record is one of, in their order. None when it is no part, or
// not all are in the table.
std::vector<const HeaderRecord*> PartsOf(const HeaderTable& table, const HeaderRecord& record,
                                         const TextReader& reader);

// Takes the parts one after another and hands on the whole. Of the first part's header and of the
// one that is enclosed in it come those fields that count; further headers do not.
class PartialMessage final : public MessageSink {
 public:
  static constexpr std::uint32_t kMostParts = 999;

  PartialMessage(MessageSink& whole, std::size_t parts) : whole_(whole), left_(parts) {}

  std::int32_t OnMessageLine(std::string_view text, bool complete) override;
  bool InAttachment() const override { return whole_.InAttachment(); }
  std::int32_t OnMessageEnd() override;

 private:
  enum class State { Enclosing, Enclosed, Content };

  std::int32_t EndHeader();
  bool Keeps(std::string_view line) const;

  MessageSink& whole_;
  std::size_t left_;  // parts that have not ended
  bool isFirst_ = true;
  State state_ = State::Enclosing;
  bool atLineStart_ = true;
  bool keeps_ = false;  // the field whose lines come
};

}  // namespace quillon
