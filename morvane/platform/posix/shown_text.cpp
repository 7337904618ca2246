#include <morvane/platform/shown_text.h>

#include <atomic>
#include <morvane/platform/posix/utf8_text.h>
#include <morvane/platform/show_text.h>
#include <sys/uio.h>
#include <unistd.h>

namespace morvane::platform {

namespace {

/// One line in one write, so that the lines of several threads don't mix.
void writeLine(unsigned short int const * text, unsigned short int const * caption) {
    Utf8Text const heading(caption, UnpairedSurrogate::replaced);
    Utf8Text const body(text, UnpairedSurrogate::replaced);
    auto const part = [](char const * bytes, std::size_t length) {
        return iovec{const_cast<char *>(bytes), bytes != nullptr ? length : 0};
    };
    bool const closed = body.length() != 0 && body.bytes()[body.length() - 1] == '\n';
    iovec const parts[] = {part(heading.bytes(), heading.length()), part(": ", 2), part(body.bytes(), body.length()),
                           part("\n", closed ? 0 : 1)};
    // Nobody could be told of a failure.
    [[maybe_unused]] ssize_t const written = writev(STDERR_FILENO, parts, 4);
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
