// 16-bit text beside std::u16string, QString and UnicodeString.
#include "race.h"

#include <QString>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <morvane/core/literals.h>
#include <morvane/strings/wide_string.h>
#include <string>
#include <unicode/unistr.h>
#include <unicode/ustdio.h>
#include <unicode/ustring.h>
#include <vector>

using namespace morvane::literals;

namespace {

using Unit = unsigned short int;

char16_t const * as16(Unit const * text) {
    return reinterpret_cast<char16_t const *>(text);
}

/// A text of one megabyte in which `needle` stands once in about two hundred units, and `end` at its end alone.
std::vector<Unit> longText() {
    std::u16string text;
    while (text.size() < 500'000) {
        text += u"The quick brown fox jumps over the lazy dog, and then it rests by the river for a while, until the "
                u"evening "
                u"comes and it gets up again to look for something to eat; so it goes, day after day, and the needle "
                u"lies still. ";
    }
    text += u"\u20AC the very end";
    std::vector<Unit> units(text.begin(), text.end());
    units.push_back(0);
    return units;
}

template <typename Work>
std::function<void()> times(int count, Work work) {
    return [count, work] {
        for (int time = 0; time < count; ++time) {
            work();
        }
    };
}

void replaceAll(std::u16string & text, std::u16string const & from, std::u16string const & to) {
    std::u16string result;
    result.reserve(text.size());
    std::size_t begin = 0;
    for (std::size_t found = text.find(from); found != std::u16string::npos; found = text.find(from, begin)) {
        result.append(text, begin, found - begin).append(to);
        begin = found + from.size();
    }
    result.append(text, begin);
    text.swap(result);
}

char16_t folded(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
}

} // namespace

int main(int count, char ** arguments) {
    race::Race contest(count, arguments);
    std::string const group = "16-bit text";

    Unit const * const shortUnits = u"attribute"_w;
    Unit const * const middleUnits = u"A text of a middling length, as a paragraph of a document would have it."_w;
    for (auto const & [name, units] :
         {std::pair{"make and destroy, 9 units", shortUnits}, std::pair{"make and destroy, 72 units", middleUnits}}) {
        contest.row(
            group, name, 1000,
            {{"Morvane", times(1000, [units = units] { race::keep(_WideString(units).get_data()); })},
             {"std::u16string", times(1000, [units = units] { race::keep(std::u16string(as16(units)).data()); })},
             {"QString", times(1000, [units = units] { race::keep(QString::fromUtf16(units).constData()); })},
             {"UnicodeString",
              times(1000, [units = units] { race::keep(icu::UnicodeString(as16(units)).getBuffer()); })}});
    }

    _WideString const middle(middleUnits);
    std::u16string const middleStandard(as16(middleUnits));
    QString const middleQt = QString::fromUtf16(middleUnits);
    icu::UnicodeString const middleIcu(as16(middleUnits));
    contest.row(group, "copy and destroy, 72 units", 1000,
                {{"Morvane", times(1000, [&] { race::keep(_WideString(middle).get_data()); })},
                 {"std::u16string", times(1000, [&] { race::keep(std::u16string(middleStandard).data()); })},
                 {"QString", times(1000, [&] { race::keep(QString(middleQt).constData()); })},
                 {"UnicodeString", times(1000, [&] { race::keep(icu::UnicodeString(middleIcu).getBuffer()); })}});

    contest.row(group, "append a text 100 times", 100,
                {{"Morvane",
                  [&] {
                      _WideString text;
                      for (int i = 0; i < 100; ++i) {
                          text += middle;
                      }
                      race::keep(text.get_data());
                  }},
                 {"std::u16string",
                  [&] {
                      std::u16string text;
                      for (int i = 0; i < 100; ++i) {
                          text += middleStandard;
                      }
                      race::keep(text.data());
                  }},
                 {"QString",
                  [&] {
                      QString text;
                      for (int i = 0; i < 100; ++i) {
                          text += middleQt;
                      }
                      race::keep(text.constData());
                  }},
                 {"UnicodeString", [&] {
                      icu::UnicodeString text;
                      for (int i = 0; i < 100; ++i) {
                          text += middleIcu;
                      }
                      race::keep(text.getBuffer());
                  }}});

    std::vector<Unit> const units = longText();
    _WideString const text(units.data());
    std::u16string const standard(as16(units.data()));
    QString const qt = QString::fromUtf16(units.data());
    icu::UnicodeString const icuText(as16(units.data()));
    double const bytes = static_cast<double>(units.size()) * 2;

    contest.row(group, "find a unit in 1 MB", bytes,
                {{"Morvane", [&] { race::keep(text.find(static_cast<Unit>(0x20AC))); }},
                 {"std::u16string", [&] { race::keep(standard.find(u'\u20AC')); }},
                 {"QString", [&] { race::keep(qt.indexOf(QChar(0x20AC))); }},
                 {"UnicodeString", [&] { race::keep(icuText.indexOf(static_cast<char16_t>(0x20AC))); }}});

    icu::UnicodeString const icuEnd(u"the very end");
    QString const qtEnd = QString::fromUtf16(u"the very end");
    contest.row(group, "find a text in 1 MB", bytes,
                {{"Morvane", [&] { race::keep(text.find(u"the very end"_w)); }},
                 {"std::u16string", [&] { race::keep(standard.find(u"the very end")); }},
                 {"QString", [&] { race::keep(qt.indexOf(qtEnd)); }},
                 {"UnicodeString", [&] { race::keep(icuText.indexOf(icuEnd)); }}});

    std::vector<Unit> from{'n', 'e', 'e', 'd', 'l', 'e', 0};
    std::vector<Unit> to{'h', 'a', 'y', 's', 't', 'a', 'c', 'k', 0};
    icu::UnicodeString const icuFrom(u"needle");
    icu::UnicodeString const icuTo(u"haystack");
    QString const qtFrom = QString::fromUtf16(u"needle");
    QString const qtTo = QString::fromUtf16(u"haystack");
    contest.row(group, "replace all in 1 MB", bytes,
                {{"Morvane",
                  [&] {
                      _WideString work(text);
                      race::keep(work.replace(from.data(), to.data()));
                  }},
                 {"std::u16string",
                  [&] {
                      std::u16string work(standard);
                      replaceAll(work, u"needle", u"haystack");
                      race::keep(work.data());
                  }},
                 {"QString",
                  [&] {
                      QString work(qt);
                      work.replace(qtFrom, qtTo);
                      race::keep(work.constData());
                  }},
                 {"UnicodeString", [&] {
                      icu::UnicodeString work(icuText);
                      work.findAndReplace(icuFrom, icuTo);
                      race::keep(work.getBuffer());
                  }}});

    _WideString upper(text);
    upper.makeUpper();
    std::u16string const upperStandard(as16(upper.get_data()));
    QString const upperQt = QString::fromUtf16(upper.get_data());
    icu::UnicodeString const upperIcu(as16(upper.get_data()));
    contest.row(group, "compare without case, 1 MB", bytes,
                {{"Morvane", [&] { race::keep(text.compareNoCase(upper)); }},
                 {"std::u16string",
                  [&] {
                      race::keep(std::equal(standard.begin(), standard.end(), upperStandard.begin(),
                                            upperStandard.end(),
                                            [](char16_t a, char16_t b) { return folded(a) == folded(b); }));
                  }},
                 {"QString", [&] { race::keep(qt.compare(upperQt, Qt::CaseInsensitive)); }},
                 {"UnicodeString", [&] { race::keep(icuText.caseCompare(upperIcu, 0)); }}});

    contest.row(
        group, "substrings of 24 units", 1000,
        {{"Morvane", times(1000, [&] { race::keep(text.mid(1000, 24).get_data()); })},
         {"std::u16string", times(1000, [&] { race::keep(standard.substr(1000, 24).data()); })},
         {"QString", times(1000, [&] { race::keep(qt.mid(1000, 24).constData()); })},
         {"UnicodeString", times(1000, [&] { race::keep(icu::UnicodeString(icuText, 1000, 24).getBuffer()); })}});

    std::u16string const wordStandard = u"records";
    QString const wordQt = QString::fromUtf16(u"records");
    contest.row(group, "format three values", 1000,
                {{"Morvane", times(1000,
                                   [] {
                                       _WideString line;
                                       line.format(u"%d %s at %x"_w, 12345, u"records"_w, 0xBEEF);
                                       race::keep(line.get_data());
                                   })},
                 {"std::u16string", times(1000,
                                          [&] {
                                              char bytes_[64];
                                              std::string const narrow(wordStandard.begin(), wordStandard.end());
                                              int const length = std::snprintf(bytes_, sizeof bytes_, "%d %s at %x",
                                                                               12345, narrow.c_str(), 0xBEEFU);
                                              race::keep(std::u16string(bytes_, bytes_ + length).data());
                                          })},
                 {"QString",
                  times(1000,
                        [&] {
                            race::keep(
                                QString::asprintf("%d %ls at %x", 12345, qUtf16Printable(wordQt), 0xBEEFU).constData());
                        })},
                 {"UnicodeString", times(1000, [] {
                      char16_t line[64];
                      std::int32_t const length = u_snprintf_u(line, 64, u"%d %S at %x", 12345, u"records", 0xBEEF);
                      race::keep(icu::UnicodeString(line, length).getBuffer());
                  })}});
    return 0;
}
