#include <morvane/encodings/code_page.h>

#include <algorithm>
#include <cstddef>

namespace morvane {

namespace {

constexpr std::size_t nameUnits = 16;
constexpr std::size_t byteValues = 256;
/// Below this byte the controls and ASCII stand, the same in every page.
constexpr std::size_t firstUpper = 0xA0;
constexpr std::size_t upperBytes = byteValues - firstUpper;

/// A code page as it stands in memory: the published record, and behind it what makes the conversions fast.
template <std::size_t Entries>
struct CodePageRecord {
    unsigned short int name[nameUnits]{};
    CodePageEntry entries[Entries]{};
    unsigned short int units[byteValues]{};
    alignas(64) unsigned char upperLow[byteValues / 2]{};
    alignas(64) unsigned char upperHigh[byteValues / 2]{};
    unsigned short int search[upperBytes]{};
    unsigned char stretchFirst[upperBytes]{};
    unsigned char stretchLast[upperBytes]{};
    bool isIdentity = true;
};

/// Fills what the search for a unit goes through: of the bytes with one unit the first alone.
template <std::size_t Entries>
consteval void fillSearch(CodePageRecord<Entries> & record) {
    for (std::size_t entry = 0; entry < Entries; ++entry) {
        CodePageEntry const & own = record.entries[entry];
        bool isFirst = own.code >= firstUpper;
        for (std::size_t before = 0; before < entry; ++before) {
            isFirst = isFirst && record.entries[before].unicode != own.unicode;
        }
        if (isFirst) {
            record.search[own.code - firstUpper] = own.unicode;
        }
    }
    for (std::size_t first = 0, last = 0; first < upperBytes; first = ++last) {
        while (last + 1 < upperBytes && record.search[last] != 0
               && record.search[last + 1] == record.search[last] + 1) {
            ++last;
        }
        std::fill_n(record.stretchFirst + first, last - first + 1, static_cast<unsigned char>(first));
        std::fill_n(record.stretchLast + first, last - first + 1, static_cast<unsigned char>(last));
    }
}

/// Makes a page from what the bytes 0xA0 to 0xFF stand for: "-" is an undefined position, which stands for its own
/// value, and a blank one without an entry.
template <std::size_t Entries>
consteval CodePageRecord<Entries> makeRecord(char16_t const (&name)[nameUnits],
                                             char16_t const (&upper)[upperBytes + 1]) {
    CodePageRecord<Entries> record;
    std::copy_n(name, nameUnits, record.name);
    std::size_t entry = 0;
    for (std::size_t byte = 0; byte < byteValues; ++byte) {
        auto const code = static_cast<unsigned short int>(byte);
        char16_t const published = byte < firstUpper ? u'-' : upper[byte - firstUpper];
        bool const isDefined = (byte >= 0x20 && byte < 0x7F) || published > u'-';
        auto const unit = published > u'-' ? static_cast<unsigned short int>(published) : code;
        record.units[byte] = unit;
        record.isIdentity = record.isIdentity && unit == byte;
        if (byte >= byteValues / 2) {
            record.upperLow[byte - byteValues / 2] = static_cast<unsigned char>(unit & 0xFF);
            record.upperHigh[byte - byteValues / 2] = static_cast<unsigned char>(unit >> 8);
        }
        if (published != u' ') {
            record.entries[entry++] = {code, unit, static_cast<unsigned short int>(isDefined ? 1 : 0)};
        }
    }
    // Too few or too many entries fail the compilation here or above.
    if (entry != Entries) {
        throw entry;
    }
    fillSearch(record);
    return record;
}

// clang-format off

constexpr auto latin1 = makeRecord<256>(u"ISO-8859-1     ",
    u"\u00A0\u00A1\u00A2\u00A3\u00A4\u00A5\u00A6\u00A7\u00A8\u00A9\u00AA\u00AB\u00AC\u00AD\u00AE\u00AF"
    u"\u00B0\u00B1\u00B2\u00B3\u00B4\u00B5\u00B6\u00B7\u00B8\u00B9\u00BA\u00BB\u00BC\u00BD\u00BE\u00BF"
    u"\u00C0\u00C1\u00C2\u00C3\u00C4\u00C5\u00C6\u00C7\u00C8\u00C9\u00CA\u00CB\u00CC\u00CD\u00CE\u00CF"
    u"\u00D0\u00D1\u00D2\u00D3\u00D4\u00D5\u00D6\u00D7\u00D8\u00D9\u00DA\u00DB\u00DC\u00DD\u00DE\u00DF"
    u"\u00E0\u00E1\u00E2\u00E3\u00E4\u00E5\u00E6\u00E7\u00E8\u00E9\u00EA\u00EB\u00EC\u00ED\u00EE\u00EF"
    u"\u00F0\u00F1\u00F2\u00F3\u00F4\u00F5\u00F6\u00F7\u00F8\u00F9\u00FA\u00FB\u00FC\u00FD\u00FE\u00FF");

constexpr auto latin2 = makeRecord<256>(u"ISO-8859-2     ",
    u"\u00A0\u0104\u02D8\u0141\u00A4\u013D\u015A\u00A7\u00A8\u0160\u015E\u0164\u0179\u00AD\u017D\u017B"
    u"\u00B0\u0105\u02DB\u0142\u00B4\u013E\u015B\u02C7\u00B8\u0161\u015F\u0165\u017A\u02DD\u017E\u017C"
    u"\u0154\u00C1\u00C2\u0102\u00C4\u0139\u0106\u00C7\u010C\u00C9\u0118\u00CB\u011A\u00CD\u00CE\u010E"
    u"\u0110\u0143\u0147\u00D3\u00D4\u0150\u00D6\u00D7\u0158\u016E\u00DA\u0170\u00DC\u00DD\u0162\u00DF"
    u"\u0155\u00E1\u00E2\u0103\u00E4\u013A\u0107\u00E7\u010D\u00E9\u0119\u00EB\u011B\u00ED\u00EE\u010F"
    u"\u0111\u0144\u0148\u00F3\u00F4\u0151\u00F6\u00F7\u0159\u016F\u00FA\u0171\u00FC\u00FD\u0163\u02D9");

constexpr auto latin3 = makeRecord<256>(u"ISO-8859-3     ",
    u"\u00A0\u0126\u02D8\u00A3\u00A4-\u0124\u00A7\u00A8\u0130\u015E\u011E\u0134\u00AD-\u017B"
    u"\u00B0\u0127\u00B2\u00B3\u00B4\u00B5\u0125\u00B7\u00B8\u0131\u015F\u011F\u0135\u00BD-\u017C"
    u"\u00C0\u00C1\u00C2-\u00C4\u010A\u0108\u00C7\u00C8\u00C9\u00CA\u00CB\u00CC\u00CD\u00CE\u00CF"
    u"-\u00D1\u00D2\u00D3\u00D4\u0120\u00D6\u00D7\u011C\u00D9\u00DA\u00DB\u00DC\u016C\u015C\u00DF"
    u"\u00E0\u00E1\u00E2-\u00E4\u010B\u0109\u00E7\u00E8\u00E9\u00EA\u00EB\u00EC\u00ED\u00EE\u00EF"
    u"-\u00F1\u00F2\u00F3\u00F4\u0121\u00F6\u00F7\u011D\u00F9\u00FA\u00FB\u00FC\u016D\u015D\u02D9");

constexpr auto latin4 = makeRecord<256>(u"ISO-8859-4     ",
    u"\u00A0\u0104\u0138\u0156\u00A4\u0128\u013B\u00A7\u00A8\u0160\u0112\u0122\u0166\u00AD\u017D\u00AF"
    u"\u00B0\u0105\u02DB\u0157\u00B4\u0129\u013C\u02C7\u00B8\u0161\u0113\u0123\u0167\u014A\u017E\u014B"
    u"\u0100\u00C1\u00C2\u00C3\u00C4\u00C5\u00C6\u012E\u010C\u00C9\u0118\u00CB\u0116\u00CD\u00CE\u012A"
    u"\u0110\u0145\u014C\u0136\u00D4\u00D5\u00D6\u00D7\u00D8\u0172\u00DA\u00DB\u00DC\u0168\u016A\u00DF"
    u"\u0101\u00E1\u00E2\u00E3\u00E4\u00E5\u00E6\u012F\u010D\u00E9\u0119\u00EB\u0117\u00ED\u00EE\u012B"
    u"\u0111\u0146\u014D\u0137\u00F4\u00F5\u00F6\u00F7\u00F8\u0173\u00FA\u00FB\u00FC\u0169\u016B\u02D9");

constexpr auto cyrillic = makeRecord<256>(u"ISO-8859-5     ",
    u"\u00A0\u0401\u0402\u0403\u0404\u0405\u0406\u0407\u0408\u0409\u040A\u040B\u040C\u00AD\u040E\u040F"
    u"\u0410\u0411\u0412\u0413\u0414\u0415\u0416\u0417\u0418\u0419\u041A\u041B\u041C\u041D\u041E\u041F"
    u"\u0420\u0421\u0422\u0423\u0424\u0425\u0426\u0427\u0428\u0429\u042A\u042B\u042C\u042D\u042E\u042F"
    u"\u0430\u0431\u0432\u0433\u0434\u0435\u0436\u0437\u0438\u0439\u043A\u043B\u043C\u043D\u043E\u043F"
    u"\u0440\u0441\u0442\u0443\u0444\u0445\u0446\u0447\u0448\u0449\u044A\u044B\u044C\u044D\u044E\u044F"
    u"\u2116\u0451\u0452\u0453\u0454\u0455\u0456\u0457\u0458\u0459\u045A\u045B\u045C\u00A7\u045E\u045F");

constexpr auto arabic = makeRecord<256>(u"ISO-8859-6     ",
    u"\u00A0---\u00A4-------\u060C\u00AD--"
    u"-----------\u061B---\u061F"
    u"-\u0621\u0622\u0623\u0624\u0625\u0626\u0627\u0628\u0629\u062A\u062B\u062C\u062D\u062E\u062F"
    u"\u0630\u0631\u0632\u0633\u0634\u0635\u0636\u0637\u0638\u0639\u063A-----"
    u"\u0640\u0641\u0642\u0643\u0644\u0645\u0646\u0647\u0648\u0649\u064A\u064B\u064C\u064D\u064E\u064F"
    u"\u0650\u0651\u0652-------------");

// The edition of 1987, without entries for five positions.
constexpr auto greek = makeRecord<251>(u"ISO-8859-7     ",
    u"\u00A0\u02BD\u02BC\u00A3  \u00A6\u00A7\u00A8\u00A9 \u00AB\u00AC\u00AD \u2015"
    u"\u00B0\u00B1\u00B2\u00B3\u0384\u0385\u0386\u00B7\u0388\u0389\u038A\u00BB\u038C\u00BD\u038E\u038F"
    u"\u0390\u0391\u0392\u0393\u0394\u0395\u0396\u0397\u0398\u0399\u039A\u039B\u039C\u039D\u039E\u039F"
    u"\u03A0\u03A1 \u03A3\u03A4\u03A5\u03A6\u03A7\u03A8\u03A9\u03AA\u03AB\u03AC\u03AD\u03AE\u03AF"
    u"\u03B0\u03B1\u03B2\u03B3\u03B4\u03B5\u03B6\u03B7\u03B8\u03B9\u03BA\u03BB\u03BC\u03BD\u03BE\u03BF"
    u"\u03C0\u03C1\u03C2\u03C3\u03C4\u03C5\u03C6\u03C7\u03C8\u03C9\u03CA\u03CB\u03CC\u03CD\u03CE-");

constexpr auto hebrew = makeRecord<256>(u"ISO-8859-8     ",
    u"\u00A0-\u00A2\u00A3\u00A4\u00A5\u00A6\u00A7\u00A8\u00A9\u00D7\u00AB\u00AC\u00AD\u00AE\u203E"
    u"\u00B0\u00B1\u00B2\u00B3\u00B4\u00B5\u00B6\u00B7\u00B8\u00B9\u00F7\u00BB\u00BC\u00BD\u00BE-"
    u"----------------"
    u"---------------\u2017"
    u"\u05D0\u05D1\u05D2\u05D3\u05D4\u05D5\u05D6\u05D7\u05D8\u05D9\u05DA\u05DB\u05DC\u05DD\u05DE\u05DF"
    u"\u05E0\u05E1\u05E2\u05E3\u05E4\u05E5\u05E6\u05E7\u05E8\u05E9\u05EA-----");

constexpr auto latin5 = makeRecord<256>(u"ISO-8859-9     ",
    u"\u00A0\u00A1\u00A2\u00A3\u00A4\u00A5\u00A6\u00A7\u00A8\u00A9\u00AA\u00AB\u00AC\u00AD\u00AE\u00AF"
    u"\u00B0\u00B1\u00B2\u00B3\u00B4\u00B5\u00B6\u00B7\u00B8\u00B9\u00BA\u00BB\u00BC\u00BD\u00BE\u00BF"
    u"\u00C0\u00C1\u00C2\u00C3\u00C4\u00C5\u00C6\u00C7\u00C8\u00C9\u00CA\u00CB\u00CC\u00CD\u00CE\u00CF"
    u"\u011E\u00D1\u00D2\u00D3\u00D4\u00D5\u00D6\u00D7\u00D8\u00D9\u00DA\u00DB\u00DC\u0130\u015E\u00DF"
    u"\u00E0\u00E1\u00E2\u00E3\u00E4\u00E5\u00E6\u00E7\u00E8\u00E9\u00EA\u00EB\u00EC\u00ED\u00EE\u00EF"
    u"\u011F\u00F1\u00F2\u00F3\u00F4\u00F5\u00F6\u00F7\u00F8\u00F9\u00FA\u00FB\u00FC\u0131\u015F\u00FF");

constexpr auto latin9 = makeRecord<256>(u"ISO-8859-15    ",
    u"\u00A0\u00A1\u00A2\u00A3\u20AC\u00A5\u0160\u00A7\u0161\u00A9\u00AA\u00AB\u00AC\u00AD\u00AE\u00AF"
    u"\u00B0\u00B1\u00B2\u00B3\u017D\u00B5\u00B6\u00B7\u017E\u00B9\u00BA\u00BB\u0152\u0153\u0178\u00BF"
    u"\u00C0\u00C1\u00C2\u00C3\u00C4\u00C5\u00C6\u00C7\u00C8\u00C9\u00CA\u00CB\u00CC\u00CD\u00CE\u00CF"
    u"\u00D0\u00D1\u00D2\u00D3\u00D4\u00D5\u00D6\u00D7\u00D8\u00D9\u00DA\u00DB\u00DC\u00DD\u00DE\u00DF"
    u"\u00E0\u00E1\u00E2\u00E3\u00E4\u00E5\u00E6\u00E7\u00E8\u00E9\u00EA\u00EB\u00EC\u00ED\u00EE\u00EF"
    u"\u00F0\u00F1\u00F2\u00F3\u00F4\u00F5\u00F6\u00F7\u00F8\u00F9\u00FA\u00FB\u00FC\u00FD\u00FE\u00FF");

// clang-format on

template <std::size_t Entries>
constexpr CodePage pageOf(CodePageRecord<Entries> const & record) {
    return {record.name,        record.entries,   Entries,       record.units,
            record.upperLow,    record.upperHigh, record.search, record.stretchFirst,
            record.stretchLast, record.isIdentity};
}

constexpr std::int32_t firstFormat = 16;
constexpr std::int32_t latin9Format = 30;

/// The pages of formats 16 to 24, and behind them that of format 30.
constexpr CodePage pages[] = {
    pageOf(latin1), pageOf(latin2), pageOf(latin3), pageOf(latin4), pageOf(cyrillic),
    pageOf(arabic), pageOf(greek),  pageOf(hebrew), pageOf(latin5), pageOf(latin9),
};

} // namespace

CodePage const * findCodePage(std::int32_t format) noexcept {
    if (format == latin9Format) {
        return &pages[latin9Format - 21];
    }
    return format >= firstFormat && format < firstFormat + 9 ? &pages[format - firstFormat] : nullptr;
}

} // namespace morvane
