#include <cstdio>
#include <morvane/morvane.h>

using namespace morvane::literals;

int main() {
    morvane::platform::setDebugListener(nullptr);
    _WideString text;
    _WideString error;
    DOM::_XMLDocument document;
    bool const isLoaded = document.loadFromString(u"<answer>forty-two</answer>"_w, error);
    document.saveToString(text, error);
    std::printf("%d %s", isLoaded, text.toDataString().get_data());
    return globalProcessMemory != nullptr ? 0 : 1;
}
