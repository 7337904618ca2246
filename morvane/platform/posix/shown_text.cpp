#include <morvane/platform/shown_text.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <morvane/platform/posix/utf8_text.h>
#include <morvane/platform/show_text.h>
#include <morvane/platform/standard_error.h>

namespace morvane::platform {

namespace {

/// What is to go out together. A line longer than its buffer goes out in parts.
class Line {
public:
    Line() = default;
    Line(Line const &) = delete;
    ~Line() { writeStandardError(bytes, count); }

    Line & operator=(Line const &) = delete;

    void append(char const * text, std::size_t length) {
        while (length != 0) {
            if (count == sizeof bytes) {
                writeStandardError(bytes, count);
                count = 0;
            }
            std::size_t const part = std::min(length, sizeof bytes - count);
            std::memcpy(bytes + count, text, part);
            count += part;
            text += part;
            length -= part;
        }
    }
    void append(Utf8Text const & text) { append(text.bytes(), text.bytes() != nullptr ? text.length() : 0); }

    bool isClosed() const { return count != 0 && bytes[count - 1] == '\n'; }

private:
    char bytes[1024];
    std::size_t count = 0;
};

void writeLine(unsigned short int const * text, unsigned short int const * caption) {
    Line line;
    line.append(Utf8Text(caption, UnpairedSurrogate::replaced));
    line.append(": ", 2);
    line.append(Utf8Text(text, UnpairedSurrogate::replaced));
    if (!line.isClosed()) {
        line.append("\n", 1);
    }
}

constinit std::atomic<TextPresenter> textPresenter{writeLine};

} // namespace

TextPresenter setTextPresenter(TextPresenter presenter) noexcept {
    return textPresenter.exchange(presenter);
}

void showText(unsigned short int const * text, unsigned short int const * caption) {
    if (TextPresenter const presenter = textPresenter.load()) {
        presenter(text, caption);
    }
}

} // namespace morvane::platform
