// The kernels that need vector instructions; each must only run on a processor that has them.
#pragma once

#include "codec/kernels/CodecKernel.h"

namespace quillon {

extern const CodecKernel kSse2Kernel;
extern const CodecKernel kSsse3Kernel;
extern const CodecKernel kAvx2Kernel;

// More than 16 bytes at a time gain nothing between two escapes.
size_t CopyPlainSse2(const uint8_t* in, size_t length, uint8_t* out);

}  // namespace quillon
