#include "host/class_desc.h"

#include "host/heap.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

// ---------------------------------------------------------------------------------------
// ClassDesc

struct ClassDesc::Entry {
    char name[64]; // interface name, truncated to fit
    void* iface;   // not owned
};

ClassDesc::ClassDesc() : interfaces_(nullptr), numInterfaces_(0) {}

ClassDesc::~ClassDesc() {
    HostFree(interfaces_);
    interfaces_ = nullptr;
    numInterfaces_ = 0;
}

void* ClassDesc::GetInterface(const char* name) {
    if (!name)
        return nullptr;
    for (int i = 0; i < numInterfaces_; ++i)
        if (std::strcmp(interfaces_[i].name, name) == 0)
            return interfaces_[i].iface;
    return nullptr;
}

void ClassDesc::AddInterface(const char* name, void* iface) {
    if (!name)
        return;
    auto* grown =
        static_cast<Entry*>(HostRealloc(interfaces_, sizeof(Entry) * (numInterfaces_ + 1)));
    if (!grown)
        return;
    interfaces_ = grown;
    Entry& e = interfaces_[numInterfaces_++];
    std::strncpy(e.name, name, sizeof(e.name) - 1);
    e.name[sizeof(e.name) - 1] = '\0';
    e.iface = iface;
}

const char* ClassDesc::GetRsrcString(long) { return nullptr; }

// ---------------------------------------------------------------------------------------
// ClassDirectory

namespace {
typedef const char* (*LibDescriptionFn)();
typedef int (*LibNumberClassesFn)();
typedef ClassDesc* (*LibClassDescFn)(int);

struct Plugin {
    std::string path;
    std::string description;
};
} // namespace

struct ClassDirectory::Impl {
    std::vector<ClassDesc*> classes; // not owned: descriptors are static objects of modules
    std::vector<Plugin> plugins;     // loaded modules (never unloaded while the host runs)
};

ClassDirectory::ClassDirectory() : impl_(new Impl) {}

ClassDirectory& ClassDirectory::Get() {
    static ClassDirectory dir;
    return dir;
}

void ClassDirectory::AddClass(ClassDesc* cd) {
    if (!cd)
        return;
    if (std::find(impl_->classes.begin(), impl_->classes.end(), cd) == impl_->classes.end())
        impl_->classes.push_back(cd);
}

void ClassDirectory::RemoveClass(ClassDesc* cd) {
    auto& v = impl_->classes;
    v.erase(std::remove(v.begin(), v.end(), cd), v.end());
}

ClassDesc* ClassDirectory::FindClass(SClass_ID sclass, const Class_ID& cid) {
    for (ClassDesc* cd : impl_->classes)
        if (cd->SuperClassID() == sclass && cd->ClassID() == cid)
            return cd;
    return nullptr;
}

int ClassDirectory::Count() const { return int(impl_->classes.size()); }

ClassDesc* ClassDirectory::ClassAt(int i) {
    return (i >= 0 && i < Count()) ? impl_->classes[i] : nullptr;
}

int ClassDirectory::LoadPlugin(const char* path) {
    if (!path)
        return -1;
#if defined(_WIN32)
    HMODULE mod = LoadLibraryA(path);
    if (!mod)
        return -1;
    auto sym = [mod](const char* name) {
        return reinterpret_cast<void*>(GetProcAddress(mod, name));
    };
#else
    void* mod = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!mod)
        return -1;
    auto sym = [mod](const char* name) { return dlsym(mod, name); };
#endif
    auto describe = reinterpret_cast<LibDescriptionFn>(sym("LibDescription"));
    auto count = reinterpret_cast<LibNumberClassesFn>(sym("LibNumberClasses"));
    auto classDesc = reinterpret_cast<LibClassDescFn>(sym("LibClassDesc"));
    if (!count || !classDesc)
        return -1;
    const char* text = describe ? describe() : nullptr;
    impl_->plugins.push_back(Plugin{path, text ? text : ""});
    int added = 0;
    for (int i = 0, n = count(); i < n; ++i) {
        if (ClassDesc* cd = classDesc(i)) {
            AddClass(cd);
            ++added;
        }
    }
    return added;
}

const char* ClassDirectory::PluginDescription(int i) {
    if (i < 0 || i >= NumPlugins())
        return nullptr;
    return impl_->plugins[i].description.c_str();
}

int ClassDirectory::NumPlugins() const { return int(impl_->plugins.size()); }
