// UTF-8 and code pages, both ways, beside ICU, iconv and Qt.
#include "race.h"

#include <QByteArray>
#include <QString>
#include <QTextCodec>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iconv.h>
#include <memory>
#include <morvane/core/literals.h>
#include <morvane/encodings/string_utility.h>
#include <morvane/strings/data_string.h>
#include <morvane/strings/wide_string.h>
#include <string>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#include <vector>

namespace {

using Unit = unsigned short int;

/// Memory that nobody clears, as every contestant with a buffer of the caller's takes it.
template <typename Value>
std::unique_ptr<Value[]> room(std::size_t count) {
    return std::unique_ptr<Value[]>(new Value[count]);
}

/// A text of about `bytes` bytes of UTF-8 with some of the blanks and signs of real text.
std::string textOf(char const * sample, std::size_t bytes) {
    std::string text;
    while (text.size() <= bytes) {
        text += sample;
    }
    // Cut where a character begins.
    std::size_t end = bytes;
    while ((static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
        --end;
    }
    text.resize(end);
    return text;
}

std::vector<Unit> unitsOf(std::string const & text) {
    QString const wide = QString::fromUtf8(text.data(), static_cast<int>(text.size()));
    std::vector<Unit> units(static_cast<std::size_t>(wide.size()) + 1);
    std::memcpy(units.data(), wide.utf16(), units.size() * sizeof(Unit));
    return units;
}

std::size_t runIconv(iconv_t converter, char const * source, std::size_t bytes, char * target, std::size_t room) {
    char * input = const_cast<char *>(source);
    char * output = target;
    std::size_t left = room;
    if (iconv(converter, &input, &bytes, &output, &left) == static_cast<std::size_t>(-1)) {
        std::abort();
    }
    return room - left;
}

void raceUtf8(race::Race & contest, std::string const & name, std::string const & text) {
    std::vector<Unit> const units = unitsOf(text);
    std::size_t const length = units.size() - 1;
    int const repeat = text.size() < 1000 ? 100 : 1;
    double const work = static_cast<double>(text.size()) * repeat;

    // What receives the text of a failure is kept, as the converters are.
    _WideString message;
    iconv_t const fromUtf8 = iconv_open("UTF-16LE", "UTF-8");
    iconv_t const toUtf8 = iconv_open("UTF-8", "UTF-16LE");
    auto times = [repeat](auto work_) {
        return [repeat, work_] {
            for (int time = 0; time < repeat; ++time) {
                work_();
            }
        };
    };

    contest.row("UTF-8 to units", name, work,
                {{"Morvane", times([&] {
                      std::int32_t count = 0;
                      _StringUtility::convertUTF8StringToWideString(text.c_str(), nullptr, message, count);
                      auto target = room<Unit>(static_cast<std::size_t>(count) + 1);
                      _StringUtility::convertUTF8StringToWideString(text.c_str(), target.get(), message, count);
                      race::keep(target[0]);
                  })},
                 {"ICU", times([&] {
                      UErrorCode error = U_ZERO_ERROR;
                      std::int32_t count = 0;
                      u_strFromUTF8(nullptr, 0, &count, text.data(), static_cast<std::int32_t>(text.size()), &error);
                      error = U_ZERO_ERROR;
                      auto target = room<UChar>(static_cast<std::size_t>(count) + 1);
                      u_strFromUTF8(target.get(), count + 1, &count, text.data(),
                                    static_cast<std::int32_t>(text.size()), &error);
                      race::keep(target[0]);
                  })},
                 {"iconv", times([&] {
                      auto target = room<char>(text.size() * 2);
                      race::keep(runIconv(fromUtf8, text.data(), text.size(), target.get(), text.size() * 2));
                      race::keep(target[0]);
                  })},
                 {"Qt", times([&] {
                      QString const wide = QString::fromUtf8(text.data(), static_cast<int>(text.size()));
                      race::keep(wide.utf16()[0]);
                  })}});

    contest.row("units to UTF-8", name, work,
                {{"Morvane", times([&] {
                      std::int32_t count = 0;
                      _StringUtility::convertWideStringToUTF8String(units.data(), nullptr, count);
                      auto target = room<char>(static_cast<std::size_t>(count) + 1);
                      _StringUtility::convertWideStringToUTF8String(units.data(), target.get(), count);
                      race::keep(target[0]);
                  })},
                 {"ICU", times([&] {
                      UErrorCode error = U_ZERO_ERROR;
                      std::int32_t count = 0;
                      auto const * source = reinterpret_cast<UChar const *>(units.data());
                      u_strToUTF8(nullptr, 0, &count, source, static_cast<std::int32_t>(length), &error);
                      error = U_ZERO_ERROR;
                      auto target = room<char>(static_cast<std::size_t>(count) + 1);
                      u_strToUTF8(target.get(), count + 1, &count, source, static_cast<std::int32_t>(length), &error);
                      race::keep(target[0]);
                  })},
                 {"iconv", times([&] {
                      auto target = room<char>(length * 3);
                      race::keep(runIconv(toUtf8, reinterpret_cast<char const *>(units.data()), length * 2,
                                          target.get(), length * 3));
                      race::keep(target[0]);
                  })},
                 {"Qt", times([&] {
                      QByteArray const bytes =
                          QString::fromRawData(reinterpret_cast<QChar const *>(units.data()), static_cast<int>(length))
                              .toUtf8();
                      race::keep(bytes.data()[0]);
                  })}});
    iconv_close(fromUtf8);
    iconv_close(toUtf8);
}

struct Page {
    char const * name;
    _StringUtility::StringFileFormat format;
    char const * sample;
};

void racePage(race::Race & contest, Page const & page, std::size_t bytes) {
    std::vector<Unit> const units = unitsOf(textOf(page.sample, bytes * 2));
    std::size_t const length = units.size() - 1;
    _DataString encoded;
    if (!_StringUtility::convertWideStringToDataString(units.data(), encoded, page.format)) {
        std::abort();
    }
    std::string const text(encoded.get_data(), encoded.get_length());
    iconv_t const decode = iconv_open("UTF-16LE", page.name);
    iconv_t const encode = iconv_open(page.name, "UTF-16LE");
    UErrorCode error = U_ZERO_ERROR;
    UConverter * converter = ucnv_open(page.name, &error);
    QTextCodec * codec = QTextCodec::codecForName(page.name);
    if (decode == reinterpret_cast<iconv_t>(-1) || U_FAILURE(error) || codec == nullptr) {
        std::abort();
    }
    // The plain loop: one table of 256 units, and back a search of it from the front.
    std::vector<Unit> table(256);
    for (int byte = 1; byte < 256; ++byte) {
        char const source[2]{static_cast<char>(byte), 0};
        _WideString unit;
        _StringUtility::convertDataStringToWideString(source, unit, page.format);
        table[static_cast<std::size_t>(byte)] = unit.getAt(0);
    }
    double const work = static_cast<double>(length);

    contest.row("code page to units", page.name, work,
                {{"Morvane",
                  [&] {
                      _WideString wide;
                      _StringUtility::convertDataStringToWideString(text.c_str(), wide, page.format);
                      race::keep(wide.get_data()[0]);
                  }},
                 {"ICU",
                  [&] {
                      UErrorCode failure = U_ZERO_ERROR;
                      auto target = room<UChar>(length + 1);
                      ucnv_toUChars(converter, target.get(), static_cast<std::int32_t>(length + 1), text.data(),
                                    static_cast<std::int32_t>(length), &failure);
                      race::keep(target[0]);
                  }},
                 {"iconv",
                  [&] {
                      auto target = room<char>(length * 2);
                      race::keep(runIconv(decode, text.data(), length, target.get(), length * 2));
                      race::keep(target[0]);
                  }},
                 {"Qt",
                  [&] {
                      QString const wide = codec->toUnicode(text.data(), static_cast<int>(length));
                      race::keep(wide.utf16()[0]);
                  }},
                 {"plain loop", [&] {
                      auto target = room<Unit>(length + 1);
                      for (std::size_t index = 0; index < length; ++index) {
                          target[index] = table[static_cast<unsigned char>(text[index])];
                      }
                      target[length] = 0;
                      race::keep(target[0]);
                  }}});

    contest.row("units to code page", page.name, work,
                {{"Morvane",
                  [&] {
                      _DataString bytes_;
                      _StringUtility::convertWideStringToDataString(units.data(), bytes_, page.format);
                      race::keep(bytes_.get_data()[0]);
                  }},
                 {"ICU",
                  [&] {
                      UErrorCode failure = U_ZERO_ERROR;
                      auto target = room<char>(length + 1);
                      ucnv_fromUChars(converter, target.get(), static_cast<std::int32_t>(length + 1),
                                      reinterpret_cast<UChar const *>(units.data()), static_cast<std::int32_t>(length),
                                      &failure);
                      race::keep(target[0]);
                  }},
                 {"iconv",
                  [&] {
                      auto target = room<char>(length);
                      race::keep(runIconv(encode, reinterpret_cast<char const *>(units.data()), length * 2,
                                          target.get(), length));
                      race::keep(target[0]);
                  }},
                 {"Qt",
                  [&] {
                      QByteArray const bytes_ =
                          codec->fromUnicode(reinterpret_cast<QChar const *>(units.data()), static_cast<int>(length));
                      race::keep(bytes_.data()[0]);
                  }},
                 {"plain loop", [&] {
                      auto target = room<char>(length + 1);
                      for (std::size_t index = 0; index < length; ++index) {
                          std::size_t entry = 0;
                          while (entry < 256 && table[entry] != units[index]) {
                              ++entry;
                          }
                          target[index] = entry < 256 ? static_cast<char>(entry) : '?';
                      }
                      target[length] = 0;
                      race::keep(target[0]);
                  }}});
    iconv_close(decode);
    iconv_close(encode);
    ucnv_close(converter);
}

} // namespace

int main(int count, char ** arguments) {
    race::Race contest(count, arguments);
    struct Sample {
        char const * name;
        char const * text;
    };
    Sample const samples[]{
        {"ASCII", "The quick brown fox jumps over the lazy dog, and then it rests by the river. "},
        {"Latin", "Dès Noël, où un zéphyr haï me vêt de glaçons würmiens, je dîne d’exquis rôtis. "},
        {"Cyrillic", "Съешь ещё этих мягких французских булок, да выпей же чаю. "},
        {"Greek", "Ξεσκεπάζω την ψυχοφθόρα βδελυγμία, είπε ο γέρος. "},
        {"CJK", "敏捷的棕色狐狸跳过了懒狗，然后在河边的树下睡着了。"},
    };
    for (Sample const & sample : samples) {
        raceUtf8(contest, std::string(sample.name) + ", 1 MB", textOf(sample.text, 1'000'000));
        raceUtf8(contest, std::string(sample.name) + ", 64 bytes", textOf(sample.text, 64));
    }
    Page const pages[]{
        {"ISO-8859-1", _StringUtility::formatISO8859_1,
         "Portez ce vieux whisky au juge blond qui fume sur son \u00EEle int\u00E9rieure. "},
        {"ISO-8859-5", _StringUtility::formatISO8859_5, "Съешь ещё этих мягких французских булок, да выпей же чаю. "},
        {"ISO-8859-7", _StringUtility::formatISO8859_7, "Ξεσκεπάζω την ψυχοφθόρα βδελυγμία, είπε ο γέρος. "},
        {"ISO-8859-15", _StringUtility::formatISO8859_15, "Le cœur déçu mais l'âme plutôt naïve paya 20 € à Noël. "},
    };
    for (Page const & page : pages) {
        racePage(contest, page, contest.quick() ? 100'000 : 1'000'000);
    }
    return 0;
}
