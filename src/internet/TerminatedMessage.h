// A message as it goes out behind DATA (RFC 5321, 4.1.1.4): its bytes, and the terminator behind
// them. A short one leaves in a single write.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "internet/MessageData.h"

namespace quillon {

class TerminatedMessage final : public DataSource {
 public:
  enum class Phase { Text, Alternatives, Attachments, Terminator };

  // `entered` is called when the bytes of another phase are about to go out, `progress` with the
  // bytes of the message that have. The message must live as long as this.
  TerminatedMessage(MessageData& message, std::function<void(Phase)> entered,
                    std::function<void(std::uint64_t)> progress);

  Phase CurrentPhase() const noexcept { return phase_; }
  // The number for a connection that was lost, or a message that could not be read on, where the
  // writing has got to.
  std::int32_t FailureNumber() const noexcept;

  State Fill(std::string& block, std::size_t wanted) override;
  std::uint64_t Size() const override { return message_.Size(); }

 private:
  void Enter(Phase phase);

  MessageData& message_;
  std::function<void(Phase)> entered_;
  std::function<void(std::uint64_t)> progress_;
  Phase phase_ = Phase::Text;
  std::uint64_t bytes_ = 0;
};

}  // namespace quillon
