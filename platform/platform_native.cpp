#include "platform/platform.h"

#include <cstring>

namespace {

struct StringEntry {
    int id;
    const char* text;
};

#define CURVECTL_STRING(id, text) {id, text},
const StringEntry stringTable[] = {
#include "res/string_table.inc"
};
#undef CURVECTL_STRING

HINSTANCE moduleInstance = nullptr;
platform::MessageSink messageSink = nullptr;
platform::QuestionSink questionSink = nullptr;

} // namespace

namespace platform {

HINSTANCE ModuleInstance() { return moduleInstance; }
void SetModuleInstance(HINSTANCE instance) { moduleInstance = instance; }

// Same contract as LoadStringA: truncates to size - 1 chars and terminates.
int LoadResourceString(int id, char* buffer, int size) {
    if (!moduleInstance || !buffer || size <= 0)
        return 0;
    for (const StringEntry& e : stringTable) {
        if (e.id != id)
            continue;
        int n = int(std::strlen(e.text));
        if (n > size - 1)
            n = size - 1;
        std::memcpy(buffer, e.text, n);
        buffer[n] = '\0';
        return n;
    }
    return 0;
}

LRESULT SendToWindow(HWND window, UINT msg, WPARAM wParam, LPARAM lParam) {
    return messageSink ? messageSink(window, msg, wParam, lParam) : 0;
}

bool AskYesNo(HWND owner, const char* caption, const char* text) {
    return questionSink ? questionSink(owner, caption, text) : false;
}

void SetMessageSink(MessageSink sink) { messageSink = sink; }
void SetQuestionSink(QuestionSink sink) { questionSink = sink; }

} // namespace platform
