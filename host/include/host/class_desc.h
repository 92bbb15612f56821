// ClassDesc: how a plug-in module describes a class the host can create, and the class
// directory in which the host finds classes by id.
#pragma once

#include "host/animatable.h"
#include "host/export.h"
#include "host/heap.h"
#include "host/win_types.h"

class HOST_API ClassDesc : public VokHeapOperators {
public:
    ClassDesc();
    virtual ~ClassDesc();

    /// Whether the host may list the class for users.
    virtual int IsPublic() = 0;
    /// A new instance; null when allocation fails. `loading` is TRUE while a scene loads.
    virtual void* Create(BOOL loading = FALSE) = 0;
    virtual int BeginCreate(void*) { return 0; }
    virtual int EndCreate(void*) { return 0; }
    virtual const char* ClassName() = 0;
    virtual SClass_ID SuperClassID() = 0;
    virtual Class_ID ClassID() = 0;
    virtual const char* Category() = 0;
    virtual int OkToCreate(void*) { return 1; }

    /// Interfaces published on the descriptor, by name.
    void* GetInterface(const char* name);
    void AddInterface(const char* name, void* iface);
    const char* GetRsrcString(long id);

private:
    struct Entry;
    Entry* interfaces_; // host heap array of (name, interface), freed with the descriptor
    int numInterfaces_;
};

/// Every class the host knows, from built-in registrations and loaded plug-in modules.
class HOST_API ClassDirectory {
public:
    static ClassDirectory& Get();

    void AddClass(ClassDesc* cd);
    void RemoveClass(ClassDesc* cd);
    ClassDesc* FindClass(SClass_ID sclass, const Class_ID& cid);
    int Count() const;
    ClassDesc* ClassAt(int i);

    /// Loads a plug-in module (LoadLibrary and its exported Lib* functions) and adds its
    /// classes. Returns the number of classes added; -1 when the module could not be
    /// loaded or is not a plug-in.
    int LoadPlugin(const char* path);
    /// The description string of the i-th loaded module.
    const char* PluginDescription(int i);
    int NumPlugins() const;

private:
    ClassDirectory();
    struct Impl;
    Impl* impl_;
};
