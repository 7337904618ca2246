#include "ordinary_allocator.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <morvane/imaging/color.h>
#include <morvane/imaging/image.h>
#include <morvane/streams/memory_stream.h>
#include <vector>

namespace {

std::uint32_t packed(int alpha, int red, int green, int blue) {
    return static_cast<std::uint32_t>(alpha) << 24 | static_cast<std::uint32_t>(red) << 16
           | static_cast<std::uint32_t>(green) << 8 | static_cast<std::uint32_t>(blue);
}

TEST(Color, StoresEachChannelApart) {
    _Color color(1, 2, 3, 4);
    EXPECT_EQ(color.get_data(), 0x04010203u);
    EXPECT_EQ(packed(color.getAlpha(), color.getRed(), color.getGreen(), color.getBlue()), 0x04010203u);
    color.setRed(0xFF);
    EXPECT_EQ(color.getData(), 0x04FF0203u);
    color.setGreen(0xFE);
    EXPECT_EQ(color.color32(), 0x04FFFE03u);
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

TEST(Color, IsComparedWithItsAlpha) {
    _Color const color(0x80112233u);
    _Color const other(0x81112233u);
    EXPECT_TRUE(color.equal(0x80112233u) && color == 0x80112233u && color.equal(_Color(color))
                && color == _Color(color));
    EXPECT_FALSE(color.equal(0x81112233u) || color == 0x81112233u || color.equal(other) || color == other);
}

TEST(Color, AddsAndSubtractsEveryPairOfChannels) {
    for (int own = 0; own < 256; ++own) {
        for (int other = 0; other < 256; ++other) {
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
        }
    }
}

TEST(Color, BlendsEveryPairOfChannelsWithEveryWeight) {
    for (int weight = 0; weight < 256; ++weight) {
        for (int own = 0; own < 256; ++own) {
            for (int other = 0; other < 256; ++other) {
                auto const blended = [weight](int from, int to) { return (from * (255 - weight) + to * weight) >> 8; };
                _Color color(packed(other, own, 255 - own, other));
                color.alphaBlending(packed(own, other, own, 255), static_cast<unsigned char>(weight));
                ASSERT_EQ(color.get_data(),
                          packed(other, blended(own, other), blended(255 - own, own), blended(other, 255)))
                    << own << " to " << other << " by " << weight;
            }
        }
    }
}

TEST(Color, OperatorsChangeTheirLeftOperand) {
    _Color color(0xFE000000u);
    color + 0x01000010u;
    EXPECT_EQ(color.get_data(), 0xFF000010u);
    color + _Color(0x00800000u);
    EXPECT_EQ(color.get_data(), 0xFF800010u);
    color - 0x00000011u;
    EXPECT_EQ(color.get_data(), 0xFF800000u);
    color - _Color(0x01000000u);
    EXPECT_EQ(color.get_data(), 0xFE800000u);
    color.alphaBlending(_Color(0xFFFFFFFFu), 255);
    EXPECT_EQ(color.get_data(), 0xFEFEFEFEu);
}

TEST(Color, GivesInksAndLight) {
    struct {
        std::uint32_t color;
        int cyan, magenta, yellow, light, smallest, largest;
    } const rows[] = {
        {0xFF00FFFF, 255, 127, 127, 127, 0, 255}, {0xFF102030, 40, 32, 24, 32, 16, 48},
        {0x00FF0001, 0, 128, 127, 127, 0, 255},   {0xFFFFFFFF, 255, 255, 255, 255, 255, 255},
        {0xFF000000, 0, 0, 0, 0, 0, 0},
    };
    for (auto const & row : rows) {
        _Color const color(row.color);
        using Numbers = std::vector<int>;
        EXPECT_EQ((Numbers{color.getCyan(), color.getMagenta(), color.getYellow(), color.getLight(), color.minValue(),
                           color.maxValue(), color.getHue(), color.getSat()}),
                  (Numbers{row.cyan, row.magenta, row.yellow, row.light, row.smallest, row.largest, 0, 0}))
            << row.color;
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
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    struct {
        std::int32_t width, height;
        unsigned char bits;
        int bytePerPixel, padding;
        std::int32_t scanLine, size;
        bool valid;
    } const rows[] = {
        {100, 100, 32, 4, 0, 400, 40000, true},
        {101, 2, 24, 3, 1, 304, 608, true},
        {3, 1, 16, 2, 2, 8, 8, true},
        {5, 3, 8, 1, 3, 8, 24, true},
        {5, 1, 4, 0, 0, 2, 2, true},
        {100, 1, 1, 0, 0, 12, 12, true},
        {3, 7, 1, 0, 0, 0, 0, false},
        {4, 1, 9, 1, 0, 4, 4, true},
        {0, 9, 32, 4, 0, 0, 0, false},
        {9, 0, 32, 4, 0, 36, 0, false},
        {9, 9, 0, 0, 0, 0, 0, false},
        {-4, -4, 32, 4, 0, -16, 64, false},
        {4, -1, 32, 4, 0, 16, -16, false},
        // Past 32 bits: the block of two lines, the line, everything.
        {0x10000000, 2, 32, 4, 0, 0x40000000, 0, false},
        {0x20000000, 1, 32, 4, 0, 0, 0, false},
        {most, most, 255, 31, 3, 0, 0, false},
        {least, least, 255, 31, 0, 0, 0, false},
        {most, most, 8, 1, 1, 0, 0, false},
    };
    for (auto const & row : rows) {
        _Image const image(row.width, row.height, row.bits);
        SCOPED_TRACE(testing::Message() << row.width << " x " << row.height << " x " << int{row.bits});
        EXPECT_EQ(image.get_width(), row.width);
        EXPECT_EQ(image.getHeight(), row.height);
        EXPECT_EQ(image.getBitPerPixel(), row.bits);
        EXPECT_EQ(image.getBytePerPixel(), row.bytePerPixel);
        EXPECT_EQ(image.getPadding(), row.padding);
        EXPECT_EQ(image.getBytePerScanLine(), row.scanLine);
        EXPECT_EQ(image.getDataSize(), row.size);
        EXPECT_EQ(image.getImageSize(), row.size);
        EXPECT_EQ(image.isValid(), row.valid);
        EXPECT_EQ(image.getPalette() != nullptr, row.valid && row.bits <= 8);
        if (row.valid) {
            EXPECT_EQ(std::count(image.getData(), image.getData() + row.size, 0), row.size);
        }
        if (image.getPalette() != nullptr) {
            EXPECT_EQ(std::count(image.getPalette(), image.getPalette() + 256, 0), 256);
            image.getPalette()[255] = 0xFF102030;
        }
        EXPECT_EQ(image.getColor(255), image.getPalette() != nullptr ? 0xFF102030 : 0);
        EXPECT_EQ(image.getColor(0), 0u);
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
        EXPECT_EQ(third.getData(), first->getData());
        EXPECT_EQ(third.getPalette(), second.getPalette());
        EXPECT_EQ(third.getBitPerPixel(), 8);
        EXPECT_TRUE(second.destroyImage());
        EXPECT_FALSE(second.destroyImage());
        EXPECT_FALSE(second.isValid());
        EXPECT_EQ(second.getPalette(), nullptr);
        EXPECT_EQ(second.getWidth(), 4);
        delete first;
        third.getData()[15] = 1;
        EXPECT_EQ(third.getColor(255), 0u);
        // Made anew, it leaves what it shared.
        OpenImage const fourth(third);
        EXPECT_TRUE(third.createImage(1, 1, 32));
        EXPECT_EQ(fourth.getData()[15], 1);
        EXPECT_EQ(third.getPalette(), nullptr);
        OpenImage const empty(0, 0, 32);
        third = empty;
        EXPECT_FALSE(third.isValid());
        EXPECT_FALSE(OpenImage(empty).isValid());
    }
    EXPECT_EQ(ordinary_allocator::liveBlocks, before);
}

TEST(Image, IsNotValidWithoutMemory) {
    long const before = ordinary_allocator::liveBlocks;
    for (long served : {0, 1}) {
        OpenImage image(0, 0, 32);
        ordinary_allocator::servedBeforeRefusal = served;
        bool const made = image.createImage(4, 4, 8);
        ordinary_allocator::servedBeforeRefusal = -1;
        EXPECT_FALSE(made);
        EXPECT_FALSE(image.isValid());
        EXPECT_EQ(image.getPalette(), nullptr);
        EXPECT_EQ(image.getWidth(), 4);
    }
    EXPECT_EQ(ordinary_allocator::liveBlocks, before);
}

TEST(Image, StaysAsItIsUnderMembersForPixels) {
    _Image image(3, 3, 8);
    std::fill_n(image.getData(), image.getDataSize(), static_cast<unsigned char>(7));
    image.fill(0xFFFFFFFF);
    image.fillIndexed(1);
    image.setPixel(1, 1, 0xFFFFFFFF);
    image.setPixelIndexed(1, 1, 1);
    EXPECT_EQ(std::count(image.getData(), image.getData() + image.getDataSize(), 7), image.getDataSize());
    EXPECT_EQ(image.getPixel(), 0u);
    EXPECT_EQ(image.getPixelIndexed(1, 1), 0);
    OpenImage unmade(1, 1, 1);
    unmade.initialize();
    EXPECT_EQ(unmade.getBitPerPixel(), 32);
    EXPECT_EQ(unmade.getWidth() + unmade.getHeight(), 0);
}

TEST(Imaging, MovesNothingThroughStreamsAndHasNoText) {
    _MemoryStream stream(16);
    _Color color(1, 2, 3, 4);
    _Image image(2, 2, 32);
    EXPECT_TRUE(color.saveToStream(stream) && color.loadFromStream(stream));
    EXPECT_TRUE(image.saveToStream(stream) && image.loadFromStream(stream));
    EXPECT_EQ(stream.getPosition(), 0);
    EXPECT_EQ(color.get_data(), 0x04010203u);
    for (_DataString const & text : {color.toString(), image.toString(), image._toString()}) {
        EXPECT_STREQ(text.get_data(), "");
    }
}

} // namespace
