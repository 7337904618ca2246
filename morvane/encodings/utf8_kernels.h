// The fast steps of the UTF-8 codec, by what the processor offers.
#pragma once

#include <cstddef>
#include <morvane/encodings/utf8_codec.h>
#include <morvane/strings/text_view.h>

#if defined(__x86_64__) && defined(__GNUC__)
#define MORVANE_UTF8_X86 1
#endif

namespace morvane::utf8 {

/// A way of taking many bytes or units at a step. All give the same results.
enum class Kernel : unsigned char {
    plain,  ///< one sequence at a step: the form that tells what the others must give
    ssse3,  ///< blocks of 64 bytes, laid out by shuffles from tables
    avx512, ///< blocks of 64 bytes, laid out by compression
};

/// True when this processor can run `kernel`.
bool isAvailable(Kernel kernel) noexcept;
/// The fastest kernel that this processor can run.
Kernel bestKernel() noexcept;

/// The functions of utf8_codec.h by a kernel that is available.
Reading countUnits(Kernel kernel, DataView source) noexcept;
Reading decode(Kernel kernel, DataView source, unsigned short int * target) noexcept;
std::size_t countBytes(Kernel kernel, WideView source) noexcept;
std::size_t encode(Kernel kernel, WideView source, char * target) noexcept;

#ifdef MORVANE_UTF8_X86

// A run goes on from where `reading` stands and passes well-formed text by blocks; it stops at the end or at a sequence
// that the plain step must judge.

void countRunSse2(DataView source, Reading & reading) noexcept;
void decodeRunSsse3(DataView source, unsigned short int * target, Reading & reading) noexcept;
std::size_t countBytesSse2(WideView source) noexcept;
std::size_t encodeSsse3(WideView source, char * target) noexcept;

void countRunAvx512(DataView source, Reading & reading) noexcept;
void decodeRunAvx512(DataView source, unsigned short int * target, Reading & reading) noexcept;
std::size_t countBytesAvx512(WideView source) noexcept;
std::size_t encodeAvx512(WideView source, char * target) noexcept;

#endif

} // namespace morvane::utf8
