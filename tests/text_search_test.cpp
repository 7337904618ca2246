#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <morvane/strings/text_comparison.h>
#include <morvane/strings/text_view.h>
#include <morvane/strings/text_width.h>
#include <morvane/strings/unit_search.h>
#include <random>
#include <string>
#include <vector>

using namespace morvane;

namespace {

template <typename T>
class Search : public testing::Test {
protected:
    using Text = std::basic_string<T>;

    static TextView<T> view(Text const & text) { return {text.data(), text.size()}; }

    std::size_t below(std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(random); }

    /// Letters from the first `letters` of an alphabet with high units and a zero in it.
    Text text(std::size_t length, std::size_t letters) {
        T const alphabet[] = {T('a'), T('b'), T('A'), T('Z'), T(0xFF), T(0), std::numeric_limits<T>::max(), T('z')};
        Text result;
        while (result.size() < length) {
            result += alphabet[below(letters)];
        }
        return result;
    }

    std::mt19937 random{1};
};

using BothUnits = testing::Types<unsigned short int, char>;
TYPED_TEST_SUITE(Search, BothUnits);

TYPED_TEST(Search, FindsInBlocksWhatItFindsUnitByUnit) {
    for (int step = 0; step < 20000; ++step) {
        auto const whole = this->text(this->below(150), 8);
        // Every alignment.
        auto const all = this->view(whole).from(std::min(whole.size(), this->below(16)));
        std::size_t const from = all.isEmpty() ? 0 : this->below(all.length + 1);
        auto const unit = this->below(3) == 0 ? TypeParam('q') : this->text(1, 8)[0];
        auto const set = this->text(1 + this->below(8), 8) + TypeParam('q');
        auto const few = this->view(set).first(std::min<std::size_t>(set.size(), 1 + this->below(8)));
        ASSERT_EQ(findUnit(all, unit, from), plain::findUnit(all, unit, from));
        ASSERT_EQ(findLastUnit(all, unit), plain::findLastUnit(all, unit));
        ASSERT_EQ(findOneOfFew(all, few, from), plain::findOneOfFew(all, few, from));
        ASSERT_EQ(findOneOf(all, this->view(set), from), plain::findOneOfFew(all, this->view(set), from));
        ASSERT_EQ(countUnit(all, unit), static_cast<std::size_t>(std::count(all.begin(), all.end(), unit)));
        auto other = whole;
        if (!other.empty() && this->below(2) == 0) {
            other[this->below(other.size())] = unit;
        }
        ASSERT_EQ(findDifference(whole.data(), other.data(), whole.size()),
                  plain::findDifference(whole.data(), other.data(), whole.size()));
    }
}

TYPED_TEST(Search, TakesSetsAndCountsOfAnySize) {
    auto const set = this->text(3000, 5);
    for (std::size_t const length : {1U, 2U, 200001U}) {
        std::basic_string<TypeParam> all(length, TypeParam('q'));
        EXPECT_EQ(countUnit(this->view(all), TypeParam('q')), length);
        all.back() = TypeParam(0xFF);
        EXPECT_EQ(findOneOf(this->view(all), this->view(set)), length - 1);
    }
    EXPECT_EQ(findOneOf(this->view(set), TextView<TypeParam>{}), notFound);
}

TYPED_TEST(Search, FindsTextAsTheStandardLibraryDoes) {
    for (int step = 0; step < 10000; ++step) {
        std::size_t const letters = 1 + this->below(3);
        auto all = this->text(this->below(200), letters);
        bool const isPeriodic = this->below(3) == 0;
        if (isPeriodic) {
            // With a flaw, and at times so long that a comparing search starts in vain until it changes its algorithm.
            auto const period = this->text(1 + this->below(9), letters);
            std::size_t const length = this->below(10) == 0 ? 3000 : 150;
            for (all = period; all.size() < length;) {
                all += period;
            }
            all[all.size() / 2 + this->below(50)] = TypeParam('b');
        }
        auto sought = this->text(this->below(12), letters);
        if ((isPeriodic || this->below(2) == 0) && !all.empty()) {
            sought = all.substr(this->below(all.size()), this->below(120));
            if (!sought.empty() && this->below(3) == 0) {
                sought[this->below(sought.size())] = TypeParam('b');
            }
        }
        TextSearcher<TypeParam> searcher(this->view(sought));
        auto twoWay = TextSearcher<TypeParam>::twoWay(this->view(sought));
        std::size_t from = 0;
        do {
            std::size_t const expected = all.find(sought, from);
            ASSERT_EQ(searcher.find(this->view(all), from), expected);
            ASSERT_EQ(twoWay.find(this->view(all), from), expected);
            from = expected == all.npos ? all.size() + 1 : expected + 1;
        } while (from <= all.size());
    }
}

TYPED_TEST(Search, ComparesInBlocksAsUnitByUnit) {
    for (int step = 0; step < 20000; ++step) {
        auto left = this->text(this->below(70), 5);
        auto right = left;
        if (this->below(3) != 0 && !right.empty()) {
            right[this->below(right.size())] = this->text(1, 8)[0];
        }
        if (this->below(4) == 0) {
            right.resize(right.size() / 2);
        }
        auto const * const ours = left.c_str() + std::min(left.size(), this->below(9));
        auto const * const theirs = right.c_str() + std::min(right.size(), this->below(9));
        ASSERT_EQ(compareText(ours, theirs), plain::compareText(ours, theirs));
        ASSERT_EQ(compareText(left.c_str(), right.c_str()), plain::compareText(left.c_str(), right.c_str()));
        ASSERT_EQ(compareTextNoCase(left.c_str(), right.c_str()),
                  plain::compareTextNoCase(left.c_str(), right.c_str()));
    }
    // All pairs of units.
    for (int left = 0; left < 512; ++left) {
        for (int right = 0; right < 512; ++right) {
            TypeParam const ours[] = {static_cast<TypeParam>(left * 128), 0};
            TypeParam const theirs[] = {static_cast<TypeParam>(right * 128 + left % 128), 0};
            ASSERT_EQ(compareTextNoCase(ours, theirs), plain::compareTextNoCase(ours, theirs));
        }
    }
}

TEST(Width, WidensNarrowsAndMeasuresAnyLength) {
    for (std::size_t length = 0; length < 80; ++length) {
        std::string bytes;
        std::vector<unsigned short int> units;
        while (bytes.size() < length) {
            bytes += static_cast<char>(0xFF - 3 * bytes.size());
            units.push_back(static_cast<unsigned char>(bytes.back()));
        }
        std::vector<unsigned short int> widened(length);
        widen({bytes.data(), length}, widened.data());
        ASSERT_EQ(widened, units);
        units.push_back(0);
        for (std::size_t stop = 0; stop <= length; ++stop) {
            // Every alignment.
            ASSERT_EQ(unitLength(units.data() + length - stop), stop);
            ASSERT_EQ(unitLength(units.data() + length - stop, stop / 2), stop / 2);
            auto stopping = units;
            stopping[stop] = 0x100;
            std::string narrowed(length, 'x');
            ASSERT_EQ(narrow({stopping.data(), length}, narrowed.data()), stop);
            ASSERT_EQ(narrowed.substr(0, stop), bytes.substr(0, stop));
        }
    }
}

} // namespace
