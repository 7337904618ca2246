// Which kind of markup a piece of text is, told from its first and last units.
#pragma once

#include <morvane/strings/text_view.h>
#include <morvane/strings/wide_string.h>

namespace morvane {

/// True when the text begins with `head` and ends with `tail` and the two share no unit.
constexpr bool isEnclosed(WideView text, WideView head, WideView tail) noexcept {
    return text.length >= head.length + tail.length && text.startsWith(head) && text.endsWith(tail);
}

constexpr bool isTag(WideView text) noexcept {
    using namespace literals;
    return isEnclosed(text, u"<"_wv, u">"_wv);
}

constexpr bool isComment(WideView text) noexcept {
    using namespace literals;
    return isEnclosed(text, u"<!--"_wv, u"-->"_wv);
}

/// Only a document type with an internal subset counts.
constexpr bool isDocumentType(WideView text) noexcept {
    using namespace literals;
    return isEnclosed(text, u"<!DOCTYPE"_wv, u"]>"_wv);
}

constexpr bool isCDATASection(WideView text) noexcept {
    using namespace literals;
    return isEnclosed(text, u"<![CDATA["_wv, u"]]>"_wv);
}

constexpr bool isProcessingInstruction(WideView text) noexcept {
    using namespace literals;
    return isEnclosed(text, u"<?"_wv, u"?>"_wv);
}

constexpr bool isElement(WideView text, _WideString::TagStatus status) noexcept {
    using namespace literals;
    switch (status) {
    case _WideString::TAG_STATUS_EMPTY:
        return isEnclosed(text, u"<"_wv, u"/>"_wv);
    case _WideString::TAG_STATUS_BEGINNING:
        return isTag(text);
    case _WideString::TAG_STATUS_ENDING:
        return isEnclosed(text, u"</"_wv, u">"_wv);
    }
    return false;
}

constexpr bool isQuote(unsigned short int unit) noexcept {
    return unit == u'"' || unit == u'\'';
}

} // namespace morvane
