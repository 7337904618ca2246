// The colour value.
#pragma once

#include <cstdint>
#include <morvane/core/object.h>
#include <morvane/export.h>
#include <morvane/strings/data_string.h>

class _Stream;

/// A colour of four channels of 8 bits, packed as alpha << 24 | red << 16 | green << 8 | blue.
///
/// All arithmetic is done on whole channels in integers. The operators `+` and `-` change their left operand and give
/// nothing.
class MORVANE_EXPORT _Color : public _Object {
public:
    /// The packed `color`; opaque black by default.
    _Color(std::uint32_t color = 0xFF000000);
    /// The default colour: no text form of a colour exists.
    _Color(char const * text);
    _Color(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha);
    _Color(_Color const & color);
    ~_Color() override;

    /// Reads nothing and gives true.
    virtual bool loadFromStream(_Stream & stream);
    /// Writes nothing and gives true.
    virtual bool saveToStream(_Stream & stream);
    /// An empty text.
    virtual _DataString toString() const;

    void assign(std::uint32_t color);
    void assign(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha);
    void assign(_Color const & color);
    /// Changes nothing: no text form of a colour exists.
    void assign(char const * text);
    void operator=(std::uint32_t color);
    void operator=(_Color const & color);
    /// Makes it opaque black.
    void reset();

    /// The packed colour.
    std::uint32_t get_data() const;
    void set_data(std::uint32_t color);
    std::uint32_t getData() const;
    std::uint32_t color32() const;
    operator std::uint32_t() const;

    unsigned char getRed() const;
    unsigned char getGreen() const;
    unsigned char getBlue() const;
    unsigned char getAlpha() const;
    void setRed(unsigned char red);
    void setGreen(unsigned char green);
    void setBlue(unsigned char blue);
    void setAlpha(unsigned char alpha);

    /// The largest and the smallest of red, green and blue.
    unsigned char maxValue() const;
    unsigned char minValue() const;
    /// The average, rounded down, of the two channels that make cyan (green and blue), magenta (red and blue) and
    /// yellow (red and green).
    unsigned char getCyan() const;
    unsigned char getMagenta() const;
    unsigned char getYellow() const;
    /// The average, rounded down, of the largest and the smallest of red, green and blue.
    unsigned char getLight() const;
    /// 0, whatever the colour.
    unsigned char getHue() const;
    unsigned char getSat() const;

    /// True when all four channels are the same.
    bool equal(std::uint32_t color) const;
    bool equal(_Color const & color) const;
    bool operator==(std::uint32_t color) const;
    bool operator==(_Color const & color) const;

    /// Adds channel by channel, alpha too; a sum stops at 255.
    void add(std::uint32_t color);
    void add(_Color const & color);
    void operator+(std::uint32_t color);
    void operator+(_Color const & color);
    /// Subtracts channel by channel, alpha too; a difference stops at 0.
    void sub(std::uint32_t color);
    void sub(_Color const & color);
    void operator-(std::uint32_t color);
    void operator-(_Color const & color);
    /// Makes red, green and blue (own × (255 - `weight`) + other × `weight`) >> 8, so that 255 never quite stays; alpha
    /// stays.
    void alphaBlending(std::uint32_t color, unsigned char weight);
    void alphaBlending(_Color const & color, unsigned char weight);

    /// Makes red, green and blue the averages, rounded down, of the two inks that show each, and stores `alpha`.
    void setYCMA(unsigned char yellow, unsigned char cyan, unsigned char magenta, unsigned char alpha);
    /// Makes an opaque grey of `light`; the other arguments aren't read.
    void setHSLA(unsigned char hue, unsigned char saturation, unsigned char light, unsigned char alpha);

private:
    std::uint32_t data;
};
