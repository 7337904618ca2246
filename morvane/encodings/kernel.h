// The ways of converting many bytes or units at a step, by what the processor offers.
#pragma once

#if defined(__x86_64__) && defined(__GNUC__)
#define MORVANE_HAS_KERNELS 1
#else
#define MORVANE_HAS_KERNELS 0
#endif

namespace morvane {

/// A way of converting. All give the same results.
enum class Kernel : unsigned char {
    plain,  ///< the form that tells what the others must give
    ssse3,  ///< UTF-8 in blocks of 64 bytes, laid out by shuffles from tables; code pages as the plain form
    avx512, ///< blocks of 64 bytes
};

/// True when this processor can run `kernel`.
bool isAvailable(Kernel kernel) noexcept;
/// The fastest kernel that this processor can run, chosen when the library is loaded; plain before that.
extern Kernel const fastestKernel;
inline Kernel bestKernel() noexcept {
    return fastestKernel;
}

} // namespace morvane
