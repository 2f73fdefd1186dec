// Message content that goes wrong.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>

#include "Outbox.h"

namespace mailhost {

// Another source, cut off: after `limit` bytes, or without a limit in the middle of the first
// chunk.
class CutSource : public ByteSource {
 public:
  CutSource(std::unique_ptr<ByteSource> source, std::optional<std::uint64_t> limit)
      : source_(std::move(source)), limit_(limit) {}

  bool Read(std::string& out) override;

 private:
  std::unique_ptr<ByteSource> source_;
  std::optional<std::uint64_t> limit_;
};

// Random bytes, the same ones every time, with a NUL among the first. They hold either no line end
// at all, or one after every 40 bytes and at the end.
class GarbageSource : public ByteSource {
 public:
  GarbageSource(std::uint64_t size, bool lines) : size_(size), lines_(lines) {}

  bool Read(std::string& out) override;

 private:
  char Next();

  const std::uint64_t size_;
  const bool lines_;
  std::uint64_t made_ = 0;
  // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): the same bytes every time are wanted.
  std::mt19937 random_{1};
};

// A line many times over, with its number in place of each "#".
class FloodSource : public ByteSource {
 public:
  FloodSource(std::string line, std::uint64_t count) : line_(std::move(line)), count_(count) {}

  bool Read(std::string& out) override;

 private:
  const std::string line_;
  const std::uint64_t count_;
  std::uint64_t made_ = 0;
};

}  // namespace mailhost
