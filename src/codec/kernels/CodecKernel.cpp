#include "codec/kernels/CodecKernel.h"

namespace quillon {

std::vector<const CodecKernel*> UsableKernels() {
  return {&kScalarKernel};
}

const CodecKernel& BestKernel() {
  static const CodecKernel& best = *UsableKernels().back();
  return best;
}

}  // namespace quillon
