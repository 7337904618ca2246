#include "ordinary_allocator.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <morvane/morvane.h>
#include <utility>
#include <vector>

namespace {

std::uint32_t packed(int alpha, int red, int green, int blue) {
    return static_cast<std::uint32_t>(alpha) << 24 | static_cast<std::uint32_t>(red) << 16
           | static_cast<std::uint32_t>(green) << 8 | static_cast<std::uint32_t>(blue);
}

TEST(Color, StoresEachChannelApart) {
    _Color color(1, 2, 3, 4);
    EXPECT_EQ(packed(color.getAlpha(), color.getRed(), color.getGreen(), color.getBlue()), 0x04010203u);
    color.setRed(0xFF);
    color.setGreen(0xFE);
    EXPECT_TRUE(color.getData() == 0x04FFFE03u && color.color32() == 0x04FFFE03u);
    color.setBlue(0xFD);
    color.setAlpha(0);
    EXPECT_EQ(static_cast<std::uint32_t>(color), 0x00FFFEFDu);
    color.assign(5, 6, 7, 8);
    color.assign("red");
    color.assign(static_cast<char const *>(nullptr));
    EXPECT_EQ(color.get_data(), 0x08050607u);
    color.reset();
    for (_Color const & black : {_Color(), _Color("red"), _Color(static_cast<char const *>(nullptr)), color}) {
        EXPECT_EQ(black.get_data(), 0xFF000000u);
    }
}

TEST(Color, CalculatesWithEveryPairOfChannels) {
    for (int pair = 0; pair < 256 * 256; ++pair) {
        int const own = pair % 256;
        int const other = pair / 256;
        // Each channel has a neighbour that carries and one that doesn't.
        std::uint32_t const left = packed(own, 255, own, 0);
        std::uint32_t const right = packed(other, own, other, 255);
        _Color sum(left);
        sum.add(right);
        int const total = std::min(own + other, 255);
        ASSERT_EQ(sum.get_data(), packed(total, 255, total, 255)) << own << " + " << other;
        _Color difference(left);
        difference.sub(_Color(right));
        int const rest = std::max(own - other, 0);
        ASSERT_EQ(difference.get_data(), packed(rest, 255 - own, rest, 0)) << own << " - " << other;
        for (int weight = 0; weight < 256; ++weight) {
            auto const blended = [weight](int from, int to) { return (from * (255 - weight) + to * weight) >> 8; };
            _Color color(packed(other, own, 255 - own, other));
            color.alphaBlending(packed(own, other, own, 255), static_cast<unsigned char>(weight));
            auto const expected = packed(other, blended(own, other), blended(255 - own, own), blended(other, 255));
            ASSERT_EQ(color.get_data(), expected) << own << " to " << other << " by " << weight;
        }
    }
}

TEST(Color, IsComparedWithItsAlphaAndChangedByItsOperators) {
    _Color color(0x80112233u);
    for (std::uint32_t const data : {0x80112233u, 0x81112233u}) {
        bool const isSame = data == color.get_data();
        EXPECT_TRUE(color.equal(data) == isSame && (color == data) == isSame);
        EXPECT_TRUE(color.equal(_Color(data)) == isSame && (color == _Color(data)) == isSame);
    }
    color = 0xFE000000u;
    color + 0x01000010u;
    color + _Color(0x00800000u);
    EXPECT_EQ(color.get_data(), 0xFF800010u);
    color - 0x00000011u;
    color - _Color(0x01000000u);
    EXPECT_EQ(color.get_data(), 0xFE800000u);
    color.alphaBlending(_Color(0xFFFFFFFFu), 255);
    EXPECT_EQ(color.get_data(), 0xFEFEFEFEu);
}

TEST(Color, GivesInksAndLight) {
    // The colour; cyan, magenta, yellow, light, the smallest and the largest channel.
    std::pair<std::uint32_t, std::vector<int>> const rows[] = {
        {0xFF00FFFF, {255, 127, 127, 127, 0, 255}}, {0xFF102030, {40, 32, 24, 32, 16, 48}},
        {0x00FF0001, {0, 128, 127, 127, 0, 255}},   {0xFFFFFFFF, {255, 255, 255, 255, 255, 255}},
        {0xFF000000, {0, 0, 0, 0, 0, 0}},
    };
    for (auto const & [data, figures] : rows) {
        _Color const color(data);
        std::vector<int> const found{color.getCyan(),  color.getMagenta(), color.getYellow(),
                                     color.getLight(), color.minValue(),   color.maxValue()};
        EXPECT_EQ(found, figures) << data;
        EXPECT_EQ(color.getHue() + color.getSat(), 0);
    }
    _Color color;
    color.setYCMA(255, 255, 255, 9);
    EXPECT_EQ(color.get_data(), 0x09FFFFFFu);
    color.setYCMA(10, 21, 33, 0);
    EXPECT_EQ(color.get_data(), packed(0, (10 + 33) >> 1, (10 + 21) >> 1, (21 + 33) >> 1));
    color.setHSLA(1, 2, 3, 4);
    EXPECT_EQ(color.get_data(), 0xFF030303u);
}

/// An image whose protected members can be called.
struct OpenImage : _Image {
    using _Image::_Image;
    using _Image::createImage;
    using _Image::destroyImage;
    using _Image::initialize;
};

TEST(Image, SettlesItsGeometryIn32Bits) {
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    // Width, height, bits; padding, bytes of a line and of the image. The last ones pass 32 bits.
    constexpr std::int32_t rows[][6] = {
        {100, 100, 32, 0, 400, 40000},
        {101, 2, 24, 1, 304, 608},
        {3, 1, 16, 2, 8, 8},
        {5, 3, 8, 3, 8, 24},
        {5, 1, 4, 0, 2, 2},
        {3, 7, 1, 0, 0, 0},
        {4, 1, 9, 0, 4, 4},
        {0, 9, 32, 0, 0, 0},
        {9, 0, 32, 0, 36, 0},
        {-4, -4, 32, 0, -16, 64},
        {4, -1, 32, 0, 16, -16},
        {0x10000000, 2, 32, 0, 0x40000000, 0},
        {most, most, 255, 3, 0, 0},
        {-most, -most, 32, 0, 0, 0},
        {most, most, 8, 1, 0, 0},
    };
    for (auto const & [width, height, bits, padding, lineSize, size] : rows) {
        _Image const image(width, height, static_cast<unsigned char>(bits));
        bool const isValid = width > 0 && size > 0;
        SCOPED_TRACE(testing::Message() << width << " x " << height << " x " << bits);
        EXPECT_TRUE(image.get_width() == width && image.getHeight() == height && image.getBitPerPixel() == bits);
        EXPECT_TRUE(image.getBytePerPixel() == bits / 8 && image.getPadding() == padding);
        EXPECT_EQ(image.getBytePerScanLine(), lineSize);
        EXPECT_TRUE(image.getDataSize() == size && image.getImageSize() == size);
        EXPECT_EQ(image.isValid(), isValid);
        EXPECT_EQ(image.getPalette() != nullptr, isValid && bits <= 8);
        EXPECT_TRUE(!isValid || std::count(image.getData(), image.getData() + size, 0) == size);
        if (image.getPalette() != nullptr) {
            EXPECT_EQ(std::count(image.getPalette(), image.getPalette() + 256, 0), 256);
            image.getPalette()[255] = 0xFF102030;
        }
        EXPECT_EQ(image.getColor(255), image.getPalette() != nullptr ? 0xFF102030 : 0);
    }
}

TEST(Image, SharesItsBlocksUntilTheLastGoes) {
    long const before = ordinary_allocator::liveBlocks;
    {
        auto * const first = new OpenImage(4, 4, 8);
        OpenImage second(*first);
        OpenImage third(2, 2, 32);
        third = second;
        third = *&third;
        EXPECT_TRUE(third.getData() == first->getData() && third.getPalette() == second.getPalette());
        EXPECT_EQ(third.getBitPerPixel(), 8);
        EXPECT_TRUE(second.destroyImage() && !second.destroyImage());
        EXPECT_TRUE(!second.isValid() && second.getPalette() == nullptr && second.getWidth() == 4);
        delete first;
        third.getData()[15] = 1;
        EXPECT_EQ(third.getColor(255), 0u);
        // Made anew, it leaves what it shared.
        OpenImage const fourth(third);
        EXPECT_TRUE(third.createImage(1, 1, 32) && third.getPalette() == nullptr);
        EXPECT_EQ(fourth.getData()[15], 1);
        OpenImage const empty(0, 0, 32);
        third = empty;
        EXPECT_FALSE(third.isValid() || OpenImage(empty).isValid());
    }
    EXPECT_EQ(ordinary_allocator::liveBlocks, before);
}

TEST(Imaging, HasMembersThatDoNothing) {
    _MemoryStream stream(16);
    _Color color(1, 2, 3, 4);
    OpenImage image(3, 3, 8);
    std::fill_n(image.getData(), image.getDataSize(), static_cast<unsigned char>(7));
    image.fill(0xFFFFFFFF);
    image.fillIndexed(1);
    image.setPixel(1, 1, 0xFFFFFFFF);
    image.setPixelIndexed(1, 1, 1);
    EXPECT_TRUE(color.saveToStream(stream) && color.loadFromStream(stream));
    EXPECT_TRUE(image.saveToStream(stream) && image.loadFromStream(stream));
    EXPECT_EQ(std::count(image.getData(), image.getData() + image.getDataSize(), 7), image.getDataSize());
    EXPECT_TRUE(image.getPixel() == 0 && image.getPixelIndexed(1, 1) == 0);
    EXPECT_TRUE(stream.getPosition() == 0 && color == 0x04010203u);
    for (_DataString const & text : {color.toString(), image.toString(), image._toString()}) {
        EXPECT_STREQ(text.get_data(), "");
    }
    image.destroyImage();
    image.initialize();
    EXPECT_TRUE(image.getBitPerPixel() == 32 && image.getWidth() + image.getHeight() == 0);
}

} // namespace
