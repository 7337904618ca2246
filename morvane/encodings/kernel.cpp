#include <morvane/encodings/kernel.h>

namespace morvane {

bool isAvailable(Kernel kernel) noexcept {
#if MORVANE_HAS_KERNELS
    __builtin_cpu_init();
    switch (kernel) {
    case Kernel::plain:
        return true;
    case Kernel::ssse3:
        return __builtin_cpu_supports("ssse3");
    case Kernel::avx512:
        return __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl")
               && __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2");
    }
    return false;
#else
    return kernel == Kernel::plain;
#endif
}

Kernel const fastestKernel = isAvailable(Kernel::avx512)  ? Kernel::avx512
                             : isAvailable(Kernel::ssse3) ? Kernel::ssse3
                                                          : Kernel::plain;

} // namespace morvane
