#include <morvane/strings/text_format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <morvane/strings/decimal_digits.h>
#include <morvane/strings/text_view.h>
#include <morvane/strings/unit_search.h>
#include <type_traits>

namespace morvane {

namespace {

enum class Size { none, hh, h, l, ll, j, z, t, longDouble };

/// One directive, taken apart.
struct Directive {
    bool isLeft = false;
    bool hasPlus = false;
    bool hasSpace = false;
    bool isAlternate = false;
    bool hasZeros = false;
    bool hasPrecision = false;
    std::size_t width = 0;
    std::size_t precision = 0;
    Size size = Size::none;
    char conversion = 0;
};

/// A part of a number's text: characters, or that many zeros where `characters` is null.
struct Run {
    char const * characters = nullptr;
    std::size_t count = 0;
};

/// The text of a number in order: sign and base, then runs.
struct NumberText {
    char prefix[4] = {};
    std::size_t prefixLength = 0;
    Run runs[8];
    std::size_t runCount = 0;
    /// False for what zeros must not fill up.
    bool takesZeros = true;

    void addPrefix(char character) noexcept { prefix[prefixLength++] = character; }
    void add(char const * characters, std::size_t count) noexcept {
        if (count != 0) {
            runs[runCount++] = {characters, count};
        }
    }
    void addZeros(std::size_t count) noexcept { add(nullptr, count); }
};

template <typename Unit>
class Formatter {
public:
    Formatter(Unit * text, std::size_t capacity, std::va_list list) noexcept : target(text), room(capacity) {
        va_copy(arguments, list);
    }
    Formatter(Formatter const &) = delete;
    ~Formatter() { va_end(arguments); }
    Formatter & operator=(Formatter const &) = delete;

    std::size_t run(Unit const * pattern) noexcept {
        TextView<Unit> rest = viewOf(pattern);
        while (room != 0) {
            std::size_t const mark = std::min(findUnit(rest, '%'), rest.length);
            put(rest.first(mark));
            rest = rest.from(mark);
            if (rest.isEmpty()) {
                break;
            }
            rest = rest.from(printDirective(rest));
        }
        return used;
    }

private:
    void put(TextView<Unit> text) noexcept {
        std::size_t const count = std::min(text.length, room);
        std::memcpy(target + used, text.data, count * sizeof(Unit));
        used += count;
        room -= count;
    }
    void fill(char character, std::size_t wanted) noexcept {
        std::size_t const count = std::min(wanted, room);
        std::fill_n(target + used, count, static_cast<Unit>(character));
        used += count;
        room -= count;
    }
    /// Units of the other width, or ASCII, value for value.
    template <typename Source>
    void putConverted(Source const * text, std::size_t length) noexcept {
        std::size_t const count = std::min(length, room);
        std::transform(text, text + count, target + used,
                       [](Source unit) { return static_cast<Unit>(static_cast<std::make_unsigned_t<Source>>(unit)); });
        used += count;
        room -= count;
    }

    /// Prints the directive that `text` begins with and gives its length.
    std::size_t printDirective(TextView<Unit> text) noexcept {
        std::size_t length = 1;
        Directive const directive = readDirective(text, length);
        if (!print(directive)) {
            put(text.first(length));
        }
        return length;
    }

    Directive readDirective(TextView<Unit> text, std::size_t & index) noexcept {
        auto const next = [&text, &index]() -> Unit { return index < text.length ? text[index] : Unit{}; };
        Directive directive;
        for (bool isFlag = true; isFlag;) {
            switch (next()) {
            case '-':
                directive.isLeft = true;
                break;
            case '+':
                directive.hasPlus = true;
                break;
            case ' ':
                directive.hasSpace = true;
                break;
            case '#':
                directive.isAlternate = true;
                break;
            case '0':
                directive.hasZeros = true;
                break;
            default:
                isFlag = false;
            }
            index += isFlag ? 1 : 0;
        }
        auto const readCount = [&next, &index]() {
            // No count needs to be larger than all the text that comes out.
            std::size_t count = 0;
            for (; next() >= '0' && next() <= '9'; ++index) {
                count = std::min<std::size_t>(count * 10 + static_cast<std::size_t>(next() - '0'), 1'000'000);
            }
            return count;
        };
        if (next() == '*') {
            ++index;
            int const width = va_arg(arguments, int);
            directive.isLeft = directive.isLeft || width < 0;
            directive.width = static_cast<std::size_t>(width < 0 ? -std::int64_t{width} : std::int64_t{width});
        } else {
            directive.width = readCount();
        }
        if (next() == '.') {
            ++index;
            directive.hasPrecision = true;
            if (next() == '*') {
                ++index;
                int const precision = va_arg(arguments, int);
                directive.hasPrecision = precision >= 0;
                directive.precision = static_cast<std::size_t>(std::max(precision, 0));
            } else {
                directive.precision = readCount();
            }
        }
        directive.size = readSize(next, index);
        if (index < text.length) {
            Unit const conversion = text[index++];
            directive.conversion = conversion > 0 && conversion < 128 ? static_cast<char>(conversion) : '\0';
        }
        return directive;
    }

    template <typename Next>
    static Size readSize(Next const & next, std::size_t & index) noexcept {
        switch (next()) {
        case 'h':
            ++index;
            if (next() != 'h') {
                return Size::h;
            }
            ++index;
            return Size::hh;
        case 'l':
            ++index;
            if (next() != 'l') {
                return Size::l;
            }
            ++index;
            return Size::ll;
        case 'j':
            ++index;
            return Size::j;
        case 'z':
            ++index;
            return Size::z;
        case 't':
            ++index;
            return Size::t;
        case 'L':
            ++index;
            return Size::longDouble;
        default:
            return Size::none;
        }
    }

    /// False for a directive that is none.
    bool print(Directive const & directive) noexcept {
        switch (directive.conversion) {
        case 'd':
        case 'i':
            printSigned(directive);
            return true;
        case 'o':
        case 'u':
        case 'x':
        case 'X':
            printUnsigned(directive);
            return true;
        case 'c':
            printCharacter(directive);
            return true;
        case 's':
            printText(directive);
            return true;
        case 'p':
            printPointer(directive);
            return true;
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            if (directive.size == Size::longDouble) {
                printLongDouble(directive);
            } else {
                printFloat(directive, va_arg(arguments, double));
            }
            return true;
        case 'n':
            static_cast<void>(va_arg(arguments, void *));
            return true;
        case '%':
            fill('%', 1);
            return true;
        default:
            return false;
        }
    }

    /// Its digits need some 26 KB of stack, which other directives are spared.
    [[gnu::noinline]] void printLongDouble(Directive const & directive) noexcept {
        printFloat(directive, va_arg(arguments, long double));
    }

    void printSigned(Directive const & directive) noexcept {
        std::int64_t value = 0;
        switch (directive.size) {
        case Size::hh:
            value = static_cast<signed char>(va_arg(arguments, int));
            break;
        case Size::h:
            value = static_cast<short>(va_arg(arguments, int));
            break;
        case Size::none:
        case Size::l:
            // 32 bits, which are the low ones of whatever the caller's `long` put there.
            value = va_arg(arguments, std::int32_t);
            break;
        case Size::z:
        case Size::t:
            value = va_arg(arguments, std::intptr_t);
            break;
        case Size::ll:
        case Size::j:
        case Size::longDouble:
            value = va_arg(arguments, std::int64_t);
            break;
        }
        NumberText number;
        addSign(number, directive, value < 0);
        auto const magnitude = static_cast<std::uint64_t>(value);
        printInteger(number, directive, value < 0 ? 0 - magnitude : magnitude, 10);
    }

    void printUnsigned(Directive const & directive) noexcept {
        std::uint64_t value = 0;
        switch (directive.size) {
        case Size::hh:
            value = static_cast<unsigned char>(va_arg(arguments, unsigned));
            break;
        case Size::h:
            value = static_cast<unsigned short>(va_arg(arguments, unsigned));
            break;
        case Size::none:
        case Size::l:
            value = va_arg(arguments, std::uint32_t);
            break;
        case Size::z:
        case Size::t:
            value = va_arg(arguments, std::uintptr_t);
            break;
        case Size::ll:
        case Size::j:
        case Size::longDouble:
            value = va_arg(arguments, std::uint64_t);
            break;
        }
        NumberText number;
        if (directive.isAlternate && value != 0 && (directive.conversion == 'x' || directive.conversion == 'X')) {
            number.addPrefix('0');
            number.addPrefix(directive.conversion);
        }
        printInteger(number, directive, value, directive.conversion == 'u' ? 10 : directive.conversion == 'o' ? 8 : 16);
    }

    void printPointer(Directive const & directive) noexcept {
        auto const value = reinterpret_cast<std::uintptr_t>(va_arg(arguments, void *));
        NumberText number;
        if (value == 0) {
            number.takesZeros = false;
            number.add("(nil)", 5);
            putNumber(number, directive);
            return;
        }
        number.addPrefix('0');
        number.addPrefix('x');
        printInteger(number, directive, value, 16);
    }

    static void addSign(NumberText & number, Directive const & directive, bool isNegative) noexcept {
        if (isNegative || directive.hasPlus || directive.hasSpace) {
            number.addPrefix(isNegative ? '-' : directive.hasPlus ? '+' : ' ');
        }
    }

    void printInteger(NumberText & number, Directive const & directive, std::uint64_t value, int base) noexcept {
        char digits[24];
        std::size_t count = 0;
        if (value != 0 || !directive.hasPrecision || directive.precision != 0) {
            count = static_cast<std::size_t>(std::to_chars(digits, digits + sizeof(digits), value, base).ptr - digits);
        }
        if (directive.conversion == 'X') {
            raise(digits, digits + count);
        }
        std::size_t wanted = directive.hasPrecision ? directive.precision : 0;
        if (directive.isAlternate && directive.conversion == 'o' && (count == 0 || digits[0] != '0')) {
            wanted = std::max(wanted, count + 1);
        }
        number.addZeros(wanted > count ? wanted - count : 0);
        number.add(digits, count);
        number.takesZeros = !directive.hasPrecision;
        putNumber(number, directive);
    }

    static void raise(char * first, char * last) noexcept {
        std::transform(first, last, first, [](char character) {
            return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
        });
    }

    void putNumber(NumberText const & number, Directive const & directive) noexcept {
        std::size_t length = number.prefixLength;
        for (std::size_t index = 0; index < number.runCount; ++index) {
            length += number.runs[index].count;
        }
        std::size_t const padding = directive.width > length ? directive.width - length : 0;
        bool const padsZeros = directive.hasZeros && !directive.isLeft && number.takesZeros;
        if (!directive.isLeft && !padsZeros) {
            fill(' ', padding);
        }
        putConverted(number.prefix, number.prefixLength);
        if (padsZeros) {
            fill('0', padding);
        }
        for (std::size_t index = 0; index < number.runCount; ++index) {
            Run const & run = number.runs[index];
            if (run.characters == nullptr) {
                fill('0', run.count);
            } else {
                putConverted(run.characters, run.count);
            }
        }
        if (directive.isLeft) {
            fill(' ', padding);
        }
    }

    /// True where the directive's text or character is of 16-bit units.
    static bool takesWide(Directive const & directive) noexcept {
        return directive.size == Size::l || (sizeof(Unit) == 2 && directive.size != Size::h);
    }

    void printCharacter(Directive const & directive) noexcept {
        int const character = va_arg(arguments, int);
        if (takesWide(directive)) {
            auto const unit = static_cast<unsigned short int>(character);
            putText(directive, &unit, 1);
        } else {
            auto const byte = static_cast<char>(character);
            putText(directive, &byte, 1);
        }
    }

    void printText(Directive const & directive) noexcept {
        if (takesWide(directive)) {
            printTextFrom(directive, va_arg(arguments, unsigned short int const *));
        } else {
            printTextFrom(directive, va_arg(arguments, char const *));
        }
    }

    template <typename Source>
    void printTextFrom(Directive const & directive, Source const * text) noexcept {
        if (text == nullptr) {
            putText(directive, "(null)", directive.hasPrecision ? std::min<std::size_t>(directive.precision, 6) : 6);
            return;
        }
        std::size_t length = 0;
        if (directive.hasPrecision) {
            // The text need not be closed within the precision, so that no more of it may be read.
            while (length < directive.precision && text[length] != 0) {
                ++length;
            }
        } else {
            length = unitLength(text);
        }
        putText(directive, text, length);
    }

    template <typename Source>
    void putText(Directive const & directive, Source const * text, std::size_t length) noexcept {
        if constexpr (sizeof(Source) > sizeof(Unit)) {
            // Narrowing ends at the first unit that no byte can hold.
            length = static_cast<std::size_t>(std::find_if(text, text + length, [](Source unit) { return unit > 0xFF; })
                                              - text);
        }
        std::size_t const padding = directive.width > length ? directive.width - length : 0;
        if (!directive.isLeft) {
            fill(' ', padding);
        }
        if constexpr (std::is_same_v<Source, Unit>) {
            put({text, length});
        } else {
            putConverted(text, length);
        }
        if (directive.isLeft) {
            fill(' ', padding);
        }
    }

    template <typename Float>
    void printFloat(Directive const & directive, Float value) noexcept {
        NumberText number;
        bool const isUpper = directive.conversion >= 'A' && directive.conversion <= 'Z';
        addSign(number, directive, std::signbit(value));
        value = std::fabs(value);
        if (!std::isfinite(value)) {
            bool const isInfinite = std::isinf(value);
            number.add(isUpper ? (isInfinite ? "INF" : "NAN") : (isInfinite ? "inf" : "nan"), 3);
            number.takesZeros = false;
            putNumber(number, directive);
            return;
        }
        if (directive.conversion == 'a' || directive.conversion == 'A') {
            printHexadecimal(number, directive, value, isUpper);
            return;
        }
        std::size_t const precision = directive.hasPrecision ? directive.precision : 6;
        DecimalDigits<Float> digits(value);
        switch (directive.conversion) {
        case 'f':
        case 'F':
            digits.roundToPlaces(precision);
            addFixed(number, directive, digits.digits(), digits.count(), digits.point(), precision);
            putNumber(number, directive);
            return;
        case 'e':
        case 'E':
            digits.roundToCount(precision + 1);
            printScientific(number, directive, digits.digits(), digits.count(), digits.point() - 1, precision);
            return;
        default:
            break;
        }
        std::size_t const significant = std::max<std::size_t>(precision, 1);
        digits.roundToCount(significant);
        std::size_t count = digits.count();
        int const exponent = digits.point() - 1;
        std::size_t shown = significant;
        if (!directive.isAlternate) {
            while (count > 1 && digits.digits()[count - 1] == '0') {
                --count;
            }
            shown = count;
        }
        if (exponent < -4 || (exponent >= 0 && static_cast<std::size_t>(exponent) >= significant)) {
            printScientific(number, directive, digits.digits(), count, exponent, shown - 1);
            return;
        }
        auto const places = static_cast<std::int64_t>(shown) - 1 - exponent;
        addFixed(number, directive, digits.digits(), count, digits.point(),
                 static_cast<std::size_t>(std::max<std::int64_t>(places, 0)));
        putNumber(number, directive);
    }

    static void addFixed(NumberText & number, Directive const & directive, char const * digits, std::size_t count,
                         int point, std::size_t places) noexcept {
        std::size_t const integers = static_cast<std::size_t>(std::max(point, 0));
        std::size_t const known = std::min(count, integers);
        if (integers == 0) {
            number.addZeros(1);
        }
        number.add(digits, known);
        number.addZeros(integers - known);
        addFraction(number, directive, digits + known, count - known,
                    std::min(places, static_cast<std::size_t>(std::max(-point, 0))), places);
    }

    /// The point, `zeros` zeros, digits and more zeros, `places` in all.
    static void addFraction(NumberText & number, Directive const & directive, char const * digits, std::size_t count,
                            std::size_t zeros, std::size_t places) noexcept {
        if (places != 0 || directive.isAlternate) {
            number.add(".", 1);
        }
        std::size_t const known = std::min(count, places - zeros);
        number.addZeros(zeros);
        number.add(digits, known);
        number.addZeros(places - zeros - known);
    }

    void printScientific(NumberText & number, Directive const & directive, char const * digits, std::size_t count,
                         int exponent, std::size_t places) noexcept {
        number.add(digits, 1);
        addFraction(number, directive, digits + 1, count - 1, 0, places);
        char const letter = directive.conversion == 'E' || directive.conversion == 'G' ? 'E' : 'e';
        char text[8];
        number.add(text, writeExponent(text, letter, exponent, 2));
        putNumber(number, directive);
    }

    static std::size_t writeExponent(char * text, char letter, int exponent, int leastDigits) noexcept {
        char * end = text;
        *end++ = letter;
        *end++ = exponent < 0 ? '-' : '+';
        int const magnitude = std::abs(exponent);
        if (leastDigits == 2 && magnitude < 10) {
            *end++ = '0';
        }
        return static_cast<std::size_t>(std::to_chars(end, text + 8, magnitude).ptr - text);
    }

    template <typename Float>
    void printHexadecimal(NumberText & number, Directive const & directive, Float value, bool isUpper) noexcept {
        using Limits = std::numeric_limits<Float>;
        // A type that stores its leading one shows it in a full digit, as the C libraries do.
        constexpr int leadingBits = Limits::digits == 64 ? 4 : 1;
        constexpr int leastExponent = Limits::min_exponent - leadingBits;
        constexpr std::size_t digitCount = (Limits::digits - leadingBits + 3) / 4;
        char digits[digitCount + 1];
        int exponent = 0;
        Float rest = std::ldexp(std::frexp(value, &exponent), leadingBits);
        exponent -= value != 0 ? leadingBits : 0;
        if (value != 0 && exponent < leastExponent) {
            rest = std::ldexp(rest, exponent - leastExponent);
            exponent = leastExponent;
        }
        for (char & digit : digits) {
            int const next = static_cast<int>(rest);
            digit = static_cast<char>(next);
            rest = (rest - static_cast<Float>(next)) * 16;
        }
        std::size_t places = digitCount;
        if (!directive.hasPrecision) {
            while (places > 0 && digits[places] == 0) {
                --places;
            }
        } else if (directive.precision < digitCount) {
            places = directive.precision;
            roundHexadecimal(digits, digitCount + 1, places, exponent);
        }
        for (char & digit : digits) {
            digit = "0123456789abcdef"[static_cast<int>(digit)];
        }
        if (isUpper) {
            raise(digits, digits + digitCount + 1);
        }
        number.addPrefix('0');
        number.addPrefix(isUpper ? 'X' : 'x');
        number.add(digits, 1);
        addFraction(number, directive, digits + 1, places, 0, directive.hasPrecision ? directive.precision : places);
        char text[8];
        number.add(text, writeExponent(text, isUpper ? 'P' : 'p', exponent, 1));
        putNumber(number, directive);
    }

    /// Rounds to `places` digits behind the first one, ties to the even digit.
    static void roundHexadecimal(char * digits, std::size_t count, std::size_t places, int & exponent) noexcept {
        char * digit = digits + places;
        bool const hasRest = std::any_of(digit + 2, digits + count, [](char each) { return each != 0; });
        bool const goesUp = digit[1] > 8 || (digit[1] == 8 && (hasRest || *digit % 2 != 0));
        if (!goesUp) {
            return;
        }
        while (digit > digits && *digit == 15) {
            *digit-- = 0;
        }
        if (*digit == 15) {
            *digit = 1;
            exponent += 4;
        } else {
            ++*digit;
        }
    }

    Unit * target;
    std::size_t used = 0;
    std::size_t room;
    std::va_list arguments;
};

} // namespace

template <typename Unit>
std::size_t formatText(Unit * target, std::size_t capacity, Unit const * pattern, std::va_list arguments) noexcept {
    TextView<Unit> const text{target, Formatter<Unit>(target, capacity, arguments).run(pattern)};
    return std::min(findUnit(text, 0), text.length);
}

template std::size_t formatText<unsigned short int>(unsigned short int *, std::size_t, unsigned short int const *,
                                                    std::va_list) noexcept;
template std::size_t formatText<char>(char *, std::size_t, char const *, std::va_list) noexcept;

} // namespace morvane
