// The fast steps of the code pages, by what the processor offers.
#pragma once

#include <morvane/encodings/code_page.h>
#include <morvane/encodings/kernel.h>
#include <morvane/strings/text_view.h>

namespace morvane {

/// `decode` of code_page.h by a kernel that is available.
void decode(Kernel kernel, CodePage const & page, DataView text, unsigned short int * target) noexcept;

#if MORVANE_HAS_KERNELS

void decodeAvx512(CodePage const & page, DataView text, unsigned short int * target) noexcept;

#endif

} // namespace morvane
