#include <gtest/gtest.h>
#include <morvane/core/literals.h>
#include <morvane/core/object.h>

using namespace morvane::literals;

namespace {

TEST(Object, HasNoTablePointerToShow)
{
    _Object object;
    EXPECT_EQ(object.vmtPointer(), nullptr);
}

TEST(Literals, AreZeroClosedUnits)
{
    constexpr unsigned short int const * text = u"a\u20AC"_w;
    EXPECT_EQ(text[0], 0x61);
    EXPECT_EQ(text[1], 0x20AC);
    EXPECT_EQ(text[2], 0);
}

} // namespace
