#include <morvane/encodings/code_page.h>

#include <algorithm>
#include <morvane/encodings/code_page_kernels.h>
#include <morvane/strings/text_storage.h>
#include <morvane/strings/unit_block.h>

namespace morvane {

namespace {

/// Units or bytes taken at a step.
constexpr std::size_t stepUnits = 16;

#if MORVANE_HAS_UNIT_BLOCK

/// Widens 16 bytes; false, with nothing written, when one is not ASCII and `isIdentity` isn't set.
bool decodeStep(char const * bytes, bool isIdentity, unsigned short int * target) noexcept {
    __m128i const value = _mm_loadu_si128(reinterpret_cast<__m128i const *>(bytes));
    if (!isIdentity && _mm_movemask_epi8(value) != 0) {
        return false;
    }
    __m128i const zero = _mm_setzero_si128();
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target), _mm_unpacklo_epi8(value, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target) + 1, _mm_unpackhi_epi8(value, zero));
    return true;
}

/// Narrows 16 units; false, with nothing written, when one is above 0x7F, or above 0xFF where `isIdentity` is set.
bool encodeStep(unsigned short int const * units, bool isIdentity, char * target) noexcept {
    auto const * const source = reinterpret_cast<__m128i const *>(units);
    __m128i const front = _mm_loadu_si128(source);
    __m128i const back = _mm_loadu_si128(source + 1);
    __m128i const above =
        _mm_and_si128(_mm_or_si128(front, back), _mm_set1_epi16(static_cast<short>(isIdentity ? 0xFF00 : 0xFF80)));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(above, _mm_setzero_si128())) != 0xFFFF) {
        return false;
    }
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target), _mm_packus_epi16(front, back));
    return true;
}

#else

bool decodeStep(char const *, bool, unsigned short int *) noexcept {
    return false;
}

bool encodeStep(unsigned short int const *, bool, char *) noexcept {
    return false;
}

#endif

/// Takes the text step by step: `step` may take one as a whole, else `single` takes each of its units.
template <typename Unit, typename Step, typename Single>
void convert(TextView<Unit> text, Step step, Single single) {
    for (std::size_t index = 0; index < text.length;) {
        std::size_t const stop = std::min(text.length, index + stepUnits);
        if (stop - index == stepUnits && step(index)) {
            index = stop;
        }
        for (; index < stop; ++index) {
            single(index);
        }
    }
}

} // namespace

void decode([[maybe_unused]] Kernel kernel, CodePage const & page, DataView text,
            unsigned short int * target) noexcept {
#if MORVANE_HAS_KERNELS
    if (kernel == Kernel::avx512) {
        decodeAvx512(page, text, target);
        return;
    }
#endif
    convert(
        text, [&](std::size_t index) { return decodeStep(text.data + index, page.isIdentity, target + index); },
        [&](std::size_t index) { target[index] = page.units[static_cast<unsigned char>(text[index])]; });
}

void encode([[maybe_unused]] Kernel kernel, CodePage const & page, WideView text, char * target) noexcept {
#if MORVANE_HAS_KERNELS
    if (kernel == Kernel::avx512) {
        encodeAvx512(page, text, target);
        return;
    }
#endif
    convert(
        text, [&](std::size_t index) { return encodeStep(text.data + index, page.isIdentity, target + index); },
        [&](std::size_t index) {
            unsigned const unit = text[index];
            target[index] = static_cast<char>(page.planes[page.planeOf[unit >> 8]].bytes[unit & 0xFF]);
        });
}

void decode(CodePage const & page, DataView text, unsigned short int * target) noexcept {
    decode(bestKernel(), page, text, target);
}

void encode(CodePage const & page, WideView text, char * target) noexcept {
    encode(bestKernel(), page, text, target);
}

void decodeTo(CodePage const & page, DataView text, _WideString & result) {
    unsigned short int * const units = allocateText<unsigned short int>(text.length);
    if (units != nullptr) {
        decode(page, text, units);
    }
    adoptText(result, units, text.length);
}

void encodeTo(CodePage const & page, WideView text, _DataString & result) {
    char * const bytes = allocateText<char>(text.length);
    if (bytes != nullptr) {
        encode(page, text, bytes);
    }
    adoptText(result, bytes, text.length);
}

} // namespace morvane
