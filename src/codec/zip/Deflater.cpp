#include "codec/zip/Deflater.h"

#include <new>

namespace quillon {

Deflater::Deflater(int factor) {
  constexpr int kNoFraming = -MAX_WBITS;
  constexpr int kMemoryLevel = 8;  // what the library takes by itself
  // The factor is ours to get right, so that only memory can be missing.
  if (deflateInit2(&stream_, factor, Z_DEFLATED, kNoFraming, kMemoryLevel, Z_DEFAULT_STRATEGY) !=
      Z_OK) {
    throw std::bad_alloc();
  }
}

Deflater::~Deflater() {
  ::deflateEnd(&stream_);
}

void Deflater::Restart() {
  ::deflateReset(&stream_);
}

void Deflater::Put(std::span<const uint8_t> bytes, bool last) {
  stream_.next_in = const_cast<uint8_t*>(bytes.data());  // the library only reads it
  stream_.avail_in = static_cast<uInt>(bytes.size());
  flush_ = last ? Z_FINISH : Z_NO_FLUSH;
}

size_t Deflater::Take(std::span<uint8_t> room) {
  stream_.next_out = room.data();
  stream_.avail_out = static_cast<uInt>(room.size());
  ::deflate(&stream_, flush_);
  return room.size() - stream_.avail_out;
}

size_t Deflater::Bound(size_t size) {
  return ::deflateBound(&stream_, static_cast<uLong>(size));
}

}  // namespace quillon
