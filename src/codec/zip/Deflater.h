// The deflate format (RFC 1951) without any framing, block by block.
#pragma once

#include <cstdint>
#include <span>
#include <zlib.h>

namespace quillon {

class Deflater {
 public:
  // `factor`: from 1, fastest, to 9, smallest.
  explicit Deflater(int factor);
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;
  ~Deflater();

  // Begins another piece of data.
  void Restart();

  // The next bytes, which must live until Take has returned less than there was room for; `last`
  // when no more follow.
  void Put(std::span<const uint8_t> bytes, bool last);
  // Returns how much of the room was filled; all of it means that there may be more.
  size_t Take(std::span<uint8_t> room);

  // The room in which Take surely returns all of so many bytes at once.
  size_t Bound(size_t size);

 private:
  z_stream stream_{};
  int flush_ = Z_NO_FLUSH;
};

}  // namespace quillon
