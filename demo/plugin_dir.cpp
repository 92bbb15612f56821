// Loading the plug-in folder into the class directory.
#include "plugin_dir.h"

#include "host/class_desc.h"
#include "host/win_types.h"

#include <algorithm>

std::string ProgramFolder() {
    char path[MAX_PATH] = {};
    const DWORD n = GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string folder(path, n);
    const std::size_t slash = folder.find_last_of("\\/");
    return slash == std::string::npos ? std::string(".") : folder.substr(0, slash);
}

std::vector<PluginLoad> LoadPlugins(const std::string& folder) {
    std::vector<std::string> files;
    WIN32_FIND_DATAA found;
    HANDLE search = FindFirstFileA((folder + "\\*.dll").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
                files.push_back(found.cFileName);
        } while (FindNextFileA(search, &found));
        FindClose(search);
    }
    // Name order, so every run loads the modules the same way.
    std::sort(files.begin(), files.end());

    std::vector<PluginLoad> loads;
    ClassDirectory& dir = ClassDirectory::Get();
    for (const std::string& file : files) {
        const int before = dir.NumPlugins();
        const int added = dir.LoadPlugin((folder + "\\" + file).c_str());
        const char* text = dir.NumPlugins() > before ? dir.PluginDescription(before) : nullptr;
        loads.push_back(PluginLoad{file, text ? text : "", added});
    }
    return loads;
}
