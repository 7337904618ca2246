// UTF-8 of one to three bytes a code unit, over views.
#pragma once

#include <cstddef>
#include <morvane/strings/text_view.h>

class _DataString;
class _WideString;

namespace morvane::utf8 {

/// What ends a reading before the end of its source.
enum class Fault : unsigned char {
    none,
    shortOfTwo,   ///< the second byte of a sequence of two is missing
    shortOfThree, ///< the second or third byte of a sequence of three is missing
    badLead       ///< a byte that begins no sequence
};

/// How far a reading came.
struct Reading {
    std::size_t units = 0;     ///< code units produced
    std::size_t index = 0;     ///< bytes passed; on a fault the byte index that its message tells
    Fault fault = Fault::none; ///< what ended it
    unsigned char lead = 0;    ///< the byte of `Fault::badLead`
    bool hasZero = false;      ///< a unit of value 0 was produced; told by `decode` alone
};

/// Counts the units of `source`, which holds no zero byte, up to its end or the first fault.
Reading countUnits(DataView source) noexcept;

/// Decodes `source`, which holds no zero byte, into `target`, which has room for the units that are counted. Nothing is
/// written behind them.
Reading decode(DataView source, unsigned short int * target) noexcept;

/// The same for a zero-closed text, which is measured as it is read, so that it comes out of memory once.
Reading countUnits(char const * source) noexcept;
Reading decode(char const * source, unsigned short int * target) noexcept;

/// Decodes `source`, which holds no zero byte, into a text of exact size that ends at its first zero unit. On a fault
/// `result` stays as it was. A heap that refuses leaves `result` released.
Reading decodeTo(DataView source, _WideString & result);

/// Puts the text that tells the fault of `reading`, over `length` bytes of source, into `message`.
void describeFault(Reading const & reading, std::size_t length, _WideString & message);

/// The bytes that `source` takes, up to its length; zero units count one byte.
std::size_t countBytes(WideView source) noexcept;

/// Encodes `source` into `target`, which has room for the bytes that are counted, and gives their count. Nothing is
/// written behind them.
std::size_t encode(WideView source, char * target) noexcept;

/// The same for a zero-closed text, which is measured as it is read.
std::size_t countBytes(unsigned short int const * source) noexcept;
std::size_t encode(unsigned short int const * source, char * target) noexcept;

/// Encodes `source` into a text of exact size. An allocator that refuses leaves `result` released.
void encodeTo(WideView source, _DataString & result);

} // namespace morvane::utf8
