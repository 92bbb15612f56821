#include "platform/res_string.h"

#include "platform/platform.h"

namespace {
char stringBuffer[256]; // shared by every caller; user-interface thread only
}

const char* GetResString(int id) {
    if (!platform::ModuleInstance())
        return nullptr;
    return platform::LoadResourceString(id, stringBuffer, int(sizeof(stringBuffer))) != 0
               ? stringBuffer
               : nullptr;
}
