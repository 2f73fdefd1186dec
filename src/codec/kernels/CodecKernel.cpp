#include "codec/kernels/CodecKernel.h"

#include "codec/kernels/VectorKernels.h"

namespace quillon {

std::vector<const CodecKernel*> UsableKernels() {
  std::vector<const CodecKernel*> usable = {&kScalarKernel};
  __builtin_cpu_init();
  if (__builtin_cpu_supports("sse2")) usable.push_back(&kSse2Kernel);
  if (__builtin_cpu_supports("ssse3")) usable.push_back(&kSsse3Kernel);
  if (__builtin_cpu_supports("avx2")) usable.push_back(&kAvx2Kernel);
  return usable;
}

const CodecKernel& BestKernel() {
  static const CodecKernel& best = *UsableKernels().back();
  return best;
}

}  // namespace quillon
