#include <morvane/imaging/color.h>

#include <algorithm>

namespace {

constexpr std::uint32_t opaqueBlack = 0xFF000000;

constexpr int redShift = 16;
constexpr int greenShift = 8;
constexpr int blueShift = 0;
constexpr int alphaShift = 24;

constexpr std::uint32_t pack(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha) {
    return static_cast<std::uint32_t>(alpha) << alphaShift | static_cast<std::uint32_t>(red) << redShift
           | static_cast<std::uint32_t>(green) << greenShift | static_cast<std::uint32_t>(blue) << blueShift;
}

constexpr unsigned char channel(std::uint32_t color, int shift) {
    return static_cast<unsigned char>(color >> shift);
}

constexpr std::uint32_t withChannel(std::uint32_t color, int shift, unsigned char value) {
    return (color & ~(std::uint32_t{0xFF} << shift)) | static_cast<std::uint32_t>(value) << shift;
}

constexpr unsigned char average(unsigned char first, unsigned char second) {
    return static_cast<unsigned char>((first + second) >> 1);
}

// All four channels at once: the seven low bits of each are summed apart from the top bits, so that nothing carries or
// borrows into the next channel; the top bits then tell which channels passed their end.
constexpr std::uint32_t topBits = 0x80808080;

/// 0xFF in each channel whose top bit is set in `marks`.
constexpr std::uint32_t wholeChannels(std::uint32_t marks) {
    return ((marks & topBits) >> 7) * 0xFF;
}

constexpr std::uint32_t addSaturated(std::uint32_t left, std::uint32_t right) {
    std::uint32_t const sums = ((left & ~topBits) + (right & ~topBits)) ^ ((left ^ right) & topBits);
    std::uint32_t const carries = (left & right) | ((left | right) & ~sums);
    return sums | wholeChannels(carries);
}

constexpr std::uint32_t subtractSaturated(std::uint32_t left, std::uint32_t right) {
    std::uint32_t const differences = ((left | topBits) - (right & ~topBits)) ^ (~(left ^ right) & topBits);
    std::uint32_t const borrows = (~left & right) | (~(left ^ right) & differences);
    return differences & ~wholeChannels(borrows);
}

/// Red and blue are far enough apart for two products of 16 bits in one word; alpha is the own one.
constexpr std::uint32_t blend(std::uint32_t own, std::uint32_t other, std::uint32_t weight) {
    constexpr std::uint32_t redAndBlue = 0x00FF00FF;
    constexpr std::uint32_t greenOnly = 0x0000FF00;
    std::uint32_t const inverse = 255 - weight;
    std::uint32_t const outer = ((own & redAndBlue) * inverse + (other & redAndBlue) * weight) >> 8;
    std::uint32_t const inner = ((own & greenOnly) * inverse + (other & greenOnly) * weight) >> 8;
    return (own & 0xFF000000) | (outer & redAndBlue) | (inner & greenOnly);
}

} // namespace

_Color::_Color(std::uint32_t color) : data(color) {}

_Color::_Color(char const *) : data(opaqueBlack) {}

_Color::_Color(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha)
    : data(pack(red, green, blue, alpha)) {}

_Color::_Color(_Color const & color) : _Object(color), data(color.data) {}

_Color::~_Color() = default;

bool _Color::loadFromStream(_Stream &) {
    return true;
}

bool _Color::saveToStream(_Stream &) {
    return true;
}

_DataString _Color::toString() const {
    return _DataString("");
}

void _Color::assign(std::uint32_t color) {
    data = color;
}

void _Color::assign(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha) {
    data = pack(red, green, blue, alpha);
}

void _Color::assign(_Color const & color) {
    data = color.data;
}

void _Color::assign(char const *) {}

void _Color::operator=(std::uint32_t color) {
    data = color;
}

void _Color::operator=(_Color const & color) {
    data = color.data;
}

void _Color::reset() {
    data = opaqueBlack;
}

std::uint32_t _Color::get_data() const {
    return data;
}

void _Color::set_data(std::uint32_t color) {
    data = color;
}

std::uint32_t _Color::getData() const {
    return data;
}

std::uint32_t _Color::color32() const {
    return data;
}

_Color::operator std::uint32_t() const {
    return data;
}

unsigned char _Color::getRed() const {
    return channel(data, redShift);
}

unsigned char _Color::getGreen() const {
    return channel(data, greenShift);
}

unsigned char _Color::getBlue() const {
    return channel(data, blueShift);
}

unsigned char _Color::getAlpha() const {
    return channel(data, alphaShift);
}

void _Color::setRed(unsigned char red) {
    data = withChannel(data, redShift, red);
}

void _Color::setGreen(unsigned char green) {
    data = withChannel(data, greenShift, green);
}

void _Color::setBlue(unsigned char blue) {
    data = withChannel(data, blueShift, blue);
}

void _Color::setAlpha(unsigned char alpha) {
    data = withChannel(data, alphaShift, alpha);
}

unsigned char _Color::maxValue() const {
    return std::max({getRed(), getGreen(), getBlue()});
}

unsigned char _Color::minValue() const {
    return std::min({getRed(), getGreen(), getBlue()});
}

unsigned char _Color::getCyan() const {
    return average(getGreen(), getBlue());
}

unsigned char _Color::getMagenta() const {
    return average(getRed(), getBlue());
}

unsigned char _Color::getYellow() const {
    return average(getRed(), getGreen());
}

unsigned char _Color::getLight() const {
    return average(minValue(), maxValue());
}

unsigned char _Color::getHue() const {
    return 0;
}

unsigned char _Color::getSat() const {
    return 0;
}

bool _Color::equal(std::uint32_t color) const {
    return data == color;
}

bool _Color::equal(_Color const & color) const {
    return data == color.data;
}

bool _Color::operator==(std::uint32_t color) const {
    return data == color;
}

bool _Color::operator==(_Color const & color) const {
    return data == color.data;
}

void _Color::add(std::uint32_t color) {
    data = addSaturated(data, color);
}

void _Color::add(_Color const & color) {
    add(color.data);
}

void _Color::operator+(std::uint32_t color) {
    add(color);
}

void _Color::operator+(_Color const & color) {
    add(color.data);
}

void _Color::sub(std::uint32_t color) {
    data = subtractSaturated(data, color);
}

void _Color::sub(_Color const & color) {
    sub(color.data);
}

void _Color::operator-(std::uint32_t color) {
    sub(color);
}

void _Color::operator-(_Color const & color) {
    sub(color.data);
}

void _Color::alphaBlending(std::uint32_t color, unsigned char weight) {
    data = blend(data, color, weight);
}

void _Color::alphaBlending(_Color const & color, unsigned char weight) {
    data = blend(data, color.data, weight);
}

void _Color::setYCMA(unsigned char yellow, unsigned char cyan, unsigned char magenta, unsigned char alpha) {
    data = pack(average(yellow, magenta), average(yellow, cyan), average(cyan, magenta), alpha);
}

void _Color::setHSLA(unsigned char, unsigned char, unsigned char light, unsigned char) {
    data = pack(light, light, light, 255);
}
