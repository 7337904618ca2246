// What the tests of both text classes share.
#pragma once

#include "counting_heap.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <morvane/morvane.h>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

template <typename String>
using UnitOf = std::remove_cvref_t<decltype(*std::declval<String>().get_data())>;

/// The plain text that a text object is held against, and the form in which constants are written here.
template <typename String>
using Model = std::basic_string<UnitOf<String>>;

template <typename String>
Model<String> units(std::string_view text) {
    return Model<String>(text.begin(), text.end());
}

/// A live text with these units, zeros among them included.
template <typename String>
String fromModel(Model<String> const & model) {
    String text(UnitOf<String>{'x'}, static_cast<std::int32_t>(model.size()));
    std::copy(model.begin(), model.end(), text.get_data());
    return text;
}

template <typename String>
String textOf(std::string_view text) {
    return fromModel<String>(units<String>(text));
}

template <typename String>
Model<String> modelOf(String const & text) {
    return text.get_data() == nullptr ? Model<String>() : Model<String>(text.get_data(), text.get_length());
}

template <typename String>
std::string shown(Model<String> const & model) {
    std::string text;
    for (auto const unit : model) {
        text += unit == 0 ? '0' : static_cast<char>(unit);
    }
    return text;
}

/// Live, zero-closed, exact in size, and equal to `expected`, in which 0 stands for a zero unit.
template <typename String>
void expectText(String const & text, std::string_view expected) {
    ASSERT_NE(text.get_data(), nullptr);
    EXPECT_EQ(shown<String>(modelOf(text)), expected);
    EXPECT_EQ(text.get_data()[text.get_length()], 0);
    if constexpr (std::is_same_v<String, _WideString>) {
        EXPECT_EQ(text.get_size(), (text.get_length() + 1) * 2);
    }
}

template <typename String>
void expectReleased(String const & text) {
    EXPECT_EQ(text.get_data(), nullptr);
    EXPECT_EQ(text.get_length(), 0U);
    if constexpr (std::is_same_v<String, _WideString>) {
        EXPECT_EQ(text.get_size(), 0U);
    }
}

template <typename String>
String released() {
    String text;
    text.empty();
    return text;
}

/// Each test runs for both text classes and leaves no block behind in the heap.
template <typename T>
class Text : public testing::Test {
private:
    counting_heap::LeakCheck leakCheck;
};

using Both = testing::Types<_WideString, _DataString>;
