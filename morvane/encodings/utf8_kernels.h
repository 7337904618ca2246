// The fast steps of the UTF-8 codec, by what the processor offers.
#pragma once

#include <cstddef>
#include <morvane/encodings/kernel.h>
#include <morvane/encodings/utf8_codec.h>
#include <morvane/strings/text_view.h>

namespace morvane::utf8 {

using morvane::isAvailable;
using morvane::Kernel;

/// The functions of utf8_codec.h by a kernel that is available.
Reading countUnits(Kernel kernel, DataView source) noexcept;
Reading decode(Kernel kernel, DataView source, unsigned short int * target) noexcept;
std::size_t countBytes(Kernel kernel, WideView source) noexcept;
std::size_t encode(Kernel kernel, WideView source, char * target) noexcept;

#if MORVANE_HAS_KERNELS

// A run goes on from where `reading` stands and passes well-formed text by blocks; it stops at the end or at a sequence
// that the plain step must judge.

void countRunSse2(DataView source, Reading & reading) noexcept;
void decodeRunSsse3(DataView source, unsigned short int * target, Reading & reading) noexcept;
std::size_t countBytesSse2(WideView source) noexcept;
std::size_t encodeSsse3(WideView source, char * target) noexcept;

void countRunAvx512(DataView source, Reading & reading) noexcept;
void decodeRunAvx512(DataView source, unsigned short int * target, Reading & reading) noexcept;
/// Pass the ASCII that a zero-closed text begins with, or some of it, and give its length. They may read on as far as
/// the page of a unit goes, which stands at an address that its size divides.
std::size_t countAsciiAvx512(char const * source) noexcept;
std::size_t widenAsciiAvx512(char const * source, unsigned short int * target) noexcept;
std::size_t countAsciiAvx512(unsigned short int const * source) noexcept;
std::size_t narrowAsciiAvx512(unsigned short int const * source, char * target) noexcept;

std::size_t countBytesAvx512(WideView source) noexcept;
std::size_t encodeAvx512(WideView source, char * target) noexcept;

#endif

} // namespace morvane::utf8
