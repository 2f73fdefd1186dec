// One message that is being received.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mailhost {

struct EnvelopePath {
  std::string address{};
  std::string parameters{};  // those that are kept, each with a blank before it
};

struct Envelope {
  EnvelopePath sender{};
  std::vector<EnvelopePath> recipients{};
};

// Destroyed without Commit(), it leaves nothing behind.
class Delivery {
 public:
  virtual ~Delivery() = default;
  // After a failure the message is lost, and Commit() fails too.
  virtual bool Write(std::string_view content) = 0;
  // Makes the message visible; false when it could not be kept.
  virtual bool Commit(const Envelope& envelope) = 0;
};

// Takes every message and keeps none.
class DiscardingDelivery : public Delivery {
 public:
  bool Write(std::string_view /*content*/) override { return true; }
  bool Commit(const Envelope& /*envelope*/) override { return true; }
};

}  // namespace mailhost
