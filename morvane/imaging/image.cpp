#include <morvane/imaging/image.h>

#include <atomic>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace {

constexpr std::size_t paletteEntries = 256;

// In front of the pixels, in the same block, stands the count of the images that share them.
using SharerCount = std::atomic<std::uint32_t>;
constexpr std::size_t pixelOffset = __STDCPP_DEFAULT_NEW_ALIGNMENT__;
static_assert(sizeof(SharerCount) <= pixelOffset);

/// A cleared pixel block with one sharer; null when there is no memory.
unsigned char * makePixels(std::size_t bytes) {
    auto * const block = new (std::nothrow) unsigned char[pixelOffset + bytes]();
    if (block == nullptr) {
        return nullptr;
    }
    new (block) SharerCount(1);
    return block + pixelOffset;
}

SharerCount & sharersOf(unsigned char * pixels) {
    return *std::launder(reinterpret_cast<SharerCount *>(pixels - pixelOffset));
}

void deletePixels(unsigned char * pixels) {
    delete[](pixels - pixelOffset);
}

/// The figure, or 0 where it doesn't fit.
std::int32_t in32Bits(std::int64_t figure) {
    using Limits = std::numeric_limits<std::int32_t>;
    return figure >= Limits::min() && figure <= Limits::max() ? static_cast<std::int32_t>(figure) : 0;
}

} // namespace

_Image::_Image(std::int32_t newWidth, std::int32_t newHeight, unsigned char newBitPerPixel) {
    initialize();
    createImage(newWidth, newHeight, newBitPerPixel);
}

_Image::_Image(_Image const & other)
    : _Persistant(other), palette(other.palette), data(other.data), bitPerPixel(other.bitPerPixel),
      height(other.height), width(other.width) {
    if (data != nullptr) {
        sharersOf(data).fetch_add(1, std::memory_order_relaxed);
    }
}

_Image::~_Image() {
    destroyImage();
}

bool _Image::loadFromStream(_Stream &) {
    return true;
}

bool _Image::saveToStream(_Stream &) {
    return true;
}

_DataString _Image::toString() const {
    return _DataString("");
}

_Image & _Image::operator=(_Image const & other) {
    // What this image held goes with the copy, behind all that is read from `other`, which may be this very image.
    _Image shared(other);
    std::swap(palette, shared.palette);
    std::swap(data, shared.data);
    bitPerPixel = other.bitPerPixel;
    height = other.height;
    width = other.width;
    return *this;
}

std::int32_t _Image::get_width() const {
    return width;
}

std::int32_t _Image::get_height() const {
    return height;
}

unsigned char _Image::get_bitPerPixel() const {
    return bitPerPixel;
}

unsigned char * _Image::get_data() const {
    return data;
}

std::int32_t _Image::getWidth() const {
    return width;
}

std::int32_t _Image::getHeight() const {
    return height;
}

unsigned char _Image::getBitPerPixel() const {
    return bitPerPixel;
}

unsigned char * _Image::getData() const {
    return data;
}

std::uint32_t * _Image::getPalette() const {
    return palette;
}

bool _Image::isValid() const {
    return data != nullptr;
}

unsigned char _Image::getBytePerPixel() const {
    return static_cast<unsigned char>(bitPerPixel >> 3);
}

std::int32_t _Image::getPadding() const {
    auto const rest = static_cast<std::int32_t>(std::int64_t{getBytePerPixel()} * width % 4);
    return rest == 0 ? 0 : 4 - rest;
}

std::int32_t _Image::getBytePerScanLine() const {
    return in32Bits((std::int64_t{bitPerPixel} * width >> 3) + getPadding());
}

std::int32_t _Image::getDataSize() const {
    return in32Bits(std::int64_t{height} * getBytePerScanLine());
}

std::int32_t _Image::getImageSize() const {
    return getDataSize();
}

std::uint32_t _Image::getColor(unsigned char index) const {
    return palette != nullptr ? palette[index] : 0;
}

void _Image::setPixel(std::int32_t, std::int32_t, std::uint32_t) {}

void _Image::setPixelIndexed(std::int32_t, std::int32_t, unsigned char) {}

std::uint32_t _Image::getPixel() const {
    return 0;
}

unsigned char _Image::getPixelIndexed(std::int32_t, std::int32_t) const {
    return 0;
}

void _Image::fill(std::uint32_t color) {
    if (!isValid()) {
        return;
    }
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            setPixel(x, y, color);
        }
    }
}

void _Image::fillIndexed(unsigned char) {}

void _Image::initialize() {
    bitPerPixel = 32;
    width = 0;
    height = 0;
    data = nullptr;
    palette = nullptr;
}

bool _Image::createImage(std::int32_t newWidth, std::int32_t newHeight, unsigned char newBitPerPixel) {
    destroyImage();
    width = newWidth;
    height = newHeight;
    bitPerPixel = newBitPerPixel;
    std::int32_t const bytes = getDataSize();
    if (width < 0 || height < 0 || bytes < 1) {
        return false;
    }
    std::unique_ptr<std::uint32_t[]> colors;
    if (bitPerPixel <= 8) {
        colors.reset(new (std::nothrow) std::uint32_t[paletteEntries]());
        if (colors == nullptr) {
            return false;
        }
    }
    data = makePixels(static_cast<std::size_t>(bytes));
    if (data == nullptr) {
        return false;
    }
    palette = colors.release();
    return true;
}

bool _Image::destroyImage() {
    if (data == nullptr) {
        return false;
    }
    if (sharersOf(data).fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete[] palette;
        deletePixels(data);
    }
    palette = nullptr;
    data = nullptr;
    return true;
}

std::uint32_t * _Image::get_palette() const {
    return palette;
}

void _Image::set_palette(std::uint32_t * newPalette) {
    palette = newPalette;
}

void _Image::set_data(unsigned char * newData) {
    data = newData;
}

void _Image::set_bitPerPixel(unsigned char newBitPerPixel) {
    bitPerPixel = newBitPerPixel;
}

void _Image::set_height(std::int32_t newHeight) {
    height = newHeight;
}

void _Image::set_width(std::int32_t newWidth) {
    width = newWidth;
}
