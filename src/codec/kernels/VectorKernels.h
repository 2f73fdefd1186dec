// The kernels that need vector instructions; each must only run on a processor that has them.
#pragma once

#include "codec/kernels/CodecKernel.h"

namespace quillon {

extern const CodecKernel kSse2Kernel;
extern const CodecKernel kSsse3Kernel;
extern const CodecKernel kAvx2Kernel;

}  // namespace quillon
