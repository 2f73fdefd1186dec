// The kernels that need vector instructions; each must only run on a processor that has them.
#pragma once

#include "codec/kernels/CodecKernel.h"

namespace quillon {

extern const CodecKernel kSse2Kernel;
extern const CodecKernel kSsse3Kernel;
extern const CodecKernel kAvx2Kernel;

// Also that of the SSSE3 kernel: the byte shuffle would not help.
size_t DecodeQuotedPrintableSse2(const uint8_t* in, size_t size, uint8_t* out);

}  // namespace quillon
