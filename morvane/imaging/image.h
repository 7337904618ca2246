// The image buffer.
#pragma once

#include <cstdint>
#include <morvane/export.h>
#include <morvane/streams/persistant.h>
#include <morvane/strings/data_string.h>

class _Stream;

/// A raster in memory: its geometry, a cleared block of scan lines padded to 4 bytes and, up to 8 bits a pixel, a
/// palette of 256 colours in the packing of `_Color`.
///
/// It settles sizes and owns the memory; pixels are reached through `getData`, since the members for single pixels are
/// empty.
/// Ownership: copies share the pixels and the palette; whichever goes last releases them.
/// Errors: an image whose size is below 1 byte, whose width or height is negative, or which gets no memory keeps its
/// fields but has no block: `isValid` is false. A figure past 32 bits comes out as 0.
class MORVANE_EXPORT _Image : public _Persistant {
public:
    /// An image of `width` by `height` pixels; `isValid` tells whether it could be made.
    _Image(std::int32_t width = 100, std::int32_t height = 100, unsigned char bitPerPixel = 32);
    /// Shares the blocks of `other`.
    _Image(_Image const & other);
    ~_Image() override;

    /// Reads nothing and gives true.
    virtual bool loadFromStream(_Stream & stream);
    /// Writes nothing and gives true.
    virtual bool saveToStream(_Stream & stream);
    /// An empty text.
    virtual _DataString toString() const;

    /// Lets go of its blocks and shares those of `other`.
    _Image & operator=(_Image const & other);

    /// The pixels in a row, the rows, the bits of a pixel, and the pixel block or null.
    std::int32_t get_width() const;
    std::int32_t get_height() const;
    unsigned char get_bitPerPixel() const;
    unsigned char * get_data() const;
    std::int32_t getWidth() const;
    std::int32_t getHeight() const;
    unsigned char getBitPerPixel() const;
    unsigned char * getData() const;
    /// The 256 colours; null above 8 bits a pixel and without a pixel block.
    std::uint32_t * getPalette() const;

    /// True when there is a pixel block.
    bool isValid() const;
    /// The whole bytes of a pixel: 0 for fewer than 8 bits.
    unsigned char getBytePerPixel() const;
    /// The bytes behind the pixels of a scan line that bring whole bytes a pixel to a multiple of 4; 0 for fewer than 8
    /// bits.
    std::int32_t getPadding() const;
    /// The bytes of a scan line: its bits, rounded down to bytes, and the padding.
    std::int32_t getBytePerScanLine() const;
    /// The bytes of all scan lines.
    std::int32_t getDataSize() const;
    std::int32_t getImageSize() const;

    /// The palette's entry; 0 without a palette.
    std::uint32_t getColor(unsigned char index) const;

    /// Does nothing.
    void setPixel(std::int32_t x, std::int32_t y, std::uint32_t color);
    void setPixelIndexed(std::int32_t x, std::int32_t y, unsigned char index);
    /// 0.
    std::uint32_t getPixel() const;
    unsigned char getPixelIndexed(std::int32_t x, std::int32_t y) const;
    /// Calls `setPixel` for every pixel, row by row, and so changes nothing.
    void fill(std::uint32_t color);
    /// Does nothing.
    void fillIndexed(unsigned char index);

protected:
    /// Makes it an image of 32 bits a pixel without size or blocks, releasing nothing.
    void initialize();
    /// Lets go of the blocks, stores the fields and makes cleared blocks; false when the image isn't valid.
    bool createImage(std::int32_t width, std::int32_t height, unsigned char bitPerPixel);
    /// Lets go of the blocks, and keeps the fields; false when there are none.
    bool destroyImage();

private:
    std::uint32_t * get_palette() const;
    void set_palette(std::uint32_t * palette);
    void set_data(unsigned char * data);
    void set_bitPerPixel(unsigned char bitPerPixel);
    void set_height(std::int32_t height);
    void set_width(std::int32_t width);

    std::uint32_t * palette;
    unsigned char * data;
    std::uint8_t bitPerPixel;
    std::int32_t height;
    std::int32_t width;
};
