// Edits of both text classes, one after the other, beside a string of the standard library.

#include "fuzz_input.h"
#include "text_testing.h"

#include <type_traits>

namespace {

template <typename String>
void edit(FuzzInput input) {
    using Unit = std::remove_cvref_t<decltype(*String().get_data())>;
    using Model = std::basic_string<Unit>;
    String text(Unit{'a'}, 1);
    Model told(1, Unit{'a'});
    auto const index = [](std::size_t place) { return static_cast<std::int32_t>(place); };
    auto const model = [](String const & made) { return Model(made.get_data(), made.get_length()); };
    auto const unit = [&input] { return static_cast<Unit>("abAz\xE9"[input.below(5)] & 0xFF); };
    auto const piece = [&](std::size_t most) {
        Model made(input.below(most), Unit{});
        std::generate(made.begin(), made.end(), unit);
        return made;
    };
    // Inside the text mostly.
    auto const number = [&]() -> std::int32_t {
        return input.below(8) == 0 ? input.value<std::int32_t>() : index(input.below(256) % (told.size() + 2));
    };
    auto const part = [&](std::int64_t start, std::int64_t end) {
        bool const isInside = start >= 0 && start < index(told.size()) && end > start;
        return isInside ? told.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)) : Model();
    };
    auto const lower = [](Model made) {
        for (Unit & each : made) {
            each = static_cast<Unit>(each >= 'A' && each <= 'Z' ? each + 32 : each);
        }
        return made;
    };
    while (!input.isEmpty() && told.size() < 2000) {
        std::size_t const kind = input.below(9);
        Unit const one = unit();
        Model some = piece(kind == 4 ? 3 : 40);
        Model to = piece(5);
        std::int32_t const start = number();
        std::int32_t const count = number();
        auto first = static_cast<std::size_t>(std::clamp(start, 0, index(told.size())));
        std::size_t hits = 0;
        switch (kind) {
        case 0:
            text.add(some.c_str());
            told += some;
            break;
        case 1:
            told.insert(first, some);
            expect(text.insert(start, some.c_str()) == index(told.size()));
            break;
        case 2: {
            auto const end = std::clamp<std::int64_t>(std::int64_t{start} + count, index(first), index(told.size()));
            told.erase(first, static_cast<std::size_t>(end) - first);
            expect(text.deleteArray(start, count) == index(told.size()));
            break;
        }
        case 3:
            expect(text.remove(one) == index(std::erase(told, one)));
            break;
        case 4:
            for (std::size_t at = 0; !some.empty() && (at = told.find(some, at)) != told.npos; at += to.size()) {
                told.replace(at, some.size(), to);
                ++hits;
            }
            expect((to.empty() ? text.remove(some.data()) : text.replace(some.data(), to.data())) == index(hits));
            break;
        case 5:
            text.makeReverse();
            text.makeLower();
            std::reverse(told.begin(), told.end());
            told = lower(told);
            break;
        case 6:
            text.setAt(start, one);
            if (start >= 0 && first < told.size()) {
                told[first] = one;
            }
            break;
        case 7:
            expect(text.replace(one, Unit{'A'}) == std::count(told.begin(), told.end(), one));
            std::replace(told.begin(), told.end(), one, Unit{'A'});
            break;
        default:
            text.add(one, count % 20);
            told.append(static_cast<std::size_t>(std::max(count % 20, 0)), one);
        }
        expect(model(text) == told && text.get_data()[told.size()] == 0);
        first = static_cast<std::size_t>(std::max(start, 0));
        bool const isInside = first < told.size();
        expect(text.find(one, start) == (isInside ? index(told.find(one, first)) : -1));
        auto const from = static_cast<std::uint32_t>(first);
        expect(!isInside || text.find(some.c_str(), from) == index(told.find(some, first)));
        expect(text.reverseFind(one) == index(told.rfind(one)));
        expect(text.findOneOf(some.c_str()) == index(told.find_first_of(some)));
        std::int32_t const length = index(told.size());
        expect(model(text.mid(start)) == part(start, length));
        expect(model(text.mid(start, count)) == part(start, std::int64_t{start} + count));
        expect(model(text.left(count)) == part(0, count));
        expect(model(text.right(count)) == part(std::int64_t{length} - count, length));
        expect(model(text.extract(start, count)) == part(start, std::int64_t{count} + 1));
        auto const sign = [](int order) { return (order > 0) - (order < 0); };
        expect(text.compare(some.c_str()) == sign(told.compare(some)) && text.compare(told.c_str()) == 0);
        expect(sign(text.compareNoCase(some.c_str())) == sign(lower(told).compare(lower(some))));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    edit<_WideString>({data, size});
    edit<_DataString>({data, size});
    return 0;
}
